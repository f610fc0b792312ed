#pragma once

// The shell as the program sees it: start a program, open a document in the application the
// desktop associates with it, wait on a started process and let go of it. Results are shell
// codes: above 32 is success, 32 and below name the failure. Nothing here goes through a
// command interpreter; arguments reach the program exactly as given.

#include <QString>
#include <QtGlobal>

#include <QStringList>

#include <optional>

class QWidget;

namespace ShellCodes {
inline constexpr quint32 Success = 42;
// Any failure without a row of its own in the failure messages.
inline constexpr quint32 GeneralFailure = 1;
inline constexpr quint32 FileNotFound = 2;
inline constexpr quint32 PathNotFound = 3;
inline constexpr quint32 AccessDenied = 5;
inline constexpr quint32 OutOfMemory = 8;
inline constexpr quint32 BadFormat = 11;
inline constexpr quint32 NoAssociation = 31;
inline constexpr quint32 SharingViolation = 32;
}  // namespace ShellCodes

// Whether a code is a success.
inline bool ShellSucceeded(quint32 code)
{
    return code > 32;
}

// A started process, owned by whoever was given it until CloseHandle. `None` is the handle
// of "no process".
enum class ProcessHandle : quint64 { None = 0 };

// Results of WaitForSingleObject.
namespace WaitResults {
inline constexpr quint32 Object0 = 0;
inline constexpr quint32 Timeout = 258;
inline constexpr quint32 Failed = 0xFFFFFFFFu;
}  // namespace WaitResults

// Opens `file` in the application the desktop associates with its type, and returns as soon
// as that application is on its way: nothing waits for it. Only the verbs "open" and "" are
// known. Owner window and show mode have no meaning for this desktop and are taken for the
// shape of the call only.
quint32 ShellExecute(QWidget* ownerWindow, const QString& verb, const QString& file,
                     const QString& parameters, qint32 showMode);

// What a program start is given and what it gives back.
struct ShellExecuteInfo final
{
    QWidget* ownerWindow = nullptr;
    QString verb;
    // The program: a path, or a bare name looked up on the program search path. One pair of
    // surrounding double quotes is taken off.
    QString file;
    // The argument text, split into arguments by the program's own command line tokeniser.
    QString parameters;
    // When set, the arguments exactly as they are, for names that the parameter text can't
    // carry (it has no escape for a quote inside a quoted name); `parameters` is then not split.
    std::optional<QStringList> exactArguments;
    qint32 showMode = 0;

    quint32 instApp = 0;
    ProcessHandle process = ProcessHandle::None;
};

// Starts the program of `info` directly, in the current directory. A file that is not a
// program is not opened with its application here (that is ShellExecute's work): it is
// refused as access denied. True on success, with
// `process` set; `instApp` holds the shell code in both cases. Only the verbs "open" and ""
// start a program; another verb finds no application for it.
bool ShellExecuteEx(ShellExecuteInfo& info);

// Waits up to `timeoutMs` for the process to end: Object0 when it has ended (now or before),
// Timeout while it runs, Failed for a handle that names no process.
quint32 WaitForSingleObject(ProcessHandle process, quint32 timeoutMs);

// Releases the handle. A process that is still running runs on; it is reaped when it ends,
// so no finished child is left behind. False for a handle that names no process.
bool CloseHandle(ProcessHandle process);
