#include "dialogs/DocumentTypeForm.h"

#include "core/AppContext.h"
#include "dialogs/ConversionMethodForm.h"
#include "dialogs/Forms.h"
#include "dialogs/OptionPictures.h"
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
constexpr float OptionWidth = 3600;
constexpr float ExplanationWidth = 3330;
constexpr float RowHeight = 255;
constexpr float ButtonTop = 4290;
constexpr float ButtonHeight = 375;

// Top of each option's row; its explanation sits right below it.
constexpr float SingleTop = FrameTop + 660;
constexpr float MultiTop = FrameTop + 1680;
constexpr float LegalTop = FrameTop + 2700;

}  // namespace

DocumentTypeForm::DocumentTypeForm(DialogRuntime& runtime, Forms& forms)
    : Form(runtime), m_forms(forms)
{
    setObjectName(QStringLiteral("DocumentTypeForm"));
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
    // The three examples share one place; only the chosen type's is shown.
    auto makeImage = [this](const char* name, OptionPicture picture) {
        auto* image = new QLabel(this);
        image->setObjectName(QString::fromLatin1(name));
        image->setAlignment(Qt::AlignCenter);
        image->setPixmap(DrawOptionPicture(picture));
        PlaceTwips(*image, FrameLeft + 3960, FrameTop + 660, 1800, 2340);
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

    m_buttonNext =
        makeButton("ButtonNext", QStringLiteral("PDF &Conversion Options >"), 3720, 2400);
    m_buttonNext->setDefault(true);

    m_picture1 = new QLabel(this);
    m_picture1->setObjectName(QStringLiteral("Picture1"));
    PlaceTwips(*m_picture1, 0, 0, 1200, ClientHeight);
    m_picture1->setPixmap(DrawPageDecoration(m_picture1->width(), m_picture1->height()));

    m_optionLegal = makeOption("OptionLegal", QStringLiteral("&Legal Pleading PDF"), LegalTop);
    m_optionSingle = makeOption("OptionSingle", QStringLiteral("&Single-Column PDF"), SingleTop);
    m_optionMulti = makeOption("OptionMulti", QStringLiteral("&Multi-Column PDF"), MultiTop);
    m_imageMulti = makeImage("ImageMulti", OptionPicture::MultiColumn);
    m_imageSingle = makeImage("ImageSingle", OptionPicture::SingleColumn);
    m_imageLegal = makeImage("ImageLegal", OptionPicture::Pleading);
    m_labelOptionLegal = makeExplanation(
        "LabelOptionLegal", QStringLiteral("Select this if your PDF is a legal pleading document."),
        LegalTop);
    m_labelOptionMulti = makeExplanation(
        "LabelOptionMulti",
        QStringLiteral("Select this if your PDF is complex and may contain multiple columns."),
        MultiTop);
    m_labelOptionSingle = makeExplanation(
        "LabelOptionSingle",
        QStringLiteral("Select this if your PDF is simple and contains no column at all."),
        SingleTop);

    m_labelDocumentTypeText =
        new QLabel(QStringLiteral("Choose a document type that best describe your PDF"), this);
    m_labelDocumentTypeText->setObjectName(QStringLiteral("LabelDocumentTypeText"));
    m_labelDocumentTypeText->setWordWrap(true);
    PlaceTwips(*m_labelDocumentTypeText, OptionLeft, FrameTop + 300, 5655, RowHeight);

    m_buttonHelp = makeButton("ButtonHelp", QStringLiteral("&Help"), FrameLeft, 1095);
    m_buttonDone = makeButton("ButtonDone", QStringLiteral("&Done"), 6240, 1095);

    m_frameDocumentType = new QGroupBox(QStringLiteral("PDF Document Type"), this);
    m_frameDocumentType->setObjectName(QStringLiteral("FrameDocumentType"));
    PlaceTwips(*m_frameDocumentType, FrameLeft, FrameTop, 6015, 4035);
    // The frame comes last and so lies over the controls it surrounds; clicks go through it.
    m_frameDocumentType->setAttribute(Qt::WA_TransparentForMouseEvents);

    m_imageSingle->hide();
    m_imageMulti->hide();
    m_imageLegal->hide();

    setTabOrder(m_optionSingle, m_optionMulti);
    setTabOrder(m_optionMulti, m_optionLegal);
    setTabOrder(m_optionLegal, m_buttonHelp);
    setTabOrder(m_buttonHelp, m_buttonNext);
    setTabOrder(m_buttonNext, m_buttonDone);

    // Selecting an option by keyboard, mouse or code all raise its click logic.
    connect(m_optionSingle, &QRadioButton::toggled, this, [this](bool on) {
        if (on)
            OptionSingle_Click();
    });
    connect(m_optionMulti, &QRadioButton::toggled, this, [this](bool on) {
        if (on)
            OptionMulti_Click();
    });
    connect(m_optionLegal, &QRadioButton::toggled, this, [this](bool on) {
        if (on)
            OptionLegal_Click();
    });
    connect(m_buttonNext, &QPushButton::clicked, this,
            Handler(&DocumentTypeForm::ButtonNext_Click));
    connect(m_buttonDone, &QPushButton::clicked, this,
            Handler(&DocumentTypeForm::ButtonDone_Click));
    connect(m_buttonHelp, &QPushButton::clicked, this,
            Handler(&DocumentTypeForm::ButtonHelp_Click));
}

void DocumentTypeForm::Form_Load()
{
    const bool localised =
        ApplyDialogLanguage(*this, {
                                       {{1701}, CaptionOf(this)},
                                       {{1702}, CaptionOf(m_frameDocumentType)},
                                       {{1703}, CaptionOf(m_labelDocumentTypeText)},
                                       {{1704, 1705}, CaptionOf(m_optionMulti)},
                                       {{1706}, CaptionOf(m_labelOptionMulti)},
                                       {{1707, 1708}, CaptionOf(m_optionSingle)},
                                       {{1709}, CaptionOf(m_labelOptionSingle)},
                                       {{1710, 1711}, CaptionOf(m_optionLegal)},
                                       {{1712}, CaptionOf(m_labelOptionLegal)},
                                       {{1713}, CaptionOf(m_buttonHelp)},
                                       {{1714}, CaptionOf(m_buttonNext)},
                                       {{1715}, CaptionOf(m_buttonDone)},
                                   });
    if (!localised)
        return;
    LoadLocalisedPictures({{m_imageSingle, 5}, {m_imageMulti, 6}, {m_imageLegal, 7}});
}

void DocumentTypeForm::Form_Activate()
{
    LoadOptions();
}

void DocumentTypeForm::LoadOptions()
{
    RunState& state = m_forms.Context().state;
    switch (state.DocumentType) {
    case 2:
        m_optionMulti->setChecked(true);
        OptionMulti_Click();
        break;
    case 3:
        m_optionLegal->setChecked(true);
        OptionLegal_Click();
        break;
    default:
        state.DocumentType = 1;
        m_optionSingle->setChecked(true);
        OptionSingle_Click();
        break;
    }
}

bool DocumentTypeForm::UpdateOptions()
{
    RunState& state = m_forms.Context().state;
    if (m_optionMulti->isChecked()) {
        state.DocumentType = 2;
    } else if (m_optionLegal->isChecked()) {
        // A pleading needs its header lines and the method that keeps them in place.
        state.DocumentType = 3;
        state.DetectHeader = 1;
        state.ConversionMethod = 1;
    } else {
        state.DocumentType = 1;
    }
    return true;
}

void DocumentTypeForm::ShowOnly(QLabel* image)
{
    for (QLabel* each : {m_imageSingle, m_imageMulti, m_imageLegal})
        each->setVisible(each == image);
}

void DocumentTypeForm::OptionSingle_Click()
{
    ShowOnly(m_imageSingle);
}

void DocumentTypeForm::OptionMulti_Click()
{
    ShowOnly(m_imageMulti);
}

void DocumentTypeForm::OptionLegal_Click()
{
    ShowOnly(m_imageLegal);
}

void DocumentTypeForm::ButtonNext_Click()
{
    if (!UpdateOptions())
        return;
    LeadOnTo(*this, m_forms.ConversionMethod(), m_forms.Welcome());
}

void DocumentTypeForm::ButtonDone_Click()
{
    if (!UpdateOptions())
        return;
    AppContext& context = m_forms.Context();
    SaveOptions(context.state, context.settings, false);
    Runtime().Unload(*this);
}

void DocumentTypeForm::ButtonHelp_Click()
{
    AppContext& context = m_forms.Context();
    ShowHelpTopic(context.help, context.applicationDir, HelpTopics::DocumentType, this);
}

QString DocumentTypeForm::HelpTopic() const
{
    return HelpTopics::DocumentType;
}
