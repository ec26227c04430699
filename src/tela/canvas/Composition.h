#pragma once
// Composition: how a canvas's buffer is laid over what lies beneath it. The
// two display roads lay a translucent canvas differently, and whatever copies
// the screen must lay canvases as its window's road does, or the copy would
// not show what the window shows. So the frame, the host road's translucent
// blit and the screen grabs all lay canvases through this one routine, with
// the road as the rule.

#include "tela/canvas/DisplayRoad.h"
#include "tela/core/Ptr.h"
#include "tela/platform/Geometry.h"
#include "tela/platform/iGraphicPrimitivesRenderer.h"

class Canvas;

// Lays the buffer of heavyweight `canvas` over the target of `renderer`, whose
// top-left pixel shows window point `origin`, as a window on `road` shows it:
// - Composited: the canvas's edge effects first (Canvas::renderEdgeEffects),
//   so that a copy of the window shows the shadows a frame shows. Then a
//   rectangular canvas below full opacity goes through the "InFront" shader
//   at its opacity. Any other is laid at full strength over
//   its shape's box, by its own alpha with useAlphaChannel (and then not cut
//   to its shape), cut to its shape without. A shaped canvas's opacity is
//   therefore not applied on this road.
// - Host: the buffer is laid at its opacity whatever the shape, reading its
//   own alpha only with useAlphaChannel, cut to a shape that is not a
//   rectangle; as the host road's blit lays a translucent canvas.
// A canvas with no shape or no buffer draws nothing. The renderer's clip is
// left as the drawing needed it: a caller drawing more sets its own.
void tela_compose_canvas(Canvas* canvas, Qv::Ptr<iGraphicPrimitivesRenderer>& renderer, const XY<int>& origin,
                         DisplayRoad road);
