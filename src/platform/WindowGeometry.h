#pragma once

// What the placement of dialogs needs from the windowing system besides the process utility
// library: this process's id and the desktop's rectangle.

#include "platform/ProcessUtilityLibrary.h"

class WindowGeometry
{
public:
    virtual ~WindowGeometry() = default;
    virtual qint32 GetCurrentProcessId() = 0;
    // The rectangle of the desktop window, in pixels.
    virtual ScreenRect DesktopRect() = 0;
    // The height of the screen, in pixels.
    virtual qint32 ScreenHeightPixels() = 0;
};

std::unique_ptr<WindowGeometry> CreateWindowGeometry();
