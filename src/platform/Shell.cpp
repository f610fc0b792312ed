#include "platform/Shell.h"

#include "platform/DesktopOpener.h"
#include "run/CommandLine.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <map>
#include <system_error>
#include <thread>
#include <vector>

#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace {

constexpr quint32 Infinite = 0xFFFFFFFFu;
constexpr qint64 MaxSliceMs = 1000;

struct ChildProcess final
{
    pid_t pid = 0;
    int pidfd = -1;  // -1 where the kernel has no process descriptors: the wait then polls
    bool ended = false;
    int status = 0;
};

std::map<quint64, ChildProcess>& children()
{
    static std::map<quint64, ChildProcess> table;
    return table;
}

quint64 nextHandle = 0;

QString withoutSurroundingQuotes(const QString& file)
{
    if (file.size() >= 2 && file.startsWith(u'"') && file.endsWith(u'"'))
        return file.mid(1, file.size() - 2);
    return file;
}

int openProcessDescriptor(pid_t pid)
{
#ifdef SYS_pidfd_open
    return static_cast<int>(::syscall(SYS_pidfd_open, pid, 0));
#else
    Q_UNUSED(pid);
    return -1;
#endif
}

void closeDescriptor(ChildProcess& child)
{
    if (child.pidfd >= 0) {
        ::close(child.pidfd);
        child.pidfd = -1;
    }
}

// Collects the child's exit without blocking. True once it has ended.
bool reap(ChildProcess& child)
{
    if (child.ended)
        return true;
    for (;;) {
        int status = 0;
        const pid_t result = ::waitpid(child.pid, &status, WNOHANG);
        if (result == child.pid) {
            child.ended = true;
            child.status = status;
            break;
        }
        if (result == 0)
            return false;
        if (errno == EINTR)
            continue;
        // Someone else collected it already: it is gone all the same.
        child.ended = true;
        break;
    }
    closeDescriptor(child);
    return true;
}

// A child let go of while it runs is still ours to collect, or it would linger as a zombie.
void reapInBackground(pid_t pid)
{
    try {
        std::thread([pid] {
            while (::waitpid(pid, nullptr, 0) == -1 && errno == EINTR) {
            }
        }).detach();
    } catch (const std::system_error&) {
        // Without a thread the child is collected by whoever outlives us.
    }
}

int spawn(const QString& program, const QStringList& arguments, pid_t& pid)
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

    posix_spawnattr_t attributes;
    if (const int error = posix_spawnattr_init(&attributes))
        return error;
    sigset_t signalSet;
    sigemptyset(&signalSet);
    posix_spawnattr_setsigmask(&attributes, &signalSet);
    // An ignored SIGPIPE would be inherited by the program; it gets the default back.
    sigaddset(&signalSet, SIGPIPE);
    posix_spawnattr_setsigdefault(&attributes, &signalSet);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);

    const int error = posix_spawnp(&pid, argv.front(), nullptr, &attributes, argv.data(), environ);
    posix_spawnattr_destroy(&attributes);
    return error;
}

ProcessHandle registerChild(pid_t pid)
{
    ChildProcess child;
    child.pid = pid;
    child.pidfd = openProcessDescriptor(pid);
    const quint64 handle = ++nextHandle;
    children().emplace(handle, child);
    return static_cast<ProcessHandle>(handle);
}

bool directoryOfExists(const QString& path)
{
    return QFileInfo(path).absoluteDir().exists();
}

quint32 codeForSpawnError(int error, const QString& program)
{
    switch (error) {
    case ENOENT:
        // A bare name searched on the program path is simply not found.
        if (!program.contains(u'/'))
            return ShellCodes::FileNotFound;
        return directoryOfExists(program) ? ShellCodes::FileNotFound : ShellCodes::PathNotFound;
    case ENOTDIR:
    case ENAMETOOLONG:
    case ELOOP:
        return ShellCodes::PathNotFound;
    case EACCES:
    case EPERM:
    case EISDIR:
        return ShellCodes::AccessDenied;
    case ENOMEM:
    case EAGAIN:
    case E2BIG:
        return ShellCodes::OutOfMemory;
    case ENOEXEC:
        return ShellCodes::BadFormat;
    case ETXTBSY:
        return ShellCodes::SharingViolation;
    default:
        return ShellCodes::GeneralFailure;
    }
}

bool isOpenVerb(const QString& verb)
{
    return verb.isEmpty() || verb == QStringLiteral("open");
}

}  // namespace

quint32 ShellExecute(QWidget* ownerWindow, const QString& verb, const QString& file,
                     const QString& parameters, qint32 showMode)
{
    Q_UNUSED(ownerWindow);
    Q_UNUSED(parameters);
    Q_UNUSED(showMode);
    if (!isOpenVerb(verb))
        return ShellCodes::NoAssociation;
    const QString path = withoutSurroundingQuotes(file);
    if (path.isEmpty())
        return ShellCodes::FileNotFound;
    const QFileInfo info(path);
    if (!info.exists())
        return directoryOfExists(path) ? ShellCodes::FileNotFound : ShellCodes::PathNotFound;
    if (!info.isReadable())
        return ShellCodes::AccessDenied;

    switch (
        OpenWithAssociatedApplication(QFile::encodeName(info.absoluteFilePath()).toStdString())) {
    case OpenResult::Opened:
        return ShellCodes::Success;
    case OpenResult::NoAssociation:
        return ShellCodes::NoAssociation;
    case OpenResult::OutOfMemory:
        return ShellCodes::OutOfMemory;
    case OpenResult::StartFailed:
        break;
    }
    return ShellCodes::GeneralFailure;
}

bool ShellExecuteEx(ShellExecuteInfo& info)
{
    if (!isOpenVerb(info.verb)) {
        info.instApp = ShellCodes::NoAssociation;
        return false;
    }
    const QString program = withoutSurroundingQuotes(info.file);
    QStringList arguments;
    if (info.exactArguments)
        arguments = *info.exactArguments;
    else
        SplitCommandLine(info.parameters, arguments);
    pid_t pid = 0;
    if (const int error = spawn(program, arguments, pid)) {
        info.instApp = codeForSpawnError(error, program);
        return false;
    }
    info.process = registerChild(pid);
    info.instApp = ShellCodes::Success;
    return true;
}

quint32 WaitForSingleObject(ProcessHandle process, quint32 timeoutMs)
{
    const auto found = children().find(static_cast<quint64>(process));
    if (found == children().end())
        return WaitResults::Failed;
    ChildProcess& child = found->second;

    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    for (;;) {
        if (reap(child))
            return WaitResults::Object0;
        qint64 sliceMs = MaxSliceMs;
        if (timeoutMs != Infinite) {
            const auto left =
                std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
            if (left.count() <= 0)
                return WaitResults::Timeout;
            sliceMs = std::min<qint64>(left.count(), MaxSliceMs);
        }
        if (child.pidfd >= 0) {
            pollfd descriptor{child.pidfd, POLLIN, 0};
            ::poll(&descriptor, 1, static_cast<int>(sliceMs));
        } else {
            // Without a process descriptor there is nothing to sleep on: look again shortly.
            std::this_thread::sleep_for(std::chrono::milliseconds(std::min<qint64>(sliceMs, 5)));
        }
    }
}

bool CloseHandle(ProcessHandle process)
{
    const auto found = children().find(static_cast<quint64>(process));
    if (found == children().end())
        return false;
    ChildProcess& child = found->second;
    if (!reap(child))
        reapInBackground(child.pid);
    closeDescriptor(child);
    children().erase(found);
    return true;
}
