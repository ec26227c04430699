// The shader effects drawn by the software renderer, given their parameters the way
// the library builds them: soft ellipses and rounded rectangles against their
// analytic areas and the plain antialiased shapes, shadows for their fall-off and
// their joins, and bad input against the clip.

#include "headless/PixmanRegion.h"
#include "headless/SoftwareImage.h"
#include "support/PixelCompare.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace {

constexpr double PI = 3.14159265358979323846;
constexpr std::uint32_t CLEAR = 0x00000000;
constexpr std::uint32_t PAPER = 0xff20c040;   // opaque, and unlike any colour drawn
const NormalisedRGB INK(0.1f, 0.2f, 0.6f);
const NormalisedRGB WARM(0.95f, 0.55f, 0.1f);
const NormalisedRGB TRANSPARENT(0.0f, 0.0f, 0.0f, 0.0f);

std::uint32_t alpha(std::uint32_t pixel) { return pixel >> 24; }

ShaderRectDescription shader_over(const char* name, const Qv::Rectangle<float>& rect)
{
    ShaderRectDescription shaded;
    shaded.shader = Headless::SoftwareRenderer::findShader(name);
    shaded.active = true;
    shaded.rect = rect;
    shaded.inputs.push_back(
        ShaderInput(Qv::Ptr<iImage>(), { 0.0f, 0.0f, std::fabs(rect.width()), std::fabs(rect.height()) }));
    return shaded;
}

// An ellipse as the canvas renderer describes it: lengths in halves of the height.
ShaderRectDescription soft_ellipse(const Qv::Rectangle<float>& rect, float thickness, float ui_scale,
                                   const NormalisedRGB& line, const NormalisedRGB& fill)
{
    ShaderRectDescription shaded = shader_over("Ellipse", rect);
    const float height = std::fabs(rect.height());
    shaded.addParam("Thickness", 2.0f * thickness / height);
    shaded.addParam("Softness", 2.0f * ui_scale / height);
    shaded.addParam("LineColour", line);
    shaded.addParam("FillColour", fill);
    return shaded;
}

// A rounded rectangle as the canvas renderer describes it: the radius in heights, the
// thickness in radii (1 pixel when there is none).
ShaderRectDescription soft_rounded(const Qv::Rectangle<float>& rect, float radius, float thickness,
                                   const NormalisedRGB& line, const NormalisedRGB& fill)
{
    ShaderRectDescription shaded = shader_over("RoundedRectangle", rect);
    const float height = std::fabs(rect.height());
    shaded.addParam("Thickness", (thickness == 0.0f ? 1.0f : thickness) / height / (radius / height));
    shaded.addParam("Softness", 2.0f / height);
    shaded.addParam("Radius", radius / height);
    shaded.addParam("Aspect", std::fabs(rect.width()) / height);
    shaded.addParam("LineColour", line);
    shaded.addParam("FillColour", fill);
    return shaded;
}

// The shadow around a canvas at `box` (window pixels) as edge effects describe it:
// one working description whose parameters pile up, copied once per band and
// corner, left, right, top, bottom, then the four corners.
std::vector<ShaderRectDescription> shadow_around(const TopDownRect& box, int size, const NormalisedRGB& colour)
{
    std::vector<ShaderRectDescription> out;
    ShaderRectDescription working = shader_over("ShadowLR", { 0, 0, 1, 1 });
    const auto store = [&](const char* name, const TopDownRect& r, float origin_x, float origin_y, bool x, bool y) {
        working.shader = Headless::SoftwareRenderer::findShader(name);
        working.rect = { float(r.left), float(r.top), float(r.right), float(r.bottom) };
        working.inputs.front().second = { 0.0f, 0.0f, float(r.width()), float(r.height()) };
        if (x)
            working.addParam("OriginX", origin_x);
        if (y)
            working.addParam("OriginY", origin_y);
        out.push_back(working);
    };
    working.addParam("Colour", colour);
    store("ShadowLR", { box.left - size, box.top, box.left, box.bottom }, 1.0f, 0.0f, true, false);
    store("ShadowLR", { box.right, box.top, box.right + size, box.bottom }, 0.0f, 0.0f, true, false);
    working.addParam("Colour", colour);
    store("ShadowTB", { box.left, box.top - size, box.right, box.top }, 0.0f, 1.0f, false, true);
    store("ShadowTB", { box.left, box.bottom, box.right, box.bottom + size }, 0.0f, 0.0f, false, true);
    working.addParam("Colour", colour);
    store("ShadowC", { box.left - size, box.top - size, box.left, box.top }, 1.0f, 1.0f, true, true);
    store("ShadowC", { box.right, box.top - size, box.right + size, box.top }, 0.0f, 1.0f, true, true);
    store("ShadowC", { box.left - size, box.bottom, box.left, box.bottom + size }, 1.0f, 0.0f, true, true);
    store("ShadowC", { box.right, box.bottom, box.right + size, box.bottom + size }, 0.0f, 0.0f, true, true);
    return out;
}

} // namespace

// [Ellipses]

TEST(ShaderEllipse, CoversItsAnalyticAreaAndLooksAsThePlainEllipseDoes)
{
    const Qv::Ptr<Headless::HostImage> shaded_image = filled_image(80, 60, CLEAR);
    const ShaderRectDescription shaded = soft_ellipse({ 10, 10, 70, 50 }, 1.0f, 1.0f, INK, INK);
    renderer_for(shaded_image)->drawShaderRects(&shaded, 1);
    EXPECT_NEAR(covered_area(*shaded_image), PI * 30 * 20, 2.0);
    EXPECT_EQ(shaded_image->pixelAt(40, 30), 0xff1a3399u);   // the centre is the colour itself

    const Qv::Ptr<Headless::HostImage> plain_image = filled_image(80, 60, CLEAR);
    EllipseDescription plain;
    plain.rect = { 10, 10, 70, 50 };
    plain.fillColour = INK;
    renderer_for(plain_image)->drawEllipses(&plain, 1);
    // The two differ only in how each edge pixel is shared out, and by little.
    int worst = 0;
    for (int y = 0; y < 60; ++y)
        for (int x = 0; x < 80; ++x)
            worst = std::max(worst, std::abs(int(alpha(shaded_image->pixelAt(x, y))) - int(alpha(plain_image->pixelAt(x, y)))));
    EXPECT_LT(worst, 64);
    EXPECT_EQ(shaded_image->pixelAt(9, 30), CLEAR);   // nothing outside the box
    EXPECT_EQ(shaded_image->pixelAt(10, 10), CLEAR);  // nor in its corners
}

TEST(ShaderEllipse, ALargerUIScaleSpreadsTheEdgeWiderAndKeepsTheArea)
{
    int ramp_width[2] = {};
    for (const int scale : { 1, 2 }) {
        const Qv::Ptr<Headless::HostImage> image = filled_image(100, 60, CLEAR);
        const ShaderRectDescription shaded = soft_ellipse({ 10, 10, 90, 50 }, 1.0f, float(scale), WARM, WARM);
        renderer_for(image)->drawShaderRects(&shaded, 1);
        // Partly covered pixels down the middle column, where the curve runs level
        // and the ramp lies wholly inside the box... and across the box's middle row.
        for (int y = 0; y < 60; ++y)
            ramp_width[scale - 1] += alpha(image->pixelAt(50, y)) > 0 && alpha(image->pixelAt(50, y)) < 255;
        // The box cuts off the outer half of the ramp where the curve touches it.
        EXPECT_NEAR(covered_area(*image), PI * 40 * 20, 0.005 * PI * 40 * 20) << "scale " << scale;
    }
    EXPECT_GT(ramp_width[1], ramp_width[0]);
}

TEST(ShaderEllipse, AnOutlineAloneLeavesTheCentreUntouchedAndIsEvenAllRound)
{
    const Qv::Ptr<Headless::HostImage> image = filled_image(120, 60, PAPER);
    const ShaderRectDescription shaded = soft_ellipse({ 10, 10, 110, 50 }, 4.0f, 1.0f, INK, TRANSPARENT);
    renderer_for(image)->drawShaderRects(&shaded, 1);
    // Well inside the band, nothing changed: a 60 x 20 ellipse around the centre.
    for (int y = 20; y < 40; ++y)
        for (int x = 30; x < 90; ++x)
            if (std::pow((x + 0.5 - 60) / 30.0, 2) + std::pow((y + 0.5 - 30) / 10.0, 2) < 1.0) {
                ASSERT_EQ(image->pixelAt(x, y), PAPER) << x << "," << y;
            }
    // The band is four pixels thick at the top, where the curve is level, and at the
    // sides, where it stands: a wide ellipse does not stretch its line.
    const auto ink_share = [&](int x, int y) {
        const std::uint32_t pixel = image->pixelAt(x, y);
        return (0xc0 - double(pixel >> 8 & 255)) / (0xc0 - 0x33);   // from the paper's green to the ink's
    };
    double down = 0.0, across = 0.0;
    for (int step = 0; step < 12; ++step) {
        down += ink_share(60, 10 + step);
        across += ink_share(10 + step, 30);
    }
    EXPECT_NEAR(down, 4.0, 0.3);
    EXPECT_NEAR(across, 4.0, 0.3);
}

// [Rounded rectangles]

TEST(ShaderRoundedRectangle, CornersAreRoundAndTheSidesStayCrisp)
{
    const Qv::Ptr<Headless::HostImage> image = filled_image(100, 60, CLEAR);
    const ShaderRectDescription shaded = soft_rounded({ 10, 10, 90, 50 }, 12.0f, 0.0f, INK, INK);
    renderer_for(image)->drawShaderRects(&shaded, 1);
    EXPECT_NEAR(covered_area(*image), 80 * 40 - (4 - PI) * 12 * 12, 2.0);
    EXPECT_EQ(alpha(image->pixelAt(10, 10)), 0u);     // the corner is cut away
    EXPECT_EQ(alpha(image->pixelAt(50, 10)), 255u);   // the straight sides fill their pixels
    EXPECT_EQ(alpha(image->pixelAt(10, 30)), 255u);
    EXPECT_EQ(alpha(image->pixelAt(89, 49)), 0u);
    // Along the corner's diagonal the edge falls where the arc is.
    const double arc = 12.0 - 12.0 / std::sqrt(2.0);   // from the corner, in x and in y
    const std::uint32_t inside = alpha(image->pixelAt(10 + int(arc) + 1, 10 + int(arc) + 1));
    const std::uint32_t outside = alpha(image->pixelAt(10 + int(arc) - 1, 10 + int(arc) - 1));
    EXPECT_EQ(inside, 255u);
    EXPECT_EQ(outside, 0u);

    // Without a radius the thickness is infinite (as the library sends it); the corners
    // are square and the whole box is covered.
    const Qv::Ptr<Headless::HostImage> square = filled_image(100, 60, CLEAR);
    const ShaderRectDescription square_shaded = soft_rounded({ 10, 10, 90, 50 }, 0.0f, 0.0f, INK, INK);
    renderer_for(square)->drawShaderRects(&square_shaded, 1);
    EXPECT_DOUBLE_EQ(covered_area(*square), 80 * 40);
}

TEST(ShaderRoundedRectangle, AnOutlineOfItsOwnColourIsHollowAndOnlyAsThickAsAsked)
{
    const Qv::Ptr<Headless::HostImage> image = filled_image(100, 60, PAPER);
    const ShaderRectDescription shaded = soft_rounded({ 10, 10, 90, 50 }, 10.0f, 2.0f, INK, TRANSPARENT);
    renderer_for(image)->drawShaderRects(&shaded, 1);
    // Inside the band (two pixels in, and clear of the corners' arcs) nothing changed.
    for (int y = 13; y < 47; ++y)
        for (int x = 13; x < 87; ++x) {
            const bool corner = (x < 20 || x >= 80) && (y < 20 || y >= 40);
            if (!corner) {
                ASSERT_EQ(image->pixelAt(x, y), PAPER) << x << "," << y;
            }
        }
    EXPECT_EQ(image->pixelAt(50, 10), 0xff1a3399u);
    EXPECT_EQ(image->pixelAt(50, 11), 0xff1a3399u);
    EXPECT_EQ(image->pixelAt(50, 12), PAPER);
    EXPECT_EQ(image->pixelAt(50, 9), PAPER);
}

// [Shadows]

TEST(ShaderShadow, BandsFadeAwayFromTheEdgeAndCornersJoinThemWithoutASeam)
{
    constexpr int SIZE = 12;
    const TopDownRect box { 30, 30, 110, 80 };
    const Qv::Ptr<Headless::HostImage> image = filled_image(140, 110, CLEAR);
    const std::vector<ShaderRectDescription> shadow = shadow_around(box, SIZE, NormalisedRGB(0.0f, 0.0f, 0.0f, 0.6f));
    renderer_for(image)->drawShaderRects(shadow.data(), unsigned(shadow.size()));
    const auto at = [&](int x, int y) { return int(alpha(image->pixelAt(x, y))); };

    // Strongest by the edge, nothing beyond the band, never rising on the way out.
    EXPECT_GE(at(box.left - 1, 50), 135);
    EXPECT_EQ(at(box.left - SIZE - 1, 50), 0);
    for (int out = 1; out < SIZE; ++out) {
        EXPECT_LE(at(box.left - 1 - out, 50), at(box.left - out, 50));      // left
        EXPECT_LE(at(box.right + out, 50), at(box.right + out - 1, 50));    // right
        EXPECT_LE(at(60, box.top - 1 - out), at(60, box.top - out));        // top
        EXPECT_LE(at(60, box.bottom + out), at(60, box.bottom + out - 1));  // bottom
        EXPECT_LE(at(box.left - 1 - out, box.top - 1 - out), at(box.left - out, box.top - out));   // a corner's diagonal
    }
    // Every band looks the same from its edge.
    for (int out = 0; out < SIZE; ++out) {
        EXPECT_EQ(at(box.right + out, 50), at(box.left - 1 - out, 50));
        EXPECT_EQ(at(60, box.top - 1 - out), at(box.left - 1 - out, 50));
    }
    // No seam: neighbouring pixels anywhere differ by no more than the steepest step
    // of the fall-off itself (twice the opacity per band width, by the edge).
    const int steepest = int(std::ceil(2.0 * 0.6 * 255 / SIZE)) + 1;
    for (int y = 0; y + 1 < 110; ++y)
        for (int x = 0; x + 1 < 140; ++x) {
            const bool canvas = x >= box.left - 1 && x <= box.right && y >= box.top - 1 && y <= box.bottom;
            if (canvas)
                continue;   // the canvas's own edge is meant to be sharp
            ASSERT_LE(std::abs(at(x, y) - at(x + 1, y)), steepest) << x << "," << y;
            ASSERT_LE(std::abs(at(x, y) - at(x, y + 1)), steepest) << x << "," << y;
        }
    // Under the canvas nothing is drawn.
    for (int y = box.top; y < box.bottom; ++y)
        for (int x = box.left; x < box.right; ++x)
            ASSERT_EQ(image->pixelAt(x, y), CLEAR);
}

// [Bad input]

TEST(ShaderPrograms, NothingReachesOutsideTheClipWhateverTheParameters)
{
    constexpr int size = 64;
    const Qv::Ptr<Headless::HostImage> image = filled_image(size, size, CLEAR);
    const Qv::Ptr<iGraphicPrimitivesRenderer> renderer = renderer_for(image);
    const TopDownRect clip_rects[4] = { { 8, 8, 56, 24 }, { 8, 24, 24, 40 }, { 40, 24, 56, 40 }, { 8, 40, 56, 56 } };
    Qv::Ptr<iRegion> clip;
    Headless::PixmanRegion::create(clip, clip_rects, 4);
    renderer->setClip(clip);
    const float inf = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const NormalisedRGB wild(nan, 40.0f, -3.0f, 7.0f);

    std::vector<ShaderRectDescription> shaded;
    for (const char* name : { "Ellipse", "RoundedRectangle", "ShadowLR", "ShadowTB", "ShadowC" }) {
        for (const Qv::Rectangle<float>& rect : std::initializer_list<Qv::Rectangle<float>> {
                 { -4, -4, 70, 70 }, { 70, 70, -4, -4 }, { -50000, 20, 50000, 100020 }, { 20, 20, 20, 40 },
                 { 10.3f, 10.7f, 30.2f, 50.9f }, { nan, 0, 10, 10 }, { -inf, -inf, inf, inf }, { 1e9f, 0, 2e9f, 64 } }) {
            for (const float value : { nan, inf, -inf, -1.0f, 0.0f, 1e30f }) {
                ShaderRectDescription one = shader_over(name, rect);
                for (const char* param : { "Thickness", "Softness", "Radius", "Aspect", "OriginX", "OriginY" })
                    one.addParam(param, value);
                one.addParam("LineColour", wild);
                one.addParam("FillColour", wild);
                one.addParam("Colour", wild);
                shaded.push_back(one);
            }
            shaded.push_back(shader_over(name, rect));   // no parameters at all
        }
    }
    renderer->drawShaderRects(shaded.data(), unsigned(shaded.size()));

    ASSERT_EQ(changed_outside(*image, clip_rects, 4, CLEAR), 0);
    EXPECT_NE(image->pixelAt(8, 32), CLEAR);   // the effects did reach the clip

    // Shapes thinner than a float can measure leave a valid premultiplied pixel.
    renderer->setClip(nullptr);
    std::vector<ShaderRectDescription> thin;
    for (const char* name : { "Ellipse", "RoundedRectangle", "ShadowC" }) {
        thin.push_back(shader_over(name, { 0.0f, 0.0f, 1e-30f, 1e-30f }));
        thin.back().addParam("Softness", 1e-30f);
    }
    renderer->drawShaderRects(thin.data(), unsigned(thin.size()));
    const std::uint32_t corner = image->pixelAt(0, 0);
    for (const int shift : { 0, 8, 16 })
        EXPECT_LE(corner >> shift & 255, alpha(corner)) << std::hex << corner;
}
