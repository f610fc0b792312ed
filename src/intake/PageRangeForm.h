#pragma once

// Takes the first and last page of the range to convert: the range the user confirmed, with the
// two texts as typed, or nothing when the user backed out.

#include "dialogs/Form.h"
#include "intake/PageRangeRules.h"

#include <optional>

class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;

class PageRangeForm final : public Form
{
    Q_OBJECT

public:
    struct Choice final
    {
        PageRange pages;
        QString fromText;
        QString toText;
    };

    // The confirmed choice goes to `choice`.
    PageRangeForm(DialogRuntime& runtime, PageRange current, qint32 pageCount,
                  std::optional<Choice>& choice);

    // Loads the dialog, shows it modally over `owner` and unloads it.
    static std::optional<Choice> Ask(DialogRuntime& runtime, Form& owner, PageRange current,
                                     qint32 pageCount);

protected:
    void Form_Load() override;
    void Form_Activate() override;

private:
    void ButtonOK_Click();
    void ButtonCancel_Click();

    PageRange m_current;
    qint32 m_pageCount;
    std::optional<Choice>& m_choice;
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
