#pragma once

// The second option page: how the layout of the PDF is carried into the document (tabs and
// spaces, text boxes, or flowing text). It shows the document type as a link back to its page
// and obeys it: a legal pleading allows only the first method.

#include "dialogs/ChoicePage.h"

class LinkLabel;

class ConversionMethodForm final : public ChoicePage
{
    Q_OBJECT

public:
    ConversionMethodForm(DialogRuntime& runtime, Forms& forms);

    QString HelpTopic() const override;
    // Shows the run's method and document type and applies the document type's rule; unknown
    // values of either become 2.
    void LoadOptions() override;
    // Writes the chosen method back.
    void UpdateOptions() override;

protected:
    void Form_Load() override;
    void Form_Activate() override;
    Form& NextPage() override;

private:
    void LabelDocumentType_Click();

    QLabel* m_labelDocumentTypeText = nullptr;
    LinkLabel* m_labelDocumentType = nullptr;
};
