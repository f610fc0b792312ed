#pragma once

// The progress dialog of a conversion: says "Converting...", then "Finalizing...", while the
// conversion runs behind it; it can't be cancelled.

#include "dialogs/Form.h"

struct AppContext;
class QLabel;

class WaitForm final : public Form
{
    Q_OBJECT

public:
    WaitForm(DialogRuntime& runtime, AppContext& context);

    // Placed over the owner and shown modally; returns when the run has ended.
    void Begin(Form& ownerForm);

protected:
    void Form_Load() override;
    void Form_Activate() override;
    // A run can't be cancelled: the window manager's close request is ignored.
    void Form_CloseRequest() override {}

private:
    void RunConversion();

    AppContext& m_context;
    qint16 m_activationMark = 0;
    QLabel* m_labelMessage = nullptr;
};
