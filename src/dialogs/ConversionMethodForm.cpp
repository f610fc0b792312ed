#include "dialogs/ConversionMethodForm.h"

#include "core/AppContext.h"
#include "dialogs/DocumentTypeForm.h"
#include "dialogs/Forms.h"
#include "dialogs/LinkLabel.h"
#include "dialogs/OptionNames.h"
#include "dialogs/OptionPictures.h"
#include "dialogs/OtherOptionsForm.h"
#include "dialogs/Placement.h"
#include "dialogs/WelcomeForm.h"
#include "options/SettingsStore.h"
#include "platform/UserLanguage.h"
#include "run/RunState.h"
#include "services/DialogLanguage.h"
#include "services/Help.h"

#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>

namespace {

constexpr float ClientWidth = 7455;
constexpr float ClientHeight = 4800;
constexpr float FrameLeft = 1320;
constexpr float FrameTop = 120;
constexpr float OptionLeft = FrameLeft + 180;
constexpr float ExplanationLeft = FrameLeft + 450;
constexpr float OptionWidth = 3720;
constexpr float ExplanationWidth = 3450;
constexpr float RowHeight = 255;
constexpr float ButtonTop = 4290;
constexpr float ButtonHeight = 375;

constexpr float PreserveTop = FrameTop + 660;
constexpr float ExactTop = FrameTop + 1680;
constexpr float FlowTop = FrameTop + 2700;

}  // namespace

ConversionMethodForm::ConversionMethodForm(DialogRuntime& runtime, Forms& forms)
    : Form(runtime), m_forms(forms)
{
    setObjectName(QStringLiteral("ConversionMethodForm"));
    setWindowTitle(QStringLiteral("Convert PDF to Word"));
    SetFixedClientSizeTwips(ClientWidth, ClientHeight);

    auto makeButton = [this](const char* name, const QString& text, float left, float width) {
        auto* button = new QPushButton(text, this);
        button->setObjectName(QString::fromLatin1(name));
        button->setAutoDefault(false);
        PlaceTwips(*button, left, ButtonTop, width, ButtonHeight);
        return button;
    };
    auto makeOption = [this](const char* name, const QString& text, float top) {
        auto* option = new QRadioButton(text, this);
        option->setObjectName(QString::fromLatin1(name));
        PlaceTwips(*option, OptionLeft, top, OptionWidth, RowHeight);
        return option;
    };
    // The three examples share one place; only the chosen method's is shown.
    auto makeImage = [this](const char* name, OptionPicture picture) {
        auto* image = new QLabel(this);
        image->setObjectName(QString::fromLatin1(name));
        image->setAlignment(Qt::AlignCenter);
        image->setPixmap(DrawOptionPicture(picture));
        PlaceTwips(*image, FrameLeft + 4035, FrameTop + 660, 1800, 2340);
        return image;
    };
    auto makeExplanation = [this](const char* name, const QString& text, float optionTop) {
        auto* label = new QLabel(text, this);
        label->setObjectName(QString::fromLatin1(name));
        label->setWordWrap(true);
        label->setAlignment(Qt::AlignLeft | Qt::AlignTop);
        PlaceTwips(*label, ExplanationLeft, optionTop + 285, ExplanationWidth, 690);
        return label;
    };

    m_buttonNext = makeButton("ButtonNext", QStringLiteral("&Advanced Options >"), 3720, 2400);
    m_buttonNext->setDefault(true);

    m_picture1 = new QLabel(this);
    m_picture1->setObjectName(QStringLiteral("Picture1"));
    PlaceTwips(*m_picture1, 0, 0, 1200, ClientHeight);
    m_picture1->setPixmap(DrawPageDecoration(m_picture1->width(), m_picture1->height()));

    m_optionPreserve = makeOption(
        "OptionPreserve", QStringLiteral("Exact Placement using &Tabs and Spaces"), PreserveTop);
    m_optionExact =
        makeOption("OptionExact", QStringLiteral("Exact Placement using Text &Boxes"), ExactTop);
    m_optionFlow = makeOption("OptionFlow", QStringLiteral("&Flow the text and graphics"), FlowTop);
    m_imageExact = makeImage("ImageExact", OptionPicture::TextBoxes);
    m_imagePreserve = makeImage("ImagePreserve", OptionPicture::TabsAndSpaces);
    m_imageFlow = makeImage("ImageFlow", OptionPicture::FlowingText);
    m_labelOptionPreserve = makeExplanation(
        "LabelOptionPreserve",
        QStringLiteral("Select this if you need to preserve the look-and-feel of the PDF "
                       "document and to edit the text."),
        PreserveTop);
    m_labelOptionExact =
        makeExplanation("LabelOptionExact",
                        QStringLiteral("Select this if you absolutely need to preserve the "
                                       "look-and-feel of the PDF document."),
                        ExactTop);
    m_labelOptionFlow = makeExplanation(
        "LabelOptionFlow",
        QStringLiteral("Select this to continuously flow the text and graphics for maximum "
                       "editability.  The original layout will be discarded."),
        FlowTop);

    m_labelDocumentTypeText = new QLabel(QStringLiteral("Document Type:"), this);
    m_labelDocumentTypeText->setObjectName(QStringLiteral("LabelDocumentTypeText"));
    PlaceTwips(*m_labelDocumentTypeText, OptionLeft, FrameTop + 300, 1440, RowHeight);

    m_labelDocumentType = new LinkLabel(this);
    m_labelDocumentType->setObjectName(QStringLiteral("LabelDocumentType"));
    m_labelDocumentType->setText(QStringLiteral("..."));
    PlaceTwips(*m_labelDocumentType, OptionLeft + 1500, FrameTop + 300, 3900, RowHeight);

    m_buttonDone = makeButton("ButtonDone", QStringLiteral("&Done"), 6240, 1095);
    m_buttonHelp = makeButton("ButtonHelp", QStringLiteral("&Help"), FrameLeft, 1095);

    m_frameConversionOptions = new QGroupBox(QStringLiteral("PDF Conversion Options"), this);
    m_frameConversionOptions->setObjectName(QStringLiteral("FrameConversionOptions"));
    PlaceTwips(*m_frameConversionOptions, FrameLeft, FrameTop, 6015, 4035);
    // The frame comes last and so lies over the controls it surrounds; clicks go through it.
    m_frameConversionOptions->setAttribute(Qt::WA_TransparentForMouseEvents);

    m_imageExact->hide();
    m_imagePreserve->hide();
    m_imageFlow->hide();

    setTabOrder(m_optionPreserve, m_optionExact);
    setTabOrder(m_optionExact, m_optionFlow);
    setTabOrder(m_optionFlow, m_buttonHelp);
    setTabOrder(m_buttonHelp, m_buttonNext);
    setTabOrder(m_buttonNext, m_buttonDone);

    // Selecting an option by keyboard, mouse or code all raise its click logic.
    connect(m_optionPreserve, &QRadioButton::toggled, this, [this](bool on) {
        if (on)
            OptionPreserve_Click();
    });
    connect(m_optionExact, &QRadioButton::toggled, this, [this](bool on) {
        if (on)
            OptionExact_Click();
    });
    connect(m_optionFlow, &QRadioButton::toggled, this, [this](bool on) {
        if (on)
            OptionFlow_Click();
    });
    connect(m_buttonNext, &QPushButton::clicked, this,
            Handler(&ConversionMethodForm::ButtonNext_Click));
    connect(m_labelDocumentType, &LinkLabel::clicked, this,
            Handler(&ConversionMethodForm::LabelDocumentType_Click));
    connect(m_buttonDone, &QPushButton::clicked, this,
            Handler(&ConversionMethodForm::ButtonDone_Click));
    connect(m_buttonHelp, &QPushButton::clicked, this,
            Handler(&ConversionMethodForm::ButtonHelp_Click));
}

void ConversionMethodForm::Form_Load()
{
    const bool localised =
        ApplyDialogLanguage(*this, {
                                       {{1801}, CaptionOf(this)},
                                       {{1802}, CaptionOf(m_frameConversionOptions)},
                                       {{1803}, CaptionOf(m_labelDocumentTypeText)},
                                       {{1804, 1805}, CaptionOf(m_optionExact)},
                                       {{1806}, CaptionOf(m_labelOptionExact)},
                                       {{1807, 1808}, CaptionOf(m_optionPreserve)},
                                       {{1809}, CaptionOf(m_labelOptionPreserve)},
                                       {{1810, 1811}, CaptionOf(m_optionFlow)},
                                       {{1812}, CaptionOf(m_labelOptionFlow)},
                                       {{1813}, CaptionOf(m_buttonHelp)},
                                       {{1814}, CaptionOf(m_buttonNext)},
                                       {{1815}, CaptionOf(m_buttonDone)},
                                   });
    if (!localised)
        return;
    LoadLocalisedPictures({{m_imageExact, 8}, {m_imagePreserve, 9}, {m_imageFlow, 10}});
}

void ConversionMethodForm::Form_Activate()
{
    LoadOptions();
}

void ConversionMethodForm::LoadOptions()
{
    RunState& state = m_forms.Context().state;
    switch (state.ConversionMethod) {
    case 1:
        m_optionPreserve->setChecked(true);
        OptionPreserve_Click();
        break;
    case 3:
        m_optionFlow->setChecked(true);
        OptionFlow_Click();
        break;
    default:
        state.ConversionMethod = 2;
        m_optionExact->setChecked(true);
        OptionExact_Click();
        break;
    }

    SetControlText(*m_labelDocumentType, DocumentTypeName(state.DocumentType));

    // A pleading's numbered lines survive only the tabs-and-spaces method.
    const bool legalPleading = state.DocumentType == 3;
    if (legalPleading) {
        state.ConversionMethod = 1;
        m_optionPreserve->setChecked(true);
        OptionPreserve_Click();
    }
    for (QWidget* control :
         {static_cast<QWidget*>(m_optionExact), static_cast<QWidget*>(m_labelOptionExact),
          static_cast<QWidget*>(m_optionFlow), static_cast<QWidget*>(m_labelOptionFlow)})
        control->setEnabled(!legalPleading);
}

bool ConversionMethodForm::UpdateOptions()
{
    RunState& state = m_forms.Context().state;
    if (m_optionPreserve->isChecked())
        state.ConversionMethod = 1;
    else if (m_optionFlow->isChecked())
        state.ConversionMethod = 3;
    else
        state.ConversionMethod = 2;
    return true;
}

void ConversionMethodForm::ShowOnly(QLabel* image)
{
    for (QLabel* each : {m_imagePreserve, m_imageExact, m_imageFlow})
        each->setVisible(each == image);
}

void ConversionMethodForm::OptionPreserve_Click()
{
    ShowOnly(m_imagePreserve);
}

void ConversionMethodForm::OptionExact_Click()
{
    ShowOnly(m_imageExact);
}

void ConversionMethodForm::OptionFlow_Click()
{
    ShowOnly(m_imageFlow);
}

void ConversionMethodForm::ButtonNext_Click()
{
    if (!UpdateOptions())
        return;
    LeadOnTo(*this, m_forms.OtherOptions(), m_forms.Welcome());
}

void ConversionMethodForm::LabelDocumentType_Click()
{
    if (!UpdateOptions())
        return;
    LeadOnTo(*this, m_forms.DocumentType(), m_forms.Welcome());
}

void ConversionMethodForm::ButtonDone_Click()
{
    if (!UpdateOptions())
        return;
    AppContext& context = m_forms.Context();
    SaveOptions(context.state, context.settings, false);
    Runtime().Unload(*this);
}

void ConversionMethodForm::ButtonHelp_Click()
{
    AppContext& context = m_forms.Context();
    ShowHelpTopic(context.help, context.applicationDir, HelpTopics::ConversionMethod, this);
}

QString ConversionMethodForm::HelpTopic() const
{
    return HelpTopics::ConversionMethod;
}
