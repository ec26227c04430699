#pragma once
// Where a canvas is and what moving, reshaping or restacking it changes.
// Every change here ends in damage marks; lightweight canvases move without
// any, since their parent repaints them.

#include "tela/core/Ptr.h"
#include "tela/platform/Geometry.h"
#include "tela/platform/iRegion.h"

class Canvas;

// The canvas whose buffer `canvas` draws into: itself when heavyweight.
Canvas* canvdraw_canvas(Canvas* canvas);
// Offset of the canvas within its draw canvas; system 1 counts y from the top.
// (0, 0) for a heavyweight canvas or a missing shape, (-1, -1) for null.
XY<int> telaLightweightCanvasOffset(Canvas* canvas, int system);
// The box clipped to the canvas and each ancestor with a shape below the root.
Qv::Box<int> clipRectToLightweightCanvas(const Qv::Box<int>& box, Canvas* canvas);

// The matrix and its inverse together. Null is ignored.
void tela_setcanvasmatrix(Canvas* canvas, const double matrix[3][3]);
void tela_rescalecanvas(Canvas* canvas);
// Places `region` by the current matrix (moving the region itself, which the
// caller must own) and makes it the shape. 0 for a null canvas or region.
int tela_reshapecanvas(Canvas* canvas, Qv::Ptr<iRegion> region);
// The shape becomes the area of the current path, which is used up. The size
// is not read: the path says it all. 0, shape left alone, for a null canvas
// or a path that covers nothing.
int tela_reshapecanvas(Canvas* canvas, unsigned short width, unsigned short height);
// The shape becomes the union of the canvas's own and its children's.
int tela_reshapeaddchildren(Canvas* canvas);
// Places a connected canvas at `rect`, in window coordinates (top-down, as
// shapes are): the matrix takes the canvas's origin to the rectangle's
// bottom-left corner, the shape becomes the rectangle, or `outline` (given in
// the rectangle's own top-down coordinates, 0, 0 at its top-left) moved there,
// and a heavyweight canvas gets a buffer the size of the shape's box. A mapped
// canvas has its old and new areas repainted, as with any reshape. 1 when
// placed; 0 for null, and 0 with a report for a canvas without a parent or an
// empty rectangle, which are left as they were.
int tela_placecanvas(Canvas* canvas, const TopDownRect& rect, const Qv::Ptr<iRegion>& outline = {});

void tela_translatecanvas(Canvas* canvas, int dx, int dy);
// Moves the canvas and the other members of its sticky group.
void tela_translatecanvtree(Canvas* canvas, int dx, int dy, int unused);

void tela_setlightweight(Canvas* canvas, int lightweight);

// Sticky groups: siblings that move together.
void tela_stickcanvases(Canvas* a, Canvas* b);
void tela_unstickcanvas(Canvas* canvas);
int tela_get_sticky_id(Canvas* canvas);
void tela_set_sticky_id(Canvas* canvas, int id);
