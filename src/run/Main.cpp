#include "run/Main.h"

#include "core/AppContext.h"
#include "dialogs/Forms.h"
#include "dialogs/WelcomeForm.h"
#include "options/SettingsStore.h"
#include "run/CommandLine.h"
#include "run/RunState.h"
#include "services/DialogFonts.h"
#include "services/Help.h"

#include <QDir>

bool PrepareRun(RunState& state, const QStringList& commandTokens, const QString& applicationDir)
{
    state.SourcePath.clear();
    state.OutputPath.clear();
    state.PageCount = 0;
    state.RunMode = RunModes::NoWork;
    SetApplicationHelpFile(ApplicationHelpFile(applicationDir));
    ParseCommandTokens(commandTokens, state);
    if (state.RunMode == RunModes::NoWork)
        return false;
    // Paths are read against the caller's working directory, which the run changes later.
    for (QString* path : {&state.SourcePath, &state.OutputPath}) {
        if (!path->isEmpty())
            *path = QDir::current().absoluteFilePath(*path);
    }
    // On behalf of a word processor both paths are needed.
    return state.HostedByWord != -1 || (!state.SourcePath.isEmpty() && !state.OutputPath.isEmpty());
}

void StartRun(Forms& forms)
{
    // The dialogs' fonts need the window system, which exists only from here on.
    InstallDialogFonts();
    AppContext& context = forms.Context();
    LoadSettings(context.state, context.settings);
    forms.Runtime().Show(forms.Welcome());
}
