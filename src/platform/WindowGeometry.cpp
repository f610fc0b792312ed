#include "platform/WindowGeometry.h"

#include <QGuiApplication>
#include <QScreen>

#include <unistd.h>

namespace {

class ScreenWindowGeometry final : public WindowGeometry
{
public:
    qint32 GetCurrentProcessId() override { return static_cast<qint32>(::getpid()); }

    ScreenRect DesktopRect() override
    {
        const QScreen* screen = QGuiApplication::primaryScreen();
        if (!screen)
            return {};
        const QRect r = screen->geometry();
        return {r.left(), r.top(), r.left() + r.width(), r.top() + r.height()};
    }

    qint32 ScreenHeightPixels() override
    {
        const QScreen* screen = QGuiApplication::primaryScreen();
        return screen ? screen->geometry().height() : 0;
    }
};

}  // namespace

std::unique_ptr<WindowGeometry> CreateWindowGeometry()
{
    return std::make_unique<ScreenWindowGeometry>();
}
