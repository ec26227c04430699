#pragma once
// Moving pixels between canvases' buffers without drawing primitives.

#include "tela/vector/Regions.h"

class Canvas;

// `region` cut by the shapes of `canvas` and of each lightweight ancestor,
// up to but not including the first heavyweight one, whose buffer they all
// draw into. A heavyweight `canvas` gives the region unchanged; an empty cut
// gives null.
RegionPtr tela_clip_through_lightweight_chain(const RegionPtr& region, Canvas* canvas);

// Copies the pixels of `region` (window coordinates) from the buffer that
// `src` draws into to the one `dst` draws into, moved by (dx, dy) with y
// upward, and marks the destination. Only pixels inside both canvases'
// shapes move; any null input, or a canvas with no shape, copies nothing.
void canvas_pixcopy_region(Canvas* src, Canvas* dst, const RegionPtr& region, int dx, int dy);
