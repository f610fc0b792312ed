#include "dialogs/DocumentTypeForm.h"

#include "core/AppContext.h"
#include "dialogs/ConversionMethodForm.h"
#include "dialogs/Forms.h"
#include "options/OptionRules.h"
#include "run/RunState.h"
#include "services/DialogLanguage.h"
#include "services/Help.h"

#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>

namespace {

// The choices from the top, and the document type each stands for.
constexpr std::array<qint16, 3> TypeOfChoice = {1, 2, 3};

}  // namespace

DocumentTypeForm::DocumentTypeForm(DialogRuntime& runtime, Forms& forms)
    : ChoicePage(runtime, forms, "DocumentTypeForm")
{
    Build(
        {{
            {"OptionSingle", QStringLiteral("&Single-Column PDF"), "LabelOptionSingle",
             QStringLiteral("Select this if your PDF is simple and contains no column at all."),
             "ImageSingle", OptionPicture::SingleColumn},
            {"OptionMulti", QStringLiteral("&Multi-Column PDF"), "LabelOptionMulti",
             QStringLiteral("Select this if your PDF is complex and may contain multiple columns."),
             "ImageMulti", OptionPicture::MultiColumn},
            {"OptionLegal", QStringLiteral("&Legal Pleading PDF"), "LabelOptionLegal",
             QStringLiteral("Select this if your PDF is a legal pleading document."), "ImageLegal",
             OptionPicture::Pleading},
        }},
        {3600, 3330, 3960}, QStringLiteral("PDF &Conversion Options >"), "FrameDocumentType",
        QStringLiteral("PDF Document Type"), [this] {
            m_labelDocumentTypeText = new QLabel(
                QStringLiteral("Choose a document type that best describe your PDF"), this);
            m_labelDocumentTypeText->setObjectName(QStringLiteral("LabelDocumentTypeText"));
            m_labelDocumentTypeText->setWordWrap(true);
            PlaceTwips(*m_labelDocumentTypeText, 1500, 420, 5655, 255);
        });
}

void DocumentTypeForm::Form_Load()
{
    const bool localised =
        ApplyDialogLanguage(*this, {
                                       {{1701}, CaptionOf(this)},
                                       {{1702}, CaptionOf(m_frame)},
                                       {{1703}, CaptionOf(m_labelDocumentTypeText)},
                                       {{1704, 1705}, CaptionOf(m_options[1])},
                                       {{1706}, CaptionOf(m_explanations[1])},
                                       {{1707, 1708}, CaptionOf(m_options[0])},
                                       {{1709}, CaptionOf(m_explanations[0])},
                                       {{1710, 1711}, CaptionOf(m_options[2])},
                                       {{1712}, CaptionOf(m_explanations[2])},
                                       {{1713}, CaptionOf(m_buttonHelp)},
                                       {{1714}, CaptionOf(m_buttonNext)},
                                       {{1715}, CaptionOf(m_buttonDone)},
                                   });
    if (localised)
        LoadLocalisedPictures({{m_pictures[0], 5}, {m_pictures[1], 6}, {m_pictures[2], 7}});
}

void DocumentTypeForm::Form_Activate()
{
    LoadOptions();
}

void DocumentTypeForm::LoadOptions()
{
    RunState& state = m_forms.Context().state;
    const auto* const found =
        std::find(TypeOfChoice.begin(), TypeOfChoice.end(), state.DocumentType);
    if (found == TypeOfChoice.end())
        state.DocumentType = TypeOfChoice[0];
    Select(found == TypeOfChoice.end() ? 0 : static_cast<int>(found - TypeOfChoice.begin()));
}

void DocumentTypeForm::UpdateOptions()
{
    // With nothing selected (a page never shown) the type is single-column.
    ChooseDocumentType(m_forms.Context().state,
                       TypeOfChoice.at(static_cast<std::size_t>(std::max(Selected(), 0))));
}

Form& DocumentTypeForm::NextPage()
{
    return m_forms.ConversionMethod();
}

QString DocumentTypeForm::HelpTopic() const
{
    return HelpTopics::DocumentType;
}
