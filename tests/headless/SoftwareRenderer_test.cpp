#include "headless/PixmanRegion.h"
#include "headless/SoftwareImage.h"
#include "support/LiveBlocks.h"
#include "support/PixelCompare.h"
#include "support/ReportCapture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

using Pixels = std::vector<std::uint32_t>;   // 0xAARRGGBB, premultiplied, row by row

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

std::uint32_t random_premultiplied(std::mt19937& random)
{
    const std::uint32_t alpha = random() % 256;
    return pack(alpha, random() % (alpha + 1), random() % (alpha + 1), random() % (alpha + 1));
}

Pixels random_pixels(std::mt19937& random, std::size_t count)
{
    Pixels pixels(count);
    for (std::uint32_t& pixel : pixels)
        pixel = random_premultiplied(random);
    return pixels;
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

// A shader from some other platform: no program here knows its name.
class ForeignShader final : public iShaderEffect {
public:
    String name() const override { return "NoSuchEffect"; }
};

constexpr std::uint32_t WHITE = 0xffffffff;
constexpr std::uint32_t CLEAR = 0x00000000;
const NormalisedRGB RED(1.0f, 0.0f, 0.0f);
const NormalisedRGB BLUE(0.0f, 0.0f, 1.0f);

EllipseDescription ellipse_in(const TopDownRect& box, int style, const NormalisedRGB& fill, const NormalisedRGB& line,
                              unsigned thickness = 1)
{
    EllipseDescription ellipse;
    ellipse.rect = box;
    ellipse.style = style;
    ellipse.fillColour = fill;
    ellipse.lineColour = line;
    ellipse.thickness = static_cast<std::uint16_t>(thickness);
    return ellipse;
}

LineDescription line_from(XY<int> start, XY<int> end, const NormalisedRGB& colour, unsigned thickness = 1)
{
    LineDescription line;
    line.start = start;
    line.end = end;
    line.colour = colour;
    line.patterned = false;
    line.thickness = thickness;
    return line;
}

// The pixels set to anything but `background`, as "x,y" lines, for readable failures.
std::string lit_pixels(const Headless::HostImage& image, std::uint32_t background)
{
    XY<int> size;
    image.getSize(size);
    std::string lit;
    for (int y = 0; y < size.y; ++y)
        for (int x = 0; x < size.x; ++x)
            if (image.pixelAt(x, y) != background)
                lit += std::to_string(x) + "," + std::to_string(y) + " ";
    return lit;
}

} // namespace

TEST(SoftwareRendererFill, FillsClippedByAShapedRegionMatchAModel)
{
    for (std::uint32_t seed = 0; seed < 60; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        Pixels model = random_pixels(random, WIDTH * HEIGHT);
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
        const auto clipped_in = [&](int x, int y) { return inside_any(clip_rects.data(), clip_rects.size(), x, y); };

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

TEST(SoftwareRendererFill, AlphaRectanglesAlwaysBlendAndANullClipReachesEverything)
{
    const Qv::Ptr<Headless::HostImage> image = filled_image(4, 1, 0xffffffff);
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
        const Pixels source_pixels = random_pixels(random, 16 * 12);
        Pixels model = random_pixels(random, WIDTH * HEIGHT);
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
        const Pixels source_pixels = random_pixels(random, source_width * source_height);
        Pixels model = random_pixels(random, target_width * target_height);
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
            return clip_rects.empty() || inside_any(clip_rects.data(), clip_rects.size(), x, y);
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

TEST(SoftwareRendererBlit, FractionalBlitsSampleBetweenPixelsAndBlendTheirEdgesByCoverage)
{
    // Grey ramp 0, 100, 200: half a pixel to the right lands between neighbours.
    const Qv::Ptr<Headless::HostImage> ramp = image_of(3, 1, { 0xff000000, 0xff646464, 0xffc8c8c8 });
    const Qv::Ptr<Headless::HostImage> pair = filled_image(2, 1, 0);
    const ImageDescriptionEx sampled(ramp, { 0.5f, 0.0f, 2.5f, 1.0f }, { 0.0f, 0.0f, 2.0f, 1.0f });
    renderer_for(pair)->drawImagesEx(&sampled, 1);
    EXPECT_TRUE(near(pair->pixelAt(0, 0), 0xff323232)) << std::hex << pair->pixelAt(0, 0);
    EXPECT_TRUE(near(pair->pixelAt(1, 0), 0xff969696)) << std::hex << pair->pixelAt(1, 0);

    // Scaled up, a uniform image stays uniform to its edges.
    const Qv::Ptr<Headless::HostImage> target = filled_image(WIDTH, HEIGHT, 0);
    const ImageDescriptionEx scaled_up(filled_image(3, 3, 0xff2050a0), { 0.0f, 0.0f, 3.0f, 3.0f }, { 5.0f, 4.0f, 25.0f, 21.0f });
    renderer_for(target)->drawImagesEx(&scaled_up, 1);
    for (int y = 0; y < HEIGHT; ++y)
        for (int x = 0; x < WIDTH; ++x)
            ASSERT_EQ(target->pixelAt(x, y), x >= 5 && x < 25 && y >= 4 && y < 21 ? 0xff2050a0u : 0u) << x << "," << y;

    // Half-pixel destination edges.
    const Qv::Ptr<Headless::HostImage> row = filled_image(5, 1, 0xffffffff);
    const ImageDescriptionEx edged(filled_image(2, 1, 0xffff0000), { 0.0f, 0.0f, 2.0f, 1.0f }, { 1.5f, 0.0f, 3.5f, 1.0f });
    renderer_for(row)->drawImagesEx(&edged, 1);
    const std::uint32_t half_red = over(scaled(0xffff0000, 128), 0xffffffff);
    EXPECT_EQ(row->pixelAt(0, 0), 0xffffffffu);
    EXPECT_TRUE(near(row->pixelAt(1, 0), half_red)) << std::hex << row->pixelAt(1, 0);
    EXPECT_EQ(row->pixelAt(2, 0), 0xffff0000u);
    EXPECT_TRUE(near(row->pixelAt(3, 0), half_red)) << std::hex << row->pixelAt(3, 0);
    EXPECT_EQ(row->pixelAt(4, 0), 0xffffffffu);
}

TEST(SoftwareRendererShader, InFrontLaysTheImageTimesItsOpacityOverTheDestination)
{
    for (const float opacity : { 0.0f, 0.25f, 0.5f, 1.0f }) {
        SCOPED_TRACE(opacity);
        const Qv::Ptr<Headless::HostImage> source = image_of(2, 2, { 0xff0000ff, 0x80800000, 0x00000000, 0xff00ff00 });
        const Qv::Ptr<Headless::HostImage> target = filled_image(4, 4, 0xffffffff);
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
    const Qv::Ptr<Headless::HostImage> target = filled_image(2, 2, 0xffffffff);
    ShaderRectDescription shaded[3] = { in_front(source, { 0, 0, 2, 2 }, 1.0f), in_front(source, { 0, 0, 2, 2 }, 1.0f),
                                        in_front(source, { 0, 0, 2, 2 }, 1.0f) };
    shaded[0].active = false;
    shaded[1].shader = Qv::make<ForeignShader>();
    shaded[2].shader = nullptr;
    const Qv::Ptr<iGraphicPrimitivesRenderer> renderer = renderer_for(target);
    renderer->drawShaderRects(shaded, 3);
    renderer->drawShaderRects(shaded, 3);
    EXPECT_EQ(pixels_of(*target), Pixels(4, 0xffffffff));
    EXPECT_EQ(reports.count("not drawn: drawShaderRects with an unknown shader\n"), 1);
    EXPECT_EQ(reports.count("not drawn: drawShaderRects without a shader\n"), 1);
    EXPECT_EQ(Headless::SoftwareRenderer::findShader("NoSuchEffect"), nullptr);
}

TEST(SoftwareRendererLifetime, TheTargetStaysLockedWhileARendererLivesAndNothingLeaks)
{
    const std::int64_t blocks_before = live_blocks();
    {
        const Qv::Ptr<Headless::HostImage> target = filled_image(8, 8, 0);
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

TEST(SoftwareRendererEllipse, AFilledEllipseCoversItsAnalyticAreaAndNoMore)
{
    const Qv::Ptr<Headless::HostImage> image = filled_image(80, 60, CLEAR);
    const EllipseDescription ellipse = ellipse_in({ 10, 10, 70, 50 }, 0, NormalisedRGB(1, 1, 1), RED);
    renderer_for(image)->drawEllipses(&ellipse, 1);
    EXPECT_NEAR(covered_area(*image), 3.14159265 * 30 * 20, 3.0);
    EXPECT_EQ(image->pixelAt(40, 30), WHITE);                          // centre
    EXPECT_EQ(image->pixelAt(40, 10), WHITE);                          // the top row's middle is inside
    EXPECT_EQ(image->pixelAt(40, 9), CLEAR);                           // and the row above is not
    EXPECT_EQ(image->pixelAt(10, 10), CLEAR);                          // the box's corner lies outside
    const std::uint32_t edge = channel(image->pixelAt(10, 30), 24);   // the curve crosses the leftmost column
    EXPECT_GT(edge, 0u);
    EXPECT_LT(edge, 255u);
    EXPECT_EQ(image->pixelAt(9, 30), CLEAR);
}

TEST(SoftwareRendererEllipse, OutlinesLieInsideTheBoxAndStyleTwoFillsBeneathThem)
{
    const TopDownRect box { 0, 0, 40, 40 };
    const Qv::Ptr<Headless::HostImage> outline = filled_image(40, 40, CLEAR);
    const EllipseDescription ring = ellipse_in(box, 1, BLUE, NormalisedRGB(1, 1, 1), 3);
    renderer_for(outline)->drawEllipses(&ring, 1);
    EXPECT_NEAR(covered_area(*outline), 3.14159265 * (20 * 20 - 17 * 17), 3.0);
    EXPECT_EQ(outline->pixelAt(20, 20), CLEAR);
    EXPECT_EQ(outline->pixelAt(20, 1), WHITE);
    EXPECT_EQ(outline->pixelAt(20, 5), CLEAR);

    const Qv::Ptr<Headless::HostImage> both = filled_image(40, 40, CLEAR);
    const EllipseDescription filled_ring = ellipse_in(box, 2, BLUE, NormalisedRGB(1, 1, 1), 3);
    renderer_for(both)->drawEllipses(&filled_ring, 1);
    EXPECT_EQ(both->pixelAt(20, 20), 0xff0000ffu);
    EXPECT_EQ(both->pixelAt(20, 1), WHITE);
    EXPECT_EQ(both->pixelAt(3, 3), CLEAR);   // the fill does not show outside the ring
}

// Angles grow clockwise on the screen from 3 o'clock, as the library's corner pieces
// expect: its top-left corner is 180..270.
TEST(SoftwareRendererEllipse, ArcsRunClockwiseFromThreeOClockAndWrapPastAFullTurn)
{
    struct Case {
        int start, end;
        XY<int> inside, outside;
        double share;
    };
    const Case cases[] = {
        { 0, 90, { 30, 30 }, { 30, 10 }, 0.25 },     // bottom right on the screen
        { 180, 270, { 10, 10 }, { 10, 30 }, 0.25 },   // top left
        { 270, 90, { 30, 20 }, { 10, 20 }, 0.5 },     // through 3 o'clock: the right half
        { 0, 720, { 10, 10 }, { 0, 0 }, 1.0 },
    };
    for (const Case& arc : cases) {
        SCOPED_TRACE(std::to_string(arc.start) + ".." + std::to_string(arc.end));
        const Qv::Ptr<Headless::HostImage> image = filled_image(40, 40, CLEAR);
        EllipseDescription pie = ellipse_in({ 0, 0, 40, 40 }, 0, NormalisedRGB(1, 1, 1), RED);
        pie.startAngle = static_cast<std::uint16_t>(arc.start);
        pie.endAngle = static_cast<std::uint16_t>(arc.end);
        renderer_for(image)->drawEllipses(&pie, 1);
        EXPECT_EQ(image->pixelAt(arc.inside.x, arc.inside.y), WHITE);
        EXPECT_EQ(image->pixelAt(arc.outside.x, arc.outside.y), CLEAR);
        EXPECT_NEAR(covered_area(*image), 3.14159265 * 400 * arc.share, 3.0);
    }
    // An outlined arc is the band along the curve: the centre stays clear.
    const Qv::Ptr<Headless::HostImage> image = filled_image(40, 40, CLEAR);
    EllipseDescription band = ellipse_in({ 0, 0, 40, 40 }, 1, RED, NormalisedRGB(1, 1, 1), 2);
    band.startAngle = 0;
    band.endAngle = 90;
    renderer_for(image)->drawEllipses(&band, 1);
    EXPECT_EQ(image->pixelAt(25, 25), CLEAR);
    EXPECT_EQ(image->pixelAt(38, 22), WHITE);
    EXPECT_EQ(image->pixelAt(22, 38), WHITE);
    EXPECT_EQ(image->pixelAt(0, 20), CLEAR);
    EXPECT_EQ(image->pixelAt(38, 17), CLEAR);
}

TEST(SoftwareRendererEllipse, WithoutAntialiasingOnlyTheTwoColoursAppear)
{
    const Qv::Ptr<Headless::HostImage> image = filled_image(50, 50, WHITE);
    const Qv::Ptr<iGraphicPrimitivesRenderer> renderer = renderer_for(image);
    renderer->setAntialiasing(false);
    const EllipseDescription ellipse = ellipse_in({ 3, 5, 47, 41 }, 2, BLUE, BLUE, 2);
    LineStripDescription strip;
    strip.points = { { 1.0f, 1.0f }, { 30.0f, 48.0f }, { 48.0f, 2.0f } };
    strip.colour = BLUE;
    strip.thickness = 3;
    renderer->drawEllipses(&ellipse, 1);
    renderer->drawLineStrips(&strip, 1);
    int blue = 0;
    for (const std::uint32_t pixel : pixels_of(*image)) {
        ASSERT_TRUE(pixel == WHITE || pixel == 0xff0000ffu) << std::hex << pixel;
        blue += pixel != WHITE;
    }
    EXPECT_GT(blue, 1000);
}

TEST(SoftwareRendererRoundedRect, CornerBitsRoundOnlyTheirCornersAndRadiiAreCutToFit)
{
    const Qv::Ptr<Headless::HostImage> image = filled_image(40, 30, CLEAR);
    RoundedRectDescription rounded;
    rounded.rect = { 0, 0, 40, 30 };
    rounded.fillColour = NormalisedRGB(1, 1, 1);
    rounded.radius = 10;
    rounded.corners = 1 | 8;   // top left and bottom right
    renderer_for(image)->drawRoundedRects(&rounded, 1);
    EXPECT_EQ(image->pixelAt(0, 0), CLEAR);
    EXPECT_EQ(image->pixelAt(39, 29), CLEAR);
    EXPECT_EQ(image->pixelAt(39, 0), WHITE);
    EXPECT_EQ(image->pixelAt(0, 29), WHITE);
    EXPECT_NEAR(covered_area(*image), 1200 - 2 * (100 - 3.14159265 * 25), 2.0);

    // What the library sends for a box under 2 pixels high: a radius that fits nothing.
    const Qv::Ptr<Headless::HostImage> thin = filled_image(12, 3, CLEAR);
    rounded.rect = { 1, 1, 11, 2 };
    rounded.radius = 65535;
    rounded.corners = 15;
    renderer_for(thin)->drawRoundedRects(&rounded, 1);
    EXPECT_EQ(thin->pixelAt(5, 1), WHITE);
    EXPECT_NEAR(covered_area(*thin), 10 - (1 - 3.14159265 / 4), 0.3);
    EXPECT_EQ(lit_pixels(*thin, CLEAR).find(",0 "), std::string::npos);
    EXPECT_EQ(lit_pixels(*thin, CLEAR).find(",2 "), std::string::npos);
}

TEST(SoftwareRendererRoundedRect, OutlinesAreInsideAndTheSameColourTwiceIsHollow)
{
    const Qv::Ptr<Headless::HostImage> image = filled_image(30, 30, CLEAR);
    RoundedRectDescription rounded;
    rounded.rect = { 5, 5, 25, 25 };
    rounded.fillColour = BLUE;
    rounded.lineColour = NormalisedRGB(1, 1, 1);
    rounded.radius = 4;
    rounded.thickness = 2;
    const Qv::Ptr<iGraphicPrimitivesRenderer> renderer = renderer_for(image);
    renderer->drawRoundedRects(&rounded, 1);
    EXPECT_EQ(image->pixelAt(15, 5), WHITE);
    EXPECT_EQ(image->pixelAt(15, 6), WHITE);
    EXPECT_EQ(image->pixelAt(15, 7), 0xff0000ffu);
    EXPECT_EQ(image->pixelAt(15, 4), CLEAR);

    image->fill(CLEAR);
    rounded.fillColour = NormalisedRGB(1, 1, 1, 0.5f);   // only the alpha differs: still hollow
    renderer->drawRoundedRects(&rounded, 1);
    EXPECT_EQ(image->pixelAt(15, 15), CLEAR);
    EXPECT_EQ(image->pixelAt(15, 6), WHITE);
}

TEST(SoftwareRendererLine, ThinLinesLightWholePixelsFromEndToEnd)
{
    const Qv::Ptr<Headless::HostImage> image = filled_image(20, 12, CLEAR);
    const Qv::Ptr<iGraphicPrimitivesRenderer> renderer = renderer_for(image);
    const LineDescription row = line_from({ 12, 5 }, { 3, 5 }, NormalisedRGB(1, 1, 1));
    renderer->drawLines(&row, 1);
    std::string expected;
    for (int x = 3; x <= 12; ++x)
        expected += std::to_string(x) + ",5 ";
    EXPECT_EQ(lit_pixels(*image, CLEAR), expected);

    // The pen is a square of the thickness: (t-1)/2 before each pixel, the rest after,
    // across the line and along it.
    image->fill(CLEAR);
    const LineDescription thick[2] = { line_from({ 2, 1 }, { 2, 3 }, NormalisedRGB(1, 1, 1), 3),
                                       line_from({ 10, 8 }, { 11, 8 }, NormalisedRGB(1, 1, 1), 2) };
    renderer->drawLines(thick, 2);
    EXPECT_EQ(lit_pixels(*image, CLEAR), "1,0 2,0 3,0 1,1 2,1 3,1 1,2 2,2 3,2 1,3 2,3 3,3 1,4 2,4 3,4 10,8 11,8 12,8 10,9 11,9 12,9 ");

    // A line just off the image whose pen reaches into it.
    image->fill(CLEAR);
    const LineDescription off_edge = line_from({ -2, 20 }, { -2, -3 }, NormalisedRGB(1, 1, 1), 5);
    renderer->drawLines(&off_edge, 1);
    EXPECT_EQ(image->pixelAt(0, 11), WHITE);
    EXPECT_EQ(image->pixelAt(1, 0), CLEAR);

    // A strip and a Bezier along the same row land on the same pixels as the line.
    for (int road = 0; road < 2; ++road) {
        image->fill(CLEAR);
        if (road == 0) {
            LineStripDescription strip;
            strip.points = { { 3.0f, 5.0f }, { 8.0f, 5.0f }, { 12.0f, 5.0f } };
            strip.colour = NormalisedRGB(1, 1, 1);
            renderer->drawLineStrips(&strip, 1);
        } else {
            BezierCurveDescription curve;
            curve.start = { 3, 5 };
            curve.control1 = { 6, 5 };
            curve.control2 = { 9, 5 };
            curve.end = { 12, 5 };
            curve.colour = NormalisedRGB(1, 1, 1);
            renderer->drawBeziers(&curve, 1);
        }
        EXPECT_EQ(lit_pixels(*image, CLEAR), expected) << road;
    }
}

TEST(SoftwareRendererLine, SlantedLinesPassThroughThePixelsTheyJoin)
{
    const Qv::Ptr<Headless::HostImage> image = filled_image(20, 20, CLEAR);
    const LineDescription diagonal = line_from({ 2, 2 }, { 15, 15 }, NormalisedRGB(1, 1, 1));
    renderer_for(image)->drawLines(&diagonal, 1);
    for (int step = 2; step <= 15; ++step)
        EXPECT_GT(channel(image->pixelAt(step, step), 24), 150u) << step;
    EXPECT_EQ(image->pixelAt(2, 15), CLEAR);
    EXPECT_NEAR(covered_area(*image), 14 * 1.41421356, 2.0);
}

TEST(SoftwareRendererLine, PatternedLinesAlternateRunsFromTheStartPoint)
{
    const Qv::Ptr<Headless::HostImage> image = filled_image(12, 4, CLEAR);
    const Qv::Ptr<iGraphicPrimitivesRenderer> renderer = renderer_for(image);
    LineDescription lines[3] = { line_from({ 0, 0 }, { 9, 0 }, RED), line_from({ 10, 1 }, { 1, 1 }, RED),
                                 line_from({ 0, 2 }, { 0, 2 }, RED) };
    lines[0].pattern = 1;
    lines[1].pattern = 2;
    lines[2].pattern = 1;
    for (LineDescription& line : lines) {
        line.patterned = true;
        line.secondColour = BLUE;
    }
    renderer->drawLines(lines, 3);
    constexpr std::uint32_t R = 0xffff0000, B = 0xff0000ff;
    const std::uint32_t dotted[] = { R, B, R, B, R, B, R, B, R, B, CLEAR, CLEAR };
    const std::uint32_t dashed[] = { CLEAR, R, R, B, B, R, R, B, B, R, R, CLEAR };   // from x = 10 leftwards
    for (int x = 0; x < 12; ++x) {
        EXPECT_EQ(image->pixelAt(x, 0), dotted[x]) << x;
        EXPECT_EQ(image->pixelAt(x, 1), dashed[x]) << x;
    }
    EXPECT_EQ(image->pixelAt(0, 2), R);   // a single dot is the colour

    // A dotted slanted line: the colours alternate along it, and both cover it.
    const Qv::Ptr<Headless::HostImage> slant = filled_image(30, 30, CLEAR);
    LineDescription focus = line_from({ 2, 2 }, { 25, 25 }, RED);
    focus.patterned = true;
    focus.pattern = 3;
    focus.secondColour = BLUE;
    renderer_for(slant)->drawLines(&focus, 1);
    EXPECT_GT(channel(slant->pixelAt(3, 3), 16), 200u);   // in the first run
    EXPECT_GT(channel(slant->pixelAt(6, 6), 0), 200u);    // in the second
    EXPECT_NEAR(covered_area(*slant), 24 * 1.41421356, 3.0);
}

TEST(SoftwareRendererLine, AStripWithAPointThatIsNotANumberBreaksThere)
{
    const Qv::Ptr<Headless::HostImage> image = filled_image(30, 10, CLEAR);
    LineStripDescription strip;
    const float nothing = std::numeric_limits<float>::quiet_NaN();
    strip.points = { { 2.0f, 2.0f }, { 10.0f, 2.0f }, { nothing, 5.0f }, { 15.0f, 7.0f }, { 25.0f, 7.0f } };
    strip.colour = NormalisedRGB(1, 1, 1);
    renderer_for(image)->drawLineStrips(&strip, 1);
    EXPECT_EQ(image->pixelAt(6, 2), WHITE);
    EXPECT_EQ(image->pixelAt(20, 7), WHITE);
    EXPECT_EQ(image->pixelAt(12, 4), CLEAR);   // nothing joins the two pieces
    EXPECT_NEAR(covered_area(*image), 9 + 11, 0.5);
}

TEST(SoftwareRendererRect, TwoColoursRunFromTheTopRowToTheBottomRow)
{
    const Qv::Ptr<Headless::HostImage> image = filled_image(3, 6, WHITE);
    RectDescription rects[2];
    rects[0].rect = { 0, 1, 2, 6 };
    rects[0].colour = NormalisedRGB(1, 0, 0);
    rects[0].secondColour = NormalisedRGB(0, 0, 1);
    rects[0].twoColours = true;
    // Translucent stops are straight colours: the same colour twice gives that colour.
    rects[1].rect = { 2, 0, 3, 6 };
    rects[1].colour = rects[1].secondColour = NormalisedRGB(1, 0, 0, 0.5f);
    rects[1].twoColours = true;
    renderer_for(image)->drawRects(rects, 2);
    EXPECT_EQ(image->pixelAt(0, 0), WHITE);
    EXPECT_EQ(image->pixelAt(0, 1), 0xffff0000u);
    EXPECT_TRUE(near(image->pixelAt(1, 3), 0xff800080u)) << std::hex << image->pixelAt(1, 3);
    EXPECT_EQ(image->pixelAt(0, 5), 0xff0000ffu);
    EXPECT_EQ(image->pixelAt(2, 4), 0x80800000u);
}

// Every shape, sane and not, through a clip with a hole: nothing outside the clip
// changes, the run ends, and shapes after the bad ones still draw.
TEST(SoftwareRendererClip, NoShapeReachesOutsideTheClipWhateverItIsGiven)
{
    constexpr int size = 64;
    const Qv::Ptr<Headless::HostImage> image = filled_image(size, size, CLEAR);
    const Qv::Ptr<iGraphicPrimitivesRenderer> renderer = renderer_for(image);
    // A frame: the ring between 8 and 56, without the square from 24 to 40.
    const TopDownRect clip_rects[4] = { { 8, 8, 56, 24 }, { 8, 24, 24, 40 }, { 40, 24, 56, 40 }, { 8, 40, 56, 56 } };
    Qv::Ptr<iRegion> clip;
    Headless::PixmanRegion::create(clip, clip_rects, 4);
    renderer->setClip(clip);
    const float inf = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const NormalisedRGB wild(nan, 40.0f, -3.0f, 7.0f);

    EllipseDescription ellipses[5] = { ellipse_in({ -4, -4, 70, 70 }, 2, RED, BLUE, 5),
                                       ellipse_in({ -50000, 20, 50000, 400 }, 1, RED, wild, 60000),
                                       ellipse_in({ 10, 10, 10, 50 }, 0, RED, RED, 0),
                                       ellipse_in({ 50, 50, 0, 0 }, 7, wild, wild, 0),
                                       ellipse_in({ 2000000000, 0, -2000000000, 64 }, 0, RED, RED) };
    ellipses[0].startAngle = 400;
    ellipses[0].endAngle = 10;
    renderer->drawEllipses(ellipses, 5);
    RoundedRectDescription rounded[3];
    rounded[0].rect = { 0, 0, size, size };
    rounded[0].radius = 0;
    rounded[0].thickness = 65535;
    rounded[0].fillColour = wild;
    rounded[1].rect = { 60, 60, 4, 4 };
    rounded[1].radius = 65535;
    rounded[1].thickness = 3;
    rounded[1].corners = 0xffffffff;
    rounded[2].rect = { 30, 30, 31, 31 };
    rounded[2].radius = 65535;
    renderer->drawRoundedRects(rounded, 3);
    LineDescription lines[4] = { line_from({ -1000000000, 32 }, { 1000000000, 32 }, RED, 0),
                                 line_from({ -7, -900000000 }, { 1900000000, 70 }, wild, 4000000000u),
                                 line_from({ 0, 0 }, { 63, 63 }, BLUE, 9), line_from({ 63, 0 }, { 0, 63 }, RED, 2) };
    lines[1].pattern = 1;
    lines[1].patterned = true;
    lines[3].pattern = 0xffffffff;
    lines[3].patterned = true;
    renderer->drawLines(lines, 4);
    renderer->drawLines(lines, 0);
    LineStripDescription strips[3];
    strips[0].points = { { nan, 0.0f }, { -1e30f, 5.0f }, { 70.0f, 60.0f }, { inf, inf }, { 3.0f, 3.0f },
                         { 60.0f, 3.0f }, { 1e30f, -1e30f }, { 3.0f, 60.0f } };
    strips[0].thickness = 3;
    strips[1].points = { { 32.0f, 32.0f } };
    strips[2].points = { { 10.0f, 50.0f }, { 10.0f, 50.0f }, { 10.0f, 50.0f } };
    strips[2].colour = wild;
    strips[2].thickness = 0;
    renderer->drawLineStrips(strips, 3);
    BezierCurveDescription curves[3];
    curves[0].start = curves[0].control1 = curves[0].control2 = curves[0].end = { 30, 30 };
    curves[1].start = { -100, 70 };
    curves[1].control1 = { 32, -300 };
    curves[1].control2 = { 32, 400 };
    curves[1].end = { 200, 10 };
    curves[1].thickness = 7;
    curves[2].start = { 0, 0 };
    curves[2].control1 = { 2000000000, 0 };
    curves[2].end = { 60, 60 };
    renderer->drawBeziers(curves, 3);

    ASSERT_EQ(changed_outside(*image, clip_rects, 4, CLEAR), 0);
    EXPECT_NE(image->pixelAt(8, 32), CLEAR);   // the shapes did reach the clip

    const EllipseDescription after = ellipse_in({ 8, 8, 24, 24 }, 0, NormalisedRGB(0, 1, 0), RED);
    renderer->drawEllipses(&after, 1);
    EXPECT_EQ(image->pixelAt(16, 16), 0xff00ff00u);
}
