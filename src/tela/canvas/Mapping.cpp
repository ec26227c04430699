#include "tela/canvas/Mapping.h"

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/CanvasWalk.h"
#include "tela/canvas/UpdateTracking.h"
#include "tela/vector/Regions.h"

namespace {

// A chain longer than the number of live canvases is a loop someone made in
// spite of the warning: such a canvas reaches no root and shows nothing.
bool ancestors_mapped(const Canvas* canvas)
{
    int steps_left = tela_live_canvas_count();
    for (const Canvas* c = canvas->parent; c; c = c->parent)
        if (!c->mapped || --steps_left < 0)
            return false;
    return true;
}

} // namespace

void tela_mapcanvas(Canvas* canvas)
{
    if (!canvas || canvas->mapped)
        return;
    canvas->mapped = 1;
    if (!ancestors_mapped(canvas))
        return; // nothing shows yet; mapping the ancestor marks the subtree
    for (Canvas* c = canvas_walk_subtree(canvas, nullptr); c; c = canvas_walk_subtree(canvas, c))
        canvupd_mark_region_exact(c, canvas->shape(), true, true);
    if (!canvas->shape())
        return;
    // Older siblings it now hides part of have a smaller visible region.
    for (Canvas* older = canvas->olderSibling; older; older = older->olderSibling)
        if (older->shape() && region_bbx_overlap(older->shape(), canvas->shape()))
            older->visibleRegion(canvupd_visible_region(older));
}

void tela_unmapcanvas(Canvas* canvas)
{
    if (tela_exiting() || !canvas || !canvas->mapped || !canvas->parent)
        return;
    canvas->mapped = 0;
    canvas->dirty = 0;
    if (canvas->lightweight || !canvas->shape() || !ancestors_mapped(canvas))
        return;
    canvas_expose(canvas, canvas->shape());
}

void canvas_expose(Canvas* canvas, const Qv::Ptr<iRegion>& region)
{
    Tela::UpdateDeferrer deferrer(nullptr, tela_refresh_presentation());
    for (Canvas* older = canvas->olderSibling; older; older = older->olderSibling)
        for (Canvas* c = canvas_walk_subtree(older, nullptr); c; c = canvas_walk_subtree(older, c))
            canvupd_mark_region_exact(c, region, true, false);
    canvupd_mark_region_exact(canvas->parent, region, true, true);
    if (!canvas->lightweight && canvas->parent && canvas->parent->lightweight)
        canvupd_mark_region_exact(canvdraw_canvas(canvas->parent), region, true, true);
}
