#include "support/FakeServices.h"

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
    bool RegWrite(const QString& name, const QString& text) override { return Write(name, text); }
    bool RegWriteDword(const QString& name, qint32 value) override { return Write(name, value); }

private:
    bool Write(const QString& name, const QVariant& value)
    {
        if (m_store.failWrites)
            return false;
        m_store.values.insert(name, value);
        m_store.writes.append(name);
        return true;
    }

    FakeStore& m_store;
};

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
        m_run.succeeds = m_run.succeeds && m_run.ended;
        m_run.ended = true;
    }
    qint64 ProcessorTimeMs() override
    {
        if (m_run.working == FakeOfficeRun::Unseen)
            return -1;
        return m_run.working == FakeOfficeRun::Busy ? m_run.waitedMs : 0;
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
        if (m_program.waits >= 0 && m_waited < m_program.waits)
            ++m_waited;
        return Ended();
    }
    std::optional<int> ExitCode() override
    {
        return Ended() && !m_signalled ? std::optional<int>(m_program.exitCode) : std::nullopt;
    }
    // Ended by a signal, which leaves no exit code.
    void Terminate() override { m_signalled = m_signalled || !Ended(); }
    void Kill() override { Terminate(); }
    qint64 ProcessorTimeMs() override { return -1; }

private:
    bool Ended() const
    {
        return m_signalled || (m_program.waits >= 0 && m_waited >= m_program.waits);
    }

    FakeProgram m_program;
    qint32 m_waited = 0;
    bool m_signalled = false;
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

qint32 FakeProcessUtility::GetProcessID(const QString& programName, qint32 index)
{
    const QList<qint32> ids = processes.value(programName);
    const qint32 id = !processes.contains(programName) ? wordProcessId : ids.value(index, 0);
    return Record("GetProcessID", programName + u',' + QString::number(index), id);
}

qint64 FakeProcessUtility::GetProcessHwndEx(qint32 processId, QString& hint)
{
    Record("GetProcessHwndEx", QString::number(processId) + u',' + hint, 0);
    if (!rewrittenHint.isEmpty())
        hint = rewrittenHint;
    return wordWindow;
}

bool FakeProcessUtility::GetWindowRect(qint64 window, ScreenRect& rect)
{
    if (!Record("GetWindowRect", window, windows.contains(window)))
        return false;
    rect = windows.value(window);
    return true;
}

qint32 FakeProcessUtility::QuitProcess(qint32 processId)
{
    for (QList<qint32>& ids : processes) {
        if (quitResult != 0)
            ids.removeAll(processId);
    }
    return Record("QuitProcess", processId, quitResult);
}

qint32 FakeProcessUtility::KillProcess(qint32 processId)
{
    for (QList<qint32>& ids : processes)
        ids.removeAll(processId);
    return Record("KillProcess", processId, 0);
}

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
