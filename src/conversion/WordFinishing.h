#pragma once

// Turns the engine's Rich Text Format under a .doc name into a real Word 97-2003 document in
// place, through the office suite run headless, and then ends the office process started for
// it without touching any that ran before.

#include <QtGlobal>

struct AppContext;

// How long the office suite may work on one document before it counts as hung and is ended;
// the file then stays as the engine wrote it.
inline constexpr qint32 OfficeHangLimitMs = 120000;

// Finishes the file at OutputPath: -1 when it now holds the Word document, 0 when it holds
// what the engine wrote. One file stays at OutputPath, and nothing is left beside it. No
// failure is shown; the working directory is the application directory meanwhile.
qint16 FinishWithWord(AppContext& context);
