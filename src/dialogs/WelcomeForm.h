#pragma once

// The main dialog: the preview of the PDF on the left, the summary of the options and the page
// range on the right, and the way to the option pages, the help and the Convert command. In the
// options-only face it edits the stored options and has no PDF at all.

#include "dialogs/Form.h"
#include "dialogs/OptionPage.h"

class ConversionController;
class Forms;
class LinkLabel;
class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QPushButton;

class WelcomeForm final : public Form, public OptionPage
{
    Q_OBJECT

public:
    QString HelpTopic() const override;
    WelcomeForm(DialogRuntime& runtime, Forms& forms, ConversionController& controller);

    // Picks the PDF when none is named (convert face), and fills the summary from the run's
    // options.
    void LoadOptions() override;
    // Writes the dialog's controls into the run's record.
    void UpdateOptions() override;

    // Set once the intake has passed its password loop.
    bool Activated() const { return m_activated; }

    // Loads the picture into the preview area, centred on the frame and cut to its height;
    // without a picture the area says "N/A".
    void ShowPreview(const QString& picturePath);

protected:
    void Form_Load() override;
    void Form_Activate() override;
    void Form_QueryUnload() override;
    void Form_Unload() override;

private:
    void FillSummary();
    void SetPageRangeIndex(int index);
    void ApplyLanguage();

    void ButtonConvert_Click();
    void ButtonCancel_Click();
    void ButtonEditOptions_Click();
    void ButtonHelp_Click();
    void ComboPageRange_Click();
    void LabelAdvancedOption_Click();

    Forms& m_forms;
    ConversionController& m_controller;
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
