#pragma once
// Images for the software renderer tests: made filled, drawn into, measured.

#include "headless/HostImage.h"
#include "headless/SoftwareRenderer.h"

#include <gtest/gtest.h>

#include <cstdint>

inline std::uint32_t channel(std::uint32_t pixel, int shift) { return (pixel >> shift) & 0xff; }

inline Qv::Ptr<Headless::HostImage> filled_image(int width, int height, std::uint32_t argb)
{
    Qv::Ptr<Headless::HostImage> image = Headless::HostImage::create({ width, height });
    image->fill(argb);
    return image;
}

inline Qv::Ptr<iGraphicPrimitivesRenderer> renderer_for(const Qv::Ptr<Headless::HostImage>& image)
{
    Qv::Ptr<iGraphicPrimitivesRenderer> renderer;
    EXPECT_TRUE(image->getRenderer(renderer, 1));
    return renderer;
}

// How much of the image the drawing covers, in pixels: each pixel's alpha as a share.
inline double covered_area(const Headless::HostImage& image)
{
    XY<int> size;
    image.getSize(size);
    double area = 0.0;
    for (int y = 0; y < size.y; ++y)
        for (int x = 0; x < size.x; ++x)
            area += channel(image.pixelAt(x, y), 24) / 255.0;
    return area;
}
