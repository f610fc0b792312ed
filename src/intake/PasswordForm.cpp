#include "intake/PasswordForm.h"

#include "dialogs/DialogRuntime.h"
#include "services/DialogLanguage.h"
#include "services/MessageBoxes.h"

#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>

PasswordForm::PasswordForm(DialogRuntime& runtime, std::optional<QString>& password)
    : Form(runtime), m_password(password)
{
    setObjectName(QStringLiteral("PasswordForm"));
    setWindowTitle(QStringLiteral("Convert PDF to Word"));
    SetFixedClientSizeTwips(4935, 1665);

    m_labelMessage =
        new QLabel(QStringLiteral("File is protected.  Please enter a password:"), this);
    m_labelMessage->setObjectName(QStringLiteral("LabelMessage"));
    m_labelMessage->setWordWrap(true);
    PlaceTwips(*m_labelMessage, 120, 120, 4695, 435);

    m_textPassword = new QLineEdit(this);
    m_textPassword->setObjectName(QStringLiteral("TextPassword"));
    m_textPassword->setEchoMode(QLineEdit::Password);
    PlaceTwips(*m_textPassword, 120, 600, 4695, 315);

    m_buttonOK = new QPushButton(QStringLiteral("OK"), this);
    m_buttonOK->setObjectName(QStringLiteral("ButtonOK"));
    m_buttonOK->setDefault(true);
    PlaceTwips(*m_buttonOK, 2280, 1140, 1215, 375);

    m_buttonCancel = new QPushButton(QStringLiteral("Cancel"), this);
    m_buttonCancel->setObjectName(QStringLiteral("ButtonCancel"));
    m_buttonCancel->setAutoDefault(false);
    PlaceTwips(*m_buttonCancel, 3600, 1140, 1215, 375);
    SetCancelButton(m_buttonCancel);

    connect(m_textPassword, &QLineEdit::textChanged, this,
            Handler(&PasswordForm::TextPassword_Change));
    connect(m_buttonOK, &QPushButton::clicked, this, Handler(&PasswordForm::ButtonOK_Click));
    connect(m_buttonCancel, &QPushButton::clicked, this,
            Handler(&PasswordForm::ButtonCancel_Click));
}

void PasswordForm::Form_Load()
{
    m_buttonOK->setEnabled(false);
    m_password.reset();
    ApplyDialogLanguage(*this, {{{2201}, CaptionOf(this)},
                                {{2202}, CaptionOf(m_labelMessage)},
                                {{2203}, CaptionOf(m_buttonOK)},
                                {{2204}, CaptionOf(m_buttonCancel)}});
}

void PasswordForm::TextPassword_Change()
{
    m_buttonOK->setEnabled(!m_textPassword->text().isEmpty());
}

void PasswordForm::ButtonOK_Click()
{
    // The options document has no escape for a quote: such a password would be stored cut
    // short and the engine could never open the PDF. Said now, and the run ends as on Cancel.
    if (m_textPassword->text().contains(u'"')) {
        ShowMessage(this,
                    LocalText(PlatformTexts::PasswordWithQuote,
                              QStringLiteral("This password contains a double quote (\"), which "
                                             "can't be passed on to the conversion.")),
                    MessageIcon::Critical);
        Runtime().Hide(*this);
        Runtime().Unload(*this);
        return;
    }
    m_password = m_textPassword->text();
    Runtime().Hide(*this);
    Runtime().Unload(*this);
}

void PasswordForm::ButtonCancel_Click()
{
    Runtime().Hide(*this);
    Runtime().Unload(*this);
}

std::optional<QString> PasswordForm::Ask(DialogRuntime& runtime, Form& owner)
{
    std::optional<QString> password;
    QPointer<PasswordForm> form;
    runtime.Instance(form, password);
    runtime.ShowModal(*form, &owner);
    if (form && runtime.IsLoaded(form))
        runtime.Unload(*form);
    return password;
}
