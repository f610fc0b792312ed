#pragma once

// Sends a window the close request that a window manager sends (WM_DELETE_WINDOW through
// WM_PROTOCOLS), from a connection of its own, as a task bar's "Close" or `wmctrl -c` does.
// Needs the xcb platform on an X server (the tests run it under Xvfb).

class QWidget;

// False when there is no X display to send it on.
bool SendWindowManagerClose(QWidget& window);
