#pragma once
// Mapping: whether a canvas wishes to be shown. A canvas shows once it and
// every ancestor are mapped and it has a shape. The root is never unmapped.

#include "tela/core/Ptr.h"
#include "tela/platform/iRegion.h"

class Canvas;

void tela_mapcanvas(Canvas* canvas);   // null or already mapped: nothing
void tela_unmapcanvas(Canvas* canvas); // no-op while exiting, for roots and null

// Marks what lies beneath `canvas` over `region`: the older siblings and their
// subtrees, and the parent.
void canvas_expose(Canvas* canvas, const Qv::Ptr<iRegion>& region);

// What `canvas` covers has changed within `region` (window coordinates): it
// was shown, hidden, moved or reshaped there. The visible regions stored on
// the canvases that may lie beneath it there are worked out again at once:
// the older siblings whose boxes meet the region, with everything on them,
// and the ancestors, which lose what their descendants cover. Marks repaint
// only what was uncovered, and a canvas that is merely covered is never
// marked, yet its stored region is what a video window and a composited
// frame read. Main thread.
void canvas_refresh_visible_regions(Canvas* canvas, const Qv::Ptr<iRegion>& region);
