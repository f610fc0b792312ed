#include "dialogs/WelcomeForm.h"

#include "core/AppContext.h"
#include "core/TempFiles.h"
#include "dialogs/ConversionController.h"
#include "dialogs/DocumentTypeForm.h"
#include "dialogs/Forms.h"
#include "dialogs/LinkLabel.h"
#include "dialogs/OptionNames.h"
#include "dialogs/OtherOptionsForm.h"
#include "dialogs/Placement.h"
#include "options/OptionRules.h"
#include "options/SettingsStore.h"
#include "run/RunState.h"
#include "services/DialogLanguage.h"
#include "services/Help.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QGroupBox>
#include <QLabel>
#include <QPixmap>
#include <QPushButton>

namespace {

constexpr float ClientWidth = 9900;
constexpr float ClientHeight = 4695;
constexpr float RowHeight = 255;
constexpr float RowStep = 405;
constexpr float ValueColumn = 1800;

}  // namespace

WelcomeForm::WelcomeForm(DialogRuntime& runtime, Forms& forms, ConversionController& controller)
    : Form(runtime), m_forms(forms), m_controller(controller)
{
    setObjectName(QStringLiteral("WelcomeForm"));
    setWindowTitle(QStringLiteral("Convert PDF to Word"));
    SetFixedClientSizeTwips(ClientWidth, ClientHeight);

    m_framePreview = new QGroupBox(QStringLiteral("Preview"), this);
    m_framePreview->setObjectName(QStringLiteral("FramePreview"));
    PlaceTwips(*m_framePreview, 120, 120, 4455, 3375);

    // The preview container clips the picture, which may be larger than the area.
    m_picture2 = new QWidget(this);
    m_picture2->setObjectName(QStringLiteral("Picture2"));
    PlaceTwips(*m_picture2, 240, 360, 4215, 3015);

    m_pictureThumb = new QLabel(m_picture2);
    m_pictureThumb->setObjectName(QStringLiteral("PictureThumb"));
    PlaceTwips(*m_pictureThumb, 120, 120, 3975, 2775);

    m_checkPreview = new QCheckBox(QStringLiteral("Generate Preview"), m_picture2);
    m_checkPreview->setObjectName(QStringLiteral("CheckPreview"));
    PlaceTwips(*m_checkPreview, 1080, 1380, 2200, RowHeight);

    m_labelNA = new QLabel(QStringLiteral("N/A"), m_picture2);
    m_labelNA->setObjectName(QStringLiteral("LabelNA"));
    m_labelNA->setAlignment(Qt::AlignCenter);
    PlaceTwips(*m_labelNA, 1800, 1440, 375, RowHeight);
    m_pictureThumb->raise();

    m_frameOptions = new QGroupBox(QStringLiteral("Options"), this);
    m_frameOptions->setObjectName(QStringLiteral("FrameOptions"));
    PlaceTwips(*m_frameOptions, 4695, 120, 5085, 3375);

    m_picture1 = new QWidget(m_frameOptions);
    m_picture1->setObjectName(QStringLiteral("Picture1"));
    PlaceTwips(*m_picture1, 120, 240, 4845, 3015);

    auto makeLabel = [this](const char* name, const QString& text, float left, int row,
                            float width) {
        auto* label = new QLabel(text, m_picture1);
        label->setObjectName(QString::fromLatin1(name));
        PlaceTwips(*label, left, 60 + static_cast<float>(row) * RowStep, width, RowHeight);
        return label;
    };
    const QString placeholder = QStringLiteral("...");
    m_labelDocumentTypeText =
        makeLabel("LabelDocumentTypeText", QStringLiteral("Document Type:"), 60, 0, 1700);
    m_labelDocumentType = makeLabel("LabelDocumentType", placeholder, ValueColumn, 0, 3000);
    m_labelConversionMethodText =
        makeLabel("LabelConversionMethodText", QStringLiteral("Conversion Option:"), 60, 1, 1700);
    m_labelConversionMethod = makeLabel("LabelConversionMethod", placeholder, ValueColumn, 1, 3000);

    m_labelAdvancedOption = new LinkLabel(m_picture1);
    m_labelAdvancedOption->setObjectName(QStringLiteral("LabelAdvancedOption"));
    m_labelAdvancedOption->setText(QStringLiteral("Advanced Options..."));
    PlaceTwips(*m_labelAdvancedOption, ValueColumn, 60 + 2 * RowStep, 3000, RowHeight);

    m_labelImageFormatText =
        makeLabel("LabelImageFormatText", QStringLiteral("Image Format:"), 60, 3, 1700);
    m_labelImageFormat = makeLabel("LabelImageFormat", placeholder, ValueColumn, 3, 3000);
    m_labelImageQualityText =
        makeLabel("LabelImageQualityText", QStringLiteral("Image Quality:"), 60, 4, 1700);
    m_labelImageQuality =
        makeLabel("LabelImageQuality", QStringLiteral("100  %"), ValueColumn, 4, 3000);
    m_labelOutputFormatText =
        makeLabel("LabelOutputFormatText", QStringLiteral("Output Format:"), 60, 5, 1700);
    m_labelOutputFormat = makeLabel("LabelOutputFormat", placeholder, ValueColumn, 5, 3000);
    m_labelPageRange = makeLabel("LabelPageRange", QStringLiteral("Page Range:"), 60, 6, 1700);

    m_comboPageRange = new QComboBox(m_picture1);
    m_comboPageRange->setObjectName(QStringLiteral("ComboPageRange"));
    m_comboPageRange->setEditable(false);
    m_comboPageRange->addItems({QStringLiteral("All"), QStringLiteral("Specify")});
    m_comboPageRange->setCurrentIndex(-1);
    PlaceTwips(*m_comboPageRange, ValueColumn, 6 * RowStep, 2400, 330);

    m_checkOpenAfterConversion =
        new QCheckBox(QStringLiteral("Open  Word document after conversion"), this);
    m_checkOpenAfterConversion->setObjectName(QStringLiteral("CheckOpenAfterConversion"));
    PlaceTwips(*m_checkOpenAfterConversion, 240, 3600, 4335, 300);

    auto makeButton = [this](const char* name, const QString& text, float left, float width) {
        auto* button = new QPushButton(text, this);
        button->setObjectName(QString::fromLatin1(name));
        button->setAutoDefault(false);
        PlaceTwips(*button, left, 4080, width, 375);
        return button;
    };
    m_buttonHelp = makeButton("ButtonHelp", QStringLiteral("&Help"), 4695, 1095);
    m_buttonCancel = makeButton("ButtonCancel", QStringLiteral("Cancel"), 5880, 1095);
    m_buttonEditOptions =
        makeButton("ButtonEditOptions", QStringLiteral("&Edit Options..."), 7065, 1455);
    m_buttonConvert = makeButton("ButtonConvert", QStringLiteral("&Convert"), 8610, 1170);
    m_buttonConvert->setDefault(true);
    SetCancelButton(m_buttonCancel);

    connect(m_buttonConvert, &QPushButton::clicked, this,
            Handler(&WelcomeForm::ButtonConvert_Click));
    connect(m_buttonCancel, &QPushButton::clicked, this, Handler(&WelcomeForm::ButtonCancel_Click));
    connect(m_buttonEditOptions, &QPushButton::clicked, this,
            Handler(&WelcomeForm::ButtonEditOptions_Click));
    connect(m_buttonHelp, &QPushButton::clicked, this, Handler(&WelcomeForm::ButtonHelp_Click));
    connect(m_labelAdvancedOption, &LinkLabel::clicked, this,
            Handler(&WelcomeForm::LabelAdvancedOption_Click));
    // A choice in the list raises the click event even when it is the entry already chosen.
    connect(m_comboPageRange, &QComboBox::activated, this,
            Handler(&WelcomeForm::ComboPageRange_Click));
}

void WelcomeForm::Form_Load()
{
    m_activated = false;
    AppContext& context = m_forms.Context();
    if (context.state.HostedByWord == -1)
        PlaceNearWord(*this, context);
    else
        PlaceNearParent(*this, context);
    ApplyLanguage();
}

void WelcomeForm::ApplyLanguage()
{
    auto comboRow = [this](int row) {
        return [this, row](const QString& value) { m_comboPageRange->setItemText(row, value); };
    };
    ApplyDialogLanguage(*this, {
                                   {{1601}, CaptionOf(this)},
                                   {{1602}, CaptionOf(m_framePreview)},
                                   {{1603}, CaptionOf(m_checkPreview)},
                                   {{1604}, CaptionOf(m_frameOptions)},
                                   {{1605}, CaptionOf(m_labelDocumentTypeText)},
                                   {{1606}, CaptionOf(m_labelConversionMethodText)},
                                   {{1607}, CaptionOf(m_labelAdvancedOption)},
                                   {{1608}, CaptionOf(m_labelImageFormatText)},
                                   {{1609}, CaptionOf(m_labelImageQualityText)},
                                   {{1610}, CaptionOf(m_labelOutputFormatText)},
                                   {{1611}, CaptionOf(m_labelPageRange)},
                                   {{1612}, comboRow(0)},
                                   {{1613}, comboRow(1)},
                                   {{1614}, CaptionOf(m_buttonHelp)},
                                   {{1615}, CaptionOf(m_buttonCancel)},
                                   {{1616}, CaptionOf(m_buttonEditOptions)},
                                   {{1617}, CaptionOf(m_buttonConvert)},
                                   {{1618}, CaptionOf(m_checkOpenAfterConversion)},
                               });
}

void WelcomeForm::Form_Activate()
{
    const QString startDirectory = QDir::currentPath();
    AppContext& context = m_forms.Context();
    QDir::setCurrent(context.applicationDir);
    LoadOptions();
    if (!Runtime().IsLoaded(this))
        return;
    // The intake runs once: an activation reported while it is under way (a modal dialog it
    // owns has just closed) only refreshes the summary.
    if (m_activated || m_intakeUnderWay || context.state.RunMode != RunModes::Convert)
        return;
    m_intakeUnderWay = true;
    const IntakeOutcome outcome = m_controller.RunIntake(*this, startDirectory);
    m_intakeUnderWay = false;
    if (!outcome.passed) {
        Runtime().Unload(*this);
        return;
    }
    m_activated = true;
    ShowPreview(outcome.previewPicture);
}

void WelcomeForm::ShowPreview(const QString& picturePath)
{
    const QPixmap picture(picturePath);
    if (picturePath.isEmpty() || picture.isNull()) {
        // The label beneath it says "N/A".
        m_pictureThumb->setVisible(false);
        return;
    }
    const float frameLeft = ScaleXToTwips(static_cast<float>(m_framePreview->x()));
    const float frameTop = ScaleYToTwips(static_cast<float>(m_framePreview->y()));
    const float frameWidth = ScaleXToTwips(static_cast<float>(m_framePreview->width()));
    const float frameHeight = ScaleYToTwips(static_cast<float>(m_framePreview->height()));
    const float width = ScaleXToTwips(static_cast<float>(picture.width()));
    float height = ScaleYToTwips(static_cast<float>(picture.height()));

    // The sums use the frame's place in the dialog although the picture sits in its container.
    const float left = (frameWidth - width) / 2 + frameLeft;
    const float top = (frameHeight - height) / 2 + frameTop;
    const float margin = ScaleYToTwips(10);
    if (frameHeight - margin < height)
        height = frameHeight - margin;

    m_pictureThumb->setPixmap(picture);
    m_pictureThumb->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    PlaceTwips(*m_pictureThumb, left, top, width, height);
    m_pictureThumb->setVisible(true);
}

void WelcomeForm::LoadOptions()
{
    RunState& state = m_forms.Context().state;
    if (state.RunMode == RunModes::Convert && !m_controller.PrepareSource(*this))
        return;

    FillSummary();

    if (state.RunMode != RunModes::OptionsOnly) {
        m_checkPreview->hide();
        if (m_comboPageRange->currentIndex() == -1)
            SetPageRangeIndex(0);
    }
    if (state.RunMode == RunModes::OptionsOnly) {
        m_pictureThumb->hide();
        m_labelNA->hide();
        SetControlText(*m_buttonConvert, LocalText(5602, QStringLiteral("&Done")));
        m_labelPageRange->hide();
        m_comboPageRange->hide();
        m_buttonCancel->setEnabled(false);
    }
    if (state.PreviewThumb == 1)
        m_checkPreview->setChecked(true);
    if (state.LaunchWord == 1)
        m_checkOpenAfterConversion->setChecked(true);
    if (state.HostedByWord == -1)
        m_checkOpenAfterConversion->setEnabled(false);
}

void WelcomeForm::FillSummary()
{
    RunState& state = m_forms.Context().state;

    state.ConversionMethod = KnownConversionMethod(state.ConversionMethod);
    SetControlText(*m_labelConversionMethod, ConversionMethodName(state.ConversionMethod));
    state.DocumentType = KnownDocumentType(state.DocumentType);
    SetControlText(*m_labelDocumentType, DocumentTypeName(state.DocumentType));

    if (state.ImageFormat == 1) {
        m_labelImageFormat->setText(QStringLiteral("BMP"));
        m_labelImageQuality->setText(QStringLiteral("N/A"));
    } else {
        state.ImageFormat = 0;
        m_labelImageFormat->setText(QStringLiteral("JPEG"));
        m_labelImageQuality->setText(QString::number(state.JpegQuality) + QStringLiteral(" %"));
    }

    if (state.DocumentFormat == 1) {
        m_labelOutputFormat->setText(QStringLiteral(".DOC"));
    } else {
        state.DocumentFormat = 2;
        m_labelOutputFormat->setText(QStringLiteral(".RTF"));
    }
}

void WelcomeForm::UpdateOptions()
{
    RunState& state = m_forms.Context().state;
    state.PreviewThumb = m_checkPreview->isChecked() ? 1 : 0;
    state.LaunchWord = m_checkOpenAfterConversion->isChecked() ? 1 : 0;
    state.UsingPageRange = m_comboPageRange->currentIndex() == 1 ? 1 : 0;
}

void WelcomeForm::SetPageRangeIndex(int index)
{
    m_comboPageRange->setCurrentIndex(index);
    ComboPageRange_Click();
}

void WelcomeForm::ComboPageRange_Click()
{
    const QString specify = LocalText(1613, QStringLiteral("Specify"));
    if (m_comboPageRange->currentIndex() != 1) {
        m_comboPageRange->setItemText(1, specify);
        return;
    }
    const std::optional<QString> chosen = m_controller.ChoosePageRange(*this);
    if (chosen) {
        m_comboPageRange->setItemText(1, *chosen);
    } else {
        SetPageRangeIndex(0);
        m_comboPageRange->setItemText(1, specify);
    }
}

void WelcomeForm::ButtonConvert_Click()
{
    UpdateOptions();
    AppContext& context = m_forms.Context();
    SaveOptions(context.state, context.settings, false);
    UnloadOtherDialogs(Runtime(), this);
    if (context.state.RunMode == RunModes::Convert) {
        if (context.state.HostedByWord != -1 && !m_controller.AskOutputFile(*this))
            return;
        Runtime().Hide(*this);
        m_controller.RunConversion(*this);
    }
    Runtime().Unload(*this);
}

void WelcomeForm::ButtonCancel_Click()
{
    UnloadOtherDialogs(Runtime(), this);
    Runtime().Unload(*this);
}

void WelcomeForm::ButtonEditOptions_Click()
{
    UpdateOptions();
    DocumentTypeForm& page = m_forms.DocumentType();
    CenterDialogOver(page, *this);
    Runtime().ShowModal(page, this);
    UnloadOtherDialogs(Runtime(), this);
}

void WelcomeForm::LabelAdvancedOption_Click()
{
    OtherOptionsForm& page = m_forms.OtherOptions();
    CenterDialogOver(page, *this);
    Runtime().ShowModal(page, this);
    UnloadOtherDialogs(Runtime(), this);
}

void WelcomeForm::ButtonHelp_Click()
{
    AppContext& context = m_forms.Context();
    ShowHelpTopic(context.help, context.applicationDir, HelpTopics::Main, this);
}

void WelcomeForm::Form_QueryUnload()
{
    UnloadOtherDialogs(Runtime(), this);
}

void WelcomeForm::Form_Unload()
{
    SweepTempFiles();
}

QString WelcomeForm::HelpTopic() const
{
    return HelpTopics::Main;
}
