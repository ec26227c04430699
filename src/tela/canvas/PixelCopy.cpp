#include "tela/canvas/PixelCopy.h"

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/UpdateTracking.h"
#include "tela/platform/GraphicPrimitives.h"

#include <algorithm>

RegionPtr tela_clip_through_lightweight_chain(const RegionPtr& region, Canvas* canvas)
{
    RegionPtr clipped = region;
    int steps_left = canvas_walk_limit();
    for (Canvas* c = canvas; c && c->lightweight && clipped && steps_left-- > 0; c = c->parent) {
        if (!c->shape())
            continue;
        clipped = region_intersect(clipped, c->shape()); // null when nothing is left
    }
    return clipped;
}

void canvas_pixcopy_region(Canvas* src, Canvas* dst, const RegionPtr& region, int dx, int dy)
{
    if (!src || !dst || !region || !src->shape() || !dst->shape())
        return;
    RegionPtr moved = tela_clip_through_lightweight_chain(region_copy(region), src);
    if (!moved)
        return;
    Canvas* source_owner = canvdraw_canvas(src);
    Canvas* dest_owner = canvdraw_canvas(dst);
    if (!source_owner->offscreenBuffer || !source_owner->shape() || !dest_owner->shape())
        return;
    moved = region_translate(region_intersect(moved, source_owner->shape()), dx, dy);
    RegionPtr landing = tela_clip_through_lightweight_chain(moved, dst);
    if (!landing)
        return;
    landing = region_intersect(landing, dest_owner->shape());
    if (!landing)
        return;

    Qv::Box<int> area, source_shape, dest_shape;
    region->getBox(area);
    source_owner->shape()->getBox(source_shape);
    dest_owner->shape()->getBox(dest_shape);
    TopDownRect source{area.x1 - source_shape.x1, area.y1 - source_shape.y1, area.x2 - source_shape.x1,
                       area.y2 - source_shape.y1};
    // y grows upward in canvas terms and downward in the buffer: hence -dy.
    XY<int> at{area.x1 - dest_shape.x1 + dx, area.y1 - dest_shape.y1 - dy};
    // A source hanging over the buffer's left or top edge lands further in.
    if (source.left < 0) {
        at.x -= source.left;
        source.left = 0;
    }
    if (source.top < 0) {
        at.y -= source.top;
        source.top = 0;
    }
    const XY<int> size = source_owner->getDimensions();
    source.right = std::min(source.right, size.x);
    source.bottom = std::min(source.bottom, size.y);
    if (source.isEmpty())
        return;

    const Qv::Ptr<iGraphicPrimitivesRenderer> renderer = dest_owner->getOSRenderer();
    if (!renderer)
        return;
    renderer->setClip(Tela::screenRegionToCanvasRegion(dest_owner, landing, false));
    const ImageDescription copy(source_owner->offscreenBuffer, at, source, false);
    renderer->drawImages(&copy, 1);
    const Qv::Box<int> marked = Tela::getExtentsQV(dst->getRootParent(), landing);
    canvupd_mark_rect(dest_owner, marked.x1, marked.y1, marked.x2, marked.y2);
}
