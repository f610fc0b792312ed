#pragma once

// The event pump that every wait goes round, so that the dialogs stay alive while the program
// waits for another one.

#include <QtGlobal>

// Every wait looks at what it waits for in slices of this length and pumps events between them.
inline constexpr qint32 WaitSliceMs = 100;

// Handles all window events waiting in the thread's queue, then returns.
void PumpEvents();
