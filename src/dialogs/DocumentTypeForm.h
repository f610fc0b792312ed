#pragma once

// The first option page: what kind of PDF this is (single-column, multi-column or a legal
// pleading). The legal pleading type forces the header option and the first conversion method
// when the user leaves the page.

#include "dialogs/Form.h"

class Forms;
class QGroupBox;
class QLabel;
class QPushButton;
class QRadioButton;

class DocumentTypeForm final : public Form
{
    Q_OBJECT

public:
    QString HelpTopic() const override;
    DocumentTypeForm(DialogRuntime& runtime, Forms& forms);

    // Shows the run's document type; an unknown type becomes single-column.
    void LoadOptions();
    // Writes the chosen type back, with what the legal pleading type forces; always true.
    bool UpdateOptions();

protected:
    void Form_Load() override;
    void Form_Activate() override;

private:
    void OptionSingle_Click();
    void OptionMulti_Click();
    void OptionLegal_Click();
    void ButtonNext_Click();
    void ButtonDone_Click();
    void ButtonHelp_Click();

    void ShowOnly(QLabel* image);

    Forms& m_forms;

    QPushButton* m_buttonNext = nullptr;
    QLabel* m_picture1 = nullptr;
    QGroupBox* m_frameDocumentType = nullptr;
    QRadioButton* m_optionLegal = nullptr;
    QRadioButton* m_optionSingle = nullptr;
    QRadioButton* m_optionMulti = nullptr;
    QLabel* m_imageMulti = nullptr;
    QLabel* m_imageSingle = nullptr;
    QLabel* m_imageLegal = nullptr;
    QLabel* m_labelOptionLegal = nullptr;
    QLabel* m_labelOptionMulti = nullptr;
    QLabel* m_labelOptionSingle = nullptr;
    QLabel* m_labelDocumentTypeText = nullptr;
    QPushButton* m_buttonHelp = nullptr;
    QPushButton* m_buttonDone = nullptr;
};
