#pragma once
// The edge effects of a canvas drawn into a target whose top-left pixel shows
// window point `origin`: a composited frame has origin (0, 0), a copy of part
// of the window its corner. Canvas::renderEdgeEffects is the frame's form.

#include "tela/platform/Geometry.h"
#include "tela/platform/iGraphicPrimitivesRenderer.h"

class Canvas;

void tela_render_edge_effects(Canvas& canvas, iGraphicPrimitivesRenderer& renderer, const XY<int>& origin);
