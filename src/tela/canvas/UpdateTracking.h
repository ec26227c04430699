#pragma once
// Update tracking: what changed is recorded per canvas as an update region
// and shown either at once or, while the refresh is off, when it comes back.
//
// tela_refresh_off/on nest through one counter; scopes use
// Tela::UpdateDeferrer so that a whole change repaints at most once. Only one
// pending canvas is remembered: marks on two canvases widen the next display
// pass to every root. Main thread only, apart from tela_refresh_off/on's
// counting.

#include "tela/core/Memory.h"
#include "tela/core/Ptr.h"
#include "tela/core/RefCount.h"
#include "tela/platform/iRegion.h"

class Canvas;

// Draw debugging: non-zero traces updates and flashes blitted areas; 2 or
// more also makes every refresh immediate.
extern int canvupdTrace;

// Marks are rectangles: the meeting of the region's box with the shape's box.
// With seeThrough, translucent canvases above are marked too. `flush` is
// handed down and never read.
void canvupd_mark_region_exact(Canvas* canvas, const Qv::Ptr<iRegion>& region, bool flush, bool seeThrough);
// A rectangle in bottom-up screen coordinates; nothing when it is already
// inside a rectangular update region.
void canvupd_mark_rect(Canvas* canvas, int x1, int y1, int x2, int y2);
void canvupd_mark_all(Canvas* canvas);
// Forgets the canvas's damage (and that it was pending).
void canvupd_mark_clean(Canvas* canvas);
// Stacking or a shape changed somewhere in a tree: what the see-through pass
// of a mark keeps about a root's children is made again. Called by the
// functions that link, unlink, shape, move, make, copy and end canvases.
void canvupd_tree_changed();
// Paints the canvas's damage now, if it is dirty and has a shape.
void canvupd_flush(Canvas* canvas);
namespace Tela {
class VisibleRegions;
}
// The same, for a pass over many canvases of one tree: visible regions come from
// `regions`.
void canvupd_flush(Canvas* canvas, Tela::VisibleRegions& regions);

// The part of the canvas (or of `base`, when given) that shows: clipped by
// every ancestor, less younger heavyweight siblings along the way and the
// children that cover it.
Qv::Ptr<iRegion> canvupd_visible_region(Canvas* canvas, const Qv::Ptr<iRegion>& base = {});
// The same before the canvas's own children take their part.
Qv::Ptr<iRegion> canvupd_uncovered_region(Canvas* canvas, const Qv::Ptr<iRegion>& base = {});

namespace Tela {

// The visible regions of many canvases of one tree, each exactly what
// canvupd_visible_region(canvas) gives, for a pass that needs them all.
//
// Asked one canvas at a time, every canvas subtracts all its younger siblings,
// so a pass over n siblings costs n squared region operations. Here each family
// of siblings is worked through once, youngest first, with one running region
// of what the younger ones leave uncovered of their parent: n operations. The
// walk goes no further down a family than the oldest canvas asked for, so a
// pass over one young canvas stays as cheap as before.
//
// Holds answers: the tree's links, shapes, mapping and weights must not change
// while one is in use. Main thread only.
class VisibleRegions {
public:
    VisibleRegions() = default;
    VisibleRegions(const VisibleRegions&) = delete;
    VisibleRegions& operator=(const VisibleRegions&) = delete;

    Qv::Ptr<iRegion> of(Canvas* canvas);

private:
    // The family of one parent, walked from its youngest child so far.
    struct Walk {
        Canvas* next = nullptr;        // the next older child to reach, null at the end
        Qv::Ptr<iRegion> uncovered;    // what the parent leaves to it and older ones
    };

    // The canvas's shape as far as its ancestors and all younger heavyweight
    // siblings along the way leave it showing: its visible region before its
    // own children take their part.
    Qv::Ptr<iRegion> uncovered(Canvas* canvas);

    Qv::Map<const Canvas*, Qv::Ptr<iRegion>> m_uncovered;
    Qv::Map<const Canvas*, Walk> m_walks;
};

} // namespace Tela

// 0 at rest; each off lowers it, each on raises it. Off may be called from
// any thread.
void tela_refresh_off();
void tela_refresh_on(bool present);
bool tela_refresh_is_active();
int tela_refresh_counter();

// The canvas marked while the refresh was off, and whether others were too.
Canvas* canvupd_pending_canvas();
bool canvupd_pending_several();

// Keeps `object` alive until the update in progress has been shown.
void tela_defer_release(const Qv::Ptr<iObject>& object);

namespace Tela {

bool isPresentationEnabled();
void setPresentationEnabled(bool enabled);

// Refresh off for the life of the scope; on again, with `present`, at its end.
// A copy takes the two fields and no second refresh_off, so it unbalances
// the counter: the library never copies one.
class UpdateDeferrer : public iObject {
public:
    UpdateDeferrer(Canvas* canvas, bool present);
    UpdateDeferrer(const UpdateDeferrer& other);
    UpdateDeferrer& operator=(const UpdateDeferrer&) = delete;
    ~UpdateDeferrer() override;

    Canvas* canvas;
    bool present;
};

} // namespace Tela

// The presentation setting as the library's own deferrers read it.
inline bool tela_refresh_presentation()
{
    return Tela::isPresentationEnabled();
}
