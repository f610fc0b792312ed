#pragma once

// The store's two operations: LoadSettings reads the four values once at the start and makes
// what is missing; SaveOptions writes them whenever an option has been settled. No failure of
// the store is ever shown or stops a run.

#include "platform/SettingsShell.h"

struct RunState;

void LoadSettings(RunState& state, const SettingsShellFactory& shellFactory);

// With keepRunPasswords false, the password fields are first read back from the stored
// document, so that only a just-accepted password (true) is written from the run.
void SaveOptions(RunState& state, const SettingsShellFactory& shellFactory, bool keepRunPasswords);

// The folder the open dialog starts in: the one the user last picked a PDF from while it still
// exists, otherwise the home folder.
QString RecentPdfFolder(const SettingsShellFactory& shellFactory);
void RememberPdfFolder(const SettingsShellFactory& shellFactory, const QString& pdfPath);
