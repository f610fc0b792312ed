#include "dialogs/ConversionMethodForm.h"

#include "core/AppContext.h"
#include "dialogs/DocumentTypeForm.h"
#include "dialogs/Forms.h"
#include "dialogs/LinkLabel.h"
#include "dialogs/OptionNames.h"
#include "dialogs/OtherOptionsForm.h"
#include "dialogs/Placement.h"
#include "dialogs/WelcomeForm.h"
#include "options/OptionRules.h"
#include "run/RunState.h"
#include "services/DialogLanguage.h"
#include "services/Help.h"

#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>

namespace {

// The choices from the top, and the method each stands for.
constexpr std::array<qint16, 3> MethodOfChoice = {1, 2, 3};

}  // namespace

ConversionMethodForm::ConversionMethodForm(DialogRuntime& runtime, Forms& forms)
    : ChoicePage(runtime, forms, "ConversionMethodForm")
{
    Build(
        {{
            {"OptionPreserve", QStringLiteral("Exact Placement using &Tabs and Spaces"),
             "LabelOptionPreserve",
             QStringLiteral("Select this if you need to preserve the look-and-feel of the PDF "
                            "document and to edit the text."),
             "ImagePreserve", OptionPicture::TabsAndSpaces},
            {"OptionExact", QStringLiteral("Exact Placement using Text &Boxes"), "LabelOptionExact",
             QStringLiteral("Select this if you absolutely need to preserve the look-and-feel of "
                            "the PDF document."),
             "ImageExact", OptionPicture::TextBoxes},
            {"OptionFlow", QStringLiteral("&Flow the text and graphics"), "LabelOptionFlow",
             QStringLiteral("Select this to continuously flow the text and graphics for maximum "
                            "editability.  The original layout will be discarded."),
             "ImageFlow", OptionPicture::FlowingText},
        }},
        {3720, 3450, 4035}, QStringLiteral("&Advanced Options >"), "FrameConversionOptions",
        QStringLiteral("PDF Conversion Options"), [this] {
            m_labelDocumentTypeText = new QLabel(QStringLiteral("Document Type:"), this);
            m_labelDocumentTypeText->setObjectName(QStringLiteral("LabelDocumentTypeText"));
            PlaceTwips(*m_labelDocumentTypeText, 1500, 420, 1440, 255);
            m_labelDocumentType = new LinkLabel(this);
            m_labelDocumentType->setObjectName(QStringLiteral("LabelDocumentType"));
            m_labelDocumentType->setText(QStringLiteral("..."));
            PlaceTwips(*m_labelDocumentType, 3000, 420, 3900, 255);
        });
    connect(m_labelDocumentType, &LinkLabel::clicked, this,
            Handler(&ConversionMethodForm::LabelDocumentType_Click));
}

void ConversionMethodForm::Form_Load()
{
    const bool localised =
        ApplyDialogLanguage(*this, {
                                       {{1801}, CaptionOf(this)},
                                       {{1802}, CaptionOf(m_frame)},
                                       {{1803}, CaptionOf(m_labelDocumentTypeText)},
                                       {{1804, 1805}, CaptionOf(m_options[1])},
                                       {{1806}, CaptionOf(m_explanations[1])},
                                       {{1807, 1808}, CaptionOf(m_options[0])},
                                       {{1809}, CaptionOf(m_explanations[0])},
                                       {{1810, 1811}, CaptionOf(m_options[2])},
                                       {{1812}, CaptionOf(m_explanations[2])},
                                       {{1813}, CaptionOf(m_buttonHelp)},
                                       {{1814}, CaptionOf(m_buttonNext)},
                                       {{1815}, CaptionOf(m_buttonDone)},
                                   });
    if (localised)
        LoadLocalisedPictures({{m_pictures[1], 8}, {m_pictures[0], 9}, {m_pictures[2], 10}});
}

void ConversionMethodForm::Form_Activate()
{
    LoadOptions();
}

void ConversionMethodForm::LoadOptions()
{
    RunState& state = m_forms.Context().state;
    state.ConversionMethod = ShownConversionMethod(state);
    Select(static_cast<int>(
        std::find(MethodOfChoice.begin(), MethodOfChoice.end(), state.ConversionMethod) -
        MethodOfChoice.begin()));
    state.DocumentType = KnownDocumentType(state.DocumentType);
    SetControlText(*m_labelDocumentType, DocumentTypeName(state.DocumentType));
    SetChoicesEnabled(MethodIsOpen(state), 0);
}

void ConversionMethodForm::UpdateOptions()
{
    // With nothing selected (a page never shown) the method is text boxes.
    const int chosen = Selected();
    m_forms.Context().state.ConversionMethod =
        chosen < 0 ? KnownConversionMethod(0) : MethodOfChoice.at(static_cast<std::size_t>(chosen));
}

Form& ConversionMethodForm::NextPage()
{
    return m_forms.OtherOptions();
}

void ConversionMethodForm::LabelDocumentType_Click()
{
    UpdateOptions();
    LeadOnTo(*this, m_forms.DocumentType(), m_forms.Welcome());
}

QString ConversionMethodForm::HelpTopic() const
{
    return HelpTopics::ConversionMethod;
}
