#pragma once
// Monitors, the desktop they make up, and where panels and windows go on it.
//
// The monitor list is asked of the system afresh each time. With the
// configuration value "virtual_twin_monitors" set, the first monitor stands
// in for two, "Left" and "Right", so that twin-monitor behaviour can be tried
// on one display.

#include "tela/core/Memory.h"
#include "tela/platform/Geometry.h"
#include "tela/platform/iSystemInfo.h"

#include <vector>

class Canvas;

namespace Tela {
// The system's monitors, or the two made-up halves of the first one.
void getMonitors(std::vector<iSystemInfo::MonitorInfo>& monitors);
// The first monitor whose desktop box holds the point (right and bottom
// edges outside); an empty record, of width 0, when none does.
iSystemInfo::MonitorInfo getMonitorAtPos(const XY<int>& position);
// An empty record when no monitor says it is primary.
iSystemInfo::MonitorInfo getPrimaryMonitor();
unsigned char getNumMonitors();
} // namespace Tela

unsigned tela_getNumMonitors();
// The size of the union of all monitors' desktop boxes.
XY<int> tela_getDesktopDimensions();
unsigned tela_getDesktopWidth();
unsigned tela_getDesktopHeight();
// The desktop's width, halved when there are exactly two monitors.
unsigned tela_getMonitorWidth();
unsigned tela_getMonitorHeight();

// The screen box of the monitor holding the point, measured from the first
// monitor's corner; the last monitor when none holds it.
Qv::Box<int> tela_getScreenContainingPos(const XY<int>& position);
Qv::Box<int> tela_getMouseScreen();
// The part of the window on the mouse's screen, as a box at the origin; the
// zero box when they do not meet. Null means the first root.
Qv::Box<int> tela_getMouseDesktop(Canvas* canvas);

// The size of the canvas, or of the first root for null.
XY<int> tela_getRootWindowDimensions(Canvas* canvas);
unsigned tela_getRootWindowWidth();
unsigned tela_getRootWindowHeight();
XY<int> tela_getRootWindowPosition();
XY<int> tela_getRootWindowSize();

// Where a panel of `size` goes in the canvas (null: the root): centred on the
// part of the window on the mouse's screen, or beside the window when that
// part is too narrow and there is room.
XY<int> tela_getPosForPanel(Canvas* canvas, const XY<int>& size);
XY<int> tela_getPosForWindow(const XY<int>& size);
XY<int> tela_getPosForWindow(unsigned short width, unsigned short height);
// `pos` moved so that the panel stays inside the canvas, where it fits.
XY<int> tela_getConstrainedPosForWindow(Canvas* canvas, const XY<int>& size, const XY<int>& pos);

// Between the root canvas and the desktop.
XY<int> tela_rootXYToScreenXY(const XY<int>& position);
XY<int> tela_screenXYToRootXY(const XY<int>& position);
