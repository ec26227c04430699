// ShaderPrograms: the pixel programs of the named shader effects, run on the CPU.
//
// A program turns one shader rectangle into premultiplied pixels a tile of rows at a
// time and lays each tile over the target with pixman, so the clip region set on the
// target is honoured by the same composite that blends. Each row is computed by plain
// loops over arrays (coverage first, colour second), which the compiler vectorises; no
// call is made per pixel and nothing is allocated per pixel or per row.
//
// What the parameters mean here (the library sends them; see CanvasRenderer and
// Canvas::renderEdgeEffects for how they are built):
// - "Ellipse": the ellipse that fills the rectangle. Lengths are in units of half the
//   rectangle's height: "Thickness" is the outline's width, "Softness" the width of
//   the ramp that the edge fades across (2 / height per unit of UI scale, so one pixel
//   at a scale of 1, two at 2). The outline is measured in pixels across the curve, so
//   a wide ellipse keeps an even line. "LineColour" paints the band of the outline and
//   "FillColour" what lies inside it; a transparent fill leaves the centre untouched.
// - "RoundedRectangle": a rectangle "Aspect" heights wide and one high, stretched to
//   the shader rectangle, with corners of "Radius" heights. "Thickness" is a fraction
//   of the radius; where that cannot say anything (no radius, so an infinite or
//   undefined fraction) the outline is one pixel. "Softness" as for the ellipse.
// - "ShadowLR", "ShadowTB", "ShadowC": "Colour", whose alpha is the opacity, fading
//   from full at the canvas's edge to nothing at the far side of the rectangle.
//   "OriginX" and "OriginY" (0 or 1) say which side of the rectangle is the edge: the
//   side bands fade across their width from x = OriginX, the top and bottom bands
//   across their height from y = OriginY, and corners radially from the corner point
//   (OriginX, OriginY). Distances are fractions of the rectangle's own size, so a
//   corner and the band beside it agree along the side they share; the fall-off,
//   (1 - distance)², is flat at the far side, leaving no seam and no hard outer edge.
// A name given twice takes its last value. Missing or meaningless parameters (NaN,
// infinite, negative) take a default: no outline, a one-pixel edge, opaque black
// lines, a fill of the line's colour, a half-transparent black shadow fading from the
// left or top. Pixels whose centre lies outside a fractional rectangle get their share of it.
#pragma once

#include "tela/platform/GraphicPrimitives.h"

#include <pixman.h>

#include <cstddef>

namespace Headless {

enum class ShaderProgram { InFront, ShadowLR, ShadowTB, ShadowC, RoundedRectangle, Ellipse, Unknown };

// The program of an effect's name; Unknown for any other name.
ShaderProgram shaderProgram(const String& name);

// Runs the programs. Keeps its working rows between rectangles, so that ten thousand
// small ellipses do not mean ten thousand allocations.
class ShaderPrograms {
public:
    ShaderPrograms() = default;
    ~ShaderPrograms();
    ShaderPrograms(const ShaderPrograms&) = delete;
    ShaderPrograms& operator=(const ShaderPrograms&) = delete;

    // Lays one rectangle of `program` (any but InFront and Unknown, which draw nothing
    // here) over `target`. Only pixels inside `reach`, the target's bounds cut to the
    // clip's extents, are computed; the clip itself is the one set on `target`.
    void run(ShaderProgram program, const ShaderRectDescription& shaded, pixman_image_t* target,
             const TopDownRect& reach);

private:
    // At least `bytes` of working memory, or null when the memory seam has none.
    void* scratch(std::size_t bytes);

    void* m_scratch = nullptr;
    std::size_t m_scratch_bytes = 0;
};

} // namespace Headless
