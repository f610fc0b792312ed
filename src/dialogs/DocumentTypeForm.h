#pragma once

// The first option page: what kind of PDF this is (single-column, multi-column or a legal
// pleading). A legal pleading forces the header option and the first conversion method when the
// user leaves the page.

#include "dialogs/ChoicePage.h"

class DocumentTypeForm final : public ChoicePage
{
    Q_OBJECT

public:
    DocumentTypeForm(DialogRuntime& runtime, Forms& forms);

    QString HelpTopic() const override;
    // Shows the run's document type; an unknown type becomes single-column.
    void LoadOptions() override;
    // Writes the chosen type back, with what a legal pleading forces.
    void UpdateOptions() override;

protected:
    void Form_Load() override;
    void Form_Activate() override;
    Form& NextPage() override;

private:
    QLabel* m_labelDocumentTypeText = nullptr;
};
