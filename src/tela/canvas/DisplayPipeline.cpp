#include "tela/canvas/DisplayPipeline.h"

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasClient.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/CanvasWalk.h"
#include "tela/canvas/Composition.h"
#include "tela/canvas/DisplayRoad.h"
#include "tela/canvas/RootCanvas.h"
#include "tela/canvas/UpdateTracking.h"
#include "tela/platform/GraphicPrimitives.h"
#include "tela/state/TelaState.h"
#include "tela/vector/Regions.h"

#include <chrono>
#include <thread>

namespace {

// The composited road: gather the damage into one box and ask the window for
// a frame; its paint event redraws the tree.
void invalidate_dirty(Canvas* root, Canvas* start)
{
    Qv::Box<int> box;
    int count = 0; // dirty mapped canvases: any at all asks for a frame
    Tela::VisibleRegions visible;
    for (Canvas* c = canvas_walk_postorder_oldest_first(start, nullptr); c;
         c = canvas_walk_postorder_oldest_first(start, c)) {
        if (c->dirty) {
            if (c->mapped) {
                Qv::Box<int> damage;
                if (c->updateRegion()) {
                    c->updateRegion()->getBox(damage);
                    box.unite(damage);
                }
                c->visibleRegion(visible.of(c));
                ++count;
            }
            canvupd_mark_clean(c);
        }
        c->releaseRenderers();
    }
    if (count != 0)
        root->window->invalidate(region_mkrect(box.toTopDownRectUnflipped())); // update regions are top-down
}

// The host road: every damaged canvas is painted now, all within one frame.
void flush_dirty(Canvas* root, Canvas* start)
{
    Qv::Ptr<iGraphicPrimitivesRenderer> frame;
    root->window->getRenderer(frame, 1);
    // Painting changes no shape or stacking, so the visible regions of the
    // whole walk can be worked out together.
    Tela::VisibleRegions visible;
    for (Canvas* c = canvas_walk_postorder_oldest_first(start, nullptr); c;
         c = canvas_walk_postorder_oldest_first(start, c))
        canvupd_flush(c, visible);
}

TopDownRect moved(const Qv::Box<int>& box, const XY<int>& by)
{
    return {box.x1 + by.x, box.y1 + by.y, box.x2 + by.x, box.y2 + by.y};
}

// Lays `canvas` and its heavyweight descendants, oldest first, over
// `renderer`, whose origin is at window point `origin`, as the window's road
// shows them.
void compose_subtree(Canvas* canvas, Qv::Ptr<iGraphicPrimitivesRenderer>& renderer, const XY<int>& origin,
                     const Qv::Box<int>& window_box, DisplayRoad road)
{
    if (!canvas->mapped || !canvas->shape())
        return;
    // A frame leaves out a canvas that younger siblings cover wholly, with all
    // on it, even where those siblings are translucent; a copy of the frame
    // must leave out the same.
    if (road == DisplayRoad::Composited && !canvas->visibleRegion())
        return;
    Qv::Box<int> shape_box;
    canvas->shape()->getBox(shape_box);
    if (!shape_box.intersects(window_box))
        return;
    if (!canvas->lightweight && canvas->offscreenBuffer) {
        tela_compose_canvas(canvas, renderer, origin, road);
        renderer->setClip(nullptr);
    }
    for (Canvas* child = canvas->oldestChild; child; child = child->youngerSibling)
        compose_subtree(child, renderer, origin, window_box, road);
}

// Copies a heavyweight canvas's buffer into the window over `region`.
void blit(Canvas* canvas, const RegionPtr& region)
{
    if (!canvas->offscreenBuffer || !canvas->window)
        return;
    const RegionPtr local = Tela::screenRegionToCanvasRegion(canvas, region, false);
    if (!local)
        return;
    Qv::Box<int> box;
    local->getBox(box);
    const XY<int> position = canvas->getPosition();

    if (canvas->isOpaque() && canvas->drawMethod != Canvas::eBuffered) {
        if (canvas->client)
            canvas->client->drawUnbuffered(region);
        return;
    }
    Qv::Ptr<iGraphicPrimitivesRenderer> window_renderer;
    if (!canvas->window->getRenderer(window_renderer, 1) || !window_renderer)
        return;

    if (canvas->isOpaque()) {
        window_renderer->setClip(region);
        if (canvupdTrace != 0) {
            // Draw debugging: each update flashes green before it lands.
            const RectDescription flash(moved(box, position), NormalisedRGB(0, 1, 0, 1));
            window_renderer->drawRects(&flash, 1);
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        const ImageDescription image(canvas->offscreenBuffer, XY<int>(box.x1 + position.x, box.y1 + position.y),
                                     box.toTopDownRectUnflipped(), false);
        window_renderer->drawImages(&image, 1);
        return;
    }

    // Translucent: compose what lies beneath in a scratch image first, then
    // the canvas over it, and copy the result into the window.
    Qv::Ptr<iImage> scratch;
    if (!canvas->window->createOffscreenImage(scratch, {box.width(), box.height()}) || !scratch)
        return;
    Qv::Ptr<iGraphicPrimitivesRenderer> scratch_renderer;
    if (!scratch->getRenderer(scratch_renderer, 1) || !scratch_renderer)
        return;
    const XY<int> origin(box.x1 + position.x, box.y1 + position.y);
    tela_compose_window_area(canvas->getRootParent(), scratch_renderer,
                             Qv::Box<int>{origin.x, origin.y, origin.x + box.width(), origin.y + box.height()}, canvas);
    // The buffer's own alpha counts only with useAlphaChannel; the opacity is
    // the description's alpha either way, and the renderer lays the canvas
    // over what lies beneath by that share.
    ImageDescription own(canvas->offscreenBuffer, XY<int>(0, 0), box.toTopDownRectUnflipped(),
                         canvas->useAlphaChannel);
    own.opacity = static_cast<float>(canvas->opacity);
    scratch_renderer->drawImages(&own, 1);
    scratch_renderer = nullptr;

    window_renderer->setClip(region);
    const ImageDescription result(scratch, origin, false);
    window_renderer->drawImages(&result, 1);
}

// Through the root's own displayDirtyRegions, which a window's class may
// override; a bare canvas standing as a root is shown directly.
void display_root(Canvas* root, Canvas* canvas)
{
    if (auto* const window_root = dynamic_cast<RootCanvas*>(root))
        window_root->displayDirtyRegions(canvas);
    else
        tela_display_root_dirty_regions(root, canvas);
}

} // namespace

void tela_compose_window_area(Canvas* root, Qv::Ptr<iGraphicPrimitivesRenderer>& renderer,
                              const Qv::Box<int>& area, Canvas* stop)
{
    if (!root || !renderer)
        return;
    const XY<int> origin(area.x1, area.y1);
    const DisplayRoad road = tela_display_road(root);
    tela_fill_root_background(root, renderer, TopDownRect{0, 0, area.width(), area.height()}, origin);
    for (Canvas* child = root->oldestChild; child && child != stop; child = child->youngerSibling)
        compose_subtree(child, renderer, origin, area, road);
}

void tela_display_dirty_regions(Canvas* canvas)
{
    const Qv::Vector<RootWindowRec>& rows = tela_state().rootWindows;
    if (!canvas) {
        for (std::size_t i = 0; i < rows.size(); ++i)
            display_root(rows[i].rootCanvas, nullptr);
        return;
    }
    Canvas* root = canvas->getRootParent();
    for (std::size_t i = 0; i < rows.size(); ++i)
        if (rows[i].rootCanvas == root) {
            display_root(root, canvas);
            return;
        }
}

void tela_display_root_dirty_regions(Canvas* root, Canvas* canvas)
{
    if (!root || !root->window)
        return;
    Canvas* start = canvas ? canvas : root;
    if (tela_display_road(root) == DisplayRoad::Composited)
        invalidate_dirty(root, start);
    else
        flush_dirty(root, start);
}

void tela_paint_host_region(Canvas* canvas, const Qv::Ptr<iRegion>& region)
{
    if (!canvas || !region)
        return;
    if (canvas->isRoot()) {
        Qv::Ptr<iGraphicPrimitivesRenderer> renderer;
        if (!canvas->window || !canvas->window->getRenderer(renderer, 1) || !renderer)
            return;
        Qv::Box<int> box;
        region->getBox(box);
        renderer->setClip(region);
        tela_fill_root_background(canvas, renderer, box.toTopDownRectUnflipped());
        return;
    }
    Canvas* draw = canvdraw_canvas(canvas);
    if (!draw || !draw->shape())
        return;
    blit(draw, region);
}
