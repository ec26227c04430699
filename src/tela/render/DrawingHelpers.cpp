// DrawingHelpers.cpp: composite shapes out of the renderer's plain primitives.
//
// Invariants
// - Every piece goes through CanvasRenderer::render, which clips, draws and
//   records damage; nothing here talks to the platform's renderer.
// - Coordinates are worked out in 64 bits and wrap to 32 when a piece is made,
//   so a box near the ends of an int gives wrapped pieces, never an overflow.
// - Pieces are issued in a fixed order, later ones over earlier ones: where
//   the pieces of a corner overlap, the last colour is the one that shows.

#include "tela/render/DrawingHelpers.h"

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/render/CanvasRenderer.h"
#include "tela/render/Descriptions.h"
#include "tela/render/Wrap_private.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr unsigned TOP_LEFT = 1;
constexpr unsigned TOP_RIGHT = 2;
constexpr unsigned BOTTOM_LEFT = 4;
constexpr unsigned BOTTOM_RIGHT = 8;
constexpr unsigned ALL_CORNERS = 15;

// A box's edges, widened so that sums on them cannot overflow.
struct Edges {
    explicit Edges(const Qv::Box<int>& box) : x1(box.x1), y1(box.y1), x2(box.x2), y2(box.y2) {}
    long long x1;
    long long y1;
    long long x2;
    long long y2;
};

Qv::Box<int> box_of(long long x1, long long y1, long long x2, long long y2)
{
    return {render_wrap::wrap(x1), render_wrap::wrap(y1), render_wrap::wrap(x2), render_wrap::wrap(y2)};
}

void fill(CanvasRenderer& renderer, const Colour& colour, long long x1, long long y1, long long x2, long long y2)
{
    renderer.render(Tela::RectDescription(box_of(x1, y1, x2, y2), colour));
}

// The three pixels of a hand-stepped corner are cut from the side of a
// rounded corner, and not at all from a square one.
long long in_by(unsigned corners, unsigned corner, long long step)
{
    return (corners & corner) ? step : 0;
}

// The two edge colours of a rounded outline: A for left and top, B for right
// and bottom.
struct Shading {
    Colour a;
    Colour b;
};

Shading shading_for(const Colour& colour, int style)
{
    switch (style) {
    case 0:
        return {scale(colour, 1.4), scale(colour, 0.6)};
    case 1:
        return {scale(colour, 0.6), scale(colour, 1.4)};
    case 2:
        return {colour, colour};
    default:
        // An unknown style is not refused: its edges come out in default colours.
        return {};
    }
}

void draw_outline_ring(CanvasRenderer& renderer, const Colour& colour, const Shading& shade, unsigned c,
                       long long l, long long b, long long r, long long t)
{
    fill(renderer, shade.a, l, b + in_by(c, BOTTOM_LEFT, 3), l + 1, t - in_by(c, TOP_LEFT, 3));
    fill(renderer, shade.b, r - 1, b + in_by(c, BOTTOM_RIGHT, 3), r, t - in_by(c, TOP_RIGHT, 3));
    fill(renderer, shade.b, l + in_by(c, BOTTOM_LEFT, 3), b, r - in_by(c, BOTTOM_RIGHT, 3), b + 1);
    fill(renderer, shade.a, l + in_by(c, TOP_LEFT, 3), t - 1, r - in_by(c, TOP_RIGHT, 3), t);
    // The steps of each corner, two pixels on each of its edges. The corners
    // between a lit and a shaded edge take the plain colour.
    if (c & TOP_LEFT) {
        fill(renderer, shade.a, l + 1, t - 2, l + 4, t - 1);
        fill(renderer, shade.a, l + 1, t - 4, l + 2, t - 1);
    }
    if (c & TOP_RIGHT) {
        fill(renderer, colour, r - 4, t - 2, r - 1, t - 1);
        fill(renderer, colour, r - 2, t - 4, r - 1, t - 1);
    }
    if (c & BOTTOM_LEFT) {
        fill(renderer, colour, l + 1, b + 1, l + 2, b + 4);
        fill(renderer, colour, l + 1, b + 1, l + 4, b + 2);
    }
    if (c & BOTTOM_RIGHT) {
        fill(renderer, shade.b, r - 4, b + 1, r - 1, b + 2);
        fill(renderer, shade.b, r - 2, b + 1, r - 1, b + 4);
    }
}

// The quarter ellipses of a squircle, in the order top left, top right,
// bottom right, bottom left. `reach` is called for each corner drawn, so the
// caller can pull its rectangles back from it.
template <typename Reach>
void draw_squircle_corners(CanvasRenderer& renderer, Tela::EllipseDescription ellipse, const Edges& e,
                           long long radius, unsigned corners, Reach reach)
{
    const long long d = 2 * radius;
    struct Corner {
        unsigned bit;
        std::uint16_t start_angle;
        std::uint16_t end_angle;
        Qv::Box<int> box;
    };
    // The bottom right corner's lower edge is x1, not y1: kept so, since shapes
    // drawn on boxes whose x1 and y1 agree have always looked right with it.
    const Corner quarters[] = {
        {TOP_LEFT, 180, 270, box_of(e.x1, e.y2 - d, e.x1 + d, e.y2)},
        {TOP_RIGHT, 270, 360, box_of(e.x2 - d, e.y2 - d, e.x2, e.y2)},
        {BOTTOM_RIGHT, 0, 90, box_of(e.x2 - d, e.x1, e.x2, e.y1 + d)},
        {BOTTOM_LEFT, 90, 180, box_of(e.x1, e.y1, e.x1 + d, e.y1 + d)},
    };
    for (const Corner& quarter : quarters) {
        if (!(corners & quarter.bit))
            continue;
        ellipse.box = quarter.box;
        ellipse.startAngle = quarter.start_angle;
        ellipse.endAngle = quarter.end_angle;
        renderer.render(ellipse);
        reach(quarter.bit);
    }
}

// The canvas rows [low, high) that can land in the draw canvas's pixels and
// its clip region; a row outside cannot show. One row of margin each side
// keeps the bound loose: the render guard and the renderer do the exact clip.
void visible_rows(const CanvasRenderer& renderer, long long& low, long long& high)
{
    long long top = 0;
    long long bottom = renderer.drawCanvas ? renderer.drawCanvas->getHeight() : 0;
    if (renderer.clipRegion) {
        Qv::Box<int> clip;
        renderer.clipRegion->getBox(clip);
        top = std::max<long long>(top, clip.y1);
        bottom = std::min<long long>(bottom, clip.y2);
    }
    const long long origin_y = renderer.origin.y;
    if (renderer.coordinateSystem == Tela::eBottomUp) {
        low = origin_y - bottom;
        high = origin_y - top;
    } else {
        low = top - origin_y;
        high = bottom - origin_y;
    }
    --low;
    ++high;
}

Canvas* current_canvas()
{
    return tela_currentcanvas();
}

} // namespace

namespace Tela {

void drawRect(CanvasRenderer& renderer, const Colour& colour, const Qv::Box<int>& box)
{
    renderer.render(RectDescription(box, colour));
}

void drawOutlinedRect(CanvasRenderer& renderer, const Colour& line, const Colour& fill, const Qv::Box<int>& box)
{
    drawRect(renderer, fill, box);
    drawFrame(renderer, line, box, 1);
}

void drawFrame(CanvasRenderer& renderer, const Colour& colour, const Qv::Box<int>& box, std::uint16_t width)
{
    const Edges e(box);
    const long long w = width;
    fill(renderer, colour, e.x1, e.y1, e.x1 + w, e.y2);
    fill(renderer, colour, e.x2 - w, e.y1, e.x2, e.y2);
    fill(renderer, colour, e.x1, e.y1, e.x2, e.y1 + w);
    fill(renderer, colour, e.x1, e.y2 - w, e.x2, e.y2);
}

void drawDepthBox(CanvasRenderer& renderer, const Colour& colour, const Qv::Box<int>& box, int sunken, int width)
{
    const Colour lit = scale(colour, sunken ? 0.7 : 1.3);
    const Colour shaded = scale(colour, sunken ? 1.3 : 0.7);
    const Edges e(box);
    const long long w = width;
    fill(renderer, lit, e.x1, e.y1, e.x1 + w, e.y2);
    fill(renderer, lit, e.x1, e.y2 - w, e.x2, e.y2);
    fill(renderer, shaded, e.x1, e.y1, e.x2, e.y1 + w);
    fill(renderer, shaded, e.x2 - w, e.y1, e.x2, e.y2);
}

void drawFocusRect(CanvasRenderer& renderer, const Qv::Box<int>& box, const Colour& colour)
{
    const Edges e(box);
    const XY<double> corners[] = {
        {double(e.x1), double(e.y1)},
        {double(e.x1), double(e.y2 - 1)},
        {double(e.x2 - 1), double(e.y2 - 1)},
        {double(e.x2 - 1), double(e.y1)},
    };
    LineDescription line;
    line.colour = fromColour(colour);
    line.secondColour = NormalisedRGB(0.0f, 0.0f, 0.0f, 1.0f);
    line.patterned = true;
    line.pattern = 1;
    line.thickness = 1;
    for (std::size_t index = 0; index < 4; ++index) {
        line.start = corners[index];
        line.end = corners[(index + 1) % 4];
        renderer.render(line);
    }
}

void drawFocusRect(Canvas* canvas, const Qv::Box<int>& box, const Colour& colour)
{
    if (!canvas)
        return;
    CanvasRenderer renderer(canvas, Qv::Box<int>{});
    drawFocusRect(renderer, box, colour);
}

void drawIndentBox(CanvasRenderer& renderer, const Colour& colour, const Qv::Box<int>& box)
{
    drawRoundedRect(renderer, scale(colour, 0.8), getIndentBoxColour(colour), box, 2, ALL_CORNERS, 1);
}

void drawRoundedRect(CanvasRenderer& renderer, const Colour& line, const Colour& fill, const Qv::Box<int>& box,
                     int style, unsigned corners, std::uint16_t thickness)
{
    drawRoundedRectOutline(renderer, line, box, style, corners, thickness);
    const Edges e(box);
    const long long t = thickness;
    drawRoundedRectFilled(renderer, fill, box_of(e.x1 + t, e.y1 + t, e.x2 - t, e.y2 - t), corners);
}

void drawRoundedRectFilled(CanvasRenderer& renderer, const Colour& colour, const Qv::Box<int>& box, unsigned c)
{
    const Edges e(box);
    fill(renderer, colour, e.x1 + in_by(c, BOTTOM_LEFT, 3), e.y1, e.x2 - in_by(c, BOTTOM_RIGHT, 3), e.y1 + 1);
    fill(renderer, colour, e.x1 + in_by(c, BOTTOM_LEFT, 1), e.y1 + 1, e.x2 - in_by(c, BOTTOM_RIGHT, 1), e.y1 + 3);
    fill(renderer, colour, e.x1 + in_by(c, TOP_LEFT, 3), e.y2 - 1, e.x2 - in_by(c, TOP_RIGHT, 3), e.y2);
    fill(renderer, colour, e.x1 + in_by(c, TOP_LEFT, 1), e.y2 - 3, e.x2 - in_by(c, TOP_RIGHT, 1), e.y2 - 1);
    fill(renderer, colour, e.x1, e.y1 + 3, e.x2, e.y2 - 3);
}

void drawRoundedRectOutline(CanvasRenderer& renderer, const Colour& colour, const Qv::Box<int>& box, int style,
                            unsigned corners, std::uint16_t thickness)
{
    const Shading shade = shading_for(colour, style);
    const Edges e(box);
    for (long long ring = 0; ring < thickness; ++ring)
        draw_outline_ring(renderer, colour, shade, corners, e.x1 + ring, e.y1 + ring, e.x2 - ring, e.y2 - ring);
}

void drawSquircleFilled(CanvasRenderer& renderer, const Qv::Box<int>& box, const Colour& colour,
                        std::uint16_t radius, unsigned corners)
{
    const Edges e(box);
    const long long r = radius;
    Edges top(box);
    top.y1 = e.y2 - r;
    Edges bottom(box);
    bottom.y2 = e.y1 + r;

    EllipseDescription ellipse;
    ellipse.fillColour = fromColour(colour);
    ellipse.lineColour = NormalisedRGB(0.0f, 0.0f, 0.0f, 1.0f);
    ellipse.style = EllipseDescription::eFilled;
    ellipse.thickness = 1;
    draw_squircle_corners(renderer, ellipse, e, r, corners, [&](unsigned corner) {
        switch (corner) {
        case TOP_LEFT: top.x1 = e.x1 + r; break;
        case TOP_RIGHT: top.x2 = e.x2 - r; break;
        case BOTTOM_RIGHT: bottom.x2 = e.x2 - r; break;
        case BOTTOM_LEFT: bottom.x1 = e.x1 + r; break;
        }
    });
    // Laid over what is below, so that a translucent squircle blends.
    const NormalisedRGB blended = fromColour(colour);
    renderer.render(RectDescription(box_of(top.x1, top.y1, top.x2, top.y2), blended));
    renderer.render(RectDescription(box_of(e.x1, e.y1 + r, e.x2, e.y2 - r), blended));
    renderer.render(RectDescription(box_of(bottom.x1, bottom.y1, bottom.x2, bottom.y2), blended));
}

void drawSquircleOutlined(CanvasRenderer& renderer, const Qv::Box<int>& box, const Colour& colour,
                          std::uint16_t radius, unsigned corners, std::uint16_t thickness)
{
    const Edges e(box);
    const long long r = radius;
    const long long t = thickness;
    Edges left(box);
    left.x2 = e.x1 + t;
    Edges right(box);
    right.x1 = e.x2 - t;
    Edges top(box);
    top.y1 = e.y2 - t;
    Edges bottom(box);
    bottom.y2 = e.y1 + t;

    EllipseDescription ellipse;
    ellipse.fillColour = NormalisedRGB(0.0f, 0.0f, 0.0f, 1.0f);
    ellipse.lineColour = fromColour(colour);
    ellipse.style = EllipseDescription::eOutline;
    ellipse.thickness = 1;
    draw_squircle_corners(renderer, ellipse, e, r, corners, [&](unsigned corner) {
        switch (corner) {
        case TOP_LEFT:
            left.y2 = e.y2 - r;
            top.x1 = e.x1 + r;
            break;
        case TOP_RIGHT:
            right.y2 = e.y2 - r;
            top.x2 = e.x2 - r;
            break;
        case BOTTOM_RIGHT:
            right.y1 = e.y1 + r;
            bottom.x2 = e.x2 - r;
            break;
        case BOTTOM_LEFT:
            left.y1 = e.y1 + r;
            bottom.x1 = e.x1 + r;
            break;
        }
    });
    for (const Edges* side : {&left, &right, &top, &bottom})
        fill(renderer, colour, side->x1, side->y1, side->x2, side->y2);
}

void drawVertGradRect(CanvasRenderer& renderer, const Qv::Box<int>& box, const Colour& top, const Colour& bottom)
{
    const Edges e(box);
    const long long height = e.y2 >= e.y1 ? e.y2 - e.y1 : e.y1 - e.y2;
    if (height < 1 || !renderer.valid)
        return;
    const double h = static_cast<double>(height);
    const Colour step((double(top.r) - bottom.r) / h, (double(top.g) - bottom.g) / h, (double(top.b) - bottom.b) / h,
                      top.bypassGamma());
    Colour working(top);
    const auto take_steps = [&](double count) {
        const float alpha = working.a;
        working.setrgb(working.r - count * step.r, working.g - count * step.g, working.b - count * step.b,
                       working.bypassGamma());
        working.a = alpha;
    };

    // Rows run down from y2 - 1; those that cannot show are passed over, the
    // ones above the visible band in one jump of the colour, so that a box
    // far taller than the canvas costs no more than one that fits.
    long long visible_low = 0;
    long long visible_high = 0;
    visible_rows(renderer, visible_low, visible_high);
    long long row = e.y2 - 1;
    long long rows_left = height;
    if (row >= visible_high) {
        const long long skipped = std::min(rows_left, row - visible_high + 1);
        take_steps(static_cast<double>(skipped));
        row -= skipped;
        rows_left -= skipped;
    }
    for (; rows_left > 0 && row >= visible_low; --rows_left, --row) {
        take_steps(1.0);
        fill(renderer, working, e.x1, row, e.x2, row + 1);
    }
}

void drawVertGradRect(Canvas* canvas, const Qv::Box<int>& box, const Colour& top, const Colour& bottom)
{
    if (!canvas)
        return;
    CanvasRenderer renderer(canvas, Qv::Box<int>{});
    drawVertGradRect(renderer, box, top, bottom);
}

} // namespace Tela

void drawFrame(const Colour& colour, const Qv::Box<int>& box, std::uint16_t width)
{
    Canvas* canvas = current_canvas();
    if (!canvas)
        return;
    CanvasRenderer renderer(canvas, Qv::Box<int>{});
    Tela::drawFrame(renderer, colour, box, width);
}

void depthBox(const Colour& colour, const Qv::Box<int>& box, int sunken, int width)
{
    Canvas* canvas = current_canvas();
    if (!canvas)
        return;
    CanvasRenderer renderer(canvas, Qv::Box<int>{});
    Tela::drawDepthBox(renderer, colour, box, sunken, width);
}

void depthBox(const Colour& colour, const Qv::Box<int>& box, int sunken, int width, CanvasRenderer& renderer)
{
    Tela::drawDepthBox(renderer, colour, box, sunken, width);
}

void indent_box(Colour colour, int x1, int y1, int x2, int y2)
{
    tela_roundedRect(scale(colour, 0.8), getIndentBoxColour(colour), Qv::Box<int>{x1, y1, x2, y2}, 2, nullptr,
                     ALL_CORNERS);
}

Colour getIndentBoxColour(const Colour& colour)
{
    return scale(colour, 0.9);
}

void tela_roundedRect(const Colour& line, const Colour& fill, const Qv::Box<int>& box, int style,
                      const Qv::Box<int>* clip, unsigned corners)
{
    Canvas* canvas = current_canvas();
    if (!canvas || !canvas_is_mapped_to_root(canvas))
        return;
    CanvasRenderer renderer(canvas, clip ? *clip : Qv::Box<int>{});
    Tela::drawRoundedRect(renderer, line, fill, box, style, corners, 1);
}

void tela_roundedRectOutline(const Colour& colour, const Qv::Box<int>& box, int style, const Qv::Box<int>* clip,
                             unsigned corners)
{
    Canvas* canvas = current_canvas();
    if (!canvas || !canvas_is_mapped_to_root(canvas))
        return;
    CanvasRenderer renderer(canvas, clip ? *clip : Qv::Box<int>{});
    Tela::drawRoundedRectOutline(renderer, colour, box, style, corners, 1);
}
