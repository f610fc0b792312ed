#include "platform/OfficeSuite.h"

#include "platform/ProcessLauncher.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QStringList>
#include <QUrl>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <vector>

#include <fcntl.h>
#include <locale.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

const QString DebianProgram = QStringLiteral("/usr/lib/libreoffice/program/") + OfficeProcessName;
const QString KeptProfileName = QStringLiteral("office-profile");
const QString ProfileLockName = QStringLiteral("office-profile.lock");

// LibreOffice ends with this code when it has just set up a profile and wants to be started
// again; its own launcher does exactly that.
constexpr int RestartExitCode = 81;
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

// LibreOffice answers a second start through a socket in the fixed folder /tmp, whatever
// TMPDIR says, and only removes it when it ends by itself: an ended-by-force suite leaves it.
const QString PipeFolder = QStringLiteral("/tmp");

QStringList OwnPipeNames()
{
    const QString pattern = QStringLiteral("OSL_PIPE_%1_*").arg(::getuid());
    return QDir(PipeFolder).entryList({pattern}, QDir::System | QDir::Hidden);
}

// A socket of ours that nobody listens on any longer.
bool IsAbandonedPipe(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    struct stat status = {};
    if (::lstat(name.constData(), &status) != 0 || !S_ISSOCK(status.st_mode) ||
        status.st_uid != ::getuid())
        return false;
    sockaddr_un address{};
    if (name.size() >= static_cast<qsizetype>(sizeof(address.sun_path)))
        return false;
    address.sun_family = AF_UNIX;
    std::copy(name.cbegin(), name.cend(), address.sun_path);
    const int probe = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (probe < 0)
        return false;
    const bool refused =
        ::connect(probe, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0 &&
        errno == ECONNREFUSED;
    ::close(probe);
    return refused;
}

// Removes the sockets this conversion's suites made and left: the ones that were not there
// before it started and that nobody answers on.
void RemoveAbandonedPipes(const QStringList& before)
{
    for (const QString& name : OwnPipeNames()) {
        const QString path = PipeFolder + u'/' + name;
        if (!before.contains(name) && IsAbandonedPipe(path))
            QFile::remove(path);
    }
}

bool IsRunnable(const QString& path)
{
    const QFileInfo info(path);
    return info.isFile() && info.isExecutable();
}

// The environment for the suite: its temporary files go to `temporaryDirectory`, which the
// caller removes. A locale that names no installed locale leaves LibreOffice unable to turn a
// file URL with non-ASCII characters into a file name, so it then gets the built-in UTF-8
// locale, which is the encoding file names have here.
QStringList SuiteEnvironment(const QString& temporaryDirectory)
{
    QStringList variables{QStringLiteral("TMPDIR=") + temporaryDirectory};
    if (const locale_t wanted = ::newlocale(LC_ALL_MASK, "", nullptr)) {
        ::freelocale(wanted);
        return variables;
    }
    if (const locale_t fallback = ::newlocale(LC_ALL_MASK, "C.UTF-8", nullptr)) {
        ::freelocale(fallback);
        variables.append(QStringLiteral("LC_ALL=C.UTF-8"));
    }
    return variables;
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

// One conversion: the suite's process, started again once when it asks for a restart. The
// processes it replaced stay reserved until this object goes.
class OfficeConversion final : public OfficeProcess
{
public:
    OfficeConversion(ProcessLauncher& launcher, LaunchRequest request,
                     std::unique_ptr<RunningProcess> process, std::unique_ptr<ProfileLease> lease,
                     QStringList pipesBefore)
        : m_launcher(launcher), m_request(std::move(request)), m_process(std::move(process)),
          m_lease(std::move(lease)), m_pipesBefore(std::move(pipesBefore))
    {
    }

    ~OfficeConversion() override
    {
        // None is left behind: a suite still running is ended before it is let go of.
        if (!m_process->WaitForEnd(0)) {
            m_process->Kill();
            m_process->WaitForEnd(QuitPatienceMs);
        }
        if (!Succeeded())
            RemoveAbandonedPipes(m_pipesBefore);
        if (m_lease && !Succeeded())
            m_lease->Discard();
    }

    OfficeConversion(const OfficeConversion&) = delete;
    OfficeConversion& operator=(const OfficeConversion&) = delete;

    bool WaitForEnd(qint32 timeoutMs) override
    {
        using namespace std::chrono;
        const auto deadline = steady_clock::now() + milliseconds(timeoutMs);
        for (;;) {
            const auto left = duration_cast<milliseconds>(deadline - steady_clock::now()).count();
            if (!m_process->WaitForEnd(static_cast<qint32>(std::max<qint64>(left, 0))))
                return false;
            if (m_process->ExitCode() != RestartExitCode || !m_replaced.empty())
                return true;
            int error = 0;
            std::unique_ptr<RunningProcess> again = m_launcher.Start(m_request, error);
            if (!again)
                return true;
            m_replaced.push_back(std::move(m_process));
            m_process = std::move(again);
        }
    }

    bool Succeeded() override { return m_process->WaitForEnd(0) && m_process->ExitCode() == 0; }

    void Quit() override
    {
        if (m_process->WaitForEnd(0))
            return;
        m_process->Terminate();
        if (m_process->WaitForEnd(QuitPatienceMs))
            return;
        m_process->Kill();
        m_process->WaitForEnd(QuitPatienceMs);
    }

    qint64 ProcessorTimeMs() override
    {
        qint64 total = 0;
        for (const std::unique_ptr<RunningProcess>& replaced : m_replaced)
            total += std::max<qint64>(replaced->ProcessorTimeMs(), 0);
        const qint64 current = m_process->ProcessorTimeMs();
        return current < 0 ? -1 : total + current;
    }

private:
    ProcessLauncher& m_launcher;
    LaunchRequest m_request;
    std::unique_ptr<RunningProcess> m_process;
    std::vector<std::unique_ptr<RunningProcess>> m_replaced;
    std::unique_ptr<ProfileLease> m_lease;
    QStringList m_pipesBefore;
};

class LibreOffice final : public OfficeSuite
{
public:
    LibreOffice(ProcessLauncher& launcher, QString profileHome)
        : m_launcher(launcher), m_profileHome(std::move(profileHome))
    {
    }

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
                candidates.append(QFileInfo(resolved).absolutePath() + u'/' + OfficeProcessName);
        }
        candidates.append(DebianProgram);
        for (const QString& candidate : candidates) {
            if (IsRunnable(candidate))
                return QFileInfo(candidate).absoluteFilePath();
        }
        return {};
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
        LaunchRequest request{program, HeadlessArguments(profile), SuiteEnvironment(temporary),
                              true};
        request.arguments << QStringLiteral("--infilter=Rich Text Format")
                          << QStringLiteral("--convert-to") << QStringLiteral("doc:MS Word 97")
                          << QStringLiteral("--outdir") << FileUrl(job.outputDirectory)
                          << FileUrl(job.source);
        QStringList pipesBefore = OwnPipeNames();
        int error = 0;
        std::unique_ptr<RunningProcess> process = m_launcher.Start(request, error);
        if (!process)
            return nullptr;
        return std::make_unique<OfficeConversion>(m_launcher, std::move(request),
                                                  std::move(process), std::move(lease),
                                                  std::move(pipesBefore));
    }

private:
    ProcessLauncher& m_launcher;
    QString m_profileHome;
};

}  // namespace

std::unique_ptr<OfficeSuite> CreateLibreOffice(ProcessLauncher& launcher,
                                               const QString& profileHome)
{
    return std::make_unique<LibreOffice>(launcher, profileHome);
}

QString OfficeProfileHome()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
           QStringLiteral("/velmora-sandpiper");
}
