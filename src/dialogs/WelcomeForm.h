#pragma once

// The main dialog: the preview of the PDF on the left, the summary of the options and the page
// range on the right, and the way to the option pages, the help and the Convert command. In the
// options-only face it edits the stored options and has no PDF at all.

#include "dialogs/Form.h"

class ConvertFlow;
class Forms;
class LinkLabel;
class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QPushButton;

class WelcomeForm final : public Form
{
    Q_OBJECT

public:
    QString HelpTopic() const override;
    WelcomeForm(DialogRuntime& runtime, Forms& forms, ConvertFlow& flow);

    // Writes the dialog's controls into the run's record; always true.
    bool UpdateOptions();

    // Set once the intake has passed its password loop.
    bool Activated() const { return m_activated; }
    void SetActivated(bool activated) { m_activated = activated; }

    // Sets the page range list's index the way code does: the list's click event follows.
    void SetPageRangeIndex(int index);

    QGroupBox& FramePreview() const { return *m_framePreview; }
    QWidget& Picture2() const { return *m_picture2; }
    QLabel& PictureThumb() const { return *m_pictureThumb; }
    QLabel& LabelNA() const { return *m_labelNA; }
    QComboBox& ComboPageRange() const { return *m_comboPageRange; }

protected:
    void Form_Load() override;
    void Form_Activate() override;
    void Form_QueryUnload() override;
    void Form_Unload() override;

private:
    void LoadOptions();
    void FillSummary();
    void ApplyLanguage();

    void ButtonConvert_Click();
    void ButtonCancel_Click();
    void ButtonEditOptions_Click();
    void ButtonHelp_Click();
    void ComboPageRange_Click();
    void LabelAdvancedOption_Click();

    Forms& m_forms;
    ConvertFlow& m_flow;
    bool m_activated = false;
    bool m_intakeUnderWay = false;

    QGroupBox* m_framePreview = nullptr;
    QWidget* m_picture2 = nullptr;
    QLabel* m_pictureThumb = nullptr;
    QCheckBox* m_checkPreview = nullptr;
    QLabel* m_labelNA = nullptr;
    QGroupBox* m_frameOptions = nullptr;
    QWidget* m_picture1 = nullptr;
    QLabel* m_labelDocumentTypeText = nullptr;
    QLabel* m_labelDocumentType = nullptr;
    QLabel* m_labelConversionMethodText = nullptr;
    QLabel* m_labelConversionMethod = nullptr;
    LinkLabel* m_labelAdvancedOption = nullptr;
    QLabel* m_labelImageFormatText = nullptr;
    QLabel* m_labelImageFormat = nullptr;
    QLabel* m_labelImageQualityText = nullptr;
    QLabel* m_labelImageQuality = nullptr;
    QLabel* m_labelOutputFormatText = nullptr;
    QLabel* m_labelOutputFormat = nullptr;
    QLabel* m_labelPageRange = nullptr;
    QComboBox* m_comboPageRange = nullptr;
    QCheckBox* m_checkOpenAfterConversion = nullptr;
    QPushButton* m_buttonHelp = nullptr;
    QPushButton* m_buttonCancel = nullptr;
    QPushButton* m_buttonEditOptions = nullptr;
    QPushButton* m_buttonConvert = nullptr;
};
