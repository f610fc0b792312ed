#include "platform/ProcessLauncher.h"

#include <QByteArray>
#include <QFile>
#include <QList>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Without process descriptors a wait has nothing to sleep on and looks again this often.
constexpr int PollMs = 5;

int OpenProcessDescriptor(pid_t pid)
{
#ifdef SYS_pidfd_open
    return static_cast<int>(::syscall(SYS_pidfd_open, pid, 0));
#else
    Q_UNUSED(pid);
    return -1;
#endif
}

// Sleeps until the process behind `descriptor` has ended or `timeoutMs` has passed.
void SleepOn(int descriptor, int timeoutMs)
{
    if (descriptor >= 0) {
        pollfd entry{descriptor, POLLIN, 0};
        ::poll(&entry, 1, timeoutMs);
    } else {
        std::this_thread::sleep_for(std::chrono::milliseconds(std::min(timeoutMs, PollMs)));
    }
}

// Collects programs that were let go of while they ran, in one thread that exists while there
// is something to collect.
class Collector final
{
public:
    ~Collector()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_stopping = true;
        }
        m_wake.notify_all();
        if (m_thread.joinable())
            m_thread.join();
    }

    void Collect(pid_t pid, int descriptor)
    {
        const std::lock_guard lock(m_mutex);
        m_pending.push_back({pid, descriptor});
        if (!m_thread.joinable())
            m_thread = std::thread([this] { Run(); });
        m_wake.notify_all();
    }

private:
    struct Child final
    {
        pid_t pid;
        int descriptor;
    };

    void Run()
    {
        std::unique_lock lock(m_mutex);
        while (!m_stopping) {
            std::erase_if(m_pending, [](const Child& child) {
                if (::waitpid(child.pid, nullptr, WNOHANG) == 0)
                    return false;
                if (child.descriptor >= 0)
                    ::close(child.descriptor);
                return true;
            });
            if (m_pending.empty()) {
                m_wake.wait(lock, [this] { return m_stopping || !m_pending.empty(); });
                continue;
            }
            std::vector<pollfd> entries;
            for (const Child& child : m_pending) {
                if (child.descriptor >= 0)
                    entries.push_back({child.descriptor, POLLIN, 0});
            }
            // A child without a descriptor can only be looked at again after a while; a newly
            // let-go child waits at most one round to be looked at.
            const int timeoutMs = entries.size() == m_pending.size() ? 200 : 50;
            lock.unlock();
            ::poll(entries.data(), entries.size(), timeoutMs);
            lock.lock();
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::vector<Child> m_pending;
    std::thread m_thread;
    bool m_stopping = false;
};

class SpawnedProcess final : public RunningProcess
{
public:
    SpawnedProcess(pid_t pid, std::shared_ptr<Collector> collector)
        : m_pid(pid), m_descriptor(OpenProcessDescriptor(pid)), m_collector(std::move(collector))
    {
    }

    ~SpawnedProcess() override
    {
        if (HasEnded()) {
            while (::waitpid(m_pid, nullptr, 0) == -1 && errno == EINTR) {
            }
            if (m_descriptor >= 0)
                ::close(m_descriptor);
            return;
        }
        m_collector->Collect(m_pid, m_descriptor);
    }

    SpawnedProcess(const SpawnedProcess&) = delete;
    SpawnedProcess& operator=(const SpawnedProcess&) = delete;

    bool WaitForEnd(qint32 timeoutMs) override
    {
        using namespace std::chrono;
        const auto deadline = steady_clock::now() + milliseconds(std::max(timeoutMs, 0));
        while (!HasEnded()) {
            const auto left = duration_cast<milliseconds>(deadline - steady_clock::now()).count();
            if (left <= 0)
                return false;
            SleepOn(m_descriptor, static_cast<int>(std::min<qint64>(left, 1000)));
        }
        return true;
    }

    std::optional<int> ExitCode() override
    {
        if (!HasEnded() || !m_exitCode)
            return std::nullopt;
        return m_exitCode;
    }

    void Terminate() override
    {
        if (!HasEnded())
            ::kill(m_pid, SIGTERM);
    }

    void Kill() override
    {
        if (!HasEnded())
            ::kill(m_pid, SIGKILL);
    }

    qint64 ProcessorTimeMs() override
    {
        QFile stat(QStringLiteral("/proc/%1/stat").arg(m_pid));
        if (!stat.open(QIODevice::ReadOnly))
            return -1;
        const QByteArray line = stat.readAll();
        // The program's name stands in parentheses and may hold blanks; the fields follow it.
        const qsizetype close = line.lastIndexOf(')');
        if (close < 0)
            return -1;
        const QList<QByteArray> fields = line.mid(close + 2).split(' ');
        // After the name: the state is the 1st field, user time the 12th, system time the 13th.
        const long ticksPerSecond = ::sysconf(_SC_CLK_TCK);
        if (fields.size() < 13 || ticksPerSecond <= 0)
            return -1;
        return (fields.at(11).toLongLong() + fields.at(12).toLongLong()) * 1000 / ticksPerSecond;
    }

private:
    // Looks without collecting, so the ended child keeps its id until this object goes.
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
        if (info.si_code == CLD_EXITED)
            m_exitCode = info.si_status;
        return true;
    }

    pid_t m_pid;
    int m_descriptor;
    std::shared_ptr<Collector> m_collector;
    bool m_ended = false;
    std::optional<int> m_exitCode;
};

class PosixLauncher final : public ProcessLauncher
{
public:
    std::unique_ptr<RunningProcess> Start(const LaunchRequest& request, int& error) override
    {
        QList<QByteArray> encoded;
        encoded.append(QFile::encodeName(request.program));
        for (const QString& argument : request.arguments)
            encoded.append(argument.toLocal8Bit());
        std::vector<char*> argv;
        argv.reserve(static_cast<std::size_t>(encoded.size()) + 1);
        for (QByteArray& bytes : encoded)
            argv.push_back(bytes.data());
        argv.push_back(nullptr);

        std::vector<QByteArray> variables;
        for (char** entry = environ; *entry; ++entry) {
            const QByteArray variable(*entry);
            const QByteArray name = variable.left(variable.indexOf('=') + 1);
            const bool replaced = std::any_of(
                request.environment.begin(), request.environment.end(),
                [&name](const QString& given) { return given.toLocal8Bit().startsWith(name); });
            if (!replaced)
                variables.push_back(variable);
        }
        for (const QString& given : request.environment)
            variables.push_back(given.toLocal8Bit());
        std::vector<char*> envp;
        envp.reserve(variables.size() + 1);
        for (QByteArray& variable : variables)
            envp.push_back(variable.data());
        envp.push_back(nullptr);

        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        if (request.quiet) {
            posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
            posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
            posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        }
        posix_spawnattr_t attributes;
        posix_spawnattr_init(&attributes);
        sigset_t defaults;
        sigemptyset(&defaults);
        posix_spawnattr_setsigmask(&attributes, &defaults);
        // Signals ignored here would stay ignored in the program; it gets the defaults back.
        sigaddset(&defaults, SIGPIPE);
        sigaddset(&defaults, SIGTERM);
        posix_spawnattr_setsigdefault(&attributes, &defaults);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);

        pid_t pid = 0;
        error = posix_spawnp(&pid, argv.front(), &actions, &attributes, argv.data(), envp.data());
        posix_spawnattr_destroy(&attributes);
        posix_spawn_file_actions_destroy(&actions);
        if (error != 0)
            return nullptr;
        return std::make_unique<SpawnedProcess>(pid, m_collector);
    }

private:
    std::shared_ptr<Collector> m_collector = std::make_shared<Collector>();
};

}  // namespace

std::unique_ptr<ProcessLauncher> CreateProcessLauncher()
{
    return std::make_unique<PosixLauncher>();
}
