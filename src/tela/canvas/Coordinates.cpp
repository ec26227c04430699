#include "tela/canvas/Coordinates.h"

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasGeometry.h"

#include <cmath>

int telaScreenYTowin32ScreenY(Canvas* canvas, int y)
{
    return (canvas ? canvas->getHeight() : 0) - y;
}

int win32ScreenYToTelaScreenY(Canvas* canvas, int y)
{
    return telaScreenYTowin32ScreenY(canvas, y);
}

XY<int> telaPosToOSPos(Canvas* canvas, XY<int> pos, Tela::CoordinateSystem system)
{
    if (canvas && canvas->lightweight) {
        const XY<int> offset = canvas->getDrawOffset();
        pos = XY<int>(pos.x + offset.x, pos.y + offset.y);
        canvas = canvas->getDrawCanvas();
    }
    if (!canvas || !canvas->offscreenBuffer)
        return pos;
    const Qv::Box<int> extents = canvas->getExtents();
    const int x = static_cast<int>(std::trunc(canvas->matrix[0][2] - extents.x1)) + pos.x;
    const int y = static_cast<int>(std::trunc(canvas->matrix[1][2] - extents.y1)) + pos.y;
    return XY<int>(x, system == Tela::eBottomUp ? canvas->getHeight() - y : y);
}

int telaXToWinX(Canvas* canvas, int x)
{
    return telaPosToOSPos(canvas, XY<int>(x, 0), Tela::eBottomUp).x;
}

int telaYToWinY(Canvas* canvas, int y, Tela::CoordinateSystem system)
{
    return telaPosToOSPos(canvas, XY<int>(0, y), system).y;
}

XY<double> telaXYToWinXY(Canvas* canvas, int x, int y)
{
    if (canvas && canvas->lightweight) {
        const XY<int> offset = canvas->getDrawOffset();
        x += offset.x;
        y += offset.y;
        canvas = canvas->getDrawCanvas();
    }
    return XY<double>(telaXToWinX(canvas, x), telaYToWinY(canvas, y, Tela::eBottomUp));
}

TopDownRect tela_canvasRectToRootRect(Canvas* canvas, const Qv::Box<int>& box)
{
    if (!canvas)
        return TopDownRect{};
    Canvas* draw = canvas->getDrawCanvas();
    const int dx = Canvas::getX(draw);
    const int dy = Canvas::getY(draw);
    return TopDownRect{telaXToWinX(canvas, box.x1) + dx, telaYToWinY(canvas, box.y2, Tela::eBottomUp) + dy,
                       telaXToWinX(canvas, box.x2) + dx, telaYToWinY(canvas, box.y1, Tela::eBottomUp) + dy};
}
