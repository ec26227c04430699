#include "canvas/DisplayPipeline.h"

#include "app/TelaState.h"
#include "canvas/Canvas.h"
#include "canvas/CanvasWalk.h"
#include "canvas/UpdateTracking.h"
#include "vector/Regions.h"

#include <algorithm>

namespace {

// The composited road: gather the damage into one box and ask the window for
// a frame; its paint event redraws the tree.
void invalidate_dirty(Canvas* root, Canvas* start)
{
    Qv::Box<int> box;
    int count = 0;
    for (Canvas* c = canvas_walk_postorder_oldest_first(start, nullptr); c;
         c = canvas_walk_postorder_oldest_first(start, c)) {
        if (c->dirty) {
            if (c->mapped) {
                Qv::Box<int> damage;
                if (c->updateRegion) {
                    c->updateRegion->getBox(damage);
                    if (count == 0) {
                        box = damage;
                    } else {
                        box = {std::min(box.x1, damage.x1), std::min(box.y1, damage.y1), std::max(box.x2, damage.x2),
                               std::max(box.y2, damage.y2)};
                    }
                }
                c->setVisibleRegion(canvupd_visible_region(c));
                ++count;
            }
            canvupd_mark_clean(c);
        }
        c->releaseRenderers();
    }
    if (count != 0)
        root->window->invalidate(region_mkrect(TopDownRect{box.x1, box.y1, box.x2, box.y2}));
}

// The host road: every damaged canvas is painted now, all within one frame.
void flush_dirty(Canvas* root, Canvas* start)
{
    Qv::Ptr<iGraphicPrimitivesRenderer> frame;
    root->window->getRenderer(frame, 1);
    for (Canvas* c = canvas_walk_postorder_oldest_first(start, nullptr); c;
         c = canvas_walk_postorder_oldest_first(start, c))
        canvupd_flush(c);
}

void display_dirty_regions(Canvas* root, Canvas* canvas)
{
    if (!root || !root->window)
        return;
    Canvas* start = canvas ? canvas : root;
    if (root->window->displayLocation() != iImageBase::eHostMemory)
        invalidate_dirty(root, start);
    else
        flush_dirty(root, start);
}

} // namespace

void tela_display_dirty_regions(Canvas* canvas)
{
    const Qv::Vector<RootWindowRec>& rows = tela_state().rootWindows;
    if (!canvas) {
        for (std::size_t i = 0; i < rows.size(); ++i)
            display_dirty_regions(rows[i].rootCanvas, nullptr);
        return;
    }
    Canvas* root = canvas->getRootParent();
    for (const RootWindowRec& row : rows)
        if (row.rootCanvas == root)
            display_dirty_regions(root, canvas);
}

void tela_paint_host_region(Canvas* canvas, const Qv::Ptr<iRegion>& region)
{
    // Until canvases are blitted into the window's pixels here, the window is
    // told what changed and repaints it from its own paint event.
    if (Canvas* root = canvas ? canvas->getRootParent() : nullptr)
        if (root->window)
            root->window->invalidate(region);
}
