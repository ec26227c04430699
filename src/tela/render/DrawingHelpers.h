#pragma once
// Drawing helpers: the bevelled boxes, frames, focus marks, rounded boxes and
// gradients of the user interface, built from rectangles, lines and ellipses.
// Start with Tela::drawFrame and Tela::drawRoundedRect; examples/gallery shows them.
//
// - Everything goes through CanvasRenderer::render: clipped to the renderer's
//   clip box, drawn, and recorded as damage. Nothing is drawn through a
//   renderer that is not valid.
// - Boxes are in canvas coordinates, y upward: y1 is the lower edge. Corner
//   masks: 1 top left, 2 top right, 4 bottom left, 8 bottom right (top is the
//   y2 side); 15 is all four.
// - Rectangles are drawn in their Colour as given, replacing what is below;
//   the filled squircle's are laid over it, so a translucent colour blends.
// - Nothing is checked against the box: an inverted box, or a width, radius or
//   thickness larger than the box gives overlapping or empty pieces, never a
//   failure.
// - The forms without a CanvasRenderer draw on tela_currentcanvas(), through a
//   renderer of their own that flushes when they return; without a current
//   canvas they draw nothing.

#include "tela/colour/Colour.h"
#include "tela/platform/Geometry.h"

#include <cstdint>

class Canvas;
class CanvasRenderer;

namespace Tela {

// Boxes and frames
void drawRect(CanvasRenderer& renderer, const Colour& colour, const Qv::Box<int>& box);
// Filled in `fill`, then framed one pixel wide in `line`.
void drawOutlinedRect(CanvasRenderer& renderer, const Colour& line, const Colour& fill, const Qv::Box<int>& box);
// Four bars `width` wide inside the box: left, right, bottom, top.
void drawFrame(CanvasRenderer& renderer, const Colour& colour, const Qv::Box<int>& box, std::uint16_t width);
// A bevel: left and top lit (1.3) and right and bottom shaded (0.7), the
// other way round when `sunken` is non-zero.
void drawDepthBox(CanvasRenderer& renderer, const Colour& colour, const Qv::Box<int>& box, int sunken, int width);
// A dotted one-pixel outline just inside the box.
void drawFocusRect(CanvasRenderer& renderer, const Qv::Box<int>& box, const Colour& colour);
void drawFocusRect(Canvas* canvas, const Qv::Box<int>& box, const Colour& colour);
// A sunken well: a rounded box in the colour darkened, filled with getIndentBoxColour.
void drawIndentBox(CanvasRenderer& renderer, const Colour& colour, const Qv::Box<int>& box);

// Rounded boxes, their corners stepped by hand over three pixels.
// The outline `thickness` rings deep, then the fill inside it. `style` picks
// the outline's shading: 0 raised, 1 sunken, 2 flat; any other draws in black.
void drawRoundedRect(CanvasRenderer& renderer, const Colour& line, const Colour& fill, const Qv::Box<int>& box,
                     int style, unsigned corners, std::uint16_t thickness);
// Five strips; corners outside the mask stay square.
void drawRoundedRectFilled(CanvasRenderer& renderer, const Colour& colour, const Qv::Box<int>& box, unsigned corners);
// Nothing with a thickness of 0.
void drawRoundedRectOutline(CanvasRenderer& renderer, const Colour& colour, const Qv::Box<int>& box, int style,
                            unsigned corners, std::uint16_t thickness);

// Squircles: quarter ellipses of `radius` at the corners of the mask, joined
// by rectangles. The outline's corners are one pixel wide whatever the
// thickness. The bottom-right corner's ellipse takes x1 for its lower edge:
// it sits true only on boxes whose x1 and y1 agree.
void drawSquircleFilled(CanvasRenderer& renderer, const Qv::Box<int>& box, const Colour& colour,
                        std::uint16_t radius, unsigned corners);
void drawSquircleOutlined(CanvasRenderer& renderer, const Qv::Box<int>& box, const Colour& colour,
                          std::uint16_t radius, unsigned corners, std::uint16_t thickness);

// One-pixel rows from `top` at the upper edge to `bottom` at the lower one;
// nothing for a box less than a pixel high.
void drawVertGradRect(CanvasRenderer& renderer, const Qv::Box<int>& box, const Colour& top, const Colour& bottom);
void drawVertGradRect(Canvas* canvas, const Qv::Box<int>& box, const Colour& top, const Colour& bottom);

} // namespace Tela

// On the current canvas.
void drawFrame(const Colour& colour, const Qv::Box<int>& box, std::uint16_t width);
void depthBox(const Colour& colour, const Qv::Box<int>& box, int sunken, int width);
void depthBox(const Colour& colour, const Qv::Box<int>& box, int sunken, int width, CanvasRenderer& renderer);
void indent_box(Colour colour, int x1, int y1, int x2, int y2);
// The fill of an indent box: the colour scaled by 0.9.
Colour getIndentBoxColour(const Colour& colour);
// Rounded boxes one pixel thick on the current canvas, clipped to `*clip`
// when it is given; nothing unless the canvas is mapped up to its root.
void tela_roundedRect(const Colour& line, const Colour& fill, const Qv::Box<int>& box, int style,
                      const Qv::Box<int>* clip, unsigned corners);
void tela_roundedRectOutline(const Colour& colour, const Qv::Box<int>& box, int style, const Qv::Box<int>* clip,
                             unsigned corners);
