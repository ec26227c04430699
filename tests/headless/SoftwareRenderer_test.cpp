#include "headless/PixmanRegion.h"
#include "headless/SoftwareRenderer.h"
#include "support/LiveBlocks.h"
#include "support/ReportCapture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

namespace {

using Pixels = std::vector<std::uint32_t>;   // 0xAARRGGBB, premultiplied, row by row

std::uint32_t channel(std::uint32_t pixel, int shift) { return (pixel >> shift) & 0xff; }

std::uint32_t pack(std::uint32_t a, std::uint32_t r, std::uint32_t g, std::uint32_t b)
{
    return (a << 24) | (r << 16) | (g << 8) | b;
}

// x * y / 255, rounded to nearest.
std::uint32_t times(std::uint32_t x, std::uint32_t y)
{
    return static_cast<std::uint32_t>(std::lround(x * y / 255.0));
}

// Premultiplied source over destination, channel by channel.
std::uint32_t over(std::uint32_t source, std::uint32_t dest)
{
    const std::uint32_t keep = 255 - channel(source, 24);
    std::uint32_t result = 0;
    for (const int shift : { 0, 8, 16, 24 })
        result |= std::min<std::uint32_t>(255, channel(source, shift) + times(channel(dest, shift), keep)) << shift;
    return result;
}

std::uint32_t scaled(std::uint32_t pixel, std::uint32_t factor)
{
    return pack(times(channel(pixel, 24), factor), times(channel(pixel, 16), factor), times(channel(pixel, 8), factor),
                times(channel(pixel, 0), factor));
}

std::uint32_t colour_byte(float component, float alpha) { return static_cast<std::uint32_t>(std::lround(component * alpha * 255.0f)); }

std::uint32_t premultiplied(const NormalisedRGB& colour)
{
    return pack(colour_byte(1.0f, colour.a), colour_byte(colour.r, colour.a), colour_byte(colour.g, colour.a),
                colour_byte(colour.b, colour.a));
}

Qv::Ptr<Headless::HostImage> image_of(int width, int height, const Pixels& pixels)
{
    Qv::Ptr<Headless::HostImage> image = Headless::HostImage::create({ width, height });
    std::memcpy(image->data(), pixels.data(), pixels.size() * 4);
    return image;
}

Pixels pixels_of(const Headless::HostImage& image)
{
    XY<int> size;
    image.getSize(size);
    Pixels pixels(static_cast<std::size_t>(size.x) * size.y);
    std::memcpy(pixels.data(), image.data(), pixels.size() * 4);
    return pixels;
}

Qv::Ptr<iGraphicPrimitivesRenderer> renderer_for(const Qv::Ptr<Headless::HostImage>& image)
{
    Qv::Ptr<iGraphicPrimitivesRenderer> renderer;
    EXPECT_TRUE(image->getRenderer(renderer, 1));
    return renderer;
}

std::uint32_t random_premultiplied(std::mt19937& random)
{
    const std::uint32_t alpha = random() % 256;
    return pack(alpha, random() % (alpha + 1), random() % (alpha + 1), random() % (alpha + 1));
}

// Within one unit per channel: pixman's filtered paths round their own way.
bool near(std::uint32_t actual, std::uint32_t expected)
{
    for (const int shift : { 0, 8, 16, 24 }) {
        if (std::abs(static_cast<int>(channel(actual, shift)) - static_cast<int>(channel(expected, shift))) > 1)
            return false;
    }
    return true;
}

// The first pixel that differs, told with its place, or success.
::testing::AssertionResult same_pixels(const Pixels& actual, const Pixels& expected, int width)
{
    for (std::size_t index = 0; index < actual.size() && index < expected.size(); ++index) {
        if (actual[index] != expected[index])
            return ::testing::AssertionFailure() << "at " << index % width << "," << index / width << ": " << std::hex
                                                 << actual[index] << " instead of " << expected[index];
    }
    if (actual.size() != expected.size())
        return ::testing::AssertionFailure() << actual.size() << " pixels instead of " << expected.size();
    return ::testing::AssertionSuccess();
}

ImageDescriptionEx blit_ex(const Qv::Ptr<Headless::HostImage>& image, const Qv::Rectangle<float>& source,
                           const Qv::Rectangle<float>& dest)
{
    return ImageDescriptionEx(image, source, dest);
}

ShaderRectDescription in_front(const Qv::Ptr<Headless::HostImage>& image, const Qv::Rectangle<float>& dest, float opacity)
{
    ShaderRectDescription shaded;
    shaded.shader = Headless::SoftwareRenderer::findShader("InFront");
    XY<int> size;
    image->getSize(size);
    shaded.inputs.push_back({ image, { 0.0f, 0.0f, static_cast<float>(size.x), static_cast<float>(size.y) } });
    shaded.rect = dest;
    shaded.active = true;
    shaded.addParam("Opacity", opacity);
    return shaded;
}

constexpr int WIDTH = 40;
constexpr int HEIGHT = 30;

} // namespace

TEST(SoftwareRendererFill, FillsClippedByAShapedRegionMatchAModel)
{
    for (std::uint32_t seed = 0; seed < 60; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        Pixels model(WIDTH * HEIGHT);
        for (std::uint32_t& pixel : model)
            pixel = random_premultiplied(random);
        const Qv::Ptr<Headless::HostImage> image = image_of(WIDTH, HEIGHT, model);
        const Qv::Ptr<iGraphicPrimitivesRenderer> renderer = renderer_for(image);

        // A clip of up to four overlapping rectangles: L shapes, holes between bands.
        std::vector<TopDownRect> clip_rects(1 + random() % 4);
        for (TopDownRect& rect : clip_rects) {
            rect.left = static_cast<int>(random() % WIDTH);
            rect.top = static_cast<int>(random() % HEIGHT);
            rect.right = rect.left + 1 + static_cast<int>(random() % WIDTH);
            rect.bottom = rect.top + 1 + static_cast<int>(random() % HEIGHT);
        }
        Qv::Ptr<iRegion> clip;
        Headless::PixmanRegion::create(clip, clip_rects.data(), clip_rects.size());
        renderer->setClip(clip);
        const auto clipped_in = [&](int x, int y) {
            for (const TopDownRect& rect : clip_rects) {
                if (x >= rect.left && x < rect.right && y >= rect.top && y < rect.bottom)
                    return true;
            }
            return false;
        };

        for (int fill = 0; fill < 4; ++fill) {
            RectDescription rect;
            // Some rectangles stick out of the image, and some come in reversed.
            const int x1 = static_cast<int>(random() % (WIDTH + 20)) - 10;
            const int x2 = static_cast<int>(random() % (WIDTH + 20)) - 10;
            const int y1 = static_cast<int>(random() % (HEIGHT + 20)) - 10;
            const int y2 = static_cast<int>(random() % (HEIGHT + 20)) - 10;
            rect.rect = { x1, y1, x2, y2 };
            rect.colour = NormalisedRGB((random() % 256) / 255.0f, (random() % 256) / 255.0f,
                                        (random() % 256) / 255.0f, (random() % 5) / 4.0f);
            rect.blendMode = static_cast<std::int32_t>(random() % 2);
            renderer->drawRects(&rect, 1);

            const std::uint32_t source = premultiplied(rect.colour);
            for (int y = std::min(y1, y2); y < std::max(y1, y2); ++y) {
                for (int x = std::min(x1, x2); x < std::max(x1, x2); ++x) {
                    if (x < 0 || y < 0 || x >= WIDTH || y >= HEIGHT || !clipped_in(x, y))
                        continue;
                    std::uint32_t& pixel = model[static_cast<std::size_t>(y) * WIDTH + x];
                    pixel = rect.blendMode == eBlendReplace ? source : over(source, pixel);
                }
            }
        }
        ASSERT_TRUE(same_pixels(pixels_of(*image), model, WIDTH));
    }
}

TEST(SoftwareRendererFill, ReplaceWritesTranslucentColourWhileOverBlendsIt)
{
    const Qv::Ptr<Headless::HostImage> image = image_of(2, 1, { 0xff0000ff, 0xff0000ff });   // opaque blue
    const Qv::Ptr<iGraphicPrimitivesRenderer> renderer = renderer_for(image);
    RectDescription rects[2];
    rects[0].rect = { 0, 0, 1, 1 };
    rects[0].colour = NormalisedRGB(1.0f, 0.0f, 0.0f, 0.5f);
    rects[0].blendMode = eBlendReplace;
    rects[1] = rects[0];
    rects[1].rect = { 1, 0, 2, 1 };
    rects[1].blendMode = eBlendOver;
    renderer->drawRects(rects, 2);

    EXPECT_EQ(image->pixelAt(0, 0), 0x80800000u);             // half-transparent red, blue gone
    EXPECT_EQ(image->pixelAt(1, 0), over(0x80800000u, 0xff0000ff));
    EXPECT_EQ(image->pixelAt(1, 0), 0xff80007fu);             // 128 red + 127 of the blue
}

TEST(SoftwareRendererFill, AlphaRectanglesAlwaysBlendAndANullClipReachesEverything)
{
    const Qv::Ptr<Headless::HostImage> image = image_of(4, 1, Pixels(4, 0xffffffff));
    const Qv::Ptr<iGraphicPrimitivesRenderer> renderer = renderer_for(image);
    const TopDownRect left_half { 0, 0, 2, 1 };
    Qv::Ptr<iRegion> clip;
    Headless::PixmanRegion::create(clip, &left_half, 1);
    renderer->setClip(clip);
    renderer->setClip(nullptr);
    AlphaRectDescription shade;
    shade.rect = { 0, 0, 4, 1 };
    shade.colour = NormalisedRGB(0.0f, 0.0f, 0.0f, 0.5f);
    renderer->drawAlphaRects(&shade, 1);
    for (int x = 0; x < 4; ++x)
        EXPECT_EQ(image->pixelAt(x, 0), over(0x80000000u, 0xffffffff)) << x;
}

TEST(SoftwareRendererBlit, WholePixelBlitsMatchAModel)
{
    for (std::uint32_t seed = 0; seed < 40; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        Pixels source_pixels(16 * 12);
        for (std::uint32_t& pixel : source_pixels)
            pixel = random_premultiplied(random);
        Pixels model(WIDTH * HEIGHT);
        for (std::uint32_t& pixel : model)
            pixel = random_premultiplied(random);
        const Qv::Ptr<Headless::HostImage> source = image_of(16, 12, source_pixels);
        const Qv::Ptr<Headless::HostImage> target = image_of(WIDTH, HEIGHT, model);
        const Qv::Ptr<iGraphicPrimitivesRenderer> renderer = renderer_for(target);

        const TopDownRect part { static_cast<int>(random() % 8), static_cast<int>(random() % 6),
                                 8 + static_cast<int>(random() % 9), 6 + static_cast<int>(random() % 7) };
        const XY<int> at { static_cast<int>(random() % WIDTH) - 8, static_cast<int>(random() % HEIGHT) - 6 };
        ImageDescription blit(source, at, part, random() % 2 == 0);
        blit.opacity = (random() % 2) ? 1.0f : 0.5f;
        renderer->drawImages(&blit, 1);

        const std::uint32_t opacity = static_cast<std::uint32_t>(std::lround(blit.opacity * 255.0f));
        for (int y = 0; y < part.height(); ++y) {
            for (int x = 0; x < part.width(); ++x) {
                const int dest_x = at.x + x;
                const int dest_y = at.y + y;
                if (dest_x < 0 || dest_y < 0 || dest_x >= WIDTH || dest_y >= HEIGHT)
                    continue;
                std::uint32_t pixel = source_pixels[static_cast<std::size_t>(part.top + y) * 16 + part.left + x];
                // Unblended, the source's alpha is not read; a share below 1
                // still lays it over the destination.
                const bool fade = !blit.blend && opacity < 255;
                if (fade)
                    pixel |= 0xff000000u;
                if (opacity < 255)
                    pixel = scaled(pixel, opacity);
                std::uint32_t& dest = model[static_cast<std::size_t>(dest_y) * WIDTH + dest_x];
                dest = blit.blend || fade ? over(pixel, dest) : pixel;
            }
        }
        ASSERT_TRUE(same_pixels(pixels_of(*target), model, WIDTH));
    }
}

// Copies big enough to take the streaming path, at odd offsets so that rows start and
// end off the cache lines, through clips with holes, and some reaching outside the
// source (where pixman's copy, which writes transparent black there, takes over).
TEST(SoftwareRendererBlit, LargeCopiesThroughAClipMatchAModel)
{
    constexpr int source_width = 300, source_height = 200, target_width = 420, target_height = 260;
    for (std::uint32_t seed = 0; seed < 12; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        Pixels source_pixels(source_width * source_height);
        for (std::uint32_t& pixel : source_pixels)
            pixel = random_premultiplied(random);
        Pixels model(target_width * target_height);
        for (std::uint32_t& pixel : model)
            pixel = random_premultiplied(random);
        const Qv::Ptr<Headless::HostImage> source = image_of(source_width, source_height, source_pixels);
        const Qv::Ptr<Headless::HostImage> target = image_of(target_width, target_height, model);
        const Qv::Ptr<iGraphicPrimitivesRenderer> renderer = renderer_for(target);

        std::vector<TopDownRect> clip_rects(seed % 3 == 0 ? 0 : 1 + random() % 4);
        for (TopDownRect& rect : clip_rects) {
            rect.left = static_cast<int>(random() % target_width) - 20;
            rect.top = static_cast<int>(random() % target_height) - 20;
            rect.right = rect.left + 100 + static_cast<int>(random() % target_width);
            rect.bottom = rect.top + 60 + static_cast<int>(random() % target_height);
        }
        Qv::Ptr<iRegion> clip;
        if (!clip_rects.empty())
            Headless::PixmanRegion::create(clip, clip_rects.data(), clip_rects.size());
        renderer->setClip(clip);
        const auto clipped_in = [&](int x, int y) {
            if (clip_rects.empty())
                return true;
            for (const TopDownRect& rect : clip_rects) {
                if (x >= rect.left && x < rect.right && y >= rect.top && y < rect.bottom)
                    return true;
            }
            return false;
        };

        const bool outside = seed % 4 == 3;
        const int part_left = static_cast<int>(random() % 37);
        const int part_top = static_cast<int>(random() % 20);
        const TopDownRect part { part_left, part_top, part_left + 200 + static_cast<int>(random() % 60),
                                 part_top + 120 + static_cast<int>(random() % 50) + (outside ? 100 : 0) };
        const XY<int> at { static_cast<int>(random() % 150) - 30, static_cast<int>(random() % 80) - 20 };
        const ImageDescription blit(source, at, part, false);
        renderer->drawImages(&blit, 1);

        for (int y = 0; y < part.height(); ++y) {
            for (int x = 0; x < part.width(); ++x) {
                const int dest_x = at.x + x, dest_y = at.y + y;
                if (dest_x < 0 || dest_y < 0 || dest_x >= target_width || dest_y >= target_height
                    || !clipped_in(dest_x, dest_y))
                    continue;
                const int source_x = part.left + x, source_y = part.top + y;
                model[static_cast<std::size_t>(dest_y) * target_width + dest_x] = source_y < source_height
                    ? source_pixels[static_cast<std::size_t>(source_y) * source_width + source_x]
                    : 0u;
            }
        }
        ASSERT_TRUE(same_pixels(pixels_of(*target), model, target_width));
    }
}

TEST(SoftwareRendererBlit, AnImageDrawnIntoItselfMovesAsIfCopiedFirst)
{
    const Pixels row { 0xff000001, 0xff000002, 0xff000003, 0xff000004, 0xff000005, 0xff000006 };
    const Qv::Ptr<Headless::HostImage> image = image_of(6, 1, row);
    const Qv::Ptr<iGraphicPrimitivesRenderer> renderer = renderer_for(image);
    const ImageDescription shift(image, TopDownRect { 2, 0, 6, 1 }, TopDownRect { 0, 0, 4, 1 }, false);
    renderer->drawImages(&shift, 1);
    EXPECT_EQ(pixels_of(*image), (Pixels { 0xff000001, 0xff000002, 0xff000001, 0xff000002, 0xff000003, 0xff000004 }));
}

TEST(SoftwareRendererBlit, FractionalSourceRectanglesSampleBetweenPixels)
{
    // Grey ramp 0, 100, 200: half a pixel to the right lands between neighbours.
    const Qv::Ptr<Headless::HostImage> ramp = image_of(3, 1, { 0xff000000, 0xff646464, 0xffc8c8c8 });
    const Qv::Ptr<Headless::HostImage> target = image_of(2, 1, Pixels(2, 0));
    const ImageDescriptionEx blit = blit_ex(ramp, { 0.5f, 0.0f, 2.5f, 1.0f }, { 0.0f, 0.0f, 2.0f, 1.0f });
    renderer_for(target)->drawImagesEx(&blit, 1);
    EXPECT_TRUE(near(target->pixelAt(0, 0), 0xff323232)) << std::hex << target->pixelAt(0, 0);
    EXPECT_TRUE(near(target->pixelAt(1, 0), 0xff969696)) << std::hex << target->pixelAt(1, 0);
}

TEST(SoftwareRendererBlit, ScalingKeepsAUniformImageUniformToItsEdges)
{
    const Qv::Ptr<Headless::HostImage> source = image_of(3, 3, Pixels(9, 0xff2050a0));
    const Qv::Ptr<Headless::HostImage> target = image_of(WIDTH, HEIGHT, Pixels(WIDTH * HEIGHT, 0));
    const ImageDescriptionEx blit = blit_ex(source, { 0.0f, 0.0f, 3.0f, 3.0f }, { 5.0f, 4.0f, 25.0f, 21.0f });
    renderer_for(target)->drawImagesEx(&blit, 1);
    for (int y = 0; y < HEIGHT; ++y) {
        for (int x = 0; x < WIDTH; ++x) {
            const bool inside = x >= 5 && x < 25 && y >= 4 && y < 21;
            ASSERT_EQ(target->pixelAt(x, y), inside ? 0xff2050a0u : 0u) << x << "," << y;
        }
    }
}

TEST(SoftwareRendererBlit, FractionalDestinationEdgesBlendByCoverage)
{
    const Qv::Ptr<Headless::HostImage> red = image_of(2, 1, Pixels(2, 0xffff0000));
    const Qv::Ptr<Headless::HostImage> target = image_of(5, 1, Pixels(5, 0xffffffff));
    const ImageDescriptionEx blit = blit_ex(red, { 0.0f, 0.0f, 2.0f, 1.0f }, { 1.5f, 0.0f, 3.5f, 1.0f });
    renderer_for(target)->drawImagesEx(&blit, 1);
    const std::uint32_t half_red = over(scaled(0xffff0000, 128), 0xffffffff);
    EXPECT_EQ(target->pixelAt(0, 0), 0xffffffffu);
    EXPECT_TRUE(near(target->pixelAt(1, 0), half_red)) << std::hex << target->pixelAt(1, 0);
    EXPECT_EQ(target->pixelAt(2, 0), 0xffff0000u);
    EXPECT_TRUE(near(target->pixelAt(3, 0), half_red)) << std::hex << target->pixelAt(3, 0);
    EXPECT_EQ(target->pixelAt(4, 0), 0xffffffffu);
}

TEST(SoftwareRendererShader, InFrontLaysTheImageTimesItsOpacityOverTheDestination)
{
    for (const float opacity : { 0.0f, 0.25f, 0.5f, 1.0f }) {
        SCOPED_TRACE(opacity);
        const Qv::Ptr<Headless::HostImage> source = image_of(2, 2, { 0xff0000ff, 0x80800000, 0x00000000, 0xff00ff00 });
        const Qv::Ptr<Headless::HostImage> target = image_of(4, 4, Pixels(16, 0xffffffff));
        const ShaderRectDescription shaded = in_front(source, { 1.0f, 1.0f, 3.0f, 3.0f }, opacity);
        renderer_for(target)->drawShaderRects(&shaded, 1);

        const std::uint32_t factor = static_cast<std::uint32_t>(std::lround(opacity * 255.0f));
        for (int y = 0; y < 4; ++y) {
            for (int x = 0; x < 4; ++x) {
                const bool inside = x >= 1 && x < 3 && y >= 1 && y < 3;
                const std::uint32_t expected
                    = inside ? over(scaled(source->pixelAt(x - 1, y - 1), factor), 0xffffffff) : 0xffffffff;
                EXPECT_EQ(target->pixelAt(x, y), expected) << x << "," << y;
            }
        }
    }
}

TEST(SoftwareRendererShader, InactiveOrUnknownEffectsLeaveThePixelsAlone)
{
    ReportCapture reports;
    Headless::SoftwareRenderer::forgetReportedOperations();
    const Qv::Ptr<Headless::HostImage> source = image_of(1, 1, { 0xff000000 });
    const Qv::Ptr<Headless::HostImage> target = image_of(2, 2, Pixels(4, 0xffffffff));
    ShaderRectDescription shaded[3] = { in_front(source, { 0, 0, 2, 2 }, 1.0f), in_front(source, { 0, 0, 2, 2 }, 1.0f),
                                        in_front(source, { 0, 0, 2, 2 }, 1.0f) };
    shaded[0].active = false;
    shaded[1].shader = Headless::SoftwareRenderer::findShader("ShadowLR");
    shaded[2].shader = nullptr;
    const Qv::Ptr<iGraphicPrimitivesRenderer> renderer = renderer_for(target);
    renderer->drawShaderRects(shaded, 3);
    renderer->drawShaderRects(shaded, 3);
    EXPECT_EQ(pixels_of(*target), Pixels(4, 0xffffffff));
    EXPECT_EQ(reports.count("not drawn yet: drawShaderRects(ShadowLR)\n"), 1);
    EXPECT_EQ(reports.count("not drawn yet: drawShaderRects without a shader\n"), 1);
    EXPECT_EQ(Headless::SoftwareRenderer::findShader("NoSuchEffect"), nullptr);
}

TEST(SoftwareRendererReports, OperationsNotDrawnYetAreToldOnceEachAndDrawingCarriesOn)
{
    ReportCapture reports;
    Headless::SoftwareRenderer::forgetReportedOperations();
    const Qv::Ptr<Headless::HostImage> target = image_of(2, 1, Pixels(2, 0));
    const Qv::Ptr<iGraphicPrimitivesRenderer> renderer = renderer_for(target);
    const EllipseDescription ellipse;
    const TextDescription text;
    renderer->drawEllipses(&ellipse, 1);
    renderer->drawEllipses(&ellipse, 1);
    renderer->drawTexts(&text, 1);
    renderer->drawLines(nullptr, 0);   // nothing asked, nothing told
    EXPECT_EQ(reports.count("not drawn yet: drawEllipses\n"), 1);
    EXPECT_EQ(reports.count("not drawn yet: drawTexts\n"), 1);
    EXPECT_EQ(reports.count("drawLines"), 0);

    const RectDescription rect({ 0, 0, 2, 1 }, NormalisedRGB(0.0f, 1.0f, 0.0f));
    renderer->drawRects(&rect, 1);
    EXPECT_EQ(target->pixelAt(1, 0), 0xff00ff00u);
}

TEST(SoftwareRendererLifetime, TheTargetStaysLockedWhileARendererLivesAndNothingLeaks)
{
    const std::int64_t blocks_before = live_blocks();
    {
        const Qv::Ptr<Headless::HostImage> target = image_of(8, 8, Pixels(64, 0));
        {
            const Qv::Ptr<iGraphicPrimitivesRenderer> renderer = renderer_for(target);
            EXPECT_TRUE(target->isLocked());
            const ShaderRectDescription shaded = in_front(target, { 0, 0, 4, 4 }, 0.5f);
            renderer->drawShaderRects(&shaded, 1);
        }
        EXPECT_FALSE(target->isLocked());
    }
    EXPECT_EQ(live_blocks(), blocks_before);
}
