#pragma once

// Starts programs directly, never through a shell, so the arguments reach a program exactly as
// they are given and no file name can run a command. It is the one way this program starts
// another; tests pass a fake.

#include <QString>
#include <QStringList>
#include <QtGlobal>

#include <memory>
#include <optional>

struct LaunchRequest final
{
    // A path, or a bare name looked up on the program search path.
    QString program;
    QStringList arguments;
    // Variables that the program gets besides or instead of the caller's: "NAME=value".
    QStringList environment;
    // Standard streams on /dev/null, so that the program's chatter stays out of ours.
    bool quiet = false;
};

// A started program. Destroying the object lets go of it: a program that still runs runs on,
// and is collected once it ends, so no finished child is ever left behind.
class RunningProcess
{
public:
    virtual ~RunningProcess() = default;

    // Waits up to `timeoutMs`; true once the program has ended. Its process id stays reserved
    // for it while this object lives, even after it has ended, so that nothing signalled by
    // that id can be another program.
    virtual bool WaitForEnd(qint32 timeoutMs) = 0;
    // The exit status of a program that has ended by itself; empty while it runs and after it
    // was ended by a signal.
    virtual std::optional<int> ExitCode() = 0;
    // Asks the program to end.
    virtual void Terminate() = 0;
    // Ends the program by force.
    virtual void Kill() = 0;
    // The processor time it has used, in milliseconds; -1 when that can't be told.
    virtual qint64 ProcessorTimeMs() = 0;
};

class ProcessLauncher
{
public:
    virtual ~ProcessLauncher() = default;
    // The started program, or null with the system's error number in `error`.
    virtual std::unique_ptr<RunningProcess> Start(const LaunchRequest& request, int& error) = 0;
};

std::unique_ptr<ProcessLauncher> CreateProcessLauncher();
