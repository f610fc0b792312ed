#pragma once

// Handles every window event waiting in the queue, then returns. Every long wait is a loop
// around it so that the dialogs stay alive.
void PumpEvents();
