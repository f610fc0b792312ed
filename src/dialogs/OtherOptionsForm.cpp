#include "dialogs/OtherOptionsForm.h"

#include "core/AppContext.h"
#include "dialogs/ConversionMethodForm.h"
#include "dialogs/DocumentTypeForm.h"
#include "dialogs/Forms.h"
#include "dialogs/LinkLabel.h"
#include "dialogs/OptionNames.h"
#include "dialogs/OptionPictures.h"
#include "dialogs/Placement.h"
#include "dialogs/WelcomeForm.h"
#include "options/OptionRules.h"
#include "options/SettingsStore.h"
#include "run/RunState.h"
#include "services/DialogLanguage.h"
#include "services/Help.h"
#include "services/MessageBoxes.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>

namespace {

constexpr float ClientWidth = 7455;
constexpr float ClientHeight = 4590;
constexpr float FrameLeft = 1320;
constexpr float FrameTop = 120;
constexpr float LeftColumn = FrameLeft + 180;
constexpr float ValueColumn = FrameLeft + 1980;
constexpr float RightColumn = FrameLeft + 3060;
constexpr float RowHeight = 255;
constexpr float ButtonTop = 4095;
constexpr float ButtonHeight = 375;

}  // namespace

OtherOptionsForm::OtherOptionsForm(DialogRuntime& runtime, Forms& forms)
    : Form(runtime), m_forms(forms)
{
    setObjectName(QStringLiteral("OtherOptionsForm"));
    setWindowTitle(QStringLiteral("Convert PDF to Word"));
    SetFixedClientSizeTwips(ClientWidth, ClientHeight);

    auto place = [this](QWidget* control, const char* name, float left, float top, float width,
                        float height) {
        control->setObjectName(QString::fromLatin1(name));
        PlaceTwips(*control, left, top, width, height);
    };
    auto makeLabel = [this, &place](const char* name, const QString& text, float left, float top,
                                    float width) {
        auto* label = new QLabel(text, this);
        place(label, name, left, top, width, RowHeight);
        return label;
    };
    auto makeCheck = [this, &place](const char* name, const QString& text, float left, float top) {
        auto* check = new QCheckBox(text, this);
        place(check, name, left, top, 2760, RowHeight);
        return check;
    };
    auto makeButton = [this, &place](const char* name, const QString& text, float left) {
        auto* button = new QPushButton(text, this);
        button->setAutoDefault(false);
        place(button, name, left, ButtonTop, 1095, ButtonHeight);
        return button;
    };
    auto makeFileImage = [this, &place](const char* name, OptionPicture picture, float left) {
        auto* image = new QLabel(this);
        image->setAlignment(Qt::AlignCenter);
        image->setPixmap(DrawOptionPicture(picture));
        place(image, name, left, FrameTop + 3180, 480, 480);
        // The file pictures answer a click like their option buttons.
        image->installEventFilter(this);
        return image;
    };

    m_picture1 = new QLabel(this);
    place(m_picture1, "Picture1", 0, 0, 1200, ClientHeight);
    m_picture1->setPixmap(DrawPageDecoration(m_picture1->width(), m_picture1->height()));

    m_optionExtRtf = new QRadioButton(QStringLiteral(".RTF"), this);
    place(m_optionExtRtf, "OptionExtRtf", FrameLeft + 4140, FrameTop + 3300, 900, RowHeight);
    m_optionExtDoc = new QRadioButton(QStringLiteral(".DOC"), this);
    place(m_optionExtDoc, "OptionExtDoc", FrameLeft + 2520, FrameTop + 3300, 900, RowHeight);

    m_comboImage = new QComboBox(this);
    m_comboImage->setEditable(false);
    m_comboImage->addItems({QStringLiteral("JPEG"), QStringLiteral("BMP")});
    place(m_comboImage, "ComboImage", ValueColumn, FrameTop + 2160, 1200, 330);

    m_checkWordArt =
        makeCheck("CheckWordArt", QStringLiteral("Detect Word &Art"), LeftColumn, FrameTop + 1740);
    m_checkHeader = makeCheck("CheckHeader", QStringLiteral("&Include Header and Footer"),
                              RightColumn, FrameTop + 1380);
    m_checkSub = makeCheck("CheckSub", QStringLiteral("&Substitute Font Type"), RightColumn,
                           FrameTop + 1020);
    m_checkResize = makeCheck("CheckResize", QStringLiteral("&Resize Font to Fit Paragraph"),
                              LeftColumn, FrameTop + 1380);
    m_checkPreserve = makeCheck("CheckPreserve", QStringLiteral("Preserve &Paragraph"), LeftColumn,
                                FrameTop + 1020);

    m_sliderQuality = new QSlider(Qt::Horizontal, this);
    m_sliderQuality->setRange(10, 100);
    m_sliderQuality->setTickInterval(10);
    m_sliderQuality->setTickPosition(QSlider::TicksBelow);
    m_sliderQuality->setSingleStep(5);
    m_sliderQuality->setPageStep(10);
    place(m_sliderQuality, "SliderQuality", ValueColumn, FrameTop + 2610, 2520, 435);

    m_labelQuality =
        makeLabel("LabelQuality", QStringLiteral("###"), FrameLeft + 4680, FrameTop + 2700, 420);
    m_labelQuality->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_labelPercent =
        makeLabel("LabelPercent", QStringLiteral("%"), FrameLeft + 5130, FrameTop + 2700, 240);
    m_labelImageFormat = makeLabel("LabelImageFormat", QStringLiteral("Image Format:"), LeftColumn,
                                   FrameTop + 2205, 1740);

    m_labelQualityBox = new QLabel(this);
    place(m_labelQualityBox, "LabelQualityBox", FrameLeft + 4620, FrameTop + 2670, 840, 315);
    // Drawn over the quality display, so it has a frame and nothing else.
    m_labelQualityBox->setFrameStyle(QFrame::Panel | QFrame::Sunken);
    m_labelQualityBox->setAttribute(Qt::WA_TransparentForMouseEvents);

    m_labelOutputFormat = makeLabel("LabelOutputFormat", QStringLiteral("Output Format:"),
                                    LeftColumn, FrameTop + 3300, 1740);
    m_imageDoc = makeFileImage("ImageDoc", OptionPicture::DocFile, ValueColumn);
    m_imageRtf = makeFileImage("ImageRtf", OptionPicture::RtfFile, FrameLeft + 3600);
    m_labelImageQuality = makeLabel("LabelImageQuality", QStringLiteral("Image Quality:"),
                                    LeftColumn, FrameTop + 2700, 1740);

    m_labelDocumentTypeText = makeLabel("LabelDocumentTypeText", QStringLiteral("Document Type:"),
                                        LeftColumn, FrameTop + 300, 1740);
    m_labelDocumentType = new LinkLabel(this);
    m_labelDocumentType->setText(QStringLiteral("..."));
    place(m_labelDocumentType, "LabelDocumentType", ValueColumn, FrameTop + 300, 3840, RowHeight);
    m_labelConversionMethodText =
        makeLabel("LabelConversionMethodText", QStringLiteral("Conversion Option:"), LeftColumn,
                  FrameTop + 600, 1740);
    m_labelConversionMethod = new LinkLabel(this);
    m_labelConversionMethod->setText(QStringLiteral("..."));
    place(m_labelConversionMethod, "LabelConversionMethod", ValueColumn, FrameTop + 600, 3840,
          RowHeight);

    m_buttonDone = makeButton("ButtonDone", QStringLiteral("&Done"), 6240);
    m_buttonDone->setDefault(true);
    m_buttonHelp = makeButton("ButtonHelp", QStringLiteral("&Help"), FrameLeft);

    m_frameAdvancedOptions = new QGroupBox(QStringLiteral("Advanced Options"), this);
    place(m_frameAdvancedOptions, "FrameAdvancedOptions", FrameLeft, FrameTop, 6015, 3840);
    // The frame comes last and so lies over the controls it surrounds; clicks go through it.
    m_frameAdvancedOptions->setAttribute(Qt::WA_TransparentForMouseEvents);

    setTabOrder(m_checkPreserve, m_checkSub);
    setTabOrder(m_checkSub, m_checkResize);
    setTabOrder(m_checkResize, m_checkHeader);
    setTabOrder(m_checkHeader, m_checkWordArt);
    setTabOrder(m_checkWordArt, m_comboImage);
    setTabOrder(m_comboImage, m_sliderQuality);
    setTabOrder(m_sliderQuality, m_optionExtDoc);
    setTabOrder(m_optionExtDoc, m_optionExtRtf);
    setTabOrder(m_optionExtRtf, m_buttonHelp);
    setTabOrder(m_buttonHelp, m_buttonDone);

    // A box changed by code raises its click event as much as one changed by the user.
    connect(m_checkHeader, &QCheckBox::toggled, this,
            Handler(&OtherOptionsForm::CheckHeader_Click));
    connect(m_comboImage, &QComboBox::currentIndexChanged, this,
            Handler(&OtherOptionsForm::ComboImage_Click));
    connect(m_sliderQuality, &QSlider::valueChanged, this,
            Handler(&OtherOptionsForm::SliderQuality_Change));
    connect(m_optionExtDoc, &QRadioButton::toggled, this, [this](bool on) {
        if (on)
            OptionExtDoc_Click();
    });
    connect(m_optionExtRtf, &QRadioButton::toggled, this, [this](bool on) {
        if (on)
            OptionExtRtf_Click();
    });
    connect(m_labelDocumentType, &LinkLabel::clicked, this,
            Handler(&OtherOptionsForm::LabelDocumentType_Click));
    connect(m_labelConversionMethod, &LinkLabel::clicked, this,
            Handler(&OtherOptionsForm::LabelConversionMethod_Click));
    connect(m_buttonDone, &QPushButton::clicked, this,
            Handler(&OtherOptionsForm::ButtonDone_Click));
    connect(m_buttonHelp, &QPushButton::clicked, this,
            Handler(&OtherOptionsForm::ButtonHelp_Click));
}

void OtherOptionsForm::Form_Load()
{
    ApplyDialogLanguage(*this, {
                                   {{1901}, CaptionOf(this)},
                                   {{1902}, CaptionOf(m_frameAdvancedOptions)},
                                   {{1903}, CaptionOf(m_labelDocumentTypeText)},
                                   {{1904}, CaptionOf(m_labelConversionMethodText)},
                                   {{1905}, CaptionOf(m_checkPreserve)},
                                   {{1906}, CaptionOf(m_checkResize)},
                                   {{1907}, CaptionOf(m_checkSub)},
                                   {{1908}, CaptionOf(m_checkHeader)},
                                   {{1909}, CaptionOf(m_labelImageFormat)},
                                   {{1910}, CaptionOf(m_checkWordArt)},
                                   {{1911}, CaptionOf(m_labelImageQuality)},
                                   {{1912}, CaptionOf(m_labelOutputFormat)},
                                   {{1913}, CaptionOf(m_buttonHelp)},
                                   {{1914}, CaptionOf(m_buttonDone)},
                               });
}

void OtherOptionsForm::Form_Activate()
{
    LoadOptions();
}

void OtherOptionsForm::LoadOptions()
{
    RunState& state = m_forms.Context().state;
    state.DocumentType = KnownDocumentType(state.DocumentType);
    SetControlText(*m_labelDocumentType, DocumentTypeName(state.DocumentType));
    state.ConversionMethod = KnownConversionMethod(state.ConversionMethod);
    SetControlText(*m_labelConversionMethod, ConversionMethodName(state.ConversionMethod));

    // Only a field of 1 touches its box: a box the user cleared on an earlier visit stays so.
    const QList<std::pair<QCheckBox*, qint16>> textFeatures = {
        {m_checkPreserve, state.MergeParagraph},
        {m_checkSub, state.AdjustFontNames},
        {m_checkResize, state.ShrinkFonts},
        {m_checkHeader, state.DetectHeader},
    };
    for (const auto& [box, field] : textFeatures) {
        if (field == 1)
            box->setChecked(true);
    }
    const AdvancedControls controls = AdvancedControlsFor(state, state.HostedByWord != 0);
    for (const auto& [box, field] : textFeatures)
        box->setEnabled(controls.textFeatures);
    m_checkHeader->setEnabled(controls.header);
    if (controls.headerLocked)
        m_checkHeader->setChecked(true);
    if (state.WordArt == 1)
        m_checkWordArt->setChecked(true);

    m_comboImage->setCurrentIndex(state.ImageFormat == 1 ? 1 : 0);
    ComboImage_Click();

    m_sliderQuality->setValue(state.JpegQuality);
    m_labelQuality->setText(QString::number(m_sliderQuality->value()));

    if (state.DocumentFormat != 1)
        state.DocumentFormat = 2;
    // The word processor we work for takes its own format only.
    const bool doc = state.DocumentFormat == 1 || !controls.richTextFormat;
    (doc ? m_optionExtDoc : m_optionExtRtf)->setChecked(true);
    if (doc)
        OptionExtDoc_Click();
    else
        OptionExtRtf_Click();
    m_optionExtRtf->setEnabled(controls.richTextFormat);
    m_imageRtf->setEnabled(controls.richTextFormat);
}

void OtherOptionsForm::UpdateOptions()
{
    RunState& state = m_forms.Context().state;
    state.MergeParagraph = m_checkPreserve->isChecked() ? 1 : 0;
    state.AdjustFontNames = m_checkSub->isChecked() ? 1 : 0;
    state.ShrinkFonts = m_checkResize->isChecked() ? 1 : 0;
    state.DetectHeader = m_checkHeader->isChecked() ? 1 : 0;
    state.WordArt = m_checkWordArt->isChecked() ? 1 : 0;
    state.ImageFormat = m_comboImage->currentIndex() == 1 ? 1 : 0;
    state.JpegQuality = static_cast<qint16>(m_sliderQuality->value());
    if (m_optionExtDoc->isChecked())
        state.DocumentFormat = 1;
    else if (m_optionExtRtf->isChecked())
        state.DocumentFormat = 2;
}

void OtherOptionsForm::CheckHeader_Click()
{
    const RunState& state = m_forms.Context().state;
    if (m_checkHeader->isChecked() ||
        !AdvancedControlsFor(state, state.HostedByWord != 0).headerLocked)
        return;
    // A pleading's header lines are part of its layout; the box goes back on at once, and
    // the event that raises finds it on.
    m_checkHeader->setChecked(true);
    ShowMessage(this,
                LocalText(5901, QStringLiteral("This feature cannot be turned off while the "
                                               "\"Legal Pleading PDF\" document type is selected")),
                MessageIcon::Information, MessageButtons::Ok);
}

void OtherOptionsForm::ComboImage_Click()
{
    // The quality kept for JPEG is left as it is while a bitmap is chosen.
    const bool jpeg = QualityApplies(m_comboImage->currentIndex() == 1 ? 1 : 0);
    for (QWidget* control :
         {static_cast<QWidget*>(m_sliderQuality), static_cast<QWidget*>(m_labelImageQuality),
          static_cast<QWidget*>(m_labelQuality), static_cast<QWidget*>(m_labelPercent)})
        control->setEnabled(jpeg);
}

void OtherOptionsForm::SliderQuality_Change()
{
    m_labelQuality->setText(QString::number(m_sliderQuality->value()));
}

void OtherOptionsForm::ImageDoc_Click()
{
    m_optionExtDoc->setChecked(true);
    OptionExtDoc_Click();
    m_optionExtDoc->setFocus();
}

void OtherOptionsForm::ImageRtf_Click()
{
    m_optionExtRtf->setChecked(true);
    OptionExtRtf_Click();
    m_optionExtRtf->setFocus();
}

void OtherOptionsForm::OptionExtDoc_Click()
{
    m_comboImage->setEnabled(true);
}

void OtherOptionsForm::OptionExtRtf_Click()
{
    m_comboImage->setEnabled(true);
}

bool OtherOptionsForm::eventFilter(QObject* watched, QEvent* event)
{
    if ((watched == m_imageDoc || watched == m_imageRtf) &&
        event->type() == QEvent::MouseButtonRelease) {
        auto* image = qobject_cast<QLabel*>(watched);
        const auto* mouse = dynamic_cast<const QMouseEvent*>(event);
        if (image && mouse && image->isEnabled() && mouse->button() == Qt::LeftButton &&
            image->rect().contains(mouse->position().toPoint())) {
            if (image == m_imageDoc)
                ImageDoc_Click();
            else
                ImageRtf_Click();
            return true;
        }
    }
    return Form::eventFilter(watched, event);
}

void OtherOptionsForm::LabelDocumentType_Click()
{
    UpdateOptions();
    LeadOnTo(*this, m_forms.DocumentType(), m_forms.Welcome());
}

void OtherOptionsForm::LabelConversionMethod_Click()
{
    UpdateOptions();
    LeadOnTo(*this, m_forms.ConversionMethod(), m_forms.Welcome());
}

void OtherOptionsForm::ButtonDone_Click()
{
    UpdateOptions();
    AppContext& context = m_forms.Context();
    SaveOptions(context.state, context.settings, false);
    Runtime().Unload(*this);
}

void OtherOptionsForm::ButtonHelp_Click()
{
    AppContext& context = m_forms.Context();
    ShowHelpTopic(context.help, context.applicationDir, HelpTopics::Advanced, this);
}

QString OtherOptionsForm::HelpTopic() const
{
    return HelpTopics::Advanced;
}
