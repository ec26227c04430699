#pragma once
// Between the library's coordinates and the window's. Canvases count y
// upward from their lower edge; the window and its buffers count y downward
// from the top. A lightweight canvas is converted through the canvas whose
// buffer it draws into.

#include "tela/platform/Geometry.h"

class Canvas;

namespace Tela {
enum CoordinateSystem : int { eBottomUp = 0, eTopDown = 1 };
} // namespace Tela

// The flip: height of the canvas minus y. The same sum goes both ways.
int telaScreenYTowin32ScreenY(Canvas* canvas, int y);
int win32ScreenYToTelaScreenY(Canvas* canvas, int y);

// A point of the canvas in its buffer's pixels. A canvas with no buffer
// gives the point back as it is.
XY<int> telaPosToOSPos(Canvas* canvas, XY<int> pos, Tela::CoordinateSystem system);
int telaXToWinX(Canvas* canvas, int x);
int telaYToWinY(Canvas* canvas, int y, Tela::CoordinateSystem system);
XY<double> telaXYToWinXY(Canvas* canvas, int x, int y);
// A bottom-up box of the canvas as a top-down rectangle of the window.
TopDownRect tela_canvasRectToRootRect(Canvas* canvas, const Qv::Box<int>& box);
