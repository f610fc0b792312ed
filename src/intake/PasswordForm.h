#pragma once

// Asks for the password of a protected PDF. Its only effect is on the run's Passwords field:
// empty when the user backed out, otherwise the text the user confirmed.

#include "dialogs/Form.h"

struct RunState;
class QLabel;
class QLineEdit;
class QPushButton;

class PasswordForm final : public Form
{
    Q_OBJECT

public:
    PasswordForm(DialogRuntime& runtime, RunState& state);

protected:
    void Form_Load() override;

private:
    void TextPassword_Change();
    void ButtonOK_Click();
    void ButtonCancel_Click();

    RunState& m_state;
    QLabel* m_labelMessage = nullptr;
    QLineEdit* m_textPassword = nullptr;
    QPushButton* m_buttonOK = nullptr;
    QPushButton* m_buttonCancel = nullptr;
};
