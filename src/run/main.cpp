#include "run/Main.h"
#include "core/AppContext.h"
#include "dialogs/DialogRuntime.h"
#include "dialogs/Forms.h"
#include "intake/PdfToWordController.h"
#include "platform/ApplicationPath.h"
#include "platform/DocumentOpener.h"
#include "platform/FileClock.h"
#include "platform/HelpViewer.h"
#include "platform/OfficeSuite.h"
#include "platform/PdfAccessLibrary.h"
#include "platform/ProcessLauncher.h"
#include "platform/ProcessUtilityLibrary.h"
#include "platform/SettingsShell.h"
#include "platform/WindowGeometry.h"
#include "run/CommandLine.h"
#include "run/RunState.h"
#include "services/Help.h"

#include <QApplication>
#include <QStringList>

int main(int argc, char** argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));

    RunState& state = runState();
    const QString applicationDir = ApplicationPath();
    if (!PrepareRun(state, CommandTokens(arguments), applicationDir))
        return 0;

    QApplication app(argc, argv);
    // The program ends when its last dialog is unloaded, not when a window happens to close.
    QApplication::setQuitOnLastWindowClosed(false);

    const auto launcher = CreateProcessLauncher();
    const auto opener = CreateDocumentOpener();
    const auto clock = CreateFileClock();
    const auto officeSuite = CreateLibreOffice(*launcher, OfficeProfileHome());
    const auto help = CreateHelpViewer(*launcher, applicationDir);
    const auto processUtility = LoadProcessUtilityLibrary(applicationDir);
    const auto geometry = CreateWindowGeometry();
    AppContext context{state,        QSettingsShellFactory(),
                       *help,        *processUtility,
                       *geometry,    applicationDir,
                       *launcher,    *opener,
                       *officeSuite, *clock};

    DialogRuntime runtime;
    // F1 in any dialog: its own topic, or the help's start page.
    runtime.SetHelpHandler([&](Form& form) {
        const QString topic = form.HelpTopic();
        if (topic.isEmpty())
            ShowApplicationHelp(*help, &form);
        else
            ShowHelpTopic(*help, applicationDir, topic, &form);
    });
    QObject::connect(&runtime, &DialogRuntime::AllUnloaded, &app, &QCoreApplication::quit,
                     Qt::QueuedConnection);
    const auto pdfAccess = CreatePdfAccessLibrary();
    PdfToWordController controller(context, *pdfAccess);
    Forms forms(runtime, context, controller);
    StartRun(forms);
    if (runtime.LoadedForms().isEmpty())
        return 0;
    return QApplication::exec();
}
