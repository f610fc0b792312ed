#pragma once

// The start of the process: prepares the run's record, reads the command line and decides
// whether there is anything to do at all. Only then does the window system come into play.

#include <QString>
#include <QStringList>

struct RunState;
class Forms;

// Steps up to the test for work: start values, the help file and the command line's tokens.
// False when there is no work: the process then ends silently, the store untouched.
bool PrepareRun(RunState& state, const QStringList& commandTokens, const QString& applicationDir);

// The rest of the start, once the window system is there: the dialogs' fonts, the settings, and
// the main dialog shown without an owner.
void StartRun(Forms& forms);
