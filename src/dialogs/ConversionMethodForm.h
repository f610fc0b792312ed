#pragma once

// The second option page: how the layout of the PDF is carried into the document (tabs and
// spaces, text boxes, or flowing text). It shows the document type as a link back to its page
// and obeys it: a legal pleading allows only the first method.

#include "dialogs/Form.h"

class Forms;
class LinkLabel;
class QGroupBox;
class QLabel;
class QPushButton;
class QRadioButton;

class ConversionMethodForm final : public Form
{
    Q_OBJECT

public:
    QString HelpTopic() const override;
    ConversionMethodForm(DialogRuntime& runtime, Forms& forms);

    // Shows the run's method and document type and applies the document type's rule; unknown
    // values of either become 2.
    void LoadOptions();
    // Writes the chosen method back; always true.
    bool UpdateOptions();

protected:
    void Form_Load() override;
    void Form_Activate() override;

private:
    void OptionPreserve_Click();
    void OptionExact_Click();
    void OptionFlow_Click();
    void ButtonNext_Click();
    void LabelDocumentType_Click();
    void ButtonDone_Click();
    void ButtonHelp_Click();

    void ShowOnly(QLabel* image);

    Forms& m_forms;

    QPushButton* m_buttonNext = nullptr;
    QLabel* m_picture1 = nullptr;
    QRadioButton* m_optionPreserve = nullptr;
    QRadioButton* m_optionExact = nullptr;
    QRadioButton* m_optionFlow = nullptr;
    QLabel* m_imageExact = nullptr;
    QLabel* m_imagePreserve = nullptr;
    QLabel* m_imageFlow = nullptr;
    QLabel* m_labelOptionPreserve = nullptr;
    QLabel* m_labelOptionExact = nullptr;
    QLabel* m_labelOptionFlow = nullptr;
    QLabel* m_labelDocumentTypeText = nullptr;
    LinkLabel* m_labelDocumentType = nullptr;
    QPushButton* m_buttonDone = nullptr;
    QPushButton* m_buttonHelp = nullptr;
    QGroupBox* m_frameConversionOptions = nullptr;
};
