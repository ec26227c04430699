#include "tela/canvas/Mapping.h"

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/CanvasTree.h"
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
    // What it now hides part of has a smaller visible region.
    canvas_refresh_visible_regions(canvas, canvas->shape());
}

void tela_unmapcanvas(Canvas* canvas)
{
    if (tela_exiting() || !canvas || !canvas->mapped || !canvas->parent)
        return;
    canvas->mapped = 0;
    canvas->dirty = 0;
    // Nothing of it shows now, nor of anything on it: a video window on one
    // of them reads that and hides. Mapping again marks them all, and the
    // marks work their regions out afresh.
    for (Canvas* c = canvas_walk_subtree(canvas, nullptr); c; c = canvas_walk_subtree(canvas, c))
        if (c->visibleRegion())
            c->visibleRegion(nullptr);
    if (canvas->lightweight || !canvas->shape() || !ancestors_mapped(canvas))
        return;
    canvas_expose(canvas, canvas->shape());
    canvas_refresh_visible_regions(canvas, canvas->shape());
}

void canvas_refresh_visible_regions(Canvas* canvas, const Qv::Ptr<iRegion>& region)
{
    if (!canvas || !region || !canvas->parent)
        return;
    // One pass for all: the tree holds still until the function returns.
    Tela::VisibleRegions visible;
    const auto store = [&visible, &region](Canvas* c) {
        if (!c->shape() || !region_bbx_overlap(c->shape(), region))
            return; // a canvas whose box misses the region keeps what it had
        const Qv::Ptr<iRegion> fresh = visible.of(c);
        // Unchanged, the stored region stays the same object: a video window
        // takes a new one as a reason to shape itself again.
        if (!region_eq(fresh, c->visibleRegion()))
            c->visibleRegion(fresh);
    };
    for (Canvas* older = canvas->olderSibling; older; older = older->olderSibling) {
        // A subtree is clipped to its top, so a top the region misses ends it.
        if (!older->shape() || !region_bbx_overlap(older->shape(), region))
            continue;
        for (Canvas* c = canvas_walk_subtree(older, nullptr); c; c = canvas_walk_subtree(older, c))
            store(c);
    }
    int steps_left = canvas_walk_limit();
    for (Canvas* ancestor = canvas->parent; ancestor && steps_left-- > 0; ancestor = ancestor->parent)
        store(ancestor);
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
