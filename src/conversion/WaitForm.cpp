#include "conversion/WaitForm.h"

#include "conversion/ConversionRun.h"
#include "core/AppContext.h"
#include "dialogs/DialogRuntime.h"
#include "dialogs/Placement.h"
#include "services/DialogLanguage.h"

#include <QLabel>

WaitForm::WaitForm(DialogRuntime& runtime, AppContext& context) : Form(runtime), m_context(context)
{
    setObjectName(QStringLiteral("WaitForm"));
    setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint);
    SetFixedClientSizeTwips(3735, 735);

    m_labelMessage = new QLabel(QStringLiteral("Converting..."), this);
    m_labelMessage->setObjectName(QStringLiteral("LabelMessage"));
    m_labelMessage->setAlignment(Qt::AlignCenter);
    PlaceTwips(*m_labelMessage, 120, 240, 3495, 255);
}

void WaitForm::Form_Load()
{
    m_activationMark = 0;
    ApplyDialogLanguage(*this, {{{2301}, [this](const QString& value) {
                                     SetControlText(*m_labelMessage, value);
                                 }}});
}

void WaitForm::Begin(Form& ownerForm)
{
    CenterDialogOver(*this, ownerForm);
    Runtime().ShowModal(*this, &ownerForm);
}

void WaitForm::Form_Activate()
{
    // Activations after the first, such as the one after a message box, do nothing.
    if (m_activationMark != 0)
        return;
    m_activationMark = -1;
    RunConversion();
}

void WaitForm::RunConversion()
{
    ::RunConversion(m_context, this, [this] {
        SetControlText(*m_labelMessage, LocalText(6902, QStringLiteral("Finalizing...")));
    });
    Runtime().Hide(*this);
}
