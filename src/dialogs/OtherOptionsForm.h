#pragma once

// The Advanced Options page, the last option page: the text features the engine carries over,
// the image format and its quality, and the output format. It shows the document type and the
// conversion method as links back to their pages, and obeys the rules between the options.

#include "dialogs/Form.h"
#include "dialogs/OptionPage.h"

class Forms;
class LinkLabel;
class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QPushButton;
class QRadioButton;
class QSlider;

class OtherOptionsForm final : public Form, public OptionPage
{
    Q_OBJECT

public:
    QString HelpTopic() const override;
    OtherOptionsForm(DialogRuntime& runtime, Forms& forms);

    // Shows the run's options and applies the rules between them. A box whose field is not 1
    // keeps the state it had, so this never clears a box.
    void LoadOptions() override;
    // Writes every control back, disabled ones too.
    void UpdateOptions() override;

protected:
    void Form_Load() override;
    void Form_Activate() override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void CheckHeader_Click();
    void ComboImage_Click();
    void SliderQuality_Change();
    void ImageDoc_Click();
    void ImageRtf_Click();
    void OptionExtDoc_Click();
    void OptionExtRtf_Click();
    void LabelDocumentType_Click();
    void LabelConversionMethod_Click();
    void ButtonDone_Click();
    void ButtonHelp_Click();

    Forms& m_forms;

    QLabel* m_picture1 = nullptr;
    QRadioButton* m_optionExtRtf = nullptr;
    QRadioButton* m_optionExtDoc = nullptr;
    QComboBox* m_comboImage = nullptr;
    QCheckBox* m_checkWordArt = nullptr;
    QCheckBox* m_checkHeader = nullptr;
    QCheckBox* m_checkSub = nullptr;
    QCheckBox* m_checkResize = nullptr;
    QCheckBox* m_checkPreserve = nullptr;
    QSlider* m_sliderQuality = nullptr;
    QLabel* m_labelQuality = nullptr;
    QLabel* m_labelPercent = nullptr;
    QLabel* m_labelImageFormat = nullptr;
    QLabel* m_labelQualityBox = nullptr;
    QLabel* m_labelOutputFormat = nullptr;
    QLabel* m_imageDoc = nullptr;
    QLabel* m_imageRtf = nullptr;
    QLabel* m_labelImageQuality = nullptr;
    QLabel* m_labelDocumentTypeText = nullptr;
    LinkLabel* m_labelDocumentType = nullptr;
    QLabel* m_labelConversionMethodText = nullptr;
    LinkLabel* m_labelConversionMethod = nullptr;
    QPushButton* m_buttonDone = nullptr;
    QPushButton* m_buttonHelp = nullptr;
    QGroupBox* m_frameAdvancedOptions = nullptr;
};
