// The process utility library for real, loaded from the application directory the way the
// program loads it: processes we start ourselves, program files laid out in temporary folders,
// and windows on a private X server.

#include "platform/ProcessUtilityLibrary.h"

#include "TestPaths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <csignal>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// A pid far above any the kernel hands out (its limit is 2^22).
constexpr qint32 NoSuchProcess = 0x3FFFFFF0;

std::unique_ptr<ProcessUtilityLibrary> RealLibrary()
{
    return LoadProcessUtilityLibrary(QStringLiteral(VELMORA_APP_DIR));
}

// A child process that is killed and reaped at the end of the test unless the test reaps it.
class Child final
{
public:
    Child(const QString& program, const QStringList& arguments,
          posix_spawn_file_actions_t* actions = nullptr)
    {
        std::vector<QByteArray> storage{QFile::encodeName(program)};
        for (const QString& argument : arguments)
            storage.push_back(argument.toLocal8Bit());
        std::vector<char*> argv;
        for (QByteArray& item : storage)
            argv.push_back(item.data());
        argv.push_back(nullptr);
        if (::posix_spawn(&m_pid, argv[0], actions, nullptr, argv.data(), environ) != 0)
            m_pid = 0;
    }
    ~Child()
    {
        if (m_pid > 0 && !m_reaped) {
            ::kill(m_pid, SIGKILL);
            Reap();
        }
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    pid_t Pid() const { return m_pid; }

    // Waits until the child has ended but leaves it a zombie.
    void WaitEnded() const
    {
        siginfo_t info{};
        ::waitid(P_PID, static_cast<id_t>(m_pid), &info, WEXITED | WNOWAIT);
    }

    // The wait status of the ended child.
    int Reap()
    {
        int status = 0;
        ::waitpid(m_pid, &status, 0);
        m_reaped = true;
        return status;
    }

    // Whether the child has ended within `milliseconds`, reaping it if so.
    bool ReapWithin(int milliseconds)
    {
        for (int waited = 0; waited <= milliseconds; waited += 10) {
            int status = 0;
            if (::waitpid(m_pid, &status, WNOHANG) == m_pid) {
                m_reaped = true;
                m_status = status;
                return true;
            }
            ::usleep(10000);
        }
        return false;
    }
    int ExitStatus() const { return m_status; }

private:
    pid_t m_pid = 0;
    bool m_reaped = false;
    int m_status = 0;
};

// A copy of sleep under a name no other process has.
QString SleepCopy(const QTemporaryDir& dir, const QString& name)
{
    const QString path = dir.filePath(name);
    if (!QFile::copy(QStringLiteral("/bin/sleep"), path))
        return {};
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return path;
}

QString UniqueSuffix()
{
    return QString::number(::getpid(), 36) + QString::number(std::rand() % 1296, 36);
}

TEST(ProcessUtilityLibrary, ParentProcessIdComesFromTheKernel)
{
    const auto library = RealLibrary();
    Child child(QStringLiteral("/bin/sleep"), {QStringLiteral("30")});
    ASSERT_GT(child.Pid(), 0);

    EXPECT_EQ(library->GetParentProcessID(child.Pid()), ::getpid());
    EXPECT_EQ(library->GetParentProcessID(::getpid()), ::getppid());
    EXPECT_EQ(library->GetParentProcessID(NoSuchProcess), 0);
    EXPECT_EQ(library->GetParentProcessID(0), 0);
}

TEST(ProcessUtilityLibrary, FindsRunningProcessesByProgramFileName)
{
    struct Row
    {
        const char* what;
        QString programName;  // the copy of sleep that runs
        QString lookedUp;     // the name asked for
        bool found;
    };
    const QString shortName = QStringLiteral("qvx") + UniqueSuffix();
    const QString longName = QStringLiteral("quonvexa-test-sleeper-") + UniqueSuffix();
    const std::vector<Row> rows = {
        {"same name", shortName, shortName, true},
        {"other case", shortName, shortName.toUpper(), true},
        {"name longer than a kernel command name", longName, longName, true},
        {"long name in other case", longName, longName.toUpper(), true},
        {"a prefix is another name", shortName, shortName.left(shortName.size() - 1), false},
        {"an extension is another name", shortName, shortName + QStringLiteral(".exe"), false},
        {"same first 15 characters", longName, longName.left(15) + QStringLiteral("zzz"), false},
        {"empty name", shortName, QString(), false},
    };
    const auto library = RealLibrary();
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        QTemporaryDir dir;
        const QString program = SleepCopy(dir, row.programName);
        ASSERT_FALSE(program.isEmpty());
        Child first(program, {QStringLiteral("30")});
        Child second(program, {QStringLiteral("30")});
        ASSERT_GT(first.Pid(), 0);
        ASSERT_GT(second.Pid(), 0);
        // The kernel names the process once exec has replaced the spawned image.
        ::usleep(100000);
        const qint32 low = std::min(first.Pid(), second.Pid());
        const qint32 high = std::max(first.Pid(), second.Pid());

        if (row.found) {
            EXPECT_EQ(library->GetProcessCount(row.lookedUp), 2);
            EXPECT_EQ(library->GetProcessID(row.lookedUp, 0), low);
            EXPECT_EQ(library->GetProcessID(row.lookedUp, 1), high);
        } else {
            EXPECT_EQ(library->GetProcessCount(row.lookedUp), 0);
            EXPECT_EQ(library->GetProcessID(row.lookedUp, 0), 0);
        }
        EXPECT_EQ(library->GetProcessID(row.lookedUp, 2), 0);
        EXPECT_EQ(library->GetProcessID(row.lookedUp, -1), 0);
    }
}

TEST(ProcessUtilityLibrary, KilledProcessNoLongerCountsEvenBeforeItIsReaped)
{
    const auto library = RealLibrary();
    const QString name = QStringLiteral("qvk") + UniqueSuffix();
    QTemporaryDir dir;
    const QString program = SleepCopy(dir, name);
    Child child(program, {QStringLiteral("30")});
    ASSERT_GT(child.Pid(), 0);
    ::usleep(100000);
    ASSERT_EQ(library->GetProcessCount(name), 1);

    EXPECT_NE(library->KillProcess(child.Pid()), 0);
    child.WaitEnded();
    EXPECT_EQ(library->GetProcessCount(name), 0);
    EXPECT_EQ(library->GetProcessID(name, 0), 0);
    const int status = child.Reap();
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);

    EXPECT_EQ(library->KillProcess(NoSuchProcess), 0);
}

TEST(ProcessUtilityLibrary, QuitAsksPolitelyAndTellsWhetherTheProcessEnded)
{
    const auto library = RealLibrary();

    Child willing(QStringLiteral("/bin/sleep"), {QStringLiteral("30")});
    ASSERT_GT(willing.Pid(), 0);
    EXPECT_NE(library->QuitProcess(willing.Pid()), 0);
    const int status = willing.Reap();
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM);

    // An ignored signal stays ignored across exec, so this child shrugs the request off.
    const auto previous = std::signal(SIGTERM, SIG_IGN);
    Child stubborn(QStringLiteral("/bin/sleep"), {QStringLiteral("30")});
    std::signal(SIGTERM, previous);
    ASSERT_GT(stubborn.Pid(), 0);
    ::usleep(100000);

    EXPECT_EQ(library->QuitProcess(stubborn.Pid()), 0);
    EXPECT_FALSE(stubborn.ReapWithin(0));
    EXPECT_NE(library->KillProcess(stubborn.Pid()), 0);
    ASSERT_TRUE(stubborn.ReapWithin(5000));
    EXPECT_TRUE(WIFSIGNALED(stubborn.ExitStatus()) && WTERMSIG(stubborn.ExitStatus()) == SIGKILL);

    EXPECT_EQ(library->QuitProcess(NoSuchProcess), 0);
}

TEST(ProcessUtilityLibrary, FileVersionComesFromTheInstallationBesideTheProgram)
{
    struct Row
    {
        const char* what;
        std::vector<std::pair<QString, QByteArray>> files;  // beside the program
        qint32 version;
    };
    const std::vector<Row> rows = {
        {"installer version file",
         {{"versionrc", "[Version]\nbuildid=40\nMsiProductVersion=7.4.7.2\nVendor=x\n"}},
         0x00070004},
        {"Windows layout",
         {{"version.ini", "[Version]\r\nMsiProductVersion=24.8.1.2\r\n"}},
         0x00180008},
        {"key in other case and spaces", {{"versionrc", "msiproductversion = 9.0\n"}}, 0x00090000},
        {"major version alone", {{"versionrc", "MsiProductVersion=17\n"}}, 0x00110000},
        {"distribution without the installer's version",
         {{"versionrc", "[Version]\nbuildid=40(Build:2)\nReferenceOOoMajorMinor=4.1\n"},
          {"bootstraprc", "[Bootstrap]\nProductKey=LibreOffice 7.5\n"}},
         0x00070005},
        {"installer's version wins over the product key",
         {{"versionrc", "MsiProductVersion=7.6.4.1\n"},
          {"bootstraprc", "ProductKey=LibreOffice 7.5\n"}},
         0x00070006},
        {"unreadable version", {{"versionrc", "MsiProductVersion=unknown\n"}}, 0},
        {"number too large for its half", {{"versionrc", "MsiProductVersion=70000.1\n"}}, 0},
        {"no version file", {}, 0},
    };
    const auto library = RealLibrary();
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        QTemporaryDir dir;
        ASSERT_TRUE(QDir(dir.path()).mkpath(QStringLiteral("program")));
        const QString program = dir.filePath(QStringLiteral("program/soffice"));
        QFile programFile(program);
        ASSERT_TRUE(programFile.open(QIODevice::WriteOnly));
        programFile.close();
        for (const auto& [name, text] : row.files) {
            QFile file(dir.filePath(QStringLiteral("program/") + name));
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
            file.write(text);
        }
        EXPECT_EQ(library->GetFileVersion(program), row.version);

        // A launcher link elsewhere leads to the installation.
        const QString link = dir.filePath(QStringLiteral("soffice"));
        ASSERT_TRUE(QFile::link(program, link));
        EXPECT_EQ(library->GetFileVersion(link), row.version);
    }
}

TEST(ProcessUtilityLibrary, FileVersionOfWhatIsNoProgramFileIsZero)
{
    QTemporaryDir dir;
    QFile version(dir.filePath(QStringLiteral("versionrc")));
    ASSERT_TRUE(version.open(QIODevice::WriteOnly));
    version.write("MsiProductVersion=7.4.7.2\n");
    version.close();
    const auto library = RealLibrary();

    EXPECT_EQ(library->GetFileVersion(dir.filePath(QStringLiteral("gone"))), 0);
    EXPECT_EQ(library->GetFileVersion(dir.path()), 0);
    EXPECT_EQ(library->GetFileVersion(QString()), 0);
}

TEST(ProcessUtilityLibrary, FileVersionOfTheInstalledOfficeSuite)
{
    const QString office = QStandardPaths::findExecutable(QStringLiteral("soffice"));
    if (office.isEmpty())
        GTEST_SKIP() << "no office suite installed";
    EXPECT_GE(RealLibrary()->GetFileVersion(office), 0x00030000);
}

// Restores DISPLAY when the test ends.
class DisplayVariable final
{
public:
    DisplayVariable()
    {
        if (const char* value = std::getenv("DISPLAY"))
            m_previous = value;
    }
    ~DisplayVariable()
    {
        if (m_previous)
            ::setenv("DISPLAY", m_previous->c_str(), 1);
        else
            ::unsetenv("DISPLAY");
    }
    DisplayVariable(const DisplayVariable&) = delete;
    DisplayVariable& operator=(const DisplayVariable&) = delete;

private:
    std::optional<std::string> m_previous;
};

TEST(ProcessUtilityLibrary, WithoutADisplayNoWindowIsFound)
{
    const DisplayVariable restore;
    ::unsetenv("DISPLAY");
    const auto library = RealLibrary();
    QString hint = QStringLiteral("anything");

    EXPECT_EQ(library->GetProcessHwnd(::getpid()), 0);
    EXPECT_EQ(library->GetProcessHwndEx(::getpid(), hint), 0);
    EXPECT_EQ(hint, QStringLiteral("anything"));
    ScreenRect rect{1, 2, 3, 4};
    EXPECT_FALSE(library->GetWindowRect(0x200001, rect));
    EXPECT_EQ(rect.left, 1);
}

// A private X server without a window manager, and a connection to it.
class PrivateXServer : public ::testing::Test
{
protected:
    void SetUp() override
    {
        const QString xvfb = QStandardPaths::findExecutable(QStringLiteral("Xvfb"));
        if (xvfb.isEmpty())
            GTEST_SKIP() << "Xvfb is not installed";
        // Xvfb picks a free display itself and writes its number once it accepts clients.
        int pipeFds[2];
        ASSERT_EQ(::pipe(pipeFds), 0);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, pipeFds[1], 3);
        posix_spawn_file_actions_addclose(&actions, pipeFds[0]);
        m_server.emplace(xvfb,
                         QStringList{QStringLiteral("-displayfd"), QStringLiteral("3"),
                                     QStringLiteral("-screen"), QStringLiteral("0"),
                                     QStringLiteral("1280x1024x24"), QStringLiteral("-nolisten"),
                                     QStringLiteral("tcp")},
                         &actions);
        posix_spawn_file_actions_destroy(&actions);
        ::close(pipeFds[1]);
        std::string number;
        pollfd ready{pipeFds[0], POLLIN, 0};
        while (::poll(&ready, 1, 15000) > 0) {
            char c = 0;
            if (::read(pipeFds[0], &c, 1) != 1 || c == '\n')
                break;
            number += c;
        }
        ::close(pipeFds[0]);
        ASSERT_FALSE(number.empty()) << "Xvfb did not start";
        const std::string name = ":" + number;
        ::setenv("DISPLAY", name.c_str(), 1);
        m_display = XOpenDisplay(name.c_str());
        ASSERT_NE(m_display, nullptr);
    }

    void TearDown() override
    {
        if (m_display)
            XCloseDisplay(m_display);
        if (m_server && m_server->Pid() > 0) {
            ::kill(m_server->Pid(), SIGTERM);
            m_server->ReapWithin(5000);
        }
    }

    Window Root() const { return XDefaultRootWindow(m_display); }
    Atom AtomNamed(const char* name) const { return XInternAtom(m_display, name, False); }

    Window MakeWindow(Window parent, int x, int y, unsigned width, unsigned height)
    {
        return XCreateSimpleWindow(m_display, parent, x, y, width, height, 0, 0, 0);
    }

    void SetCardinals(Window window, const char* property, const std::vector<long>& values)
    {
        XChangeProperty(m_display, window, AtomNamed(property), XA_CARDINAL, 32, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(values.data()),
                        static_cast<int>(values.size()));
    }

    void SetTitle(Window window, const char* title)
    {
        const auto* bytes = reinterpret_cast<const unsigned char*>(title);
        const int length = static_cast<int>(std::strlen(title));
        XChangeProperty(m_display, window, AtomNamed("_NET_WM_NAME"), AtomNamed("UTF8_STRING"), 8,
                        PropModeReplace, bytes, length);
    }

    // A top-level window of `pid`, shown unless told otherwise.
    Window MakeProcessWindow(long pid, const char* title, int x, int y, bool shown = true)
    {
        const Window window = MakeWindow(Root(), x, y, 300, 200);
        SetCardinals(window, "_NET_WM_PID", {pid});
        SetTitle(window, title);
        if (shown)
            XMapWindow(m_display, window);
        return window;
    }

    // Everything asked of the server so far is done before the library looks.
    void Flush() { XSync(m_display, False); }

    DisplayVariable m_restoreDisplay;
    std::optional<Child> m_server;
    Display* m_display = nullptr;
};

TEST_F(PrivateXServer, MainWindowIsAShownWindowThatIsNoDialogUnlessATitleHintChooses)
{
    constexpr long Pid = 777001;
    const Window hidden = MakeProcessWindow(Pid, "Hidden leader", 0, 0, false);
    const Window dialog = MakeProcessWindow(Pid, "Velmora Settings", 500, 500);
    XSetTransientForHint(m_display, dialog, hidden);
    const Window main = MakeProcessWindow(Pid, "Velmora Test Window", 100, 50);
    MakeProcessWindow(777002, "Someone else", 10, 10);
    Flush();
    const auto library = RealLibrary();

    EXPECT_EQ(library->GetProcessHwnd(Pid), static_cast<qint64>(main));
    EXPECT_EQ(library->GetProcessHwnd(777003), 0);

    struct Row
    {
        const char* what;
        QString hint;
        Window window;
        QString hintAfter;
    };
    const std::vector<Row> rows = {
        {"no hint takes the main window", QString(), main, QString()},
        {"part of a title", QStringLiteral("test win"), main, QStringLiteral("test win")},
        {"a dialog's title", QStringLiteral("SETTINGS"), dialog, QStringLiteral("SETTINGS")},
        {"whole title in other case is rewritten", QStringLiteral("velmora test window"), main,
         QStringLiteral("Velmora Test Window")},
        {"no window fits", QStringLiteral("nothing like it"), 0, QStringLiteral("nothing like it")},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        QString hint = row.hint;
        EXPECT_EQ(library->GetProcessHwndEx(static_cast<qint32>(Pid), hint),
                  static_cast<qint64>(row.window));
        EXPECT_EQ(hint, row.hintAfter);
    }
    QString hint;
    EXPECT_EQ(library->GetProcessHwndEx(777003, hint), 0);

    XUnmapWindow(m_display, main);
    Flush();
    EXPECT_EQ(library->GetProcessHwnd(Pid), static_cast<qint64>(dialog));
}

TEST_F(PrivateXServer, WindowsBelowTheRootAreFoundThroughFramesAndTheClientList)
{
    // A frame as a reparenting window manager makes it, without the manager's client list.
    const Window frame = MakeWindow(Root(), 200, 100, 320, 240);
    const Window framed = MakeWindow(frame, 10, 20, 300, 200);
    SetCardinals(framed, "_NET_WM_PID", {777011});
    XMapWindow(m_display, framed);
    XMapWindow(m_display, frame);

    // Too deep for the walk: only the client list names it.
    Window parent = Root();
    for (int level = 0; level < 3; ++level) {
        parent = MakeWindow(parent, 0, 0, 50, 50);
        XMapWindow(m_display, parent);
    }
    const Window deep = MakeWindow(parent, 0, 0, 40, 40);
    SetCardinals(deep, "_NET_WM_PID", {777012});
    XMapWindow(m_display, deep);
    Flush();
    const auto library = RealLibrary();

    EXPECT_EQ(library->GetProcessHwnd(777011), static_cast<qint64>(framed));
    EXPECT_EQ(library->GetProcessHwnd(777012), 0);
    const long clients[] = {static_cast<long>(deep)};
    XChangeProperty(m_display, Root(), AtomNamed("_NET_CLIENT_LIST"), XA_WINDOW, 32,
                    PropModeReplace, reinterpret_cast<const unsigned char*>(clients), 1);
    Flush();
    EXPECT_EQ(library->GetProcessHwnd(777012), static_cast<qint64>(deep));
}

TEST_F(PrivateXServer, WindowRectangleIsOnTheScreenAndIncludesTheManagersFrame)
{
    const Window plain = MakeProcessWindow(777021, "Plain", 100, 50);
    const Window framed = MakeProcessWindow(777022, "Framed", 400, 300);
    SetCardinals(framed, "_NET_FRAME_EXTENTS", {5, 6, 20, 7});  // left, right, top, bottom
    const Window frame = MakeWindow(Root(), 200, 100, 320, 240);
    const Window inFrame = MakeWindow(frame, 10, 20, 300, 200);
    const Window gone = MakeWindow(Root(), 0, 0, 10, 10);
    XDestroyWindow(m_display, gone);
    Flush();
    const auto library = RealLibrary();

    struct Row
    {
        const char* what;
        Window window;
        bool found;
        ScreenRect rect;
    };
    const std::vector<Row> rows = {
        {"plain window", plain, true, {100, 50, 400, 250}},
        {"framed window", framed, true, {395, 280, 706, 507}},
        {"window inside another", inFrame, true, {210, 120, 510, 320}},
        {"destroyed window", gone, false, {}},
        {"no window", 0, false, {}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        ScreenRect rect;
        ASSERT_EQ(library->GetWindowRect(static_cast<qint64>(row.window), rect), row.found);
        if (!row.found)
            continue;
        EXPECT_EQ(rect.left, row.rect.left);
        EXPECT_EQ(rect.top, row.rect.top);
        EXPECT_EQ(rect.right, row.rect.right);
        EXPECT_EQ(rect.bottom, row.rect.bottom);
    }
}

TEST(ProcessUtilityLoader, MissingLibraryFindsNothingAndLeavesTheWorkingDirectory)
{
    // Loaded once from the application directory, the library must still not be found through
    // a directory that lacks it.
    ASSERT_EQ(RealLibrary()->GetParentProcessID(::getpid()), ::getppid());

    QTemporaryDir empty;
    const QString before = QDir::currentPath();
    const auto library = LoadProcessUtilityLibrary(empty.path());
    QString hint = QStringLiteral("hint");
    ScreenRect rect{1, 2, 3, 4};

    EXPECT_EQ(library->GetParentProcessID(::getpid()), 0);
    EXPECT_EQ(library->GetProcessHwnd(::getpid()), 0);
    EXPECT_EQ(library->GetProcessID(QStringLiteral("sleep"), 0), 0);
    EXPECT_EQ(library->GetProcessHwndEx(::getpid(), hint), 0);
    EXPECT_EQ(hint, QStringLiteral("hint"));
    EXPECT_FALSE(library->GetWindowRect(1, rect));
    EXPECT_EQ(rect.left, 1);
    EXPECT_EQ(library->GetProcessCount(QStringLiteral("sleep")), 0);
    EXPECT_EQ(library->QuitProcess(NoSuchProcess), 0);
    EXPECT_EQ(library->KillProcess(NoSuchProcess), 0);
    EXPECT_EQ(library->GetFileVersion(QStringLiteral("/usr/bin/soffice")), 0);
    EXPECT_EQ(QDir::currentPath(), before);
}

TEST(ProcessUtilityLoaderDeathTest, LibraryWithoutAFunctionFindsNothingThroughIt)
{
    // A fresh process, so that the real library is not loaded already under the same name.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            const auto library = LoadProcessUtilityLibrary(QStringLiteral(PARTIAL_LIBRARY_DIR));
            QString hint = QStringLiteral("x");
            ScreenRect rect;
            const bool loaded = library->GetParentProcessID(1) == 4711;
            const bool nothingElse =
                library->GetProcessCount(QStringLiteral("sleep")) == 0 &&
                library->GetProcessHwndEx(1, hint) == 0 && !library->GetWindowRect(1, rect) &&
                library->GetFileVersion(QStringLiteral("/usr/bin/soffice")) == 0;
            std::_Exit(loaded && nothingElse ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}

}  // namespace
