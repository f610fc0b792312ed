#pragma once

// Stand-ins for the platform services, so that tests decide what the store holds, which
// programs run and how, whether the help viewer starts and which windows exist.

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

#include <QDir>
#include <QList>
#include <QMap>
#include <QStringList>
#include <QVariant>

#include <functional>
#include <memory>

// An in-memory store whose shells share its values. `failReads`/`failWrites` make every read or
// write fail; `unavailable` makes the factory give no shell at all.
struct FakeStore final
{
    QMap<QString, QVariant> values;
    bool failReads = false;
    bool failWrites = false;
    bool unavailable = false;
    int shellsMade = 0;
    QStringList writes;  // names in the order they were written

    SettingsShellFactory Factory();
};

struct FakeHelpViewer final : HelpViewer
{
    Failure ShowPage(const QString& contentsFile, const QString& pageFile,
                     const QString& anchor) override
    {
        contents.append(contentsFile);
        pages.append(pageFile);
        anchors.append(anchor);
        return failure;
    }

    QStringList contents, pages, anchors;  // what each call asked for
    Failure failure = Failure::None;
};

// Records each call as "Name(arg)" with the working directory it was made in.
struct FakeProcessUtility final : ProcessUtilityLibrary
{
    qint32 GetParentProcessID(qint32 id) override
    {
        return Record("GetParentProcessID", id, parentId);
    }
    qint64 GetProcessHwnd(qint32 id) override { return Record("GetProcessHwnd", id, parentWindow); }
    qint32 GetProcessID(const QString& programName, qint32 index) override;
    qint64 GetProcessHwndEx(qint32 processId, QString& hint) override;
    bool GetWindowRect(qint64 window, ScreenRect& rect) override;
    qint32 GetProcessCount(const QString& name) override
    {
        return Record("GetProcessCount", name, static_cast<qint32>(processes.value(name).size()));
    }
    qint32 QuitProcess(qint32 processId) override;
    qint32 KillProcess(qint32 processId) override;
    qint32 GetFileVersion(const QString& path) override
    {
        return Record("GetFileVersion", path, fileVersions.value(path, 0));
    }

    qint32 parentId = 0;       // what GetParentProcessID gives
    qint64 parentWindow = 0;   // what GetProcessHwnd gives
    qint32 wordProcessId = 0;  // what GetProcessID gives
    qint64 wordWindow = 0;     // what GetProcessHwndEx gives
    QString rewrittenHint;     // what GetProcessHwndEx writes back, when not empty
    QMap<qint64, ScreenRect> windows;
    QStringList calls, workingDirectories;

    // The process table by program name; any other name counts 0 and gives wordProcessId. A
    // process that QuitProcess ends or KillProcess is sent to leaves it.
    QMap<QString, QList<qint32>> processes;
    qint32 quitResult = 0;               // what QuitProcess gives; non-zero ends the process
    QMap<QString, qint32> fileVersions;  // what GetFileVersion gives by path, else 0

private:
    template <class Argument, class Result>
    Result Record(const char* name, const Argument& argument, Result result)
    {
        calls.append(QStringLiteral("%1(%2)").arg(QLatin1String(name)).arg(argument));
        workingDirectories.append(QDir::currentPath());
        return result;
    }
};

// One conversion of FakeOfficeSuite: how the test scripts it and what was done to it.
struct FakeOfficeRun final
{
    // Whether the process uses processor time while it runs: Busy for all the time waited,
    // Idle none at all, Unseen when its work can't be told.
    enum Work { Idle, Busy, Unseen };

    qint32 runsForMs = 0;  // waited-for time after which the process ends; -1: it never does
    Work working = Busy;
    bool succeeds = true;            // how it ends
    qint32 waits = 0, waitedMs = 0;  // WaitForEnd calls, and their timeouts until it ended
    qint32 quits = 0;
    bool started = false, ended = false, released = false;
};

// An office suite installed at `programPath` (none when that is empty) whose conversions run
// as `run` says. `onStart` acts for the suite at the start, e.g. writes the converted file or
// puts a process into the process table.
struct FakeOfficeSuite final : OfficeSuite
{
    QString FindProgram() override
    {
        findWorkingDirectories.append(QDir::currentPath());
        return programPath;
    }
    std::unique_ptr<OfficeProcess> StartConversion(const QString& program,
                                                   const OfficeJob& job) override;

    QString programPath;
    bool startFails = false;
    std::function<void(const OfficeJob&)> onStart;
    FakeOfficeRun run;
    QList<OfficeJob> jobs;  // every start, also a failed one
    QStringList programsStarted, findWorkingDirectories;
};

struct FakeWindowGeometry final : WindowGeometry
{
    qint32 GetCurrentProcessId() override { return processId; }
    ScreenRect DesktopRect() override { return desktop; }
    qint32 ScreenHeightPixels() override { return desktop.bottom - desktop.top; }

    qint32 processId = 4242;
    ScreenRect desktop{0, 0, 1280, 1024};
};

// A program of FakeLauncher's: it ends by itself after `waits` calls of WaitForEnd (never
// with -1), with `exitCode`, or without one when it is asked to end first.
struct FakeProgram final
{
    qint32 waits = 0;
    int exitCode = 0;
};

// Records every start. A program that `programs` names is played by a FakeProgram, after
// `onStart` has acted for it (writing its output, say); any other is started for real, so that
// a test can use a stand-in program of its own.
struct FakeLauncher final : ProcessLauncher
{
    std::unique_ptr<RunningProcess> Start(const LaunchRequest& request, int& error) override;

    QMap<QString, FakeProgram> programs;
    std::function<void(const LaunchRequest&)> onStart;
    int startError = 0;  // non-zero: every start fails with it
    QList<LaunchRequest> requests;
    std::unique_ptr<ProcessLauncher> real = CreateProcessLauncher();
};

struct FakeOpener final : DocumentOpener
{
    Result Open(const QString& path) override
    {
        opened.append(path);
        return result;
    }
    Result result = Result::Opened;
    QStringList opened;
};

// The file system's clock, unless `now` is set.
struct FakeClock final : FileClock
{
    QDateTime Now(const QString& directory) override
    {
        return now.isValid() ? now : real->Now(directory);
    }
    QDateTime WrittenAt(const QString& path) override { return real->WrittenAt(path); }
    QDateTime now;
    std::unique_ptr<FileClock> real = CreateFileClock();
};

// A complete set of fakes and the context that hands them out.
struct FakeEnvironment final
{
    RunState state;
    FakeStore store;
    FakeHelpViewer help;
    FakeProcessUtility processUtility;
    FakeWindowGeometry geometry;
    FakeLauncher launcher;
    FakeOpener opener;
    FakeOfficeSuite officeSuite;
    FakeClock clock;
    AppContext context{state,          store.Factory(), help,
                       processUtility, geometry,        QStringLiteral("/opt/velmora"),
                       launcher,       opener,          officeSuite,
                       clock};
};
