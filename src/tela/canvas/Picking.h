#pragma once
// Picking: the deepest canvas under a point. Heavyweight children are tried
// before lightweight ones, whatever their stacking, and a child with a client
// must call itself opaque there.

#include "tela/platform/Geometry.h"

#include <functional>

class Canvas;

// With a null start the first root must be mapped and contain the point.
// A given start is not itself tested: it is the answer when no child is.
Canvas* canvas_pick(Canvas* start, const XY<int>& position);
Canvas* canvas_pick_if(Canvas* start, const XY<int>& position, std::function<bool(Canvas*)> accept);
