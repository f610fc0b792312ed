#include "dialogs/ChoicePage.h"

#include "core/AppContext.h"
#include "dialogs/Forms.h"
#include "dialogs/Placement.h"
#include "dialogs/WelcomeForm.h"
#include "options/SettingsStore.h"
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
constexpr float RowHeight = 255;
constexpr float ButtonTop = 4290;
constexpr float ButtonHeight = 375;
// Top of each choice's row; its explanation sits right below it.
constexpr std::array<float, 3> ChoiceTops = {FrameTop + 660, FrameTop + 1680, FrameTop + 2700};

}  // namespace

ChoicePage::ChoicePage(DialogRuntime& runtime, Forms& forms, const char* objectName)
    : Form(runtime), m_forms(forms)
{
    setObjectName(QString::fromLatin1(objectName));
    setWindowTitle(QStringLiteral("Convert PDF to Word"));
    SetFixedClientSizeTwips(ClientWidth, ClientHeight);
}

void ChoicePage::Build(const std::array<Choice, 3>& choices, const Layout& layout,
                       const QString& nextCaption, const char* frameName, const QString& frameTitle,
                       const std::function<void()>& addHeader)
{
    auto makeButton = [this](const char* name, const QString& text, float left, float width) {
        auto* button = new QPushButton(text, this);
        button->setObjectName(QString::fromLatin1(name));
        button->setAutoDefault(false);
        PlaceTwips(*button, left, ButtonTop, width, ButtonHeight);
        return button;
    };
    m_buttonNext = makeButton("ButtonNext", nextCaption, 3720, 2400);
    m_buttonNext->setDefault(true);

    m_picture1 = new QLabel(this);
    m_picture1->setObjectName(QStringLiteral("Picture1"));
    PlaceTwips(*m_picture1, 0, 0, 1200, ClientHeight);
    m_picture1->setPixmap(DrawPageDecoration(m_picture1->width(), m_picture1->height()));

    for (std::size_t i = 0; i < choices.size(); ++i) {
        const Choice& choice = choices[i];
        auto* option = new QRadioButton(choice.caption, this);
        option->setObjectName(QString::fromLatin1(choice.optionName));
        PlaceTwips(*option, OptionLeft, ChoiceTops[i], layout.optionWidth, RowHeight);
        m_options[i] = option;

        auto* explanation = new QLabel(choice.explanation, this);
        explanation->setObjectName(QString::fromLatin1(choice.explanationName));
        explanation->setWordWrap(true);
        explanation->setAlignment(Qt::AlignLeft | Qt::AlignTop);
        PlaceTwips(*explanation, ExplanationLeft, ChoiceTops[i] + 285, layout.explanationWidth,
                   690);
        m_explanations[i] = explanation;

        // The three examples share one place; only the chosen one's is shown.
        auto* picture = new QLabel(this);
        picture->setObjectName(QString::fromLatin1(choice.pictureName));
        picture->setAlignment(Qt::AlignCenter);
        picture->setPixmap(DrawOptionPicture(choice.picture));
        PlaceTwips(*picture, FrameLeft + layout.pictureLeft, FrameTop + 660, 1800, 2340);
        picture->hide();
        m_pictures[i] = picture;

        // Selecting an option by keyboard, mouse or code shows its picture.
        connect(option, &QRadioButton::toggled, this, [this, i](bool on) {
            if (on)
                ShowPictureOf(static_cast<int>(i));
        });
    }
    if (addHeader)
        addHeader();

    m_buttonHelp = makeButton("ButtonHelp", QStringLiteral("&Help"), FrameLeft, 1095);
    m_buttonDone = makeButton("ButtonDone", QStringLiteral("&Done"), 6240, 1095);

    m_frame = new QGroupBox(frameTitle, this);
    m_frame->setObjectName(QString::fromLatin1(frameName));
    PlaceTwips(*m_frame, FrameLeft, FrameTop, 6015, 4035);
    // The frame comes last and so lies over the controls it surrounds; clicks go through it.
    m_frame->setAttribute(Qt::WA_TransparentForMouseEvents);

    setTabOrder(m_options[0], m_options[1]);
    setTabOrder(m_options[1], m_options[2]);
    setTabOrder(m_options[2], m_buttonHelp);
    setTabOrder(m_buttonHelp, m_buttonNext);
    setTabOrder(m_buttonNext, m_buttonDone);

    connect(m_buttonNext, &QPushButton::clicked, this, Handler(&ChoicePage::ButtonNext_Click));
    connect(m_buttonDone, &QPushButton::clicked, this, Handler(&ChoicePage::ButtonDone_Click));
    connect(m_buttonHelp, &QPushButton::clicked, this, Handler(&ChoicePage::ButtonHelp_Click));
}

void ChoicePage::Select(int choice)
{
    m_options.at(static_cast<std::size_t>(choice))->setChecked(true);
    ShowPictureOf(choice);
}

int ChoicePage::Selected() const
{
    for (std::size_t i = 0; i < m_options.size(); ++i) {
        if (m_options[i]->isChecked())
            return static_cast<int>(i);
    }
    return -1;
}

void ChoicePage::SetChoicesEnabled(bool enabled, int except)
{
    for (std::size_t i = 0; i < m_options.size(); ++i) {
        if (static_cast<int>(i) == except)
            continue;
        m_options[i]->setEnabled(enabled);
        m_explanations[i]->setEnabled(enabled);
    }
}

void ChoicePage::ShowPictureOf(int choice)
{
    for (std::size_t i = 0; i < m_pictures.size(); ++i)
        m_pictures[i]->setVisible(static_cast<int>(i) == choice);
}

void ChoicePage::ButtonNext_Click()
{
    UpdateOptions();
    LeadOnTo(*this, NextPage(), m_forms.Welcome());
}

void ChoicePage::ButtonDone_Click()
{
    UpdateOptions();
    AppContext& context = m_forms.Context();
    SaveOptions(context.state, context.settings, false);
    Runtime().Unload(*this);
}

void ChoicePage::ButtonHelp_Click()
{
    AppContext& context = m_forms.Context();
    ShowHelpTopic(context.help, context.applicationDir, HelpTopic(), this);
}
