#include "tela/canvas/Tiling.h"

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/Coordinates.h"
#include "tela/canvas/UpdateTracking.h"
#include "tela/platform/GraphicPrimitives.h"

#include <algorithm>

void tela_tile_image(const Qv::Ptr<iImage>& image, iGraphicPrimitivesRenderer& renderer, const TopDownRect& dest,
                     const XY<int>& phase)
{
    if (!image || dest.isEmpty())
        return;
    XY<int> tile;
    image->getSize(tile);
    if (tile.x <= 0 || tile.y <= 0)
        return;
    // The language's remainder: a negative phase gives a negative offset, and
    // the grid then starts inside `dest`, leaving a strip at its left (or
    // top) unpainted. Callers rely on this placement, strips included.
    const int offset_x = phase.x % tile.x;
    const int offset_y = phase.y % tile.y;
    const int source_base_x = offset_x != 0 ? 0 : phase.x;
    const int source_base_y = offset_y != 0 ? 0 : phase.y;
    const int first_x = dest.left - offset_x;
    const int first_y = dest.top - offset_y;
    for (int y = first_y; y < dest.bottom; y += tile.y) {
        for (int x = first_x; x < dest.right; x += tile.x) {
            // A tile cut at the left or top is drawn from the edge of `dest`
            // at its full size, reaching past the image; the next tile, drawn
            // later, covers that overhang.
            const int draw_x = std::max(dest.left, x);
            const int draw_y = std::max(dest.top, y);
            const int source_x = (source_base_x + draw_x - x) % tile.x;
            const int source_y = (source_base_y + draw_y - y) % tile.y;
            const int width = std::min(tile.x, dest.right - x);
            const int height = std::min(tile.y, dest.bottom - y);
            const ImageDescription piece(image, XY<int>{draw_x, draw_y},
                                         TopDownRect{source_x, source_y, source_x + width, source_y + height}, false);
            renderer.drawImages(&piece, 1);
        }
    }
}

namespace {

XY<int> phase_for(Canvas* canvas, const XY<int>& tile, const Qv::Box<double>& box, TextureRelativity relativity)
{
    if (relativity == eTextureParent && !canvas->parent)
        relativity = eTextureCanvas;
    const XY<int> corner(static_cast<int>(box.x1), static_cast<int>(box.y1));
    switch (relativity) {
    case eTextureCanvas:
        return XY<int>(canvas->getX() % tile.x, canvas->getY() % tile.y);
    case eTextureParent:
        return XY<int>(corner.x - (canvas->getX() - canvas->parent->getX()) % tile.x,
                       corner.y - (canvas->getY() - canvas->parent->getY()) % tile.y);
    case eTextureGrid:
        return XY<int>(corner.x / tile.x * tile.x, corner.y / tile.y * tile.y);
    case eTextureBox:
        return corner;
    }
    return XY<int>(0, 0);
}

} // namespace

void tela_textureRect(Canvas* canvas, const Qv::Ptr<iImage>& image, const Qv::Box<double>* box,
                      TextureRelativity relativity)
{
    if (!canvas || !image)
        return;
    XY<int> tile;
    image->getSize(tile);
    if (tile.x <= 0 || tile.y <= 0)
        return;
    const Qv::Box<double> area =
        box ? *box : Qv::Box<double>{0, 0, static_cast<double>(canvas->getWidth()), static_cast<double>(canvas->getHeight())};
    Tela::UpdateDeferrer deferrer(nullptr, Tela::isPresentationEnabled());
    const XY<double> top_left = telaXYToWinXY(canvas, static_cast<int>(area.x1), static_cast<int>(area.y2));
    const XY<double> bottom_right = telaXYToWinXY(canvas, static_cast<int>(area.x2), static_cast<int>(area.y1));
    const TopDownRect dest{static_cast<int>(top_left.x), static_cast<int>(top_left.y), static_cast<int>(bottom_right.x),
                           static_cast<int>(bottom_right.y)};
    if (const Qv::Ptr<iGraphicPrimitivesRenderer> renderer = canvdraw_canvas(canvas)->getOSRenderer())
        tela_tile_image(image, *renderer, dest, phase_for(canvas, tile, area, relativity));
    const int tx = static_cast<int>(canvas->matrix[0][2]);
    const int ty = static_cast<int>(canvas->matrix[1][2]);
    canvupd_mark_rect(canvas, static_cast<int>(area.x1) + tx, static_cast<int>(area.y1) + ty,
                      static_cast<int>(area.x2) + tx, static_cast<int>(area.y2) + ty);
}
