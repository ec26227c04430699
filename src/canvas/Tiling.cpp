#include "canvas/Tiling.h"

#include "platform/GraphicPrimitives.h"

#include <algorithm>

namespace {

// `value` modulo `size`, in [0, size) also for negative values.
int wrap(int value, int size)
{
    const int rest = value % size;
    return rest < 0 ? rest + size : rest;
}

} // namespace

void tela_tile_image(const Qv::Ptr<iImage>& image, iGraphicPrimitivesRenderer& renderer, const TopDownRect& dest,
                     const XY<int>& phase)
{
    if (!image || dest.isEmpty())
        return;
    XY<int> tile;
    image->getSize(tile);
    if (tile.x <= 0 || tile.y <= 0)
        return;
    const int first_x = dest.left - wrap(phase.x, tile.x);
    const int first_y = dest.top - wrap(phase.y, tile.y);
    for (int y = first_y; y < dest.bottom; y += tile.y) {
        for (int x = first_x; x < dest.right; x += tile.x) {
            // Tiles cut by the edges of `dest` draw only their part inside it,
            // so that nothing lands outside even with no clip set.
            const int draw_x = std::max(dest.left, x);
            const int draw_y = std::max(dest.top, y);
            const int source_x = draw_x - x;
            const int source_y = draw_y - y;
            const int width = std::min(tile.x - source_x, dest.right - draw_x);
            const int height = std::min(tile.y - source_y, dest.bottom - draw_y);
            const ImageDescription piece(image, XY<int>{draw_x, draw_y},
                                         TopDownRect{source_x, source_y, source_x + width, source_y + height}, false);
            renderer.drawImages(&piece, 1);
        }
    }
}
