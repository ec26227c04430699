#pragma once
// SurroundParams: the soft shadow band a canvas may carry outside its shape.
// Canvas::setEdgeEffect stores it; Canvas::renderEdgeEffects draws it in each
// composited frame, just before the canvas itself.

#include "tela/colour/Colour.h"
#include "tela/platform/Geometry.h"

#include <cstdint>

struct SurroundParams {
    enum : std::uint32_t { TOP = 1u, BOTTOM = 2u, LEFT = 4u, RIGHT = 8u, ALL_EDGES = 15u };

    std::uint16_t size = 0;          // width of the band in pixels; 0 draws nothing
    float opacity = 1.0f;            // alpha of the shadow; the colour's own alpha is not used
    std::uint32_t edges = ALL_EDGES; // TOP is the smaller y of window coordinates
    Colour colour;                   // its r, g and b are handed to the shader as they are
    Qv::Box<int> box;                // kept with the rest; drawing does not read it
};
