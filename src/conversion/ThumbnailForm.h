#pragma once

// Runs the engine once for a small picture of the first page, with a button to stop waiting
// for it. The picture is left in the preview's temporary name followed by "_1.bmp".

#include "dialogs/Form.h"

struct AppContext;
class QLabel;
class QPushButton;
class QTimer;

class ThumbnailForm final : public Form
{
    Q_OBJECT

public:
    ThumbnailForm(DialogRuntime& runtime, AppContext& context);

    bool Skipped() const { return m_skipped; }

protected:
    void Form_Load() override;
    void Form_Activate() override;
    // Closing the window stops the wait as Skip does.
    void Form_CloseRequest() override { m_skipped = true; }

private:
    void RunPreview();
    void ButtonSkip_Click();

    AppContext& m_context;
    bool m_activated = false;
    bool m_skipped = false;
    QLabel* m_labelMessage = nullptr;
    QPushButton* m_buttonSkip = nullptr;
    QTimer* m_timer1 = nullptr;
};
