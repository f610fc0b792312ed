#pragma once

// What the dialogs are handed instead of reaching for globals: the run's record and the
// platform services, each chosen once in Main (tests pass fakes).

#include "platform/SettingsShell.h"

#include <QString>

struct RunState;
class HelpViewer;
class OfficeSuite;
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
    // The office suite that finishes .doc files; null means the one installed here.
    OfficeSuite* officeSuite = nullptr;
};
