// The process utility library for real, loaded from the application directory the way the
// program loads it: processes we start ourselves, program files laid out in temporary folders,
// and windows on a private X server.

#include "platform/ProcessUtilityLibrary.h"

#include "TestPaths.h"

#include <QDir>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <cstring>

#include <unistd.h>

namespace {

// A pid far above any the kernel hands out (its limit is 2^22).
constexpr qint32 NoSuchProcess = 0x3FFFFFF0;

std::unique_ptr<ProcessUtilityLibrary> Library()
{
    return LoadProcessUtilityLibrary(QStringLiteral(VELMORA_APP_DIR));
}

TEST(ProcessUtilityLibrary, FindsProcessesByTheirProgramFileAndEndsThem)
{
    const auto library = Library();
    QTemporaryDir dir;
    const QString name = QStringLiteral("quonvexa-test-sleeper-") + QString::number(::getpid());
    ASSERT_TRUE(QFile::copy(QStringLiteral("/bin/sleep"), dir.filePath(name)));
    QProcess first, second, stubborn;
    for (QProcess* process : {&first, &second})
        process->start(dir.filePath(name), {QStringLiteral("30")});
    // An ignored signal stays ignored across exec, so this one shrugs a request to quit off.
    stubborn.start(QStringLiteral("/bin/sh"),
                   {QStringLiteral("-c"), "trap '' TERM; exec '" + dir.filePath(name) + "' 30"});
    // The kernel names a process once exec has replaced the starting image.
    for (int round = 0; round < 1000 && library->GetProcessCount(name) < 3; ++round)
        ::usleep(10000);
    ASSERT_EQ(library->GetProcessCount(name), 3);
    EXPECT_EQ(library->GetParentProcessID(static_cast<qint32>(first.processId())), ::getpid());
    EXPECT_EQ(library->GetParentProcessID(NoSuchProcess), 0);
    EXPECT_EQ(library->GetProcessID(name, 0),
              std::min({first.processId(), second.processId(), stubborn.processId()}));
    EXPECT_EQ(library->GetProcessID(name, 3), 0);
    const std::pair<QString, qint32> lookups[] = {
        {name.toUpper(), 3},  // longer than the kernel's command name, in other case
        {name.chopped(1), 0},
        {name + QStringLiteral(".exe"), 0},
        {name.left(15) + QStringLiteral("zzz"), 0},  // the kernel's command name is the same
        {QString(), 0},
    };
    for (const auto& [lookedUp, count] : lookups)
        EXPECT_EQ(library->GetProcessCount(lookedUp), count) << lookedUp.toStdString();

    EXPECT_NE(library->QuitProcess(static_cast<qint32>(first.processId())), 0);
    EXPECT_NE(library->KillProcess(static_cast<qint32>(second.processId())), 0);
    EXPECT_EQ(library->QuitProcess(static_cast<qint32>(stubborn.processId())), 0);
    EXPECT_EQ(library->GetProcessCount(name), 1);
    EXPECT_NE(library->KillProcess(static_cast<qint32>(stubborn.processId())), 0);
    for (QProcess* process : {&first, &second, &stubborn})
        EXPECT_TRUE(process->waitForFinished(5000) && process->exitStatus() == QProcess::CrashExit);
    EXPECT_EQ(library->GetProcessCount(name), 0);
    EXPECT_EQ(library->QuitProcess(NoSuchProcess), 0);
    EXPECT_EQ(library->KillProcess(NoSuchProcess), 0);
}

TEST(ProcessUtilityLibrary, FileVersionComesFromTheInstallationBesideTheProgram)
{
    const std::tuple<const char*, QByteArray, const char*, QByteArray, qint32> rows[] = {
        {"versionrc", "[Version]\nbuildid=40\nMsiProductVersion=7.4.7.2\n", "", "", 0x00070004},
        {"version.ini", "[Version]\r\nmsiproductversion = 24.8\r\n", "", "", 0x00180008},
        {"versionrc", "MsiProductVersion=17\n", "", "", 0x00110000},
        {"versionrc", "ReferenceOOoMajorMinor=4.1\n", "bootstraprc",
         "[Bootstrap]\nProductKey=LibreOffice 7.5\n", 0x00070005},
        {"versionrc", "MsiProductVersion=7.6.4.1\n", "bootstraprc", "ProductKey=LibreOffice 7.5\n",
         0x00070006},
        {"versionrc", "MsiProductVersion=unknown\n", "", "", 0},
        {"versionrc", "MsiProductVersion=70000.1\n", "", "", 0},
        {"", "", "", "", 0},
    };
    const auto library = Library();
    for (const auto& [file, text, otherFile, otherText, version] : rows) {
        SCOPED_TRACE(text.toStdString());
        QTemporaryDir dir;
        ASSERT_TRUE(QDir(dir.path()).mkpath(QStringLiteral("program")));
        const QString program = dir.filePath(QStringLiteral("program/soffice"));
        for (const auto& [name, bytes] : {std::pair{QStringLiteral("soffice"), QByteArray()},
                                          std::pair{QString::fromLatin1(file), text},
                                          std::pair{QString::fromLatin1(otherFile), otherText}}) {
            QFile out(dir.filePath(QStringLiteral("program/") + name));
            if (!name.isEmpty() && out.open(QIODevice::WriteOnly))
                out.write(bytes);
        }
        EXPECT_EQ(library->GetFileVersion(program), version);
        // A launcher link elsewhere leads to the installation; what is no program file has no
        // version, whatever lies beside it.
        ASSERT_TRUE(QFile::link(program, dir.filePath(QStringLiteral("soffice"))));
        EXPECT_EQ(library->GetFileVersion(dir.filePath(QStringLiteral("soffice"))), version);
        EXPECT_EQ(library->GetFileVersion(dir.filePath(QStringLiteral("program"))), 0);
        EXPECT_EQ(library->GetFileVersion(dir.filePath(QStringLiteral("program/gone"))), 0);
    }
}

// A process's windows on a private X server without a window manager.
TEST(ProcessUtilityLibrary, FindsAProcesssMainWindowAndItsPlaceOnTheScreen)
{
    const auto library = Library();
    QProcess server;
    // Xvfb picks a free display itself and tells its number once it accepts clients.
    server.start(QStringLiteral("Xvfb"), {QStringLiteral("-displayfd"), QStringLiteral("1"),
                                          QStringLiteral("-nolisten"), QStringLiteral("tcp")});
    if (!server.waitForStarted(10000))
        GTEST_SKIP() << "Xvfb is not installed";
    ASSERT_TRUE(server.waitForReadyRead(15000));
    const QByteArray display = ':' + server.readLine().trimmed();
    Display* x = XOpenDisplay(display.constData());
    ASSERT_NE(x, nullptr);
    qputenv("DISPLAY", display);
    const auto make = [x](Window parent, int left, int top, long pid, const char* title) {
        const Window window = XCreateSimpleWindow(x, parent, left, top, 300, 200, 0, 0, 0);
        if (pid != 0)
            XChangeProperty(x, window, XInternAtom(x, "_NET_WM_PID", False), XA_CARDINAL, 32,
                            PropModeReplace, reinterpret_cast<const unsigned char*>(&pid), 1);
        XChangeProperty(x, window, XInternAtom(x, "_NET_WM_NAME", False),
                        XInternAtom(x, "UTF8_STRING", False), 8, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(title), int(std::strlen(title)));
        return window;
    };
    const Window root = XDefaultRootWindow(x);
    const Window hidden = make(root, 0, 0, 7001, "Hidden leader");
    const Window dialog = make(root, 500, 500, 7001, "Velmora Settings");
    XSetTransientForHint(x, dialog, hidden);
    const Window main = make(root, 100, 50, 7001, "Velmora Test Window");
    const long extents[] = {5, 6, 20, 7};  // the manager's frame: left, right, top, bottom
    XChangeProperty(x, main, XInternAtom(x, "_NET_FRAME_EXTENTS", False), XA_CARDINAL, 32,
                    PropModeReplace, reinterpret_cast<const unsigned char*>(extents), 4);
    // A frame as a reparenting window manager makes it, and a window too deep for the walk
    // that only the manager's client list names.
    const Window frame = make(root, 200, 100, 0, "");
    const Window framed = make(frame, 10, 20, 7002, "Framed");
    Window deep = root;
    for (int level = 0; level < 4; ++level)
        XMapWindow(x, deep = make(deep, 0, 0, level == 3 ? 7003 : 0, "Deep"));
    for (const Window window : {dialog, main, frame, framed})
        XMapWindow(x, window);
    XSync(x, False);

    EXPECT_EQ(library->GetProcessHwnd(7001), qint64(main));
    EXPECT_EQ(library->GetProcessHwnd(7002), qint64(framed));
    EXPECT_EQ(library->GetProcessHwnd(7003), 0);
    const std::tuple<QString, Window, QString> hints[] = {
        {QStringLiteral("SETTINGS"), dialog, QStringLiteral("SETTINGS")},
        {QStringLiteral("velmora test window"), main, QStringLiteral("Velmora Test Window")},
        {QStringLiteral("nothing like it"), 0, QStringLiteral("nothing like it")},
    };
    for (const auto& [given, window, after] : hints) {
        QString hint = given;
        EXPECT_EQ(library->GetProcessHwndEx(7001, hint), qint64(window)) << given.toStdString();
        EXPECT_EQ(hint, after);
    }
    for (const auto& [window, expected] : {std::pair{main, ScreenRect{95, 30, 406, 257}},
                                           std::pair{framed, ScreenRect{210, 120, 510, 320}}}) {
        ScreenRect rect;
        ASSERT_TRUE(library->GetWindowRect(qint64(window), rect));
        EXPECT_EQ(QList<qint32>({rect.left, rect.top, rect.right, rect.bottom}),
                  QList<qint32>({expected.left, expected.top, expected.right, expected.bottom}));
    }
    ScreenRect rect;
    EXPECT_FALSE(library->GetWindowRect(qint64(hidden + 1000), rect));

    XChangeProperty(x, root, XInternAtom(x, "_NET_CLIENT_LIST", False), XA_WINDOW, 32,
                    PropModeReplace, reinterpret_cast<const unsigned char*>(&deep), 1);
    XUnmapWindow(x, main);
    XSync(x, False);
    EXPECT_EQ(library->GetProcessHwnd(7003), qint64(deep));
    EXPECT_EQ(library->GetProcessHwnd(7001), qint64(dialog)) << "no main window is left";
    XCloseDisplay(x);
    server.terminate();
    server.waitForFinished();
    qunsetenv("DISPLAY");
    // Without a display no window is found.
    QString hint = QStringLiteral("velmora");
    EXPECT_EQ(library->GetProcessHwndEx(7001, hint), 0);
    EXPECT_FALSE(library->GetWindowRect(qint64(main), rect));
}

TEST(ProcessUtilityLoader, AMissingLibraryFindsNothingAndLeavesTheWorkingDirectory)
{
    // Loaded once from the application directory, the library must still not be found through
    // a directory that lacks it.
    ASSERT_EQ(Library()->GetParentProcessID(::getpid()), ::getppid());
    QTemporaryDir empty;
    const QString before = QDir::currentPath();
    const auto library = LoadProcessUtilityLibrary(empty.path());
    QString hint = QStringLiteral("hint");
    ScreenRect rect{1, 2, 3, 4};
    EXPECT_EQ(library->GetParentProcessID(::getpid()) + library->GetProcessHwnd(::getpid()) +
                  library->GetProcessID(QStringLiteral("sleep"), 0) +
                  library->GetProcessHwndEx(::getpid(), hint) +
                  library->GetProcessCount(QStringLiteral("sleep")) +
                  library->QuitProcess(NoSuchProcess) + library->KillProcess(NoSuchProcess) +
                  library->GetFileVersion(QStringLiteral("/usr/bin/soffice")),
              0);
    EXPECT_FALSE(library->GetWindowRect(1, rect));
    EXPECT_EQ(hint, QStringLiteral("hint"));
    EXPECT_EQ(rect.left, 1);
    EXPECT_EQ(QDir::currentPath(), before);
}

}  // namespace
