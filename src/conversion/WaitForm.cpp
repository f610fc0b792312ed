#include "conversion/WaitForm.h"

#include "conversion/EngineCommand.h"
#include "conversion/OutputNaming.h"
#include "conversion/WordFinishing.h"
#include "dialogs/AppContext.h"
#include "dialogs/DialogRuntime.h"
#include "dialogs/Placement.h"
#include "platform/FileClock.h"
#include "run/RunState.h"
#include "services/Events.h"
#include "services/Localisation.h"
#include "services/MessageBoxes.h"
#include "services/ShellLaunching.h"

#include <QDateTime>
#include <QFileInfo>
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
    RunState& state = m_context.state;
    if (state.RunMode == RunModes::Convert) {
        DeriveOutputPath(state);
        const QString program = EngineProgram(m_context.applicationDir);
        const QString arguments = ConversionArguments(state);
        const QDateTime start = CurrentFileSystemTime(QFileInfo(state.OutputPath).absolutePath());
        const qint32 code =
            LaunchAndWait(nullptr, OpenVerb, program, arguments, ShowNormal,
                          ExactEngineArguments(arguments, ConversionArgumentList(state)));
        if (code == 0) {
            ShowMessage(this,
                        LocalText(6901, QStringLiteral("Error loading PDF to Word converter!")),
                        MessageIcon::Critical);
        } else {
            // The only evidence of a result is a file written after the engine started.
            const QFileInfo output(state.OutputPath);
            const QDateTime written = output.exists() ? output.lastModified() : QDateTime();
            if (written.isValid() && written > start) {
                bool toldRichText = false;
                if (state.DocumentFormat == 1) {
                    SetControlText(*m_labelMessage,
                                   LocalText(6902, QStringLiteral("Finalizing...")));
                    PumpEvents();
                    // A file the suite could not finish holds Rich Text Format; the user is
                    // told so rather than handed it as a Word document. A word processor that
                    // asked for the file reads either.
                    if (FinishWithWord(m_context) == 0 && state.HostedByWord == 0) {
                        ShowMessage(this, KeepAsRichText(state), MessageIcon::Exclamation);
                        toldRichText = true;
                    }
                }
                PumpEvents();
                if (state.HostedByWord == 0) {
                    if (state.LaunchWord == 1)
                        OpenDocument(nullptr, state.OutputPath, qint16{-1});
                    else if (!toldRichText)
                        ShowMessage(this, LocalText(6903, QStringLiteral("Conversion finished")),
                                    MessageIcon::Information);
                }
            }
        }
    }
    Runtime().Hide(*this);
}
