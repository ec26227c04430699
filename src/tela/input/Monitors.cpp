#include "tela/input/Monitors.h"
#include "tela/input/Monitors_private.h"

#include "tela/canvas/Canvas.h"
#include "tela/core/Config.h"
#include "tela/input/MouseState.h"
#include "tela/platform/OS.h"
#include "tela/state/TelaState.h"

#include <algorithm>
#include <cstdlib>

namespace {

using MonitorInfo = iSystemInfo::MonitorInfo;

struct ScreenContaining {
    MonitorInfo monitor;
    unsigned char index = 0;
};

bool contains(const Qv::Box<int>& box, const XY<int>& point)
{
    return point.x >= box.x1 && point.x < box.x2 && point.y >= box.y1 && point.y < box.y2;
}

ScreenContaining screen_containing(XY<int> position)
{
    Qv::Vector<MonitorInfo> monitors;
    Tela::getMonitorList(monitors);
    if (monitors.empty())
        return {};
    position = XY<int>(position.x + monitors.front().screenBox.x1, position.y + monitors.front().screenBox.y1);
    std::size_t index = 0;
    while (index + 1 < monitors.size() && !contains(monitors[index].screenBox, position))
        ++index;
    return ScreenContaining{monitors[index], static_cast<unsigned char>(index)};
}

Qv::Ptr<iRootWindow> root_window()
{
    Canvas* root = tela_rootcanvas();
    return root ? root->window : nullptr;
}

// The first root window's place on the desktop and its box; false with none.
bool root_window_frame(XY<int>& origin, Qv::Box<int>& box)
{
    const Qv::Ptr<iRootWindow> window = root_window();
    if (!window)
        return false;
    window->getPosition(origin);
    window->getBox(box);
    return true;
}

// The window's rectangle on the desktop: its position, extended by its size.
Qv::Box<int> window_rectangle(const Qv::Ptr<iRootWindow>& window)
{
    if (!window)
        return {};
    XY<int> position, size;
    window->getPosition(position);
    window->getSize(size);
    return Qv::Box<int>{position.x, position.y, position.x + size.x, position.y + size.y};
}

} // namespace

void Tela::getMonitorList(Qv::Vector<MonitorInfo>& monitors)
{
    // Read once (per configuration: tests reload it).
    static unsigned read_in = ~0u;
    static bool virtualTwinMonitors = false;
    if (read_in != Qv::configurationGeneration()) {
        read_in = Qv::configurationGeneration();
        virtualTwinMonitors = config_int("virtual_twin_monitors", 0) != 0;
    }
    monitors.clear();
    OS()->systemInfo()->getMonitors(monitors);
    if (!virtualTwinMonitors || monitors.empty())
        return;
    // One display standing in for two, split down the middle.
    const Qv::Box<int> whole = monitors.front().screenBox;
    const int width = std::abs(whole.width()), height = std::abs(whole.height());
    MonitorInfo left, right;
    left.screenBox = left.desktopBox = Qv::Box<int>{0, 0, width / 2, height};
    left.isPrimary = 1;
    left.name = String("Left");
    right.screenBox = right.desktopBox = Qv::Box<int>{width / 2, 0, width, height};
    right.name = String("Right");
    monitors.clear();
    monitors.push_back(left);
    monitors.push_back(right);
}

void Tela::getMonitors(std::vector<MonitorInfo>& monitors)
{
    // The application's own container: the list is copied across once here,
    // so the library's lists stay on the memory seam.
    Qv::Vector<MonitorInfo> list;
    getMonitorList(list);
    monitors.assign(list.begin(), list.end());
}

MonitorInfo Tela::getMonitorAtPos(const XY<int>& position)
{
    Qv::Vector<MonitorInfo> monitors;
    Tela::getMonitorList(monitors);
    for (const MonitorInfo& monitor : monitors)
        if (contains(monitor.desktopBox, position))
            return monitor;
    return {};
}

MonitorInfo Tela::getPrimaryMonitor()
{
    Qv::Vector<MonitorInfo> monitors;
    Tela::getMonitorList(monitors);
    for (const MonitorInfo& monitor : monitors)
        if (monitor.isPrimary)
            return monitor;
    return {};
}

unsigned char Tela::getNumMonitors()
{
    Qv::Vector<MonitorInfo> monitors;
    Tela::getMonitorList(monitors);
    return static_cast<unsigned char>(monitors.size());
}

unsigned tela_getNumMonitors()
{
    return Tela::getNumMonitors();
}

XY<int> tela_getDesktopDimensions()
{
    Qv::Vector<MonitorInfo> monitors;
    Tela::getMonitorList(monitors);
    if (monitors.empty())
        return {};
    // Every corner counts, an empty box's too: the extremes of the four sides.
    Qv::Box<int> all = monitors.front().desktopBox;
    for (const MonitorInfo& monitor : monitors) {
        all.x1 = std::min(all.x1, monitor.desktopBox.x1);
        all.y1 = std::min(all.y1, monitor.desktopBox.y1);
        all.x2 = std::max(all.x2, monitor.desktopBox.x2);
        all.y2 = std::max(all.y2, monitor.desktopBox.y2);
    }
    return XY<int>(std::abs(all.width()), std::abs(all.height()));
}

unsigned tela_getDesktopWidth()
{
    return static_cast<unsigned>(tela_getDesktopDimensions().x);
}

unsigned tela_getDesktopHeight()
{
    return static_cast<unsigned>(tela_getDesktopDimensions().y);
}

unsigned tela_getMonitorWidth()
{
    const unsigned width = tela_getDesktopWidth();
    return tela_getNumMonitors() == 2 ? width / 2 : width;
}

unsigned tela_getMonitorHeight()
{
    return tela_getDesktopHeight();
}

Qv::Box<int> tela_getScreenContainingPos(const XY<int>& position)
{
    return screen_containing(position).monitor.screenBox;
}

Qv::Box<int> tela_getMouseScreen()
{
    return tela_getScreenContainingPos(tela_getMousePos());
}

Qv::Box<int> tela_getMouseDesktop(Canvas* canvas)
{
    if (!canvas)
        canvas = tela_rootcanvas();
    if (!canvas || !canvas->window)
        return {};
    XY<int> position;
    Qv::Box<int> box;
    canvas->window->getPosition(position);
    canvas->window->getBox(box);
    if (box.isEmpty() && canvas->offscreenBuffer) {
        XY<int> size;
        canvas->offscreenBuffer->getSize(size);
        box = Qv::Box<int>{0, 0, size.x, size.y};
    }
    const Qv::Box<int> window{box.x1 + position.x, box.y1 + position.y, box.x2 + position.x, box.y2 + position.y};
    const XY<int> mouse = tela_getMousePos();
    const Qv::Box<int> common =
        window.intersected(tela_getScreenContainingPos(XY<int>(mouse.x + position.x, mouse.y + position.y)));
    if (common.isEmpty())
        return {};
    return Qv::Box<int>{0, 0, common.width(), common.height()};
}

XY<int> tela_getRootWindowDimensions(Canvas* canvas)
{
    if (!canvas)
        canvas = tela_rootcanvas();
    return canvas ? canvas->getDimensions() : XY<int>();
}

unsigned tela_getRootWindowWidth()
{
    return static_cast<unsigned>(tela_getRootWindowDimensions(nullptr).x);
}

unsigned tela_getRootWindowHeight()
{
    return static_cast<unsigned>(tela_getRootWindowDimensions(nullptr).y);
}

XY<int> tela_getRootWindowPosition()
{
    XY<int> position;
    if (const Qv::Ptr<iRootWindow> window = root_window())
        window->getPosition(position);
    return position;
}

XY<int> tela_getRootWindowSize()
{
    XY<int> size;
    if (const Qv::Ptr<iRootWindow> window = root_window())
        window->getSize(size);
    return size;
}

XY<int> tela_getPosForPanel(Canvas* canvas, const XY<int>& size)
{
    if (!canvas)
        canvas = tela_rootcanvas();
    if (!canvas)
        return {};
    XY<int> pos((canvas->getWidth() - size.x) / 2, (canvas->getHeight() - size.y) / 2);
    const Qv::Box<int> window = window_rectangle(canvas->window);
    const XY<int> mouse = tela_getMousePos();
    const ScreenContaining screen = screen_containing(XY<int>(mouse.x + window.x1, mouse.y + window.y1));
    const Qv::Box<int> screen_box = screen.monitor.screenBox;
    const Qv::Box<int> common = screen_box.intersected(window);
    if (common.isEmpty())
        return pos;
    if (common.width() > size.x) {
        // Centred on the part of the window on the mouse's screen.
        pos.x = (common.width() - size.x) / 2 + common.x1 - window.x1;
    } else if (screen.index != 0) {
        const int room = screen_box.x1 - window.x1; // left of this screen
        if (room > size.x)
            pos.x = room - size.x;
    } else {
        const int room = window.x2 - screen_box.x2; // right of the first screen
        if (room > size.x)
            pos.x = screen_box.x2 - window.x1;
    }
    return pos;
}

XY<int> tela_getPosForWindow(const XY<int>& size)
{
    return tela_getPosForWindow(static_cast<unsigned short>(size.x), static_cast<unsigned short>(size.y));
}

XY<int> tela_getPosForWindow(unsigned short width, unsigned short height)
{
    return tela_getPosForPanel(tela_rootcanvas(), XY<int>(width, height));
}

XY<int> tela_getConstrainedPosForWindow(Canvas* canvas, const XY<int>& size, const XY<int>& pos)
{
    const XY<int> room = tela_getRootWindowDimensions(canvas);
    const auto constrain = [](int value, int extent, int limit) {
        if (value < 0)
            return 0;
        return value + extent > limit ? limit - extent : value; // may go negative for a panel too big
    };
    return XY<int>(constrain(pos.x, size.x, room.x), constrain(pos.y, size.y, room.y));
}

XY<int> tela_rootXYToScreenXY(const XY<int>& position)
{
    XY<int> origin;
    Qv::Box<int> box;
    if (!root_window_frame(origin, box))
        return position;
    return XY<int>(position.x + origin.x + box.x1, box.height() - position.y + origin.y + box.y1);
}

XY<int> tela_screenXYToRootXY(const XY<int>& position)
{
    XY<int> origin;
    Qv::Box<int> box;
    if (!root_window_frame(origin, box))
        return position;
    return XY<int>(position.x - origin.x - box.x1, box.y2 - position.y + origin.y);
}
