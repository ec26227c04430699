#pragma once
// Reading pixels back: from a canvas's buffer, or as the window shows them.

#include "tela/core/Ptr.h"
#include "tela/platform/Geometry.h"
#include "tela/platform/iImage.h"

class Canvas;

// An image made through the first root's window; null without one.
Qv::Ptr<iImage> tela_makeOffscreenBuffer(const XY<int>& size);
// A new image holding a bottom-up box of the canvas; null for a null canvas.
Qv::Ptr<iImage> tela_getCanvasPixels(Canvas* canvas, const Qv::Box<double>& box);
// A new image of a bottom-up box of the first root, composed from the
// background and the canvases' buffers.
Qv::Ptr<iImage> tela_getScreenRect(const Qv::Box<int>& box);
// The whole root: a composited frame when the window has one, else composed
// as above.
Qv::Ptr<iImage> tela_getScreenRect();
