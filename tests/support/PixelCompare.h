#pragma once
// Counting the pixels where two pictures part: the one comparison the picture
// tests and the install check share.

#include "headless/HostImage.h"

#include <cstdint>
#include <cstdlib>

// Pixels of `a` that differ from those of `b` at (left, top) onwards by more
// than `tolerance` in any channel.
inline int differing_pixels(const Headless::HostImage& a, const Headless::HostImage& b, int tolerance, int left = 0,
                            int top = 0)
{
    XY<int> size;
    a.getSize(size);
    int differing = 0;
    for (int y = 0; y < size.y; ++y)
        for (int x = 0; x < size.x; ++x) {
            const std::uint32_t p = a.pixelAt(x, y), q = b.pixelAt(left + x, top + y);
            for (int shift = 0; shift < 32; shift += 8)
                if (std::abs(static_cast<int>((p >> shift) & 255) - static_cast<int>((q >> shift) & 255)) > tolerance) {
                    ++differing;
                    break;
                }
        }
    return differing;
}
