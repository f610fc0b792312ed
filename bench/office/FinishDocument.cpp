// Finishes one .doc file holding Rich Text Format the way a conversion run does, with the
// installed office suite and the user's kept profile, for bench/run-office-bench.sh.
//   velmora_finish_document <application-dir> <file.doc>

#include "conversion/WordFinishing.h"
#include "core/AppContext.h"
#include "platform/DocumentOpener.h"
#include "platform/FileClock.h"
#include "platform/HelpViewer.h"
#include "platform/OfficeSuite.h"
#include "platform/ProcessLauncher.h"
#include "platform/ProcessUtilityLibrary.h"
#include "platform/SettingsShell.h"
#include "platform/WindowGeometry.h"
#include "run/RunState.h"

#include <QCoreApplication>

#include <cstdio>

namespace {

// Finishing never places a window.
struct NoGeometry final : WindowGeometry
{
    qint32 GetCurrentProcessId() override { return 0; }
    ScreenRect DesktopRect() override { return {}; }
    qint32 ScreenHeightPixels() override { return 0; }
};

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: velmora_finish_document <application-dir> <file.doc>\n");
        return 2;
    }
    QCoreApplication app(argc, argv);
    const QString applicationDir = QString::fromLocal8Bit(argv[1]);
    RunState state;
    state.OutputPath = QString::fromLocal8Bit(argv[2]);
    const auto launcher = CreateProcessLauncher();
    const auto opener = CreateDocumentOpener();
    const auto clock = CreateFileClock();
    const auto officeSuite = CreateLibreOffice(*launcher, OfficeProfileHome());
    const auto help = CreateHelpViewer(*launcher, applicationDir);
    const auto processes = LoadProcessUtilityLibrary(applicationDir);
    NoGeometry geometry;
    AppContext context{state,        QSettingsShellFactory(),
                       *help,        *processes,
                       geometry,     applicationDir,
                       *launcher,    *opener,
                       *officeSuite, *clock};
    return FinishWithWord(context) == -1 ? 0 : 1;
}
