#pragma once

// Starting the engine, opening finished documents, waiting for a started program without
// freezing the dialogs, and telling the user what a failure means. Results are shell codes:
// above 32 is success, 32 and below name the failure, and each has its message.

#include "platform/ProcessLauncher.h"

#include <QString>
#include <QStringList>
#include <QtGlobal>

#include <memory>

class DocumentOpener;
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

inline bool ShellSucceeded(quint32 code)
{
    return code > 32;
}

// The show mode of every caller: a normal window.
inline constexpr qint32 ShowNormal = 1;
inline const QString OpenVerb = QStringLiteral("open");

// A started program, owned by whoever was given it; letting go of it never ends the program.
using ProcessHandle = std::unique_ptr<RunningProcess>;

// Opens `path` with the application associated with it, without waiting for that application.
// With `report` non-zero a failure is shown to the user.
void OpenDocument(DocumentOpener& opener, QWidget* ownerWindow, const QString& path,
                  const qint16& report);

// Runs `verb` on the program `file` (which may stand in quotes) with `arguments` exactly as
// they are, and returns the shell code. Only the verbs "open" and "" start a program. On success
// `processHandle` receives the process; on failure it is left as it was, and with `report`
// non-zero the failure is shown.
qint32 LaunchProcess(ProcessLauncher& launcher, QWidget* ownerWindow, const QString& verb,
                     const QString& file, const QStringList& arguments, const qint32& showMode,
                     ProcessHandle& processHandle, const qint16& report);

// LaunchProcess with the report on, then a wait in slices of 100 milliseconds around PumpEvents
// until the process has ended. Returns the shell code.
qint32 LaunchAndWait(ProcessLauncher& launcher, QWidget* ownerWindow, const QString& verb,
                     const QString& file, const QStringList& arguments, qint32 showMode);

// The shell code for a program that could not be started with the system's error `error`.
quint32 StartFailureCode(int error, const QString& program);

// Shows the message for a failure code in a critical message box, in the user's language.
void ReportShellFailure(quint32 code, const QString& verb, const QString& file,
                        QWidget* owner = nullptr);

// The message that ReportShellFailure shows.
QString ShellFailureMessage(quint32 code, const QString& verb, const QString& file);
