#include "canvas/UpdateTracking.h"

#include "app/Diagnostics.h"
#include "app/TelaState.h"
#include "canvas/Canvas.h"
#include "canvas/CanvasTree.h"
#include "canvas/CanvasWalk.h"
#include "canvas/DisplayPipeline.h"
#include "core/Memory.h"
#include "core/Threads.h"
#include "vector/Regions.h"

#include <atomic>
#include <cstdio>

int canvupdTrace = 0;

namespace {

std::atomic<int> refreshCounter{0};
bool presentationEnabled = true;
Canvas* pendingCanvas = nullptr;
bool pendingSeveral = false;

bool is_heavyweight(const Canvas* c)
{
    return c->lightweight == 0;
}

void set_dirty(Canvas* c)
{
    c->dirty = 1;
    if (tela_refresh_is_active() && is_heavyweight(c)) {
        canvupd_flush(c);
        return;
    }
    // A lightweight canvas never flushes by itself: it waits for its draw
    // canvas's road.
    if (!pendingCanvas)
        pendingCanvas = c;
    else if (pendingCanvas != c)
        pendingSeveral = true;
}

// The mark itself; true when something was recorded.
bool mark(Canvas* c, const RegionPtr& region)
{
    if (!region)
        return false;
    // Only the boxes meet here: a mark is a rectangle within the shape's box.
    const RegionPtr clipped = region_bbx_intersect(c->shape(), region);
    if (!clipped)
        return false;
    if (canvupdTrace != 0)
        std::printf("CANVUPD: canvas %d [parent %d], reason %d\n", c->id, c->parent ? c->parent->id : -99, 1);
    c->updateRegion(region_union(clipped, c->updateRegion()));
    set_dirty(c);
    return true;
}

// Translucent canvases are composed again when anything under them changes.
// Only the direct children of the root are looked at.
void see_through(Canvas* c, const RegionPtr& region)
{
    if (c->isRoot()) {
        for (Canvas* child = c->oldestChild; child; child = child->youngerSibling)
            if (!child->isOpaque())
                mark(child, region);
        return;
    }
    Canvas* top = c;
    int steps_left = canvas_walk_limit();
    while (top->parent && top->parent->parent && steps_left-- > 0)
        top = top->parent;
    for (Canvas* sibling = top->youngerSibling; sibling; sibling = sibling->youngerSibling)
        if (!sibling->isOpaque())
            mark(sibling, region);
}

RegionPtr subtract_children(RegionPtr result, Canvas* parent, const RegionPtr& clip)
{
    if (!parent || !result || !region_bbx_overlap(result, parent->shape()))
        return result;
    for (Canvas* child = parent->oldestChild; child && result; child = child->youngerSibling) {
        if (!child->mapped)
            continue;
        const RegionPtr child_clip = region_intersect(child->shape(), clip);
        // A translucent child hides nothing of a parent below it, except of
        // the root, which is never composed with what it shows through.
        if (is_heavyweight(child) && (child->isOpaque() || parent->isRoot()))
            result = region_subtract(result, child_clip, true);
        result = subtract_children(result, child, child_clip);
    }
    return result;
}

void flush(Canvas* canvas, Tela::VisibleRegions* regions)
{
    if (!canvas || !canvas->dirty || !canvas->shape())
        return;
    if (!canvas->updateRegion()) {
        canvupd_mark_clean(canvas);
        return;
    }
    const auto visible_region = [regions](Canvas* c) { return regions ? regions->of(c) : canvupd_visible_region(c); };
    const RegionPtr visible = visible_region(canvas);
    if (!region_eq(visible, canvas->visibleRegion()))
        canvas->visibleRegion(visible);
    if (const RegionPtr damaged = region_intersect(visible, canvas->updateRegion())) {
        Qv::Ptr<iGraphicPrimitivesRenderer> renderer;
        if (canvas->window && !canvas->window->getRenderer(renderer, 1))
            canvas->window->invalidate(damaged); // the paint event comes back later
        else
            tela_paint_host_region(canvas, damaged);
    }
    // Lightweight children were painted with their parent.
    for (Canvas* child = canvas->oldestChild; child; child = child->youngerSibling) {
        if (!child->lightweight || !child->dirty)
            continue;
        child->updateRegion(region_subtract(child->updateRegion(), canvas->updateRegion(), true));
        child->visibleRegion(visible_region(child));
        if (!child->updateRegion())
            child->dirty = 0;
    }
    canvupd_mark_clean(canvas);
}

} // namespace

void canvupd_mark_region_exact(Canvas* canvas, const Qv::Ptr<iRegion>& region, bool, bool seeThrough)
{
    if (!canvas)
        return;
    mark(canvas, region);
    if (seeThrough && region)
        see_through(canvas, region);
}

void canvupd_mark_rect(Canvas* canvas, int x1, int y1, int x2, int y2)
{
    if (!canvas)
        return;
    if (canvas->shape() && region_is_rect(canvas->updateRegion())) {
        Qv::Box<int> covered;
        canvas->updateRegion()->getBox(covered);
        const RegionPtr probe = region_mkrect(canvas, x1, y1, x2, y2);
        Qv::Box<int> box;
        if (probe) {
            probe->getBox(box);
            if (box.x1 >= covered.x1 && box.x2 <= covered.x2 && box.y1 >= covered.y1 && box.y2 <= covered.y2)
                return; // already damaged
        }
    }
    canvupd_mark_region_exact(canvas, region_mkrect(canvas, x1, y1, x2, y2), true, true);
}

void canvupd_mark_all(Canvas* canvas)
{
    if (canvas)
        canvupd_mark_region_exact(canvas, canvas->shape(), true, true);
}

void canvupd_mark_clean(Canvas* canvas)
{
    if (!canvas)
        return;
    if (canvas == pendingCanvas)
        pendingCanvas = nullptr;
    canvas->dirty = 0;
    canvas->updateRegion(nullptr);
}

void canvupd_flush(Canvas* canvas)
{
    flush(canvas, nullptr);
}

void canvupd_flush(Canvas* canvas, Tela::VisibleRegions& regions)
{
    flush(canvas, &regions);
}

RegionPtr canvupd_visible_region(Canvas* canvas, const RegionPtr& base)
{
    // A canvas in a loop of parents reaches no root and shows nothing; the
    // test also keeps the walks below from going round for ever.
    if (!canvas || !canvas->mapped || canvas_is_in_loop(canvas))
        return nullptr;
    RegionPtr result = base ? base : canvas->shape();
    Qv::Vector<Canvas*> path; // the canvas up to the root, clipped all the way
    for (Canvas* c = canvas; c && result; c = c->parent) {
        if (!c->mapped)
            return nullptr;
        result = region_intersect(result, c->shape());
        if (result)
            path.push_back(c);
    }
    // From the root down, younger heavyweight siblings cover what lies beneath.
    for (auto at = path.rbegin(); at != path.rend() && result; ++at)
        for (Canvas* sibling = (*at)->youngerSibling; sibling && result; sibling = sibling->youngerSibling)
            if (sibling->mapped && is_heavyweight(sibling))
                result = region_subtract(result, sibling->shape(), true);
    return subtract_children(result, canvas, canvas->shape());
}

RegionPtr Tela::VisibleRegions::of(Canvas* canvas)
{
    // As for one canvas alone: a loop of parents shows nothing, and the
    // walk up the families below would never end.
    if (!canvas || !canvas->mapped || canvas_is_in_loop(canvas))
        return nullptr;
    return subtract_children(uncovered(canvas), canvas, canvas->shape());
}

RegionPtr Tela::VisibleRegions::uncovered(Canvas* canvas)
{
    if (const auto known = m_uncovered.find(canvas); known != m_uncovered.end())
        return known->second;
    Canvas* const parent = canvas->parent;
    if (!parent) {
        // The top of a tree: nothing above it but younger canvases beside it.
        RegionPtr result = canvas->mapped ? canvas->shape() : nullptr;
        for (Canvas* sibling = canvas->youngerSibling; sibling && result; sibling = sibling->youngerSibling)
            if (sibling->mapped && is_heavyweight(sibling))
                result = region_subtract(result, sibling->shape(), true);
        m_uncovered[canvas] = result;
        return result;
    }
    auto walk = m_walks.find(parent);
    if (walk == m_walks.end()) {
        const RegionPtr from_parent = uncovered(parent);
        walk = m_walks.emplace(parent, Walk{parent->youngestChild, from_parent}).first;
    }
    // Down the family to this canvas: each child shows what the younger ones left
    // uncovered, and a mapped heavyweight one covers its shape for the older ones.
    RegionPtr result;
    for (Walk& family = walk->second; family.next;) {
        Canvas* const child = family.next;
        family.next = child->olderSibling;
        const RegionPtr shown = child->mapped ? region_intersect(child->shape(), family.uncovered) : nullptr;
        if (family.uncovered && child->mapped && is_heavyweight(child))
            family.uncovered = region_subtract(family.uncovered, child->shape(), true);
        m_uncovered[child] = shown;
        if (child == canvas) {
            result = shown;
            break;
        }
    }
    return result;
}

void tela_refresh_off()
{
    refreshCounter.fetch_sub(1, std::memory_order_relaxed);
}

void tela_refresh_on(bool present)
{
    const int counter = refreshCounter.fetch_add(1, std::memory_order_relaxed) + 1;
    if (counter > 0)
        tela_splat("too many tela_refresh_on() calls");
    // Only the main thread paints; another thread's deferrer just counts.
    if (counter != 0 || !pendingCanvas || !isMainThread())
        return;
    if (present) {
        Canvas* target = pendingSeveral ? nullptr : pendingCanvas;
        pendingSeveral = false;
        pendingCanvas = nullptr;
        tela_display_dirty_regions(target);
    }
    tela_state().deferredReleases.clear();
}

bool tela_refresh_is_active()
{
    return canvupdTrace >= 2 || refreshCounter.load(std::memory_order_relaxed) >= 0;
}

int tela_refresh_counter()
{
    return refreshCounter.load(std::memory_order_relaxed);
}

Canvas* canvupd_pending_canvas()
{
    return pendingCanvas;
}

bool canvupd_pending_several()
{
    return pendingSeveral;
}

void tela_defer_release(const Qv::Ptr<iObject>& object)
{
    if (object && !tela_refresh_is_active())
        tela_state().deferredReleases.push_back(object);
}

namespace Tela {

bool isPresentationEnabled()
{
    return presentationEnabled;
}

void setPresentationEnabled(bool enabled)
{
    presentationEnabled = enabled;
}

UpdateDeferrer::UpdateDeferrer(Canvas* canvas, bool present) : m_canvas(canvas), m_present(present)
{
    tela_refresh_off();
    if (m_canvas)
        m_canvas->beginRender();
}

UpdateDeferrer::UpdateDeferrer(const UpdateDeferrer& other)
    : Qv::InternalRefCount(other), iVirtual(other), iObject(other), m_canvas(other.m_canvas),
      m_present(other.m_present)
{
}

UpdateDeferrer::~UpdateDeferrer()
{
    if (m_canvas)
        m_canvas->endRender();
    tela_refresh_on(m_present);
}

} // namespace Tela
