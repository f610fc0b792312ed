#pragma once

// The open and save dialogs of the main dialog. Each is a real modal file dialog named
// "CommonDialog1", so that a test can answer it like a user would.

#include <QString>

#include <functional>
#include <optional>

class QWidget;

// A filter as the program's texts write it, "Description (*.ext)|*.ext", in the dialog's form.
QString DialogFilter(const QString& barFilter);

// Asks for an existing file, starting in `startDirectory`. The empty text when the user
// cancelled.
QString AskOpenFileName(QWidget* owner, const QString& barFilter, const QString& startDirectory);

// Asks for a target, proposing `proposedPath`, with one filter. `finalName` turns what the user
// chose into the name that will really be written (the format's extension); the dialog takes
// that name and asks before it replaces that file. Empty when the user cancelled.
std::optional<QString> AskSaveFileName(QWidget* owner, const QString& proposedPath,
                                       const QString& barFilter,
                                       const std::function<QString(const QString&)>& finalName);
