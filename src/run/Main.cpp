#include "run/Main.h"

#include "dialogs/AppContext.h"
#include "dialogs/Forms.h"
#include "dialogs/WelcomeForm.h"
#include "options/SettingsStore.h"
#include "run/CommandLine.h"
#include "run/RunState.h"
#include "services/Help.h"

#include <QDir>
#include <QFont>

namespace {

// Stands in for registering the shared window classes: the fonts the dialogs name are mapped
// to fonts this system has. Nothing here can stop the start.
qint16 InitSharedControls()
{
    QFont::insertSubstitutions(QStringLiteral("Tahoma"),
                               {QStringLiteral("DejaVu Sans"), QStringLiteral("Liberation Sans")});
    QFont::insertSubstitutions(QStringLiteral("MS UI-Gothic"),
                               {QStringLiteral("IPAGothic"), QStringLiteral("IPAPGothic"),
                                QStringLiteral("Noto Sans CJK JP")});
    return -1;
}

}  // namespace

bool PrepareRun(RunState& state, const QString& commandText, const QString& applicationDir)
{
    state.SourcePath.clear();
    state.OutputPath.clear();
    state.PageCount = 0;
    state.RunMode = RunModes::NoWork;
    InitSharedControls();
    SetApplicationHelpFile(ApplicationHelpFile(applicationDir));
    ParseCommandLine(commandText, state);
    if (state.RunMode == RunModes::NoWork)
        return false;
    // Paths are read against the caller's working directory, which the run changes later.
    for (QString* path : {&state.SourcePath, &state.OutputPath}) {
        if (!path->isEmpty())
            *path = QDir::current().absoluteFilePath(*path);
    }
    if (state.HostedByWord == -1 && (state.SourcePath.isEmpty() || state.OutputPath.isEmpty()))
        return false;
    return true;
}

void StartRun(Forms& forms)
{
    AppContext& context = forms.Context();
    LoadSettings(context.state, context.settings);
    forms.Runtime().Show(forms.Welcome());
}
