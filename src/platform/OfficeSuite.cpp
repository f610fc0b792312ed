#include "platform/OfficeSuite.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QList>
#include <QStandardPaths>
#include <QStringList>
#include <QUrl>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <locale.h>
#include <signal.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace {

const QString DebianProgram = QStringLiteral("/usr/lib/libreoffice/program/soffice.bin");
const QString ProgramFileName = QStringLiteral("soffice.bin");
const QString KeptProfileName = QStringLiteral("office-profile");
const QString ProfileLockName = QStringLiteral("office-profile.lock");

// LibreOffice ends with this code when it has just set up a profile and wants to be started
// again; its own launcher does exactly that.
constexpr int RestartExitCode = 81;
constexpr qint32 PollMs = 10;
// How long a process asked to end may take before it is ended by force.
constexpr qint32 QuitPatienceMs = 5000;

// Everything reaches LibreOffice as an ASCII file URL: a name with a leading dash can't be
// taken for an option, and no character depends on the locale's encoding.
QString FileUrl(const QString& path)
{
    return QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath()).toString(QUrl::FullyEncoded);
}

QStringList HeadlessArguments(const QString& profileDirectory)
{
    return {QStringLiteral("--headless"),
            QStringLiteral("--invisible"),
            QStringLiteral("--norestore"),
            QStringLiteral("--nologo"),
            QStringLiteral("--nodefault"),
            QStringLiteral("--nolockcheck"),
            QStringLiteral("-env:UserInstallation=") + FileUrl(profileDirectory)};
}

bool IsRunnable(const QString& path)
{
    const QFileInfo info(path);
    return info.isFile() && info.isExecutable();
}

// The environment for the suite. Its temporary files go to `temporaryDirectory`, which the
// caller removes. A locale that names no installed locale leaves LibreOffice unable to turn a
// file URL with non-ASCII characters into a file name, so it then gets the built-in UTF-8
// locale, which is the encoding file names have here.
std::vector<QByteArray> SuiteEnvironment(const QString& temporaryDirectory)
{
    std::vector<QByteArray> variables;
    for (char** entry = environ; *entry; ++entry) {
        const QByteArray variable(*entry);
        if (!variable.startsWith("TMPDIR="))
            variables.push_back(variable);
    }
    variables.push_back("TMPDIR=" + QFile::encodeName(temporaryDirectory));
    if (const locale_t wanted = ::newlocale(LC_ALL_MASK, "", nullptr)) {
        ::freelocale(wanted);
        return variables;
    }
    const locale_t fallback = ::newlocale(LC_ALL_MASK, "C.UTF-8", nullptr);
    if (!fallback)
        return variables;
    ::freelocale(fallback);
    std::erase_if(variables,
                  [](const QByteArray& variable) { return variable.startsWith("LC_ALL="); });
    variables.emplace_back("LC_ALL=C.UTF-8");
    return variables;
}

// A program and everything it is started with, kept so that it can be started again.
struct Launch final
{
    QString program;
    QStringList arguments;
    std::vector<QByteArray> environment;
};

// Starts the launch with exactly its arguments, its standard streams on /dev/null so that
// LibreOffice's chatter doesn't end up in ours. 0 when it can't be started.
pid_t Spawn(const Launch& launch)
{
    QList<QByteArray> encoded;
    encoded.append(QFile::encodeName(launch.program));
    for (const QString& argument : launch.arguments)
        encoded.append(argument.toLocal8Bit());
    std::vector<char*> argv;
    argv.reserve(static_cast<std::size_t>(encoded.size()) + 1);
    for (QByteArray& bytes : encoded)
        argv.push_back(bytes.data());
    argv.push_back(nullptr);

    std::vector<QByteArray> environment = launch.environment;
    std::vector<char*> envp;
    envp.reserve(environment.size() + 1);
    for (QByteArray& variable : environment)
        envp.push_back(variable.data());
    envp.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    if (posix_spawn_file_actions_init(&actions) != 0)
        return 0;
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);

    posix_spawnattr_t attributes;
    if (posix_spawnattr_init(&attributes) != 0) {
        posix_spawn_file_actions_destroy(&actions);
        return 0;
    }
    sigset_t signalSet;
    sigemptyset(&signalSet);
    posix_spawnattr_setsigmask(&attributes, &signalSet);
    // Signals we ignore would stay ignored in the child; it gets the defaults back.
    sigaddset(&signalSet, SIGPIPE);
    sigaddset(&signalSet, SIGTERM);
    posix_spawnattr_setsigdefault(&attributes, &signalSet);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);

    pid_t pid = 0;
    const int error =
        posix_spawn(&pid, argv.front(), &actions, &attributes, argv.data(), envp.data());
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return error == 0 ? pid : 0;
}

// The processor time of a process from the kernel's table, in milliseconds; -1 when unknown.
qint64 ProcessorTime(pid_t pid)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray line = stat.readAll();
    // The program name stands in parentheses and may hold blanks; the fields follow it.
    const qsizetype close = line.lastIndexOf(')');
    if (close < 0)
        return -1;
    const QList<QByteArray> fields = line.mid(close + 2).split(' ');
    // After the name: state, ppid, ..., utime is the 12th and stime the 13th.
    if (fields.size() < 13)
        return -1;
    const long ticksPerSecond = ::sysconf(_SC_CLK_TCK);
    if (ticksPerSecond <= 0)
        return -1;
    const qint64 ticks = fields.at(11).toLongLong() + fields.at(12).toLongLong();
    return ticks * 1000 / ticksPerSecond;
}

// The kept profile, for one conversion at a time: a second conversion while one runs gets a
// profile of its own instead, since two suites on one profile would hand each other the job.
class ProfileLease final
{
public:
    explicit ProfileLease(const QString& profileHome)
    {
        if (!QDir().mkpath(profileHome))
            return;
        QFile::setPermissions(profileHome, QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                               QFileDevice::ExeOwner);
        const QByteArray lock = QFile::encodeName(profileHome + u'/' + ProfileLockName);
        m_lock = ::open(lock.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
        if (m_lock < 0)
            return;
        if (::flock(m_lock, LOCK_EX | LOCK_NB) != 0) {
            ::close(m_lock);
            m_lock = -1;
            return;
        }
        m_profile = profileHome + u'/' + KeptProfileName;
    }
    ~ProfileLease()
    {
        if (m_lock >= 0)
            ::close(m_lock);
    }
    ProfileLease(const ProfileLease&) = delete;
    ProfileLease& operator=(const ProfileLease&) = delete;

    // The kept profile while this lease holds it; empty when another conversion has it.
    QString Profile() const { return m_profile; }
    // After a failure the profile may be what failed: the next conversion makes a new one.
    void Discard()
    {
        if (!m_profile.isEmpty())
            QDir(m_profile).removeRecursively();
    }

private:
    int m_lock = -1;
    QString m_profile;
};

class SpawnedProcess final : public OfficeProcess
{
public:
    SpawnedProcess(pid_t pid, Launch launch, std::unique_ptr<ProfileLease> lease)
        : m_pid(pid), m_launch(std::move(launch)), m_lease(std::move(lease))
    {
    }

    ~SpawnedProcess() override
    {
        if (!HasEnded())
            ::kill(m_pid, SIGKILL);
        if (m_lease && !Succeeded())
            m_lease->Discard();
        m_replaced.push_back(m_pid);
        for (const pid_t pid : m_replaced) {
            while (::waitpid(pid, nullptr, 0) == -1 && errno == EINTR) {
            }
        }
    }

    SpawnedProcess(const SpawnedProcess&) = delete;
    SpawnedProcess& operator=(const SpawnedProcess&) = delete;

    bool WaitForEnd(qint32 timeoutMs) override
    {
        using namespace std::chrono;
        const auto deadline = steady_clock::now() + milliseconds(timeoutMs);
        while (!HasEnded()) {
            if (steady_clock::now() >= deadline)
                return false;
            std::this_thread::sleep_for(milliseconds(PollMs));
        }
        return true;
    }

    bool Succeeded() override { return HasEnded() && m_exitCode == 0; }

    void Quit() override
    {
        if (HasEnded())
            return;
        ::kill(m_pid, SIGTERM);
        if (WaitForEnd(QuitPatienceMs))
            return;
        ::kill(m_pid, SIGKILL);
        WaitForEnd(QuitPatienceMs);
    }

    qint64 ProcessorTimeMs() override
    {
        qint64 total = 0;
        for (const pid_t pid : m_replaced)
            total += std::max<qint64>(ProcessorTime(pid), 0);
        const qint64 current = ProcessorTime(m_pid);
        return current < 0 ? -1 : total + current;
    }

private:
    // Looks without collecting: the ended child stays in the table as a zombie, so its id can't
    // go to another process while anyone may still signal it by that id.
    bool HasEnded()
    {
        for (;;) {
            if (m_ended)
                return true;
            siginfo_t info{};
            if (::waitid(P_PID, static_cast<id_t>(m_pid), &info, WEXITED | WNOHANG | WNOWAIT) ==
                -1) {
                if (errno == EINTR)
                    return false;
                m_ended = true;  // not ours to wait for any more: gone all the same
                return true;
            }
            if (info.si_pid == 0)
                return false;
            m_exitCode = info.si_code == CLD_EXITED ? info.si_status : -1;
            // A suite that has just set up its profile asks to be started again, as its own
            // launcher would; the first process stays reserved until this object goes.
            if (m_exitCode == RestartExitCode && !m_restarted) {
                m_restarted = true;
                if (const pid_t again = Spawn(m_launch)) {
                    m_replaced.push_back(m_pid);
                    m_pid = again;
                    continue;
                }
            }
            m_ended = true;
            return true;
        }
    }

    pid_t m_pid;
    Launch m_launch;
    std::unique_ptr<ProfileLease> m_lease;
    std::vector<pid_t> m_replaced;
    bool m_restarted = false;
    bool m_ended = false;
    int m_exitCode = -1;
};

class LibreOffice final : public OfficeSuite
{
public:
    explicit LibreOffice(QString profileHome) : m_profileHome(std::move(profileHome)) {}

    // The launcher on the program search path says which installation the user runs; it is
    // a link or a script in the installation's program directory, beside the real program.
    QString FindProgram() override
    {
        QStringList candidates;
        for (const QString& launcher : {QStringLiteral("soffice"), QStringLiteral("libreoffice")}) {
            const QString found = QStandardPaths::findExecutable(launcher);
            if (found.isEmpty())
                continue;
            const QString resolved = QFileInfo(found).canonicalFilePath();
            if (!resolved.isEmpty())
                candidates.append(QFileInfo(resolved).absolutePath() + u'/' + ProgramFileName);
        }
        candidates.append(DebianProgram);
        for (const QString& candidate : candidates) {
            if (IsRunnable(candidate))
                return QFileInfo(candidate).absoluteFilePath();
        }
        return QString();
    }

    std::unique_ptr<OfficeProcess> StartConversion(const QString& program,
                                                   const OfficeJob& job) override
    {
        const QDir work(job.workDirectory);
        const QString temporary = work.filePath(QStringLiteral("tmp"));
        if (!QDir().mkpath(temporary))
            return nullptr;
        auto lease = std::make_unique<ProfileLease>(m_profileHome);
        const QString profile = lease->Profile().isEmpty()
                                    ? work.filePath(QStringLiteral("profile"))
                                    : lease->Profile();
        Launch launch{program, HeadlessArguments(profile), SuiteEnvironment(temporary)};
        launch.arguments << QStringLiteral("--infilter=Rich Text Format")
                         << QStringLiteral("--convert-to") << QStringLiteral("doc:MS Word 97")
                         << QStringLiteral("--outdir") << FileUrl(job.outputDirectory)
                         << FileUrl(job.source);
        const pid_t pid = Spawn(launch);
        if (pid == 0)
            return nullptr;
        return std::make_unique<SpawnedProcess>(pid, std::move(launch), std::move(lease));
    }

private:
    QString m_profileHome;
};

}  // namespace

std::unique_ptr<OfficeSuite> CreateLibreOffice(const QString& profileHome)
{
    return std::make_unique<LibreOffice>(profileHome);
}

QString OfficeProfileHome()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
           QStringLiteral("/velmora-sandpiper");
}

OfficeSuite& InstalledOfficeSuite()
{
    static const std::unique_ptr<OfficeSuite> suite = CreateLibreOffice(OfficeProfileHome());
    return *suite;
}
