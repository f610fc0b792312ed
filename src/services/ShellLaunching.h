#pragma once

// Starting the engine, opening finished documents, waiting for a started program without
// freezing the dialogs, and telling the user what a shell failure code means. Nothing else in
// the program starts a process.

#include "platform/Shell.h"

#include <QString>
#include <QStringList>
#include <QtGlobal>

#include <optional>

class QWidget;

// The show mode of every caller: a normal window.
inline constexpr qint32 ShowNormal = 1;
inline const QString OpenVerb = QStringLiteral("open");

// Opens `path` with the application associated with it. With `report` non-zero a failure is
// shown to the user.
void OpenDocument(QWidget* ownerWindow, const QString& path, const qint16& report);

// Runs `verb` on the program `file` (which may stand in quotes) with the argument text
// `parameters` and returns the shell code. On success `processHandle` receives the process,
// which the caller then owns and must release with CloseHandle; on failure it is left as it
// was, and with `report` non-zero the failure is shown.
// `exactArguments`, when given, are handed to the program as they are instead of the split
// parameter text.
qint32 LaunchProcess(QWidget* ownerWindow, const QString& verb, const QString& file,
                     const QString& parameters, const qint32& showMode,
                     ProcessHandle& processHandle, const qint16& report,
                     const std::optional<QStringList>& exactArguments = std::nullopt);

// LaunchProcess with the report on, then a wait in slices of 100 milliseconds around
// PumpEvents until the process has ended. Returns the shell code.
qint32 LaunchAndWait(QWidget* ownerWindow, const QString& verb, const QString& file,
                     const QString& parameters, qint32 showMode,
                     const std::optional<QStringList>& exactArguments = std::nullopt);

// Shows the message for a failure code in a critical message box, in the user's language.
void ReportShellFailure(quint32 code, const QString& verb, const QString& file,
                        QWidget* owner = nullptr);

// The message that ReportShellFailure shows.
QString ShellFailureMessage(quint32 code, const QString& verb, const QString& file);
