#pragma once

// Turns the engine's Rich Text Format under a .doc name into a real Word 97-2003 document in
// place, through the office suite run headless, and then ends the office process started for
// it without touching any that ran before.

#include <QtGlobal>

struct AppContext;
struct RunState;
class QString;

// A suite that has used no processor time for this long has hung and is ended; one that is at
// work is left to it, up to OfficeTimeLimitMs.
inline constexpr qint32 OfficeIdleLimitMs = 60000;

// How much processor time the suite may use for a document of `documentBytes`: two minutes,
// a minute per megabyte and 40 seconds per square megabyte. LibreOffice's time grows faster
// than the document (a page of text boxes costs more the more pages come before it), and this
// leaves it about three times what it needs.
qint64 OfficeTimeLimitMs(qint64 documentBytes);

// Finishes the file at OutputPath: -1 when it now holds the Word document, 0 when it holds
// what the engine wrote. One file stays at OutputPath, and nothing is left beside it. No
// failure is shown; the working directory is the application directory meanwhile.
qint16 FinishWithWord(AppContext& context);

// After a finishing that failed: the file holds Rich Text Format, so it takes the ".rtf"
// extension when no file of that name exists (OutputPath follows it). Gives the message that
// tells the user so.
QString KeepAsRichText(RunState& state);
