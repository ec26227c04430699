#pragma once
// The gallery's status bar: on its left a line naming the page shown and what
// it shows, fitted to the room before the glass pane; in the glass pane the
// count of the library's ticks, in large figures. Each is a canvas of its own,
// so a new page repaints only the line and a tick only the count.

#include "tela/core/LightweightString.h"

class Canvas;
class Palette;

namespace StatusBar {

// Sizes the two canvases are laid out for.
constexpr int LINE_WIDTH = 236, LINE_HEIGHT = 48;
constexpr int GLASS_WIDTH = 168, GLASS_HEIGHT = 72;

// Paints the page's `name` in bold over its `description`, which is cut to the
// canvas's width with ".." where text was taken out.
void paintLine(Canvas* canvas, const WString& name, const WString& description, const Palette& palette);

// Paints the glass: frosted white, with `ticks` in dark figures that stay
// legible through the pane's translucency.
void paintGlass(Canvas* canvas, unsigned ticks, const Palette& palette);

} // namespace StatusBar
