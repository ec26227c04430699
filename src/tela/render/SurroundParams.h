#pragma once
// SurroundParams: the soft shadow band a canvas may carry outside its shape.

#include "tela/core/NormalisedRGB.h"
#include "tela/platform/Geometry.h"

#include <cstdint>

struct SurroundParams {
    std::uint16_t size = 0;    // width of the band in pixels
    float opacity = 1.0f;      // alpha of the shadow
    std::uint32_t edges = 15;  // 1 top, 2 bottom, 4 left, 8 right (top: smaller window y)
    NormalisedRGB colour;
    Qv::Box<int> box;
};
