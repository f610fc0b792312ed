#include "conversion/WordFinishing.h"

#include "conversion/WordDetection.h"
#include "core/AppContext.h"
#include "core/Events.h"
#include "core/LocalText.h"
#include "core/TempFiles.h"
#include "platform/ApplicationPath.h"
#include "platform/OfficeSuite.h"
#include "platform/ProcessUtilityLibrary.h"
#include "run/RunState.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QList>
#include <QSaveFile>

#include <memory>
#include <optional>

namespace {

// From this version on the suite is ended through its own object; below it, the process that
// its start added is found in the process table and ended by id.
constexpr qint32 QuitThroughObjectVersion = 0x00110000;
constexpr qint64 BaseTimeLimitMs = 120000;
constexpr qint64 TimeLimitPerMegabyteMs = 60000;
constexpr qint64 TimeLimitPerSquareMegabyteMs = 40000;

QList<qint32> RunningOfficeProcesses(ProcessUtilityLibrary& processes)
{
    QList<qint32> ids;
    const qint32 count = processes.GetProcessCount(OfficeProcessName);
    for (qint32 index = 0; index < count; ++index)
        ids.append(processes.GetProcessID(OfficeProcessName, index));
    return ids;
}

// The first office process that wasn't running before, 0 when every one was.
qint32 FindNewProcess(ProcessUtilityLibrary& processes, const QList<qint32>& before)
{
    const qint32 count = processes.GetProcessCount(OfficeProcessName);
    for (qint32 index = 0; index < count; ++index) {
        const qint32 id = processes.GetProcessID(OfficeProcessName, index);
        if (!before.contains(id))
            return id;
    }
    return 0;
}

// Waits in short slices so that the dialogs stay alive; false when the suite has hung (no
// processor time for a while) or has worked past the limit for the document. The limit counts
// the suite's processor time, so that a busy machine doesn't end a suite that is only slow.
bool WaitForConversion(OfficeProcess& office, qint64 documentBytes)
{
    const qint64 limitMs = OfficeTimeLimitMs(documentBytes);
    qint64 lastWork = office.ProcessorTimeMs();
    qint64 idleMs = 0;
    for (qint64 waitedMs = WaitSliceMs;; waitedMs += WaitSliceMs) {
        if (office.WaitForEnd(WaitSliceMs))
            return true;
        PumpEvents();
        const qint64 work = office.ProcessorTimeMs();
        // Where the suite's work can't be seen, the time waited stands in for it.
        if (work < 0) {
            if (waitedMs >= limitMs)
                return false;
            continue;
        }
        if (work >= limitMs)
            return false;
        if (work != lastWork) {
            lastWork = work;
            idleMs = 0;
        } else if ((idleMs += WaitSliceMs) >= OfficeIdleLimitMs) {
            return false;
        }
    }
}

// The suite writes its copy into the otherwise empty output folder. The copy goes into a new
// file beside the target that is then renamed over it, so the target is never half-written
// and a target that can't be replaced keeps what it held.
bool ReplaceWithConverted(const QString& target, const QString& outputDirectory)
{
    const QFileInfoList written =
        QDir(outputDirectory).entryInfoList(QDir::Files | QDir::Hidden | QDir::System);
    if (written.size() != 1)
        return false;
    QFile converted(written.first().absoluteFilePath());
    if (!converted.open(QIODevice::ReadOnly))
        return false;
    const QByteArray bytes = converted.readAll();
    if (bytes.isEmpty() || converted.error() != QFileDevice::NoError)
        return false;

    QSaveFile replacement(target);
    replacement.setDirectWriteFallback(false);
    if (!replacement.open(QIODevice::WriteOnly))
        return false;
    if (replacement.write(bytes) != bytes.size()) {
        replacement.cancelWriting();
        return false;
    }
    return replacement.commit();
}

}  // namespace

qint64 OfficeTimeLimitMs(qint64 documentBytes)
{
    const double megabytes = static_cast<double>(documentBytes) / (1024.0 * 1024.0);
    return BaseTimeLimitMs +
           static_cast<qint64>(megabytes * static_cast<double>(TimeLimitPerMegabyteMs) +
                               megabytes * megabytes *
                                   static_cast<double>(TimeLimitPerSquareMegabyteMs));
}

qint16 FinishWithWord(AppContext& context)
{
    // A relative target is where the engine wrote it: in the directory current until now.
    const QString target = QDir::current().absoluteFilePath(context.state.OutputPath);
    const WorkingDirectoryGuard guard(context.applicationDir);
    qint16 result = 0;
    ProcessUtilityLibrary& processes = context.processUtility;
    OfficeSuite& suite = context.officeSuite;

    const qint32 version = GetWordVersion(context);
    if (version < LowestFinishingVersion)
        return result;

    std::optional<TempFolder> workDirectory;
    std::unique_ptr<OfficeProcess> office;
    qint32 newProcess = 0;

    const auto finish = [&]() -> bool {
        const QList<qint32> before = RunningOfficeProcesses(processes);

        const QString program = suite.FindProgram();
        if (program.isEmpty())
            return false;
        // The copy and the suite's own temporary files live in a private folder with the
        // program's temporary prefix, which goes at the end and which a later sweep finds if
        // this run is killed.
        workDirectory.emplace();
        if (!workDirectory->IsValid())
            return false;
        const QDir work(workDirectory->Path());
        if (!work.mkdir(QStringLiteral("out")))
            return false;
        const OfficeJob job{target, work.filePath(QStringLiteral("out")), work.path()};
        office = suite.StartConversion(program, job);
        if (!office)
            return false;

        if (version < QuitThroughObjectVersion)
            newProcess = FindNewProcess(processes, before);

        if (!WaitForConversion(*office, QFileInfo(target).size()) || !office->Succeeded())
            return false;
        return ReplaceWithConverted(target, job.outputDirectory);
    };
    if (finish())
        result = -1;

    if (newProcess != 0) {
        // The object is let go of only afterwards: until then the ended process stays ours,
        // so its id can't have passed to some other process by the time it is signalled.
        if (processes.QuitProcess(newProcess) == 0)
            processes.KillProcess(newProcess);
    } else if (office) {
        office->Quit();
    }
    office.reset();
    workDirectory.reset();
    return result;
}

QString KeepAsRichText(RunState& state)
{
    const QFileInfo written(state.OutputPath);
    const QString richText =
        written.absolutePath() + u'/' + written.completeBaseName() + QStringLiteral(".rtf");
    // The rename never replaces a file that is there already.
    if (written.suffix().compare(QStringLiteral("rtf"), Qt::CaseInsensitive) != 0 &&
        QFile::rename(state.OutputPath, richText))
        state.OutputPath = richText;
    return LocalText(PlatformTexts::SavedAsRichText,
                     QStringLiteral("The document could not be saved in Word format, so it was "
                                    "saved as Rich Text Format:\n%1"))
        .arg(QDir::toNativeSeparators(state.OutputPath));
}
