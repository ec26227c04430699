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

// Whether (x, y) lies in one of the rectangles.
inline bool inside_any(const TopDownRect* rects, std::size_t count, int x, int y)
{
    for (std::size_t i = 0; i < count; ++i)
        if (x >= rects[i].left && x < rects[i].right && y >= rects[i].top && y < rects[i].bottom)
            return true;
    return false;
}

// Pixels of `image` outside every rectangle that are no longer `clear`: what
// leaked past a clip made of those rectangles.
inline int changed_outside(const Headless::HostImage& image, const TopDownRect* rects, std::size_t count,
                           std::uint32_t clear)
{
    XY<int> size;
    image.getSize(size);
    int changed = 0;
    for (int y = 0; y < size.y; ++y)
        for (int x = 0; x < size.x; ++x)
            changed += !inside_any(rects, count, x, y) && image.pixelAt(x, y) != clear;
    return changed;
}
