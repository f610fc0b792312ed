#pragma once

// Stand-ins for the platform services, so that tests decide what the store holds, whether the
// help viewer starts and which windows exist.

#include "dialogs/AppContext.h"
#include "platform/HelpViewer.h"
#include "platform/ProcessUtilityLibrary.h"
#include "platform/SettingsShell.h"
#include "platform/WindowGeometry.h"
#include "run/RunState.h"

#include <QMap>
#include <QStringList>
#include <QVariant>

#include <memory>

// An in-memory store. Shells made from it share its values, as registry objects share the
// registry. `failReads`/`failWrites` make every read or write fail; `unavailable` makes the
// factory give no shell at all.
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
    bool ShowPage(const QString& pageFile, const QString& anchor, QString& error) override;

    QStringList pages;    // page files asked for
    QStringList anchors;  // anchors asked for
    bool fail = false;
};

struct FakeProcessUtility final : ProcessUtilityLibrary
{
    qint32 GetParentProcessID(qint32 processId) override;
    qint64 GetProcessHwnd(qint32 processId) override;
    qint32 GetProcessID(const QString& programName, qint32 reserved) override;
    qint64 GetProcessHwndEx(qint32 processId, QString& hint) override;
    bool GetWindowRect(qint64 window, ScreenRect& rect) override;
    qint32 GetProcessCount(const QString& programName) override;
    qint32 QuitProcess(qint32 processId) override;
    qint32 KillProcess(qint32 processId) override;
    qint32 GetFileVersion(const QString& path) override;

    qint32 parentId = 0;           // what GetParentProcessID gives
    qint64 parentWindow = 0;       // what GetProcessHwnd gives
    qint32 wordProcessId = 0;      // what GetProcessID gives
    qint64 wordWindow = 0;         // what GetProcessHwndEx gives
    QString rewrittenHint;         // what GetProcessHwndEx writes back, when not empty
    QMap<qint64, ScreenRect> windows;
    QStringList calls;             // "Name(arg)" in call order
};

struct FakeWindowGeometry final : WindowGeometry
{
    qint32 GetCurrentProcessId() override { return processId; }
    ScreenRect DesktopRect() override { return desktop; }
    qint32 ScreenHeightPixels() override { return desktop.bottom - desktop.top; }

    qint32 processId = 4242;
    ScreenRect desktop{0, 0, 1280, 1024};
};

// A complete set of fakes and the context that hands them out.
struct FakeEnvironment final
{
    RunState state;
    FakeStore store;
    FakeHelpViewer help;
    FakeProcessUtility processUtility;
    FakeWindowGeometry geometry;
    AppContext context{state, store.Factory(), help, processUtility, geometry,
                       QStringLiteral("/opt/velmora")};
};
