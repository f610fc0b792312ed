#include "Quonvexa.h"

#include "Guarded.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <string>
#include <vector>

namespace {

// Windows may vanish while we look at them; such errors must not reach Xlib's default handler,
// which would end the whole program.
int IgnoreErrors(Display*, XErrorEvent*)
{
    return 0;
}

// One connection per call, so a display that goes away between calls costs nothing, and no
// call can fail for want of an X server.
class Connection final
{
public:
    Connection() : m_display(XOpenDisplay(nullptr))
    {
        if (m_display)
            m_previousHandler = XSetErrorHandler(IgnoreErrors);
    }
    ~Connection()
    {
        if (!m_display)
            return;
        // Errors still on their way must meet our handler, not the one we restore.
        XSync(m_display, False);
        XSetErrorHandler(m_previousHandler);
        XCloseDisplay(m_display);
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    Display* display() const { return m_display; }
    Window root() const { return XDefaultRootWindow(m_display); }
    Atom atom(const char* name) const { return XInternAtom(m_display, name, False); }

private:
    Display* m_display;
    XErrorHandler m_previousHandler = nullptr;
};

// The 32-bit items of a window property; Xlib hands them over as longs.
std::vector<unsigned long> ReadLongs(const Connection& x, Window window, Atom property, Atom type)
{
    std::vector<unsigned long> values;
    Atom actualType = None;
    int actualFormat = 0;
    unsigned long count = 0;
    unsigned long remaining = 0;
    unsigned char* data = nullptr;
    const int status = XGetWindowProperty(x.display(), window, property, 0, 1L << 16, False, type,
                                          &actualType, &actualFormat, &count, &remaining, &data);
    if (status == Success && data && actualType == type && actualFormat == 32) {
        const auto* items = reinterpret_cast<const unsigned long*>(data);
        values.assign(items, items + count);
    }
    if (data)
        XFree(data);
    return values;
}

std::string ReadTitle(const Connection& x, Window window)
{
    std::string title;
    Atom actualType = None;
    int actualFormat = 0;
    unsigned long count = 0;
    unsigned long remaining = 0;
    unsigned char* data = nullptr;
    const Atom utf8 = x.atom("UTF8_STRING");
    if (XGetWindowProperty(x.display(), window, x.atom("_NET_WM_NAME"), 0, 1L << 16, False, utf8,
                           &actualType, &actualFormat, &count, &remaining, &data) == Success &&
        data && actualType == utf8 && actualFormat == 8)
        title.assign(reinterpret_cast<const char*>(data), count);
    if (data)
        XFree(data);
    if (!title.empty())
        return title;
    char* name = nullptr;
    if (XFetchName(x.display(), window, &name) && name) {
        title = name;
        XFree(name);
    }
    return title;
}

bool HasPid(const Connection& x, Window window, Atom pidAtom)
{
    return !ReadLongs(x, window, pidAtom, XA_CARDINAL).empty();
}

// Without a window manager's client list, the windows that carry a process id are found by
// walking the tree; a reparenting manager puts them one or two levels below the root.
void CollectTree(const Connection& x, Window window, Atom pidAtom, int depth,
                 std::vector<Window>& found)
{
    Window root = None;
    Window parent = None;
    Window* children = nullptr;
    unsigned int count = 0;
    if (!XQueryTree(x.display(), window, &root, &parent, &children, &count))
        return;
    const std::vector<Window> list(children, children + count);
    if (children)
        XFree(children);
    for (const Window child : list) {
        if (HasPid(x, child, pidAtom))
            found.push_back(child);
        else if (depth > 1)
            CollectTree(x, child, pidAtom, depth - 1, found);
    }
}

struct Candidate
{
    Window window = None;
    bool shown = false;
    bool transient = false;
};

// The top-level windows of the process, the likeliest main window first: shown windows that
// aren't dialogs, then other shown ones, then hidden ones, each in the order found.
std::vector<Candidate> WindowsOf(const Connection& x, int32_t pid)
{
    std::vector<Candidate> result;
    if (pid <= 0)
        return result;
    const Atom pidAtom = x.atom("_NET_WM_PID");
    std::vector<Window> windows;
    for (const unsigned long w : ReadLongs(x, x.root(), x.atom("_NET_CLIENT_LIST"), XA_WINDOW))
        windows.push_back(static_cast<Window>(w));
    CollectTree(x, x.root(), pidAtom, 3, windows);

    for (const Window window : windows) {
        const std::vector<unsigned long> owner = ReadLongs(x, window, pidAtom, XA_CARDINAL);
        if (owner.empty() || owner.front() != static_cast<unsigned long>(pid))
            continue;
        if (std::any_of(result.begin(), result.end(),
                        [window](const Candidate& c) { return c.window == window; }))
            continue;
        XWindowAttributes attributes;
        if (!XGetWindowAttributes(x.display(), window, &attributes))
            continue;
        Window transientFor = None;
        Candidate candidate;
        candidate.window = window;
        candidate.shown = attributes.map_state == IsViewable;
        candidate.transient = XGetTransientForHint(x.display(), window, &transientFor) != 0;
        result.push_back(candidate);
    }
    const auto rank = [](const Candidate& c) { return c.shown ? (c.transient ? 1 : 0) : 2; };
    std::stable_sort(result.begin(), result.end(),
                     [&rank](const Candidate& a, const Candidate& b) { return rank(a) < rank(b); });
    return result;
}

std::string Lowered(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

intptr_t Handle(Window window)
{
    return static_cast<intptr_t>(window);
}

}  // namespace

extern "C" {

intptr_t GetProcessHwnd(int32_t pid)
{
    return Guarded([pid]() -> intptr_t {
        const Connection x;
        if (!x.display())
            return 0;
        const std::vector<Candidate> windows = WindowsOf(x, pid);
        return windows.empty() ? 0 : Handle(windows.front().window);
    });
}

intptr_t GetProcessHwndEx(int32_t pid, char* hint)
{
    return Guarded([pid, hint]() -> intptr_t {
        const Connection x;
        if (!x.display())
            return 0;
        const std::string wanted = hint ? Lowered(hint) : std::string();
        for (const Candidate& candidate : WindowsOf(x, pid)) {
            const std::string title = ReadTitle(x, candidate.window);
            if (!wanted.empty() && Lowered(title).find(wanted) == std::string::npos)
                continue;
            if (hint && title.size() <= std::strlen(hint))
                std::memcpy(hint, title.c_str(), title.size() + 1);
            return Handle(candidate.window);
        }
        return 0;
    });
}

int32_t GetWindowRect(intptr_t window, int32_t rect[4])
{
    return Guarded([window, rect]() -> int32_t {
        if (window <= 0 || !rect)
            return 0;
        const Connection x;
        if (!x.display())
            return 0;
        const auto id = static_cast<Window>(window);
        XWindowAttributes attributes;
        if (!XGetWindowAttributes(x.display(), id, &attributes))
            return 0;
        int left = 0;
        int top = 0;
        Window child = None;
        if (!XTranslateCoordinates(x.display(), id, x.root(), 0, 0, &left, &top, &child))
            return 0;
        // The manager's frame around the window: left, right, top, bottom.
        std::vector<unsigned long> frame =
            ReadLongs(x, id, x.atom("_NET_FRAME_EXTENTS"), XA_CARDINAL);
        frame.resize(4, 0);
        const int border = attributes.border_width;
        rect[0] = left - border - static_cast<int32_t>(frame[0]);
        rect[1] = top - border - static_cast<int32_t>(frame[2]);
        rect[2] = left + attributes.width + border + static_cast<int32_t>(frame[1]);
        rect[3] = top + attributes.height + border + static_cast<int32_t>(frame[3]);
        return 1;
    });
}

}  // extern "C"
