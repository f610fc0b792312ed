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
    bool RegWrite(const QString& name, const QString& text) override
    {
        return write(name, text);
    }
    bool RegWriteDword(const QString& name, qint32 value) override
    {
        return write(name, value);
    }

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

bool FakeHelpViewer::ShowPage(const QString& pageFile, const QString& anchor, QString& error)
{
    pages.append(pageFile);
    anchors.append(anchor);
    if (fail)
        error = QStringLiteral("no viewer");
    return !fail;
}

qint32 FakeProcessUtility::GetParentProcessID(qint32 processId)
{
    calls.append(QStringLiteral("GetParentProcessID(%1)").arg(processId));
    return parentId;
}

qint64 FakeProcessUtility::GetProcessHwnd(qint32 processId)
{
    calls.append(QStringLiteral("GetProcessHwnd(%1)").arg(processId));
    return parentWindow;
}

qint32 FakeProcessUtility::GetProcessID(const QString& programName, qint32 reserved)
{
    calls.append(QStringLiteral("GetProcessID(%1,%2)").arg(programName).arg(reserved));
    return wordProcessId;
}

qint64 FakeProcessUtility::GetProcessHwndEx(qint32 processId, QString& hint)
{
    calls.append(QStringLiteral("GetProcessHwndEx(%1,%2)").arg(processId).arg(hint));
    if (!rewrittenHint.isEmpty())
        hint = rewrittenHint;
    return wordWindow;
}

bool FakeProcessUtility::GetWindowRect(qint64 window, ScreenRect& rect)
{
    calls.append(QStringLiteral("GetWindowRect(%1)").arg(window));
    if (!windows.contains(window))
        return false;
    rect = windows.value(window);
    return true;
}

qint32 FakeProcessUtility::GetProcessCount(const QString& programName)
{
    calls.append(QStringLiteral("GetProcessCount(%1)").arg(programName));
    return 0;
}

qint32 FakeProcessUtility::QuitProcess(qint32 processId)
{
    calls.append(QStringLiteral("QuitProcess(%1)").arg(processId));
    return 0;
}

qint32 FakeProcessUtility::KillProcess(qint32 processId)
{
    calls.append(QStringLiteral("KillProcess(%1)").arg(processId));
    return 0;
}

qint32 FakeProcessUtility::GetFileVersion(const QString& path)
{
    calls.append(QStringLiteral("GetFileVersion(%1)").arg(path));
    return 0;
}
