#include "services/ShellLaunching.h"

#include "core/Events.h"
#include "core/LocalText.h"
#include "platform/DocumentOpener.h"
#include "services/MessageBoxes.h"

#include <QDir>
#include <QFileInfo>

#include <cerrno>

namespace {

bool IsOpenVerb(const QString& verb)
{
    return verb.isEmpty() || verb == OpenVerb;
}

QString WithoutSurroundingQuotes(const QString& file)
{
    if (file.size() >= 2 && file.startsWith(u'"') && file.endsWith(u'"'))
        return file.mid(1, file.size() - 2);
    return file;
}

// What opening `file` gives: a file that isn't there or can't be read is told apart before the
// desktop is asked.
quint32 OpenCode(DocumentOpener& opener, const QString& file)
{
    const QString path = WithoutSurroundingQuotes(file);
    if (path.isEmpty())
        return ShellCodes::FileNotFound;
    const QFileInfo info(path);
    if (!info.exists())
        return info.absoluteDir().exists() ? ShellCodes::FileNotFound : ShellCodes::PathNotFound;
    if (!info.isReadable())
        return ShellCodes::AccessDenied;
    switch (opener.Open(info.absoluteFilePath())) {
    case DocumentOpener::Result::Opened:
        return ShellCodes::Success;
    case DocumentOpener::Result::NoAssociation:
        return ShellCodes::NoAssociation;
    case DocumentOpener::Result::OutOfMemory:
        return ShellCodes::OutOfMemory;
    case DocumentOpener::Result::StartFailed:
        break;
    }
    return ShellCodes::GeneralFailure;
}

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

quint32 StartFailureCode(int error, const QString& program)
{
    switch (error) {
    case ENOENT:
        // A bare name searched on the program path is simply not found.
        if (!program.contains(u'/') || QFileInfo(program).absoluteDir().exists())
            return ShellCodes::FileNotFound;
        return ShellCodes::PathNotFound;
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

void OpenDocument(DocumentOpener& opener, QWidget* ownerWindow, const QString& path,
                  const qint16& report)
{
    const quint32 code = OpenCode(opener, path);
    if (!ShellSucceeded(code) && report != 0)
        ReportShellFailure(code, OpenVerb, path, ownerWindow);
}

qint32 LaunchProcess(ProcessLauncher& launcher, QWidget* ownerWindow, const QString& verb,
                     const QString& file, const QStringList& arguments, const qint32& showMode,
                     ProcessHandle& processHandle, const qint16& report)
{
    Q_UNUSED(showMode);
    quint32 code = ShellCodes::NoAssociation;
    if (IsOpenVerb(verb)) {
        const QString program = WithoutSurroundingQuotes(file);
        int error = 0;
        ProcessHandle started = launcher.Start({program, arguments, {}, false}, error);
        code = started ? ShellCodes::Success : StartFailureCode(error, program);
        if (started)
            processHandle = std::move(started);
    }
    if (!ShellSucceeded(code) && report != 0)
        ReportShellFailure(code, verb, file, ownerWindow);
    return static_cast<qint32>(code);
}

qint32 LaunchAndWait(ProcessLauncher& launcher, QWidget* ownerWindow, const QString& verb,
                     const QString& file, const QStringList& arguments, qint32 showMode)
{
    ProcessHandle process;
    const qint16 report = -1;
    const qint32 code =
        LaunchProcess(launcher, ownerWindow, verb, file, arguments, showMode, process, report);
    if (process) {
        while (!process->WaitForEnd(WaitSliceMs))
            PumpEvents();
    }
    return code;
}
