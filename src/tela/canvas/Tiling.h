#pragma once
// Tiling an image over a rectangle of a renderer's target.

#include "tela/core/Ptr.h"
#include "tela/platform/Geometry.h"
#include "tela/platform/iGraphicPrimitivesRenderer.h"
#include "tela/platform/iImage.h"

// Covers `dest` (target pixels, top-down) with copies of `image`. The grid
// starts `phase % size` pixels before the corner of `dest`, with the
// language's remainder: phase (0, 0) puts a whole tile at the corner, a
// positive phase equal to the corner lines the tiles up with the target's
// origin, and a negative phase starts the grid inside `dest`, leaving a strip
// unpainted. A tile cut at the left or top keeps its full size from the edge
// of `dest`; the tiles after it cover what it overhangs, and only the last
// column and row are cut to `dest`. Unblended; no clip is set. An image of no
// size draws nothing.
void tela_tile_image(const Qv::Ptr<iImage>& image, iGraphicPrimitivesRenderer& renderer, const TopDownRect& dest,
                     const XY<int>& phase);

class Canvas;

// How the tiles of tela_textureRect line up.
enum TextureRelativity : int {
    eTextureCanvas = 0,   // with the canvas's own position
    eTextureParent = 1,   // with the parent's position; as eTextureCanvas without a parent
    eTextureGrid = 2,     // with whole tiles from the box's corner down to a tile boundary
    eTextureBox = 3,      // with the box's corner
};

// Tiles `image` over a bottom-up box of the canvas (null: all of it) and
// marks it. A null canvas or image, or an image of no width, does nothing.
void tela_textureRect(Canvas* canvas, const Qv::Ptr<iImage>& image, const Qv::Box<double>* box,
                      TextureRelativity relativity);
