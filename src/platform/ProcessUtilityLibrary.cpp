#include "platform/ProcessUtilityLibrary.h"

// Placeholder until the shared library loader lands: a library that finds nothing.
namespace {
class MissingLibrary final : public ProcessUtilityLibrary
{
public:
    qint32 GetParentProcessID(qint32) override { return 0; }
    qint64 GetProcessHwnd(qint32) override { return 0; }
    qint32 GetProcessID(const QString&, qint32) override { return 0; }
    qint64 GetProcessHwndEx(qint32, QString&) override { return 0; }
    bool GetWindowRect(qint64, ScreenRect&) override { return false; }
    qint32 GetProcessCount(const QString&) override { return 0; }
    qint32 QuitProcess(qint32) override { return 0; }
    qint32 KillProcess(qint32) override { return 0; }
    qint32 GetFileVersion(const QString&) override { return 0; }
};
}  // namespace

std::unique_ptr<ProcessUtilityLibrary> LoadProcessUtilityLibrary(const QString&)
{
    return std::make_unique<MissingLibrary>();
}
