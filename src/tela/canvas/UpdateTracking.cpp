#include "tela/canvas/UpdateTracking.h"

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/CanvasWalk.h"
#include "tela/canvas/DisplayPipeline.h"
#include "tela/canvas/DisplayRoad.h"
#include "tela/core/Log.h"
#include "tela/core/Memory.h"
#include "tela/core/Threads.h"
#include "tela/state/TelaState.h"
#include "tela/vector/Regions.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <utility>

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

// Stacking and shapes change only through the library: connecting,
// disconnecting, Canvas::shape, Canvas::translate, and making, copying or
// ending a canvas. Each counts here, so what is worked out from them can tell
// whether it still holds.
std::atomic<std::uint32_t> s_tree_generation{0};

std::uint32_t tree_generation()
{
    return s_tree_generation.load(std::memory_order_relaxed);
}

// Marks every translucent canvas from `from` to the top of its family; how
// many were looked at.
long mark_see_through_from(Canvas* from, const RegionPtr& region)
{
    long looked_at = 0;
    for (Canvas* sibling = from; sibling; sibling = sibling->youngerSibling, ++looked_at)
        if (!sibling->isOpaque())
            mark(sibling, region);
    return looked_at;
}

// Where the children of one root lie, so that the see-through pass of a mark
// looks only at the younger siblings whose boxes meet the damage. A mark on a
// canvas whose box misses the damage records nothing and prints nothing, so
// skipping those changes nothing; walking them all made a pass over n
// overlapping siblings cost n squared.
//
// Only stacking and shape boxes are kept. Translucency is read from each
// canvas as it is reached: useAlphaChannel and opacity are public, and a
// client that sets them directly is seen at the next mark. The index is made
// for one tree generation (above) and made again after any change. The root's
// child count and end links are compared too, a cheap guard against links
// written by hand; a canvas the index does not know takes the plain walk. A
// canvas that ends counts as a change, so no index outlives one of its
// canvases. The index is made only once plain walks since the last
// change have looked at twice as many siblings as the family has, so a tree
// that changes between every two marks costs what the plain walk costs.
// Main thread only.
class SeeThroughIndex {
public:
    void markYounger(Canvas* root, Canvas* from, const RegionPtr& region)
    {
        // Small families, and a mark made from inside another one's marking,
        // take the plain walk.
        if (!from || root->childCount < INDEXED_FAMILY || m_busy) {
            mark_see_through_from(from, region);
            return;
        }
        const std::uint32_t generation = tree_generation();
        if (m_root != root || m_generation != generation ||
            (m_built && (m_count != root->childCount || m_oldest != root->oldestChild ||
                         m_youngest != root->youngestChild))) {
            m_root = root;
            m_generation = generation;
            m_built = false;
            m_walked = 0;
        }
        if (!m_built) {
            if (m_walked < 2L * root->childCount) {
                m_walked += mark_see_through_from(from, region) + 1;
                return;
            }
            build(root);
        }
        const int first = position(from);
        if (first < 0) { // not one of the family as it was indexed
            mark_see_through_from(from, region);
            return;
        }
        Qv::Box<int> damage;
        region->getBox(damage);
        find(first, damage);
        // Marking paints nothing but translucent canvases, which calls no
        // client, so what was translucent a moment ago in find() still is;
        // each is asked again all the same before it is marked.
        Canvas* changed_after = nullptr;
        {
            const Busy busy(m_busy);
            for (const int at : m_found) {
                Canvas* const sibling = m_entries[static_cast<std::size_t>(at)].canvas;
                if (sibling->isOpaque())
                    continue;
                mark(sibling, region);
                if (tree_generation() != m_generation) {
                    changed_after = sibling;
                    break;
                }
            }
        }
        // Painting a mark changed the tree: go on as the plain walk would.
        if (changed_after)
            mark_see_through_from(changed_after->youngerSibling, region);
    }

private:
    static constexpr int INDEXED_FAMILY = 32;
    static constexpr int MAX_CELLS_PER_SIDE = 256;

    struct Busy {
        explicit Busy(bool& flag) : m_flag(flag) { m_flag = true; }
        ~Busy() { m_flag = false; }
        Busy(const Busy&) = delete;
        Busy& operator=(const Busy&) = delete;
        bool& m_flag;
    };

    struct Entry {
        Canvas* canvas;
        Qv::Box<int> box; // empty without a shape
    };

    // One box in one cell, with the first cell of its run, so that a box in
    // several cells of the damage is taken once.
    struct Placed {
        Qv::Box<int> box;
        int at; // position in the family
        std::int16_t column1, row1;
    };

    // A run of cells, inclusive, clamped to the grid.
    struct Cells {
        int column1, row1, column2, row2;
        int columns() const { return column2 - column1 + 1; }
        int rows() const { return row2 - row1 + 1; }
    };

    void build(Canvas* root)
    {
        m_built = true;
        m_count = root->childCount;
        m_oldest = root->oldestChild;
        m_youngest = root->youngestChild;
        m_entries.clear();
        m_positions.clear();
        bool any = false;
        long long widths = 0, heights = 0, shaped = 0;
        for (Canvas* child = root->oldestChild; child; child = child->youngerSibling) {
            Entry entry{child, {}};
            if (child->shape())
                child->shape()->getBox(entry.box);
            if (!entry.box.isEmpty()) {
                m_area = any ? m_area.united(entry.box) : entry.box;
                any = true;
                widths += entry.box.width();
                heights += entry.box.height();
                ++shaped;
            }
            m_positions.emplace_back(child, static_cast<int>(m_entries.size()));
            m_entries.push_back(entry);
        }
        std::sort(m_positions.begin(), m_positions.end());
        m_cell_start.clear();
        m_placed.clear();
        m_columns = m_rows = 0;
        if (!any)
            return;
        // Cells about as big as the average box: a box then lies in a few
        // cells and a cell holds a few boxes. Coarser while boxes much bigger
        // than the average would fill too many cells.
        m_cell_width = static_cast<int>(std::max<long long>(8, widths / shaped));
        m_cell_height = static_cast<int>(std::max<long long>(8, heights / shaped));
        for (;;) {
            m_columns = std::max(1, std::min(MAX_CELLS_PER_SIDE, (m_area.width() + m_cell_width - 1) / m_cell_width));
            m_rows = std::max(1, std::min(MAX_CELLS_PER_SIDE, (m_area.height() + m_cell_height - 1) / m_cell_height));
            m_cell_width = (m_area.width() + m_columns - 1) / m_columns;
            m_cell_height = (m_area.height() + m_rows - 1) / m_rows;
            long long filled = 0;
            for (const Entry& entry : m_entries)
                if (!entry.box.isEmpty()) {
                    const Cells cells = cells_of(entry.box);
                    filled += static_cast<long long>(cells.columns()) * cells.rows();
                }
            if (filled <= 8 * shaped + 1024 || (m_columns == 1 && m_rows == 1))
                break;
            m_cell_width *= 2;
            m_cell_height *= 2;
        }
        // Each cell's run in stacking order, oldest first.
        m_cell_start.assign(static_cast<std::size_t>(m_columns * m_rows + 1), 0);
        for (const Entry& entry : m_entries)
            if (!entry.box.isEmpty())
                for_each_cell(cells_of(entry.box), [this](int cell) { ++m_cell_start[static_cast<std::size_t>(cell + 1)]; });
        for (std::size_t cell = 1; cell < m_cell_start.size(); ++cell)
            m_cell_start[cell] += m_cell_start[cell - 1];
        m_placed.resize(static_cast<std::size_t>(m_cell_start.back()));
        Qv::Vector<int> next(m_cell_start.begin(), m_cell_start.end() - 1);
        for (std::size_t at = 0; at < m_entries.size(); ++at) {
            const Qv::Box<int>& box = m_entries[at].box;
            if (box.isEmpty())
                continue;
            const Cells cells = cells_of(box);
            const Placed placed{box, static_cast<int>(at), static_cast<std::int16_t>(cells.column1),
                                static_cast<std::int16_t>(cells.row1)};
            for_each_cell(cells, [&](int cell) { m_placed[static_cast<std::size_t>(next[static_cast<std::size_t>(cell)]++)] = placed; });
        }
    }

    Cells cells_of(const Qv::Box<int>& box) const
    {
        const auto clamp = [](int value, int last) { return std::max(0, std::min(value, last)); };
        return {clamp((box.x1 - m_area.x1) / m_cell_width, m_columns - 1),
                clamp((box.y1 - m_area.y1) / m_cell_height, m_rows - 1),
                clamp((box.x2 - 1 - m_area.x1) / m_cell_width, m_columns - 1),
                clamp((box.y2 - 1 - m_area.y1) / m_cell_height, m_rows - 1)};
    }

    template <typename Visit>
    void for_each_cell(const Cells& cells, Visit visit) const
    {
        for (int row = cells.row1; row <= cells.row2; ++row)
            for (int column = cells.column1; column <= cells.column2; ++column)
                visit(row * m_columns + column);
    }

    int position(const Canvas* canvas) const
    {
        const auto at = std::lower_bound(m_positions.begin(), m_positions.end(), std::pair<const Canvas*, int>(canvas, 0));
        return at != m_positions.end() && at->first == canvas ? at->second : -1;
    }

    // Into m_found, in stacking order: the translucent canvases from `first`
    // up whose boxes meet `damage`.
    void find(int first, const Qv::Box<int>& damage)
    {
        m_found.clear();
        if (m_columns == 0 || !damage.intersects(m_area))
            return;
        const Cells cells = cells_of(damage);
        if (2 * cells.columns() * cells.rows() >= m_columns * m_rows) {
            // Most of the grid: straight through the family is cheaper.
            for (std::size_t at = static_cast<std::size_t>(first); at < m_entries.size(); ++at)
                if (m_entries[at].box.intersects(damage) && !m_entries[at].canvas->isOpaque())
                    m_found.push_back(static_cast<int>(at));
            return;
        }
        for (int row = cells.row1; row <= cells.row2; ++row) {
            for (int column = cells.column1; column <= cells.column2; ++column) {
                const int cell = row * m_columns + column;
                const auto end = m_placed.begin() + m_cell_start[static_cast<std::size_t>(cell + 1)];
                auto at = std::partition_point(m_placed.begin() + m_cell_start[static_cast<std::size_t>(cell)], end,
                                               [first](const Placed& placed) { return placed.at < first; });
                for (; at != end; ++at) {
                    if (!at->box.intersects(damage) || std::max<int>(at->column1, cells.column1) != column ||
                        std::max<int>(at->row1, cells.row1) != row)
                        continue;
                    if (!m_entries[static_cast<std::size_t>(at->at)].canvas->isOpaque())
                        m_found.push_back(at->at);
                }
            }
        }
        std::sort(m_found.begin(), m_found.end());
    }

    Canvas* m_root = nullptr;
    std::uint32_t m_generation = 0;
    bool m_built = false;
    bool m_busy = false;
    long m_walked = 0; // siblings the plain walk looked at since the family last changed
    int m_count = 0;   // the root's links when the index was made
    Canvas* m_oldest = nullptr;
    Canvas* m_youngest = nullptr;
    Qv::Vector<Entry> m_entries;                            // stacking order, oldest first
    Qv::Vector<std::pair<const Canvas*, int>> m_positions; // by address
    Qv::Box<int> m_area;                                    // all boxes together
    int m_cell_width = 1, m_cell_height = 1, m_columns = 0, m_rows = 0;
    Qv::Vector<int> m_cell_start; // where each cell's run begins in m_placed
    Qv::Vector<Placed> m_placed;  // cell after cell
    Qv::Vector<int> m_found;
};

SeeThroughIndex& see_through_index()
{
    static SeeThroughIndex index;
    return index;
}

// Translucent canvases are composed again when anything under them changes.
// Only the direct children of the root are looked at.
void see_through(Canvas* c, const RegionPtr& region)
{
    if (c->isRoot()) {
        see_through_index().markYounger(c, c->oldestChild, region);
        return;
    }
    Canvas* top = c;
    int steps_left = canvas_walk_limit();
    while (top->parent && top->parent->parent && steps_left-- > 0)
        top = top->parent;
    see_through_index().markYounger(top->parent, top->youngerSibling, region);
}

RegionPtr subtract_children(RegionPtr result, Canvas* parent, const RegionPtr& clip)
{
    if (!parent || !result || !region_bbx_overlap(result, parent->shape()))
        return result;
    // A rectangular clip leaves a child inside it as it is: no copy is made.
    Qv::Box<int> clip_box;
    const bool clip_is_box = region_is_rect(clip) != 0;
    if (clip_is_box)
        clip->getBox(clip_box);
    for (Canvas* child = parent->oldestChild; child && result; child = child->youngerSibling) {
        // Everything on a child lies within its shape: one whose box misses
        // what is left takes nothing from it, nor does anything on it.
        if (!child->mapped || !region_bbx_overlap(result, child->shape()))
            continue;
        Qv::Box<int> child_box;
        child->shape()->getBox(child_box);
        const RegionPtr child_clip = clip_is_box && clip_box.intersected(child_box) == child_box
            ? child->shape()
            : region_intersect(child->shape(), clip);
        // A translucent child hides nothing of a parent below it, except of
        // the root, which is never composed with what it shows through.
        if (is_heavyweight(child) && (child->isOpaque() || parent->isRoot())) {
            // What is on it is clipped to what was just taken away.
            result = region_subtract(result, child_clip, true);
            continue;
        }
        result = subtract_children(result, child, child_clip);
    }
    return result;
}

// Damage goes to the window as a paint request instead of being painted now:
// a composited window draws only whole frames, and a host window that gives
// no renderer at the moment repaints when it can.
bool must_wait_for_paint(Canvas* canvas)
{
    if (!canvas->window)
        return false;
    if (tela_display_road(canvas) == DisplayRoad::Composited)
        return true;
    Qv::Ptr<iGraphicPrimitivesRenderer> renderer;
    return !canvas->window->getRenderer(renderer, 1);
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
        if (must_wait_for_paint(canvas))
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

void canvupd_tree_changed()
{
    s_tree_generation.fetch_add(1, std::memory_order_relaxed);
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
    const RegionPtr uncovered = canvupd_uncovered_region(canvas, base);
    return uncovered ? subtract_children(uncovered, canvas, canvas->shape()) : uncovered;
}

RegionPtr canvupd_uncovered_region(Canvas* canvas, const RegionPtr& base)
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
    return result;
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
        // A child that shows nothing of what is left covers nothing of it.
        if (shown && is_heavyweight(child))
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

UpdateDeferrer::UpdateDeferrer(Canvas* drawn, bool presentAtEnd) : canvas(drawn), present(presentAtEnd)
{
    tela_refresh_off();
    if (canvas)
        canvas->beginRender();
}

UpdateDeferrer::UpdateDeferrer(const UpdateDeferrer& other)
    : Qv::InternalRefCount(other), iVirtual(other), iObject(other), canvas(other.canvas),
      present(other.present)
{
}

UpdateDeferrer::~UpdateDeferrer()
{
    if (canvas)
        canvas->endRender();
    tela_refresh_on(present);
}

} // namespace Tela
