#include "support/WindowManagerClose.h"

#include <QWidget>

#include <X11/Xlib.h>

bool SendWindowManagerClose(QWidget& window)
{
    Display* display = XOpenDisplay(nullptr);
    if (!display)
        return false;
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = static_cast<Window>(window.winId());
    event.xclient.message_type = XInternAtom(display, "WM_PROTOCOLS", False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = static_cast<long>(XInternAtom(display, "WM_DELETE_WINDOW", False));
    event.xclient.data.l[1] = CurrentTime;
    const Status sent = XSendEvent(display, event.xclient.window, False, NoEventMask, &event);
    XSync(display, False);
    XCloseDisplay(display);
    return sent != 0;
}
