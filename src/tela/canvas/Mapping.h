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
