#pragma once

// What the dialogs and the conversion are handed instead of reaching for globals: the run's
// record and the platform's services, each chosen once in the program's composition (tests pass
// fakes).

#include "platform/SettingsShell.h"

#include <QString>

struct RunState;
class DocumentOpener;
class FileClock;
class HelpViewer;
class OfficeSuite;
class ProcessLauncher;
class ProcessUtilityLibrary;
class WindowGeometry;

struct AppContext final
{
    RunState& state;
    SettingsShellFactory settings;
    HelpViewer& help;
    ProcessUtilityLibrary& processUtility;
    WindowGeometry& geometry;
    QString applicationDir;
    ProcessLauncher& launcher;
    DocumentOpener& opener;
    OfficeSuite& officeSuite;
    FileClock& clock;
};
