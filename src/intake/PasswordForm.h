#pragma once

// Asks for the password of a protected PDF: the text the user confirmed, or nothing when the
// user backed out or gave a password that can't be kept for the conversion.

#include "dialogs/Form.h"

#include <optional>

class QLabel;
class QLineEdit;
class QPushButton;

class PasswordForm final : public Form
{
    Q_OBJECT

public:
    // The confirmed password goes to `password`.
    PasswordForm(DialogRuntime& runtime, std::optional<QString>& password);

    // Loads the dialog, shows it modally over `owner` and unloads it.
    static std::optional<QString> Ask(DialogRuntime& runtime, Form& owner);

protected:
    void Form_Load() override;

private:
    void TextPassword_Change();
    void ButtonOK_Click();
    void ButtonCancel_Click();

    std::optional<QString>& m_password;
    QLabel* m_labelMessage = nullptr;
    QLineEdit* m_textPassword = nullptr;
    QPushButton* m_buttonOK = nullptr;
    QPushButton* m_buttonCancel = nullptr;
};
