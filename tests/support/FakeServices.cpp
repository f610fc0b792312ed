#include "support/FakeServices.h"

#include <QDir>

namespace {

class FakeShell final : public SettingsShell
{
public:
    explicit FakeShell(FakeStore& store) : m_store(store) {}

    std::optional<QVariant> RegRead(const QString& name) override
    {
        if (m_store.failReads || !m_store.values.contains(name))
            return std::nullopt;
        return m_store.values.value(name);
    }
    bool RegWrite(const QString& name, const QString& text) override { return write(name, text); }
    bool RegWriteDword(const QString& name, qint32 value) override { return write(name, value); }

private:
    bool write(const QString& name, const QVariant& value)
    {
        if (m_store.failWrites)
            return false;
        m_store.values.insert(name, value);
        m_store.writes.append(name);
        return true;
    }

    FakeStore& m_store;
};

}  // namespace

SettingsShellFactory FakeStore::Factory()
{
    return [this]() -> std::unique_ptr<SettingsShell> {
        if (unavailable)
            return nullptr;
        ++shellsMade;
        return std::make_unique<FakeShell>(*this);
    };
}

HelpViewer::Failure FakeHelpViewer::ShowPage(const QString& contentsFile, const QString& pageFile,
                                             const QString& anchor)
{
    contents.append(contentsFile);
    pages.append(pageFile);
    anchors.append(anchor);
    return failure;
}

qint32 FakeProcessUtility::GetParentProcessID(qint32 processId)
{
    record(QStringLiteral("GetParentProcessID(%1)").arg(processId));
    return parentId;
}

qint64 FakeProcessUtility::GetProcessHwnd(qint32 processId)
{
    record(QStringLiteral("GetProcessHwnd(%1)").arg(processId));
    return parentWindow;
}

qint32 FakeProcessUtility::GetProcessID(const QString& programName, qint32 index)
{
    record(QStringLiteral("GetProcessID(%1,%2)").arg(programName).arg(index));
    if (!processes.contains(programName))
        return wordProcessId;
    const QList<qint32>& ids = processes[programName];
    return index >= 0 && index < ids.size() ? ids.at(index) : 0;
}

qint64 FakeProcessUtility::GetProcessHwndEx(qint32 processId, QString& hint)
{
    record(QStringLiteral("GetProcessHwndEx(%1,%2)").arg(processId).arg(hint));
    if (!rewrittenHint.isEmpty())
        hint = rewrittenHint;
    return wordWindow;
}

bool FakeProcessUtility::GetWindowRect(qint64 window, ScreenRect& rect)
{
    record(QStringLiteral("GetWindowRect(%1)").arg(window));
    if (!windows.contains(window))
        return false;
    rect = windows.value(window);
    return true;
}

qint32 FakeProcessUtility::GetProcessCount(const QString& programName)
{
    record(QStringLiteral("GetProcessCount(%1)").arg(programName));
    return static_cast<qint32>(processes.value(programName).size());
}

qint32 FakeProcessUtility::QuitProcess(qint32 processId)
{
    record(QStringLiteral("QuitProcess(%1)").arg(processId));
    if (quitResult != 0)
        removeProcess(processId);
    return quitResult;
}

qint32 FakeProcessUtility::KillProcess(qint32 processId)
{
    record(QStringLiteral("KillProcess(%1)").arg(processId));
    removeProcess(processId);
    return 0;
}

qint32 FakeProcessUtility::GetFileVersion(const QString& path)
{
    record(QStringLiteral("GetFileVersion(%1)").arg(path));
    return fileVersions.value(path, 0);
}

void FakeProcessUtility::record(const QString& call)
{
    calls.append(call);
    workingDirectories.append(QDir::currentPath());
}

void FakeProcessUtility::removeProcess(qint32 processId)
{
    for (QList<qint32>& ids : processes)
        ids.removeAll(processId);
}

namespace {

class FakeOfficeProcess final : public OfficeProcess
{
public:
    explicit FakeOfficeProcess(FakeOfficeRun& run) : m_run(run) {}
    ~FakeOfficeProcess() override { m_run.released = true; }
    FakeOfficeProcess(const FakeOfficeProcess&) = delete;
    FakeOfficeProcess& operator=(const FakeOfficeProcess&) = delete;

    bool WaitForEnd(qint32 timeoutMs) override
    {
        ++m_run.waits;
        if (!m_run.ended) {
            m_run.waitedMs += timeoutMs;
            m_run.ended = m_run.runsForMs >= 0 && m_run.waitedMs >= m_run.runsForMs;
        }
        return m_run.ended;
    }
    bool Succeeded() override { return m_run.ended && m_run.succeeds; }
    void Quit() override
    {
        ++m_run.quits;
        if (!m_run.ended) {
            m_run.ended = true;
            m_run.succeeds = false;
        }
    }
    qint64 ProcessorTimeMs() override
    {
        if (!m_run.working)
            return 0;
        return m_run.working == FakeOfficeRun::Unseen ? -1 : m_run.waitedMs;
    }

private:
    FakeOfficeRun& m_run;
};

class FakeRunningProgram final : public RunningProcess
{
public:
    explicit FakeRunningProgram(FakeProgram program) : m_program(program) {}

    bool WaitForEnd(qint32) override
    {
        if (m_program.waits < 0)
            return false;
        if (m_waited < m_program.waits)
            ++m_waited;
        return m_waited >= m_program.waits;
    }
    std::optional<int> ExitCode() override
    {
        if (m_program.waits < 0 || m_waited < m_program.waits)
            return std::nullopt;
        return m_program.exitCode;
    }
    void Terminate() override {}
    void Kill() override {}
    qint64 ProcessorTimeMs() override { return -1; }

private:
    FakeProgram m_program;
    qint32 m_waited = 0;
};

}  // namespace

std::unique_ptr<RunningProcess> FakeLauncher::Start(const LaunchRequest& request, int& error)
{
    requests.append(request);
    if (startError != 0) {
        error = startError;
        return nullptr;
    }
    if (!programs.contains(request.program))
        return real->Start(request, error);
    if (onStart)
        onStart(request);
    return std::make_unique<FakeRunningProgram>(programs.value(request.program));
}

QString FakeOfficeSuite::FindProgram()
{
    findWorkingDirectories.append(QDir::currentPath());
    return programPath;
}

std::unique_ptr<OfficeProcess> FakeOfficeSuite::StartConversion(const QString& program,
                                                                const OfficeJob& job)
{
    jobs.append(job);
    programsStarted.append(program);
    if (startFails)
        return nullptr;
    if (onStart)
        onStart(job);
    run.started = true;
    return std::make_unique<FakeOfficeProcess>(run);
}
