#pragma once
// The gallery's text page: a bold and an italic line, a file name and a
// caption fitted to their width, an expression with highlighted keywords, a
// paragraph wrapped in a box whose width the caller chooses, and a justified
// paragraph beside it.

class Canvas;
class Palette;

namespace TextPage {

// Size the page is laid out for, and the widths the wrapping box moves between.
constexpr int PAGE_WIDTH = 448, PAGE_HEIGHT = 260;
constexpr int NARROW_BOX = 150, WIDE_BOX = 210;

// Paints the page into `canvas` with the wrapping box `wrapWidth` wide
// (clamped to the two widths above). Everything goes through the canvas's
// renderer, so what changes reaches the screen at the next update.
void paint(Canvas* canvas, const Palette& palette, int wrapWidth);

} // namespace TextPage
