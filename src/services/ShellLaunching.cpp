#include "services/ShellLaunching.h"

#include "services/Events.h"
#include "services/Localisation.h"
#include "services/MessageBoxes.h"

namespace {

constexpr quint32 WaitSliceMs = 100;

// Exact and case-sensitive: "PRINT" is not a print verb.
bool isPrintVerb(const QString& verb)
{
    return verb == QStringLiteral("print") || verb == QStringLiteral("printto");
}

QString unableToCall(quint32 code, const QString& verb)
{
    const QString sentence =
        isPrintVerb(verb)
            ? LocalText(6810, QStringLiteral("Unable to call the host application for printing"))
            : LocalText(6811, QStringLiteral("Unable to call the host application for opening"));
    return sentence + QStringLiteral(" (") + QString::number(code) + QStringLiteral(")");
}

}  // namespace

QString ShellFailureMessage(quint32 code, const QString& verb, const QString& file)
{
    if (code > 31)
        return unableToCall(code, verb);
    switch (code) {
    case 0:
    case 8:
        return LocalText(6809,
                         QStringLiteral("There was not enough memory to complete the operation!"));
    case 2:
    case 3:
        return file + LocalText(6803, QStringLiteral(" is not found!"));
    case 5: {
        const QString before = LocalText(6804, QStringLiteral("Access to "));
        return before + file + LocalText(6805, QStringLiteral(" is denied!"));
    }
    case 31:
        if (isPrintVerb(verb)) {
            const QString first = LocalText(
                6806, QStringLiteral("There is no application associated with the given file "
                                     "name extension for printing!"));
            const QString second = LocalText(
                6807, QStringLiteral("Please open the file manually and print from there."));
            return first + QStringLiteral("\n\n") + second;
        }
        return LocalText(6808, QStringLiteral("There is no application associated with the "
                                              "given file name extension!"));
    default:
        return unableToCall(code, verb);
    }
}

void ReportShellFailure(quint32 code, const QString& verb, const QString& file, QWidget* owner)
{
    ShowMessage(owner, ShellFailureMessage(code, verb, file), MessageIcon::Critical);
}

void OpenDocument(QWidget* ownerWindow, const QString& path, const qint16& report)
{
    const quint32 code = ShellExecute(ownerWindow, OpenVerb, path, QString(), ShowNormal);
    if (!ShellSucceeded(code) && report != 0)
        ReportShellFailure(code, OpenVerb, path, ownerWindow);
}

qint32 LaunchProcess(QWidget* ownerWindow, const QString& verb, const QString& file,
                     const QString& parameters, const qint32& showMode,
                     ProcessHandle& processHandle, const qint16& report,
                     const std::optional<QStringList>& exactArguments)
{
    ShellExecuteInfo info;
    info.ownerWindow = ownerWindow;
    info.verb = verb;
    info.file = file;
    info.parameters = parameters;
    info.exactArguments = exactArguments;
    info.showMode = showMode;
    const bool started = ShellExecuteEx(info);
    if (started)
        processHandle = info.process;
    else if (report != 0)
        ReportShellFailure(info.instApp, verb, file, ownerWindow);
    return static_cast<qint32>(info.instApp);
}

qint32 LaunchAndWait(QWidget* ownerWindow, const QString& verb, const QString& file,
                     const QString& parameters, qint32 showMode,
                     const std::optional<QStringList>& exactArguments)
{
    ProcessHandle process = ProcessHandle::None;
    const qint16 report = -1;
    const qint32 code = LaunchProcess(ownerWindow, verb, file, parameters, showMode, process,
                                      report, exactArguments);
    if (ShellSucceeded(static_cast<quint32>(code)) && process != ProcessHandle::None) {
        for (;;) {
            const quint32 waited = WaitForSingleObject(process, WaitSliceMs);
            // A handle that cannot be waited on never will be: end rather than spin forever.
            if (waited == WaitResults::Object0 || waited == WaitResults::Failed)
                break;
            PumpEvents();
        }
    }
    if (process != ProcessHandle::None)
        CloseHandle(process);
    return code;
}
