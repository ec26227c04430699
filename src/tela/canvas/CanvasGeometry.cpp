#include "tela/canvas/CanvasGeometry.h"

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/CanvasWalk.h"
#include "tela/canvas/Coordinates.h"
#include "tela/canvas/Mapping.h"
#include "tela/canvas/PixelCopy.h"
#include "tela/canvas/UpdateTracking.h"
#include "tela/core/Log.h"
#include "tela/vector/GraphicsState.h"
#include "tela/vector/Matrix.h"
#include "tela/vector/Regions.h"
#include "tela/vector/ScanConverter.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace {

int round_half_away(double value)
{
    return static_cast<int>(value > 0 ? value + 0.5 : value - 0.5);
}

Qv::Box<int> box_of(const RegionPtr& region)
{
    Qv::Box<int> box;
    if (region)
        region->getBox(box);
    return box;
}

// Shape, matrix and buffer together, then the old and new areas repainted.
int apply_shape(Canvas* canvas, const RegionPtr& region, const double matrix[3][3])
{
    const RegionPtr old_shape = region_copy(canvas->shape());
    canvas->shape(region);
    tela_setcanvasmatrix(canvas, matrix);
    if (region && canvas->parent) {
        const Qv::Box<int> box = box_of(region);
        canvas->reshape({box.width(), box.height()});
    }
    if (canvas->mapped) {
        canvas_expose(canvas, canvas->shape());
        canvas_expose(canvas, old_shape);
        canvas_refresh_visible_regions(canvas, region_union(canvas->shape(), old_shape));
        // Exposing repaints what lies below and around. A canvas that had a
        // place already keeps its pixels, so it and what is on it must show at
        // the new place too, or a window that copies buffers keeps showing
        // what was below. A canvas placed for the first time has nothing to
        // show yet: what it is given to draw will mark itself.
        if (old_shape && !canvas->lightweight && canvas->shape()) {
            for (Canvas* c = canvas_walk_subtree(canvas, nullptr); c; c = canvas_walk_subtree(canvas, c))
                if (!c->lightweight)
                    canvupd_mark_region_exact(c, c->shape(), true, false);
            canvupd_mark_region_exact(canvas, canvas->shape(), true, true);
        }
    }
    return 1;
}

// One canvas moved; the caller holds a deferrer.
void move_one(Canvas* canvas, int dx, int dy)
{
    Tela::UpdateDeferrer deferrer(nullptr, tela_refresh_presentation());
    const bool quiet = !tela_refresh_is_active();
    (void)quiet; // handed down with the marks, read by none of them
    RegionPtr touched;
    if (canvas->shape() && !canvas->lightweight) {
        const RegionPtr moved = region_translate(canvas->shape(), dx, dy);
        const RegionPtr exposed = region_bbx_overlap(canvas->shape(), moved)
                                      ? region_subtract(canvas->shape(), moved, true)
                                      : region_copy(canvas->shape());
        if (exposed) {
            // Unmapped for the moment, so the marks do not see the canvas
            // still covering what it leaves.
            const int was_mapped = canvas->mapped;
            canvas->mapped = 0;
            for (Canvas* older = canvas->olderSibling; older; older = older->olderSibling)
                for (Canvas* c = canvas_walk_subtree(older, nullptr); c; c = canvas_walk_subtree(older, c))
                    canvupd_mark_region_exact(c, exposed, true, false);
            canvupd_mark_region_exact(canvas->parent, exposed, true, false);
            canvas->mapped = was_mapped;
            touched = region_union(moved, canvas->shape());
        }
    }
    canvas->translate(static_cast<short>(dx), static_cast<short>(dy));
    // The marks above repaint what the canvas uncovers; what it now covers
    // needs no paint, yet shows less.
    if (touched && canvas->mapped)
        canvas_refresh_visible_regions(canvas, touched);
    if (touched) {
        for (Canvas* c = canvas_walk_subtree(canvas, nullptr); c; c = canvas_walk_subtree(canvas, c))
            if (!c->lightweight)
                canvupd_mark_region_exact(c, c->shape(), true, false);
        canvupd_mark_region_exact(canvas, touched, true, true);
    }
}

} // namespace

Canvas* canvdraw_canvas(Canvas* canvas)
{
    int steps_left = canvas_walk_limit();
    while (canvas && canvas->lightweight && canvas->parent && steps_left-- > 0)
        canvas = canvas->parent;
    return canvas;
}

XY<int> telaLightweightCanvasOffset(Canvas* canvas, int system)
{
    if (!canvas)
        return {-1, -1};
    Canvas* draw = canvdraw_canvas(canvas);
    if (draw == canvas || !canvas->shape() || !draw->shape())
        return {};
    XY<int> offset(static_cast<int>(canvas->matrix[0][2] - draw->matrix[0][2]),
                   static_cast<int>(canvas->matrix[1][2] - draw->matrix[1][2]));
    if (system == 1)
        offset.y = draw->getHeight() - offset.y - canvas->getHeight();
    return offset;
}

Qv::Box<int> clipRectToLightweightCanvas(const Qv::Box<int>& box, Canvas* canvas)
{
    if (!canvas || !canvas->shape() || box.width() == 0 || box.height() == 0)
        return box;
    const XY<int> origin(static_cast<int>(canvas->matrix[0][2]), static_cast<int>(canvas->matrix[1][2]));
    Qv::Box<int> clipped{box.x1 + origin.x, box.y1 + origin.y, box.x2 + origin.x, box.y2 + origin.y};
    int steps_left = canvas_walk_limit();
    for (Canvas* c = canvas; c && c->shape() && !c->isRoot() && steps_left-- > 0; c = c->parent) {
        clipped.intersect(c->getExtents());
        if (clipped.width() <= 0 || clipped.height() <= 0)
            break;
    }
    return {clipped.x1 - origin.x, clipped.y1 - origin.y, clipped.x2 - origin.x, clipped.y2 - origin.y};
}

void tela_setcanvasmatrix(Canvas* canvas, const double matrix[3][3])
{
    if (!canvas)
        return;
    std::memmove(canvas->matrix, matrix, sizeof canvas->matrix);
    double inverse[3][3];
    if (mat3_inv(canvas->matrix, inverse))
        std::memcpy(canvas->inverseMatrix, inverse, sizeof inverse);
}

void tela_rescalecanvas(Canvas* canvas)
{
    tela_setcanvasmatrix(canvas, gstate_ctm());
}

int tela_reshapecanvas(Canvas* canvas, Qv::Ptr<iRegion> region)
{
    if (!canvas || !region)
        return 0;
    const auto& ctm = gstate_ctm();
    const int tx = round_half_away(ctm[0][2]);
    const int ty = round_half_away(ctm[1][2]);
    const Qv::Box<int> box = box_of(region);
    const int window_y = telaScreenYTowin32ScreenY(canvas->getRootParent(), ty) - std::abs(box.height());
    region->translateInPlace(tx, window_y);
    return apply_shape(canvas, region, ctm);
}

int tela_reshapecanvas(Canvas* canvas, unsigned short /*width*/, unsigned short /*height*/)
{
    if (!canvas)
        return 0;
    // Already in the window's coordinates: the path was placed by the matrix
    // point by point as it was built.
    const RegionPtr region = path_to_region(canvas, 0, 1, 0);
    if (!region)
        return 0;
    return apply_shape(canvas, region, gstate_ctm());
}

int tela_reshapeaddchildren(Canvas* canvas)
{
    if (!canvas)
        return 0;
    RegionPtr united = canvas->shape();
    for (Canvas* child = canvas->oldestChild; child; child = child->youngerSibling)
        united = region_union(united, child->shape());
    double matrix[3][3];
    std::memcpy(matrix, canvas->matrix, sizeof matrix);
    return apply_shape(canvas, united, matrix);
}

int tela_placecanvas(Canvas* canvas, const TopDownRect& rect, const Qv::Ptr<iRegion>& outline)
{
    if (!canvas)
        return 0;
    if (!canvas->parent) {
        // A root's shape is its window's; a loose canvas has no window to be placed in.
        tela_splat("tela_placecanvas: the canvas has no parent\n");
        return 0;
    }
    if (rect.isEmpty()) {
        tela_splat("tela_placecanvas: empty rectangle\n");
        return 0;
    }
    // The matrix counts y up from the window's bottom edge, the rectangle down from its top.
    const int bottom_up_y = telaScreenYTowin32ScreenY(canvas->getRootParent(), rect.bottom);
    const double matrix[3][3] = {{1, 0, static_cast<double>(rect.left)},
                                 {0, 1, static_cast<double>(bottom_up_y)},
                                 {0, 0, 1}};
    const RegionPtr shape = outline ? region_translate(outline, rect.left, -rect.top) : region_mkrect(rect);
    return apply_shape(canvas, shape, matrix);
}

void tela_translatecanvas(Canvas* canvas, int dx, int dy)
{
    tela_translatecanvtree(canvas, dx, dy, 1);
}

void tela_translatecanvtree(Canvas* canvas, int dx, int dy, int)
{
    if (!canvas || !canvas->parent)
        return;
    Tela::UpdateDeferrer deferrer(nullptr, tela_refresh_presentation());
    move_one(canvas, dx, dy);
    if (canvas->stickyId < 0)
        return;
    for (Canvas* sibling = canvas->parent->oldestChild; sibling; sibling = sibling->youngerSibling)
        if (sibling != canvas && sibling->stickyId == canvas->stickyId)
            move_one(sibling, dx, dy);
}

void tela_setlightweight(Canvas* canvas, int lightweight)
{
    if (!canvas || canvas->lightweight == lightweight)
        return;
    if (lightweight) {
        // What the canvas shows moves into the buffer it will draw into from
        // now on, so nothing flickers before the application repaints it.
        const RegionPtr visible = tela_clip_through_lightweight_chain(canvas->shape(), canvas->parent);
        if (visible)
            canvas_pixcopy_region(canvas, canvdraw_canvas(canvas->parent), visible, 0, 0);
    }
    // The canvas's own buffer stays: turning back is cheap.
    canvas->lightweight = lightweight;
}

void tela_stickcanvases(Canvas* a, Canvas* b)
{
    if (!a || !b || a == b || !a->parent || a->parent != b->parent)
        return;
    Canvas* parent = a->parent;
    if (a->stickyId >= 0) {
        if (b->stickyId >= 0) {
            const int from = a->stickyId;
            for (Canvas* c = parent->oldestChild; c; c = c->youngerSibling)
                if (c->stickyId == from)
                    c->stickyId = b->stickyId;
        } else {
            b->stickyId = a->stickyId;
        }
        return;
    }
    if (b->stickyId >= 0) {
        a->stickyId = b->stickyId;
        return;
    }
    int largest = -1;
    for (Canvas* c = parent->oldestChild; c; c = c->youngerSibling)
        largest = std::max(largest, c->stickyId);
    a->stickyId = b->stickyId = largest + 1;
}

void tela_unstickcanvas(Canvas* canvas)
{
    if (!canvas || !canvas->parent)
        return;
    const int group = canvas->stickyId;
    int members = 0;
    for (Canvas* c = canvas->parent->oldestChild; c; c = c->youngerSibling)
        if (c->stickyId == group)
            ++members;
    if (members < 3) {
        // A group of two dissolves.
        for (Canvas* c = canvas->parent->oldestChild; c; c = c->youngerSibling)
            if (c->stickyId == group)
                c->stickyId = -1;
    } else {
        canvas->stickyId = -1;
    }
}

int tela_get_sticky_id(Canvas* canvas)
{
    return canvas ? canvas->stickyId : -1;
}

void tela_set_sticky_id(Canvas* canvas, int id)
{
    if (canvas)
        canvas->stickyId = id;
}
