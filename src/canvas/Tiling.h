#pragma once
// Tiling an image over a rectangle of a renderer's target.

#include "core/Ptr.h"
#include "platform/Geometry.h"
#include "platform/iGraphicPrimitivesRenderer.h"
#include "platform/iImage.h"

// Covers `dest` (target pixels, top-down) with copies of `image`. The grid
// starts `phase` pixels (modulo the tile size) before the corner of `dest`:
// phase (0, 0) puts a whole tile at the corner, and phase = the corner itself
// lines the tiles up with the target's origin. Unblended; no clip is set. An
// image of no size draws nothing.
void tela_tile_image(const Qv::Ptr<iImage>& image, iGraphicPrimitivesRenderer& renderer, const TopDownRect& dest,
                     const XY<int>& phase);
