#include "platform/OfficeSuite.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QList>
#include <QStandardPaths>
#include <QStringList>
#include <QUrl>

#include <cerrno>
#include <chrono>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <locale.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace {

const QString DebianProgram = QStringLiteral("/usr/lib/libreoffice/program/soffice.bin");
const QString ProgramFileName = QStringLiteral("soffice.bin");

// LibreOffice ends with this code when it has just set up a profile and wants to be started
// again; its own launcher does exactly that.
constexpr int RestartExitCode = 81;
// Setting up a profile takes well under a second; a minute means something is wrong.
constexpr qint32 ProfileSetupLimitMs = 60000;
constexpr qint32 SliceMs = 100;
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

class SpawnedProcess final : public OfficeProcess
{
public:
    explicit SpawnedProcess(pid_t pid) : m_pid(pid) {}

    ~SpawnedProcess() override
    {
        if (!HasEnded())
            ::kill(m_pid, SIGKILL);
        while (::waitpid(m_pid, nullptr, 0) == -1 && errno == EINTR) {
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

    int ExitCode() const { return m_exitCode; }

private:
    // Looks without collecting: the ended child stays in the table as a zombie, so its id can't
    // go to another process while anyone may still signal it by that id.
    bool HasEnded()
    {
        if (m_ended)
            return true;
        siginfo_t info{};
        if (::waitid(P_PID, static_cast<id_t>(m_pid), &info, WEXITED | WNOHANG | WNOWAIT) == -1) {
            if (errno == EINTR)
                return false;
            m_ended = true;  // not ours to wait for any more: gone all the same
            return true;
        }
        if (info.si_pid == 0)
            return false;
        m_ended = true;
        m_exitCode = info.si_code == CLD_EXITED ? info.si_status : -1;
        return true;
    }

    pid_t m_pid;
    bool m_ended = false;
    int m_exitCode = -1;
};

// The environment for the suite. A locale that names no installed locale leaves LibreOffice
// unable to turn a file URL with non-ASCII characters into a file name, so it then gets the
// built-in UTF-8 locale, which is the encoding file names have here.
std::vector<QByteArray> SuiteEnvironment()
{
    std::vector<QByteArray> variables;
    for (char** entry = environ; *entry; ++entry)
        variables.emplace_back(*entry);
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

// Starts the program with exactly these arguments, its standard streams on /dev/null so that
// LibreOffice's chatter doesn't end up in ours.
std::unique_ptr<SpawnedProcess> Spawn(const QString& program, const QStringList& arguments)
{
    QList<QByteArray> encoded;
    encoded.append(QFile::encodeName(program));
    for (const QString& argument : arguments)
        encoded.append(argument.toLocal8Bit());
    std::vector<char*> argv;
    argv.reserve(static_cast<std::size_t>(encoded.size()) + 1);
    for (QByteArray& bytes : encoded)
        argv.push_back(bytes.data());
    argv.push_back(nullptr);

    std::vector<QByteArray> environment = SuiteEnvironment();
    std::vector<char*> envp;
    envp.reserve(environment.size() + 1);
    for (QByteArray& variable : environment)
        envp.push_back(variable.data());
    envp.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    if (posix_spawn_file_actions_init(&actions) != 0)
        return nullptr;
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);

    posix_spawnattr_t attributes;
    if (posix_spawnattr_init(&attributes) != 0) {
        posix_spawn_file_actions_destroy(&actions);
        return nullptr;
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
    if (error != 0)
        return nullptr;
    return std::make_unique<SpawnedProcess>(pid);
}

// A new profile makes LibreOffice ask for a restart, which would replace the process that the
// caller is watching; so the profile is set up by a run of its own that ends straight away.
bool PrepareProfile(const QString& program, const QString& profileDirectory,
                    const std::function<void()>& whileWaiting)
{
    QStringList arguments = HeadlessArguments(profileDirectory);
    arguments.append(QStringLiteral("--terminate_after_init"));
    for (int attempt = 0; attempt < 2; ++attempt) {
        const std::unique_ptr<SpawnedProcess> process = Spawn(program, arguments);
        if (!process)
            return false;
        bool ended = false;
        for (qint32 waited = 0; waited < ProfileSetupLimitMs; waited += SliceMs) {
            ended = process->WaitForEnd(SliceMs);
            if (ended)
                break;
            if (whileWaiting)
                whileWaiting();
        }
        if (!ended)
            return false;
        if (process->ExitCode() != RestartExitCode)
            return process->ExitCode() == 0;
    }
    return false;
}

class LibreOffice final : public OfficeSuite
{
public:
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

    std::unique_ptr<OfficeProcess>
    StartConversion(const QString& program, const OfficeJob& job,
                    const std::function<void()>& whileWaiting) override
    {
        const QDir profile(job.profileDirectory);
        if (!profile.exists() || profile.isEmpty()) {
            if (!PrepareProfile(program, job.profileDirectory, whileWaiting))
                return nullptr;
        }
        QStringList arguments = HeadlessArguments(job.profileDirectory);
        arguments << QStringLiteral("--infilter=Rich Text Format") << QStringLiteral("--convert-to")
                  << QStringLiteral("doc:MS Word 97") << QStringLiteral("--outdir")
                  << FileUrl(job.outputDirectory) << FileUrl(job.source);
        return Spawn(program, arguments);
    }
};

}  // namespace

OfficeSuite& InstalledOfficeSuite()
{
    static LibreOffice suite;
    return suite;
}
