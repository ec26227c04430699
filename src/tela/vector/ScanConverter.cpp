// ScanConverter.cpp: the current path into the edge collector, and out as a
// region.
//
// Invariants
// - The path's points are device coordinates until the walk starts; then
//   they are moved, in place, to the table's origin, cut to +-POINT_LIMIT,
//   and the path is emptied afterwards, since its points are spoilt.
// - A point that is not a number takes no part: it is left out of the box,
//   and every edge or curve that meets it is dropped (reported once a call).
// - The stroke state describes the current subpath only: `segmentEmitted`
//   is set by its first segment and cleared by the cap that ends it.
// - Flattening is by halving: a piece whose distance from its chord is
//   within the flatness becomes that chord. The depth is bounded, so a curve
//   of any size costs at most 2^MAX_DEPTH edges.

#include "tela/vector/ScanConverter.h"

#include "tela/canvas/Canvas.h"
#include "tela/canvas/PixelCopy.h"
#include "tela/core/Log.h"
#include "tela/vector/GraphicsState.h"
#include "tela/vector/Path.h"
#include "tela/vector/Path_private.h"
#include "tela/vector/Regions.h"
#include "tela/vector/ScanTable.h"

#include <algorithm>
#include <cmath>

namespace {

// Points further out than this are cut to it: well beyond any window, and
// small enough that the table's integer arithmetic cannot overflow.
constexpr double POINT_LIMIT = double(1 << 24);
constexpr int FILL_MARGIN = 1;
constexpr int STROKE_MARGIN = 151; // room for the reach of bevel joins
constexpr int MAX_DEPTH = 16;

struct Point {
    double x;
    double y;
};

struct StrokeState {
    bool stroke = false;
    bool segmentEmitted = false;
    Point firstLeft{0, 0};
    Point firstRight{0, 0};
    Point lastLeft{0, 0};
    Point lastRight{0, 0};
};

// The cubic being flattened, as d + c t + b t^2 + a t^3 on each axis.
struct Cubic {
    double ax, bx, cx, dx;
    double ay, by, cy, dy;
};

struct BoundingBox {
    double minX = 0, minY = 0, maxX = 0, maxY = 0;
    bool any = false;

    void add(double x, double y)
    {
        if (!any) {
            minX = maxX = x;
            minY = maxY = y;
            any = true;
            return;
        }
        minX = std::min(minX, x);
        maxX = std::max(maxX, x);
        minY = std::min(minY, y);
        maxY = std::max(maxY, y);
    }
};

StrokeState& stroke_state()
{
    static StrokeState s_stroke;
    return s_stroke;
}

Cubic& cubic()
{
    static Cubic s_cubic;
    return s_cubic;
}

bool is_point(double x, double y)
{
    return !std::isnan(x) && !std::isnan(y);
}

// Half away from zero, then truncation.
int round_half_away(double value)
{
    value = std::clamp(value, -POINT_LIMIT, POINT_LIMIT);
    return int(value > 0 ? value + 0.5 : value - 0.5);
}

// Four sides, alternately horizontal and vertical, closed on the first point.
bool is_axis_aligned_rectangle(const PathEntries& path)
{
    if (path.count < 5)
        return false;
    const std::uint8_t* code = path.codes;
    if (code[0] != PathCodes::MOVE || code[1] != PathCodes::LINE || code[2] != PathCodes::LINE ||
        code[3] != PathCodes::LINE)
        return false;
    const double* x = path.x;
    const double* y = path.y;
    const bool horizontal_first = y[0] == y[1] && x[1] == x[2] && y[2] == y[3] && x[3] == x[4];
    const bool vertical_first = x[0] == x[1] && y[1] == y[2] && x[2] == x[3] && y[3] == y[4];
    if (!horizontal_first && !vertical_first)
        return false;
    if (code[4] == PathCodes::CLOSE)
        return path.count == 5;
    if (code[4] != PathCodes::LINE || x[4] != x[0] || y[4] != y[0])
        return false;
    return path.count == 5 || (path.count == 6 && code[5] == PathCodes::CLOSE);
}

BoundingBox path_box(const PathEntries& path)
{
    BoundingBox box;
    for (int i = 0; i < path.count; ++i) {
        // A move with nothing after it marks no area.
        if (path.codes[i] == PathCodes::MOVE && i == path.count - 1)
            continue;
        if (is_point(path.x[i], path.y[i]))
            box.add(path.x[i], path.y[i]);
    }
    return box;
}

Qv::Ptr<iRegion> rectangle_region(Canvas* canvas, const PathEntries& path)
{
    const BoundingBox box = path_box(path);
    const int x1 = round_half_away(box.minX);
    const int x2 = round_half_away(box.maxX);
    const int y1 = round_half_away(scan_nudge(box.minY - 0.5));
    const int y2 = round_half_away(scan_nudge(box.maxY - 0.5));
    return region_mkrect(canvas, x1, y1, x2, y2);
}

// One straight piece of the outline: an edge of a fill, or the two sides and
// the join of a stroke.
void emit(double x0, double y0, double x1, double y1)
{
    StrokeState& s = stroke_state();
    if (!s.stroke) {
        scan_add_line(x0, y0, x1, y1);
        return;
    }
    if (!is_point(x0, y0) || !is_point(x1, y1))
        return;
    const double half = tela_currentlinewidth() * 0.5;
    const GStatePoint user = gstate_device_to_user_vector(x1 - x0, y1 - y0);
    const double length = std::hypot(user.x, user.y);
    if (length < 1e-6)
        return; // no direction, so no sides
    // The pen is round in user space: the width scales with the matrix.
    const GStatePoint offset = gstate_user_to_device_vector(-user.y * half / length, user.x * half / length);
    const double ox = offset.x;
    const double oy = offset.y;
    if (s.segmentEmitted) {
        // Bevel join: the outer corner is cut straight across.
        scan_add_line(s.lastLeft.x, s.lastLeft.y, x0 + ox, y0 + oy);
        scan_add_line(x0 - ox, y0 - oy, s.lastRight.x, s.lastRight.y);
    } else {
        s.firstLeft = {x0 + ox, y0 + oy};
        s.firstRight = {x0 - ox, y0 - oy};
        s.segmentEmitted = true;
    }
    scan_add_line(x0 + ox, y0 + oy, x1 + ox, y1 + oy);
    scan_add_line(x1 - ox, y1 - oy, x0 - ox, y0 - oy);
    s.lastLeft = {x1 + ox, y1 + oy};
    s.lastRight = {x1 - ox, y1 - oy};
}

// Ends a stroked subpath: joined round to its start when closed, cut square
// at both ends when open.
void stroke_cap(bool closed)
{
    StrokeState& s = stroke_state();
    if (!s.segmentEmitted)
        return;
    if (closed) {
        scan_add_line(s.lastLeft.x, s.lastLeft.y, s.firstLeft.x, s.firstLeft.y);
        scan_add_line(s.firstRight.x, s.firstRight.y, s.lastRight.x, s.lastRight.y);
    } else {
        scan_add_line(s.firstRight.x, s.firstRight.y, s.firstLeft.x, s.firstLeft.y);
        scan_add_line(s.lastLeft.x, s.lastLeft.y, s.lastRight.x, s.lastRight.y);
    }
    s.segmentEmitted = false;
}

Point cubic_at(double t)
{
    const Cubic& k = cubic();
    return {((k.ax * t + k.bx) * t + k.cx) * t + k.dx, ((k.ay * t + k.by) * t + k.cy) * t + k.dy};
}

// a and b are the cubic and quadratic coefficients over [t0, t1] alone.
void subdivide(double t0, double t1, Point start, Point end, double ax, double ay, double bx, double by,
               int depth, double flatness)
{
    for (;;) {
        // 0.3849 is the furthest a pure cubic term strays from its chord,
        // 0.25 a pure quadratic one: e bounds the distance of curve and chord.
        const double e = (std::fabs(ax) + std::fabs(ay)) * 0.3849 + (std::fabs(bx) + std::fabs(by)) * 0.25;
        if (flatness > e || depth >= MAX_DEPTH) {
            emit(start.x, start.y, end.x, end.y);
            return;
        }
        const double middle = (t0 + t1) * 0.5;
        const Point at_middle = cubic_at(middle);
        subdivide(t0, middle, start, at_middle, ax * 0.125, ay * 0.125, bx * 0.25, by * 0.25, depth + 1, flatness);
        // The second half in place of a second call.
        t0 = middle;
        start = at_middle;
        bx = bx * 0.25 + ax * 0.375;
        by = by * 0.25 + ay * 0.375;
        ax *= 0.125;
        ay *= 0.125;
        ++depth;
    }
}

void flatten_curve(Point p0, Point p1, Point p2, Point p3)
{
    Cubic& k = cubic();
    k.dx = p0.x;
    k.cx = 3 * (p1.x - p0.x);
    k.bx = 3 * (p0.x + p2.x - 2 * p1.x);
    k.ax = p3.x - 3 * p2.x + 3 * p1.x - p0.x;
    k.dy = p0.y;
    k.cy = 3 * (p1.y - p0.y);
    k.by = 3 * (p0.y + p2.y - 2 * p1.y);
    k.ay = p3.y - 3 * p2.y + 3 * p1.y - p0.y;
    subdivide(0.0, 1.0, p0, p3, k.ax, k.ay, k.bx, k.by, 0, tela_currentflatness());
}

// Every edge of the path into the table. Returns false when a point that is
// not a number was met.
bool scan_path_edges(const PathEntries& path)
{
    const StrokeState& s = stroke_state();
    bool all_points = true;
    bool begun = false;
    Point first{0, 0};
    Point previous{0, 0};
    const auto point = [&](int i) { return Point{path.x[i], path.y[i]}; };

    for (int i = 0; i < path.count; ++i) {
        const std::uint8_t code = path.codes[i];
        const Point here = point(i);
        all_points = all_points && is_point(here.x, here.y);
        if (code == PathCodes::MOVE || !begun) {
            // A path may open with a segment after "no current point": its
            // first point then starts the subpath.
            if (code == PathCodes::MOVE && begun && !s.stroke)
                emit(previous.x, previous.y, first.x, first.y); // every fill is closed
            if (code == PathCodes::MOVE)
                stroke_cap(false);
            first = previous = here;
            begun = true;
            if (code == PathCodes::MOVE)
                continue;
        }
        if (code == PathCodes::CURVE_CONTROL) {
            // A curve cut short by an overflow has lost its end: leave it out.
            if (i + 2 >= path.count || path.codes[i + 1] != PathCodes::CURVE_CONTROL ||
                path.codes[i + 2] != PathCodes::CURVE_END)
                break;
            const Point p1 = here, p2 = point(i + 1), p3 = point(i + 2);
            const bool curve_points = is_point(p1.x, p1.y) && is_point(p2.x, p2.y) && is_point(p3.x, p3.y);
            all_points = all_points && curve_points;
            if (curve_points && is_point(previous.x, previous.y))
                flatten_curve(previous, p1, p2, p3);
            previous = p3;
            i += 2;
            continue;
        }
        // Lines, closes, and a stray curve end, which can only be a line.
        emit(previous.x, previous.y, here.x, here.y);
        previous = here;
        if (code == PathCodes::CLOSE)
            stroke_cap(true);
    }
    if (begun && !s.stroke)
        emit(previous.x, previous.y, first.x, first.y);
    stroke_cap(false);
    return all_points;
}

// The path into the table, widened when asked. The reduction to even-odd
// form, when wanted, is left to the emission, which folds it into its pass:
// true when it is wanted.
bool scan_path(int stroke, int evenOdd, int flags)
{
    StrokeState& s = stroke_state();
    s.stroke = stroke != 0;
    s.segmentEmitted = false;
    const PathEntries path = path_entries();
    // Cut absurd points first, so that the box and the table stay in range.
    for (int i = 0; i < path.count; ++i) {
        path.x[i] = std::clamp(path.x[i], -POINT_LIMIT, POINT_LIMIT);
        path.y[i] = std::clamp(path.y[i], -POINT_LIMIT, POINT_LIMIT);
    }
    const BoundingBox box = path_box(path);
    if (!box.any) {
        scan_reset(); // nothing, or a lone move: no area
        if (std::any_of(path.x, path.x + path.count, [](double v) { return std::isnan(v); }) ||
            std::any_of(path.y, path.y + path.count, [](double v) { return std::isnan(v); }))
            tela_splat("path_to_region: points that are not numbers were left out, with their edges\n");
        return false;
    }
    const int margin = s.stroke ? STROKE_MARGIN : FILL_MARGIN;
    const int xmin = int(std::floor(box.minX)) - margin;
    const int ymin = int(std::floor(box.minY)) - margin;
    const int xmax = int(std::ceil(box.maxX)) + margin;
    const int ymax = int(std::ceil(box.maxY)) + margin;
    scan_begin(xmin, ymin, xmax, ymax);
    for (int i = 0; i < path.count; ++i) {
        path.x[i] -= xmin;
        path.y[i] -= ymin;
    }
    if (!scan_path_edges(path))
        tela_splat("path_to_region: points that are not numbers were left out, with their edges\n");
    scan_widen_all(flags);
    return stroke || evenOdd;
}

} // namespace

Qv::Ptr<iRegion> path_to_region(Canvas* canvas, int stroke, int evenOdd, int flags)
{
    const PathEntries path = path_entries();
    if (!stroke && is_axis_aligned_rectangle(path))
        return rectangle_region(canvas, path); // the commonest shape skips the table
    const bool evenOddForm = scan_path(stroke, evenOdd, flags);
    tela_newpath();
    return evenOddForm ? scan_to_eofill_region(canvas) : scan_to_region(canvas);
}

void tela_copy(Canvas* src, Canvas* dst, int dx, int dy)
{
    const Qv::Ptr<iRegion> area = path_to_region(src, 0, 1, 0);
    tela_newpath(); // the rectangle road keeps the path; a copy uses it up either way
    canvas_pixcopy_region(src, dst, area, dx, dy);
}
