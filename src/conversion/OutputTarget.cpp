#include "conversion/OutputTarget.h"

#include "conversion/OutputNaming.h"
#include "conversion/WordDetection.h"
#include "core/AppContext.h"
#include "core/LocalText.h"
#include "dialogs/FileDialogs.h"
#include "options/SettingsStore.h"
#include "run/RunState.h"
#include "services/MessageBoxes.h"

bool AskOutputFile(AppContext& context, QWidget* owner)
{
    RunState& state = context.state;
    if (state.DocumentFormat == 1 && GetWordVersion(context) < LowestFinishingVersion) {
        const QString text =
            LocalText(5603, QStringLiteral("MS Word 2000 or later is not found.")) +
            QStringLiteral("\n\n") +
            LocalText(5604, QStringLiteral(
                                "Saving the file as .DOC format requires MS Word 2000 or later.")) +
            u'\n' + LocalText(5605, QStringLiteral("The document will be saved as .RTF format."));
        if (ShowMessage(owner, text, MessageIcon::Exclamation, MessageButtons::OkCancel) ==
            MessageAnswer::Cancel)
            return false;
        state.DocumentFormat = 2;
        SaveOptions(state, context.settings, false);
    }
    DeriveOutputPath(state);
    const QString filter = state.DocumentFormat == 1
                               ? LocalText(5606, QStringLiteral("Word Document (*.doc)|*.doc"))
                               : LocalText(5607, QStringLiteral("Rich Text Format (*.rtf)|*.rtf"));
    // The run writes the chosen name with the format's extension, so that is the name the
    // dialog must ask about before it replaces anything.
    const qint16 format = state.DocumentFormat;
    const std::optional<QString> chosen =
        AskSaveFileName(owner, state.OutputPath, filter, [format](const QString& name) {
            return WithFormatExtension(name, format);
        });
    if (!chosen || chosen->isEmpty())
        return false;
    state.OutputPath = *chosen;
    return true;
}
