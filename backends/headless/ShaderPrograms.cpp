// ShaderPrograms.cpp
//
// [SECTION] Names
// [SECTION] Reading the parameters
// [SECTION] The programs: one row of coverage each
// [SECTION] Rows to pixels, tiles to the target
// [SECTION] Running a rectangle
#include "headless/ShaderPrograms.h"

#include "tela/core/Memory.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

// [SECTION] Names

Headless::ShaderProgram Headless::shaderProgram(const String& name)
{
    static constexpr struct {
        const char* name;
        ShaderProgram program;
    } PROGRAMS[] = {
        { "InFront", ShaderProgram::InFront },   { "ShadowLR", ShaderProgram::ShadowLR },
        { "ShadowTB", ShaderProgram::ShadowTB }, { "ShadowC", ShaderProgram::ShadowC },
        { "RoundedRectangle", ShaderProgram::RoundedRectangle }, { "Ellipse", ShaderProgram::Ellipse },
    };
    for (const auto& known : PROGRAMS) {
        if (name == known.name)
            return known.program;
    }
    return ShaderProgram::Unknown;
}

// [SECTION] Reading the parameters

namespace {

// Far beyond any surface, and well inside int and float's whole numbers once rounded.
constexpr double MAX_COORDINATE = 1.0e7;
// Pixels of one tile: 64 KiB of ARGB, which stays in the cache between being
// written here and read by pixman.
constexpr int TILE_PIXELS = 16384;
// The narrowest and widest edge ramps, in pixels: below the one an edge is as hard as
// a float can tell, above the other the shape is a blur of nothing.
constexpr float MIN_SOFTNESS = 1.0f / 64.0f;
constexpr float MAX_SOFTNESS = 1.0e6f;

float unit_interval(float value)
{
    if (!(value > 0.0f))   // also catches NaN
        return 0.0f;
    return value < 1.0f ? value : 1.0f;
}

// A colour ready to be scaled by coverage: premultiplied, in bytes, still as floats.
struct Ink {
    float r = 0.0f, g = 0.0f, b = 0.0f, a = 0.0f;

    bool isVisible() const { return a > 0.0f; }
};

Ink ink_of(const NormalisedRGB& colour)
{
    const float alpha = unit_interval(colour.a);
    const float scale = alpha * 255.0f;
    return { unit_interval(colour.r) * scale, unit_interval(colour.g) * scale, unit_interval(colour.b) * scale,
             scale };
}

// "LineColour" and "FillColour"; a missing line is opaque black and a missing fill
// the line's colour, so that a lone colour paints a solid shape.
void inks_of(const ShaderRectDescription& shaded, Ink& line, Ink& fill)
{
    const NormalisedRGB line_colour = shaded.colourParam("LineColour", NormalisedRGB(0.0f, 0.0f, 0.0f, 1.0f));
    line = ink_of(line_colour);
    fill = ink_of(shaded.colourParam("FillColour", line_colour));
}

// "Softness" in units of half the height, as pixels of edge ramp; one pixel when it is
// missing or not a number.
float softness_of(const ShaderRectDescription& shaded, float half_height)
{
    const float softness = shaded.floatParam("Softness", std::nanf("")) * half_height;
    if (std::isnan(softness))
        return 1.0f;
    return std::clamp(softness, MIN_SOFTNESS, MAX_SOFTNESS);
}

// A width in pixels from a parameter that measures it in `unit` pixels: NaN, negative
// and missing are nothing, infinite is as wide as any surface.
float width_of(const ShaderRectDescription& shaded, const char* name, float unit)
{
    const float value = shaded.floatParam(name, 0.0f) * unit;
    if (!(value > 0.0f))   // also catches NaN
        return 0.0f;
    return std::min(value, static_cast<float>(MAX_COORDINATE));
}

// Where a rectangle lands, in target pixels, its corners in order.
struct Frame {
    double left, top, right, bottom;

    float width() const { return static_cast<float>(right - left); }
    float height() const { return static_cast<float>(bottom - top); }
};

// The share of pixel `pixel` (its span pixel..pixel+1) that lies between low and high.
float share_of(int pixel, double low, double high)
{
    return static_cast<float>(std::clamp(std::min(high, pixel + 1.0) - std::max(low, static_cast<double>(pixel)), 0.0, 1.0));
}

// [SECTION] The programs: one row of coverage each
//
// Each program fills, for one row of pixel centres, `first` with the share of its first
// ink and, when it has two inks, `second` with that of its second; the two shares never
// add up to more than one. Coordinates are pixel centres relative to the frame's top
// left corner: y for the row, xs[i] for each column.

float edge_cover(float distance, float inverse_softness)
{
    // A ramp centred on the edge: as much of it falls outside as inside, so the shape
    // keeps its area whatever the softness. A distance that is not a number (a shape
    // too thin for floats) covers nothing.
    const float cover = 0.5f - distance * inverse_softness;
    return cover > 0.0f ? std::min(cover, 1.0f) : 0.0f;
}

struct EllipseShape {
    float inverse_a2 = 0.0f, inverse_b2 = 0.0f;   // 1 / semi-axis squared
    float deep = 0.0f;                            // the distance at the centre: minus the smaller semi-axis
};

EllipseShape ellipse_shape(float semi_x, float semi_y)
{
    return { 1.0f / (semi_x * semi_x), 1.0f / (semi_y * semi_y), -std::min(semi_x, semi_y) };
}

// Signed distance in pixels from the ellipse's curve, negative inside: the level
// sqrt(x²/a² + y²/b²) - 1 over the length of its gradient. Exact for a circle and on the
// curve, close near it, which is all the edge ramps look at.
float ellipse_distance(float dx, float dy, const EllipseShape& shape)
{
    const float gx = dx * shape.inverse_a2, gy = dy * shape.inverse_b2;
    const float level = std::sqrt(dx * gx + dy * gy);
    const float slope = std::sqrt(gx * gx + gy * gy);
    // Both sides are computed and one is picked, so the loop stays free of branches.
    const float distance = (level - 1.0f) * level / std::max(slope, 1.0e-30f);
    return slope > 0.0f ? distance : shape.deep;
}

struct EllipseProgram {
    static constexpr bool TWO_INKS = true;   // line, then fill

    float centre_x, centre_y;
    EllipseShape outer, inner;
    bool has_inner;   // false when the outline reaches the centre
    float inverse_softness;

    void row(float y, const float* xs, int count, float* first, float* second) const
    {
        const float dy = y - centre_y;
        if (!has_inner) {
            for (int i = 0; i < count; ++i) {
                first[i] = edge_cover(ellipse_distance(xs[i] - centre_x, dy, outer), inverse_softness);
                second[i] = 0.0f;
            }
            return;
        }
        for (int i = 0; i < count; ++i) {
            const float dx = xs[i] - centre_x;
            const float all = edge_cover(ellipse_distance(dx, dy, outer), inverse_softness);
            const float inside = std::min(edge_cover(ellipse_distance(dx, dy, inner), inverse_softness), all);
            first[i] = all - inside;
            second[i] = inside;
        }
    }
};

struct RoundedShape {
    float half_x = 0.0f, half_y = 0.0f, radius = 0.0f;
};

// Signed distance from the outline of a rounded rectangle centred on the origin, for
// a point (x, y) with x, y >= 0: the corner's circle where the point is past both
// straight sides' ends, the nearer side elsewhere.
float rounded_distance(float x, float y, const RoundedShape& shape)
{
    const float qx = x - (shape.half_x - shape.radius), qy = y - (shape.half_y - shape.radius);
    const float mx = std::max(qx, 0.0f), my = std::max(qy, 0.0f);
    return std::sqrt(mx * mx + my * my) + std::min(std::max(qx, qy), 0.0f) - shape.radius;
}

struct RoundedRectangleProgram {
    static constexpr bool TWO_INKS = true;   // line, then fill

    float centre_x, centre_y;
    float stretch;   // shader units per pixel across: "Aspect" heights over the frame's width
    RoundedShape outer, inner;
    bool has_inner;
    float inverse_softness;

    void row(float y, const float* xs, int count, float* first, float* second) const
    {
        const float dy = std::fabs(y - centre_y);
        if (!has_inner) {
            for (int i = 0; i < count; ++i) {
                const float dx = std::fabs(xs[i] - centre_x) * stretch;
                first[i] = edge_cover(rounded_distance(dx, dy, outer), inverse_softness);
                second[i] = 0.0f;
            }
            return;
        }
        for (int i = 0; i < count; ++i) {
            const float dx = std::fabs(xs[i] - centre_x) * stretch;
            const float all = edge_cover(rounded_distance(dx, dy, outer), inverse_softness);
            const float inside = std::min(edge_cover(rounded_distance(dx, dy, inner), inverse_softness), all);
            first[i] = all - inside;
            second[i] = inside;
        }
    }
};

// Full at 0, nothing from 1 on. Steepest by the canvas's edge and flat where it
// ends, as light spreading past an edge falls off, so the shadow has no outer rim;
// continuous with its slope, so a band and its corner meet without a crease.
float fade(float distance)
{
    const float rest = 1.0f - (distance < 1.0f ? distance : 1.0f);   // NaN is far away
    return rest * rest;
}

// One program for the three shadows: the side bands look only across (x), the top and
// bottom bands only down (y), the corners at both.
struct ShadowProgram {
    static constexpr bool TWO_INKS = false;

    bool across, down;
    float inverse_width, inverse_height;   // distances are fractions of the frame
    float origin_x, origin_y;

    void row(float y, const float* xs, int count, float* first, float*) const
    {
        const float v = down ? y * inverse_height - origin_y : 0.0f;
        if (!across) {
            const float value = fade(std::fabs(v));
            for (int i = 0; i < count; ++i)
                first[i] = value;
            return;
        }
        const float v2 = v * v;
        for (int i = 0; i < count; ++i) {
            const float u = xs[i] * inverse_width - origin_x;
            first[i] = fade(std::sqrt(u * u + v2));
        }
    }
};

// [SECTION] Rows to pixels, tiles to the target

// The premultiplied pixel of `first` shares of one ink and `second` of another.
std::uint32_t pixel_of(const Ink& one, const Ink& two, float first, float second)
{
    const auto byte = [](float value) {
        return static_cast<std::uint32_t>(static_cast<std::int32_t>(std::min(value, 255.0f) + 0.5f));
    };
    return byte(one.a * first + two.a * second) << 24 | byte(one.r * first + two.r * second) << 16
        | byte(one.g * first + two.g * second) << 8 | byte(one.b * first + two.b * second);
}

// The working rows of one rectangle, carved from the scratch block.
struct Rows {
    float* xs;             // pixel centres across, relative to the frame
    float* column_share;   // how much of each column the frame covers
    float* first;
    float* second;
    std::uint32_t* tile;   // tile_rows rows of width pixels
    int width;
    int tile_rows;
};

// Computes `area` (target pixels, inside the frame's reach) row by row and lays each
// full tile over the target.
template <typename Program>
void lay_over(const Program& program, const Ink& one, const Ink& two, const Frame& frame, const TopDownRect& area,
              const Rows& rows, pixman_image_t* target)
{
    pixman_image_t* const source
        = pixman_image_create_bits(PIXMAN_a8r8g8b8, rows.width, rows.tile_rows, rows.tile, rows.width * 4);
    if (!source)
        return;
    for (int i = 0; i < rows.width; ++i) {
        const int column = area.left + i;
        rows.xs[i] = static_cast<float>(column + 0.5 - frame.left);
        rows.column_share[i] = share_of(column, frame.left, frame.right);
    }
    for (int tile_top = area.top; tile_top < area.bottom; tile_top += rows.tile_rows) {
        const int tile_bottom = std::min(tile_top + rows.tile_rows, area.bottom);
        for (int row = tile_top; row < tile_bottom; ++row) {
            program.row(static_cast<float>(row + 0.5 - frame.top), rows.xs, rows.width, rows.first, rows.second);
            const float row_share = share_of(row, frame.top, frame.bottom);
            std::uint32_t* const out = rows.tile + static_cast<std::size_t>(row - tile_top) * rows.width;
            for (int i = 0; i < rows.width; ++i) {
                const float share = rows.column_share[i] * row_share;
                const float second = Program::TWO_INKS ? rows.second[i] * share : 0.0f;
                out[i] = pixel_of(one, two, rows.first[i] * share, second);
            }
        }
        pixman_image_composite32(PIXMAN_OP_OVER, source, nullptr, target, 0, 0, 0, 0, area.left, tile_top,
                                 rows.width, tile_bottom - tile_top);
    }
    pixman_image_unref(source);
}

// The ellipse of "Ellipse"; false when nothing would show.
bool ellipse_program(const ShaderRectDescription& shaded, const Frame& frame, EllipseProgram& program, Ink& line,
                     Ink& fill)
{
    const float semi_x = frame.width() / 2.0f, semi_y = frame.height() / 2.0f;
    inks_of(shaded, line, fill);
    const float thickness = width_of(shaded, "Thickness", semi_y);
    const float softness = softness_of(shaded, semi_y);
    program.centre_x = semi_x;
    program.centre_y = semi_y;
    program.outer = ellipse_shape(semi_x, semi_y);
    program.has_inner = semi_x - thickness > 0.0f && semi_y - thickness > 0.0f;
    if (program.has_inner)
        program.inner = ellipse_shape(semi_x - thickness, semi_y - thickness);
    program.inverse_softness = 1.0f / softness;
    return (line.isVisible() && thickness > 0.0f) || (fill.isVisible() && program.has_inner);
}

bool rounded_rectangle_program(const ShaderRectDescription& shaded, const Frame& frame,
                               RoundedRectangleProgram& program, Ink& line, Ink& fill)
{
    const float width = frame.width(), height = frame.height();
    inks_of(shaded, line, fill);
    float aspect = shaded.floatParam("Aspect", width / height);
    if (!(aspect > 1.0e-6f && aspect < 1.0e6f))   // also catches NaN
        aspect = width / height;
    const float half_x = aspect * height / 2.0f, half_y = height / 2.0f;
    const float radius = std::min(width_of(shaded, "Radius", height), std::min(half_x, half_y));
    // A fraction of the radius. Without a radius that fraction says nothing (the library
    // sends infinity), and an outline asked for is one pixel.
    const float thickness = radius > 0.0f ? width_of(shaded, "Thickness", radius)
                                          : std::min(width_of(shaded, "Thickness", 1.0f), 1.0f);
    program.centre_x = width / 2.0f;
    program.centre_y = half_y;
    program.stretch = aspect * height / width;
    program.outer = { half_x, half_y, radius };
    program.has_inner = half_x - thickness > 0.0f && half_y - thickness > 0.0f;
    program.inner = { half_x - thickness, half_y - thickness, std::max(radius - thickness, 0.0f) };
    program.inverse_softness = 1.0f / softness_of(shaded, half_y);
    return (line.isVisible() && thickness > 0.0f) || (fill.isVisible() && program.has_inner);
}

bool shadow_program(Headless::ShaderProgram which, const ShaderRectDescription& shaded, const Frame& frame,
                    ShadowProgram& program, Ink& colour)
{
    colour = ink_of(shaded.colourParam("Colour", NormalisedRGB(0.0f, 0.0f, 0.0f, 0.5f)));
    program.across = which != Headless::ShaderProgram::ShadowTB;
    program.down = which != Headless::ShaderProgram::ShadowLR;
    program.inverse_width = 1.0f / frame.width();
    program.inverse_height = 1.0f / frame.height();
    program.origin_x = unit_interval(shaded.floatParam("OriginX", 0.0f));
    program.origin_y = unit_interval(shaded.floatParam("OriginY", 0.0f));
    return colour.isVisible();
}

} // namespace

// [SECTION] Running a rectangle

Headless::ShaderPrograms::~ShaderPrograms()
{
    Qv::release(m_scratch);
}

void* Headless::ShaderPrograms::scratch(std::size_t bytes)
{
    if (bytes <= m_scratch_bytes)
        return m_scratch;
    Qv::release(m_scratch);
    m_scratch = Qv::allocate(bytes);
    m_scratch_bytes = m_scratch ? bytes : 0;
    return m_scratch;
}

void Headless::ShaderPrograms::run(ShaderProgram program, const ShaderRectDescription& shaded,
                                   pixman_image_t* target, const TopDownRect& reach)
{
    if (program == ShaderProgram::InFront || program == ShaderProgram::Unknown || !target)
        return;
    const Qv::Rectangle<float>& given = shaded.rect;
    for (const float value : { given.left, given.top, given.right, given.bottom }) {
        if (!(std::fabs(value) < MAX_COORDINATE))   // also catches NaN
            return;
    }
    const Frame frame { std::min(given.left, given.right), std::min(given.top, given.bottom),
                        std::max(given.left, given.right), std::max(given.top, given.bottom) };
    if (!(frame.width() > 0.0f && frame.height() > 0.0f))
        return;
    const TopDownRect area { std::max(static_cast<int>(std::floor(frame.left)), reach.left),
                             std::max(static_cast<int>(std::floor(frame.top)), reach.top),
                             std::min(static_cast<int>(std::ceil(frame.right)), reach.right),
                             std::min(static_cast<int>(std::ceil(frame.bottom)), reach.bottom) };
    if (area.isEmpty())
        return;

    const int width = area.width();
    const int tile_rows = std::clamp(TILE_PIXELS / width, 1, area.height());
    const std::size_t floats = static_cast<std::size_t>(width) * 4;
    const std::size_t pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(tile_rows);
    auto* const block = static_cast<float*>(scratch((floats + pixels) * 4));
    if (!block)
        return;
    const Rows rows { block,     block + width, block + 2 * static_cast<std::size_t>(width),
                      block + 3 * static_cast<std::size_t>(width), reinterpret_cast<std::uint32_t*>(block + floats),
                      width,     tile_rows };

    switch (program) {
    case ShaderProgram::Ellipse: {
        EllipseProgram ellipse {};
        Ink line, fill;
        if (ellipse_program(shaded, frame, ellipse, line, fill))
            lay_over(ellipse, line, fill, frame, area, rows, target);
        break;
    }
    case ShaderProgram::RoundedRectangle: {
        RoundedRectangleProgram rounded {};
        Ink line, fill;
        if (rounded_rectangle_program(shaded, frame, rounded, line, fill))
            lay_over(rounded, line, fill, frame, area, rows, target);
        break;
    }
    case ShaderProgram::ShadowLR:
    case ShaderProgram::ShadowTB:
    case ShaderProgram::ShadowC: {
        ShadowProgram shadow {};
        Ink colour;
        if (shadow_program(program, shaded, frame, shadow, colour))
            lay_over(shadow, colour, Ink {}, frame, area, rows, target);
        break;
    }
    case ShaderProgram::InFront:
    case ShaderProgram::Unknown:
        break;
    }
}
