#pragma once

// Takes the first and last page of the range to convert. Accepted is 1 once OK has passed its
// checks; the caller reads it and the two texts before it unloads the dialog.

#include "dialogs/Form.h"

struct RunState;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;

class PageRangeForm final : public Form
{
    Q_OBJECT

public:
    PageRangeForm(DialogRuntime& runtime, RunState& state);

    qint32 Accepted = 0;

    QString FromText() const;
    QString ToText() const;

protected:
    void Form_Load() override;
    void Form_Activate() override;

private:
    void ButtonOK_Click();
    void ButtonCancel_Click();

    RunState& m_state;
    QGroupBox* m_frameSpecifyPageRange = nullptr;
    QWidget* m_picture1 = nullptr;
    QLabel* m_labelPageRange = nullptr;
    QLineEdit* m_textPageFrom = nullptr;
    QLabel* m_label1 = nullptr;
    QLineEdit* m_textPageTo = nullptr;
    QLabel* m_labelPageCount = nullptr;
    QPushButton* m_buttonOK = nullptr;
    QPushButton* m_buttonCancel = nullptr;
};
