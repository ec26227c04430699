#pragma once
// The gallery's shapes page: every drawing primitive, in colours of a palette.

class Canvas;
class Palette;

namespace Shapes {

// Size the page is laid out for.
constexpr int PAGE_WIDTH = 448, PAGE_HEIGHT = 260;

// Paints the page into `canvas`, which should be at least the size above.
// Everything goes through the canvas's renderer, so what changes reaches the
// screen at the next update.
void paint(Canvas* canvas, const Palette& palette);

} // namespace Shapes
