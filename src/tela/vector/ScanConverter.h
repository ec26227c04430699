#pragma once
// The current path as a region: what a canvas's shape and a copied area are
// made of. Curves are flattened to the current flatness, every subpath of a
// fill is closed, and pixels count when their centres are inside.
// ScanTable.h holds the edge collector underneath.

#include "tela/core/Ptr.h"
#include "tela/platform/iRegion.h"

class Canvas;

// The region of the current path, in the window of the canvas's root.
// - stroke 0 fills; non-zero outlines each segment at the current line width
//   (round pen in user space, bevel joins, butt ends) and fills the outline
//   by non-zero winding.
// - evenOdd non-zero fills by non-zero winding (the name is historical: it
//   turns the winding into alternating entries and exits); 0 reads the
//   crossings pairwise, which is the even-odd rule.
// - flags bit 2 (value 4) widens every span to at least a pixel.
// An axis-aligned rectangle is converted straight from its corners and the
// path is kept; any other path is used up, and the path left empty.
// Null when nothing is covered, or for a null canvas off the rectangle road.
Qv::Ptr<iRegion> path_to_region(Canvas* canvas, int stroke, int evenOdd, int flags);

// The area of the current path, copied from src's buffer to dst's, moved by
// (dx, dy) with y upward. The path is filled by non-zero winding and used up.
void tela_copy(Canvas* src, Canvas* dst, int dx, int dy);
