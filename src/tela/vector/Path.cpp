// Path.cpp: the current path.
//
// Invariants
// - The four buffers come from the memory seam once and are kept for the
//   process; building a path allocates nothing.
// - 0 <= count <= PATH_CAPACITY, and entries [0, count) are written. A call
//   that would go past the end is reported and writes only what fits: the
//   caller keeps the path within its 500 entries, this file keeps the memory.
// - A curve is three entries: two control points, then its end point.
// - subpathStart indexes a written entry whenever count > 0: the move that
//   opened the subpath, or the close that ended it, which stores the
//   subpath's first point so that a later line continues from there.
// - userX, userY are the current point in user coordinates when userValid;
//   any change of the CTM clears userValid, and the point is recomputed from
//   the last stored device point through the inverse CTM on demand.

#include "tela/vector/Path.h"

#include "tela/core/Log.h"
#include "tela/core/Memory.h"
#include "tela/vector/GraphicsState.h"
#include "tela/vector/Path_private.h"

#include <cmath>
#include <cstring>

namespace {

constexpr double RADIANS_PER_DEGREE = 0.017453292519943295;
constexpr double HALF_PI = 1.5707963267948966;
// More sectors than this cannot fit in the buffers anyway; capping the count
// keeps an absurd sweep from looping for ever, and its sectors then grow
// until the sector-size check reports them.
constexpr int MOST_ARC_SECTORS = PATH_CAPACITY / 3 + 1;

struct PathState {
    std::uint8_t* codes = nullptr;
    std::uint8_t* marks = nullptr; // written 0 for each entry; nothing here reads it
    double* x = nullptr;
    double* y = nullptr;

    int count = 0;
    bool userValid = false;
    double userX = 0.0;
    double userY = 0.0;
    double startUserX = 0.0;
    double startUserY = 0.0;
    int subpathStart = 0;
    bool subpathOpen = false;

    bool hasBuffers() const { return codes && marks && x && y; }
};

PathState& path()
{
    static PathState s_path;
    return s_path;
}

// Writes one entry at `index` if it lies inside the buffers; false otherwise.
bool store(int index, std::uint8_t code, double device_x, double device_y)
{
    PathState& p = path();
    if (!p.hasBuffers() || index < 0 || index >= PATH_CAPACITY)
        return false;
    p.codes[index] = code;
    p.marks[index] = 0;
    p.x[index] = device_x;
    p.y[index] = device_y;
    return true;
}

// Appends at the end; count grows only when the entry was written.
void append(std::uint8_t code, double device_x, double device_y)
{
    PathState& p = path();
    if (store(p.count, code, device_x, device_y))
        ++p.count;
}

void append_user_point(std::uint8_t code, double x, double y)
{
    const GStatePoint& device = gstate_user_to_device(x, y);
    append(code, device.x, device.y);
}

bool last_code_is(std::uint8_t code)
{
    const PathState& p = path();
    return p.count > 0 && p.codes[p.count - 1] == code;
}

// The move of tela_moveto and path_movetopixel: two moves in a row share one
// entry, the later point winning.
void move_to_device(double device_x, double device_y)
{
    PathState& p = path();
    if (last_code_is(PathCodes::MOVE))
        --p.count;
    else if (p.count >= PATH_CAPACITY)
        tela_splat("path overflow");
    const int index = p.count;
    if (store(index, PathCodes::MOVE, device_x, device_y)) {
        p.subpathStart = index;
        ++p.count;
    }
}

template <typename T>
void release_buffer(T*& buffer)
{
    Qv::release(buffer);
    buffer = nullptr;
}

} // namespace

PathEntries path_entries()
{
    PathState& p = path();
    if (!p.hasBuffers())
        return {nullptr, nullptr, nullptr, 0};
    return {p.codes, p.x, p.y, p.count};
}

void path_init()
{
    PathState& p = path();
    if (!p.hasBuffers()) {
        // All four or none: a path with some buffers missing could not be read.
        release_buffer(p.codes);
        release_buffer(p.marks);
        release_buffer(p.x);
        release_buffer(p.y);
        p.codes = static_cast<std::uint8_t*>(Qv::allocate(PATH_CAPACITY));
        p.marks = static_cast<std::uint8_t*>(Qv::allocate(PATH_CAPACITY));
        p.x = static_cast<double*>(Qv::allocate(PATH_CAPACITY * sizeof(double)));
        p.y = static_cast<double*>(Qv::allocate(PATH_CAPACITY * sizeof(double)));
        if (!p.hasBuffers()) {
            tela_splat("path_init: failed to allocate path buffers\n");
            release_buffer(p.codes);
            release_buffer(p.marks);
            release_buffer(p.x);
            release_buffer(p.y);
        }
    }
    if (p.hasBuffers()) {
        std::memset(p.codes, 0, PATH_CAPACITY);
        std::memset(p.marks, 0, PATH_CAPACITY);
        std::memset(p.x, 0, PATH_CAPACITY * sizeof(double));
        std::memset(p.y, 0, PATH_CAPACITY * sizeof(double));
    }
    std::uint8_t* const codes = p.codes;
    std::uint8_t* const marks = p.marks;
    double* const x = p.x;
    double* const y = p.y;
    p = PathState{};
    p.codes = codes;
    p.marks = marks;
    p.x = x;
    p.y = y;
}

void tela_newpath()
{
    PathState& p = path();
    p.count = 0;
    p.userValid = false;
    p.subpathOpen = false;
}

void tela_moveto(double x, double y)
{
    const GStatePoint& device = gstate_user_to_device(x, y);
    move_to_device(device.x, device.y);
    PathState& p = path();
    p.userX = p.startUserX = x;
    p.userY = p.startUserY = y;
    p.subpathOpen = true;
    p.userValid = true;
}

void tela_lineto(double x, double y)
{
    PathState& p = path();
    if (p.count < 1)
        tela_splat("no current point");
    if (p.count >= PATH_CAPACITY)
        tela_splat("path overflow");
    append_user_point(PathCodes::LINE, x, y);
    p.userX = x;
    p.userY = y;
    p.userValid = true;
    p.subpathOpen = true;
}

void tela_curveto(double x1, double y1, double x2, double y2, double x3, double y3)
{
    PathState& p = path();
    if (p.count < 1)
        tela_splat("no current point");
    if (p.count + 2 >= PATH_CAPACITY)
        tela_splat("path overflow");
    // What does not fit is dropped; the scan converter ignores a curve cut short.
    append_user_point(PathCodes::CURVE_CONTROL, x1, y1);
    append_user_point(PathCodes::CURVE_CONTROL, x2, y2);
    append_user_point(PathCodes::CURVE_END, x3, y3);
    p.userX = x3;
    p.userY = y3;
    p.userValid = true;
    p.subpathOpen = true;
}

void tela_closepath()
{
    PathState& p = path();
    if (p.count < 1 || !p.subpathOpen || last_code_is(PathCodes::CLOSE))
        return;
    if (p.count >= PATH_CAPACITY)
        tela_splat("path overflow");
    const int index = p.count;
    if (store(index, PathCodes::CLOSE, p.x[p.subpathStart], p.y[p.subpathStart])) {
        p.subpathStart = index;
        ++p.count;
    }
    p.subpathOpen = false;
    p.userValid = false;
}

void tela_addrect(double x1, double y1, double x2, double y2)
{
    tela_moveto(x1, y1);
    tela_lineto(x2, y1);
    tela_lineto(x2, y2);
    tela_lineto(x1, y2);
    tela_closepath();
}

void tela_rect(double x1, double y1, double x2, double y2)
{
    tela_newpath();
    tela_addrect(x1, y1, x2, y2);
}

void tela_addsoftrect(double x1, double y1, double x2, double y2, double radius)
{
    if (radius == 0.0) {
        tela_addrect(x1, y1, x2, y2);
        return;
    }
    double v = radius;
    v = std::fmin(v, (x2 - x1) * 0.5);
    v = std::fmin(v, (y2 - y1) * 0.5);
    tela_moveto(x1, y1 + v);
    tela_arc1(x1 + v, y1 + v, v, 180, 270);
    tela_arc1(x2 - v, y1 + v, v, 270, 360);
    tela_arc1(x2 - v, y2 - v, v, 0, 90);
    tela_arc1(x1 + v, y2 - v, v, 90, 180);
    tela_closepath();
}

void tela_arc(double cx, double cy, double r, double a0, double a1)
{
    if (a0 == a1) {
        tela_arc1(cx, cy, r, a0, a0);
        return;
    }
    const double start = norm_angle360(a0);
    double sweep = norm_angle360(a1) - start;
    if (!(sweep > 0.0))
        sweep += 360.0;
    tela_arc1(cx, cy, r, start, start + sweep);
}

void tela_arc1(double cx, double cy, double r, double a0, double a1)
{
    double saved[3][3];
    std::memcpy(saved, gstate_ctm(), sizeof saved);

    const double sweep = a1 - a0;
    const double sectors = std::trunc(std::fabs(sweep / 45.0) + 0.5);
    int n = 1;
    if (sectors > MOST_ARC_SECTORS)
        n = MOST_ARC_SECTORS;
    else if (sectors > 1.0)
        n = static_cast<int>(sectors); // NaN fails both tests and stays 1

    tela_translate(cx, cy);
    const double step = sweep / n;
    const double h = step * RADIANS_PER_DEGREE * 0.5; // half a sector, radians
    if (!(std::fabs(h) <= HALF_PI))
        tela_splat("path_arc2: too large a sector");

    // One cubic per sector, symmetric about the x axis of a frame turned to
    // the sector's middle: from (r c, -r s) to (r c, r s), controls (p, -q)
    // and (p, q), which puts the curve's middle on the circle.
    const double c = std::cos(h);
    const double s = std::sin(h);
    const double t = s / c;
    const double k = (4.0 - c) / 3.0;
    const double q = std::fabs(t * s) < 1e-5 ? 0.0 : (t - k * s) * r / (t * s);
    const double p = k * r;

    tela_rotate(a0);
    if (path().count < 1 || !path().subpathOpen)
        tela_moveto(r, 0);
    else
        tela_lineto(r, 0); // an arc joins what went before with a straight line

    double start_frame[3][3];
    std::memcpy(start_frame, gstate_ctm(), sizeof start_frame);
    double accumulated = 0.0;
    double previous = 0.0;
    for (int sector = 0; sector < n; ++sector) {
        accumulated += step;
        CTM_update(start_frame);
        tela_rotate((previous + accumulated) * 0.5);
        tela_curveto(p, -q, p, q, r * c, r * s);
        previous = accumulated;
    }
    CTM_update(saved);
}

bool tela_user_point_valid()
{
    return path().count > 0;
}

double tela_user_x()
{
    path_get_currpoint();
    return path().userX;
}

double tela_user_y()
{
    path_get_currpoint();
    return path().userY;
}

void path_check_currpoint()
{
    if (path().count < 1)
        tela_splat("no current point");
}

void path_get_currpoint()
{
    PathState& p = path();
    if (p.count < 1) {
        tela_splat("no current point");
        return; // there is no stored point to recompute from
    }
    if (p.userValid)
        return;
    const GStatePoint& user = gstate_device_to_user(p.x[p.count - 1], p.y[p.count - 1]);
    p.userX = user.x;
    p.userY = user.y;
    p.userValid = true;
}

void path_invalidate_user_xy()
{
    path().userValid = false;
}

double path_device_x()
{
    path_get_currpoint();
    const PathState& p = path();
    return p.count > 0 ? p.x[p.count - 1] : 0.0;
}

double path_device_y()
{
    path_get_currpoint();
    const PathState& p = path();
    return p.count > 0 ? p.y[p.count - 1] : 0.0;
}

void path_movetopixel(double x, double y)
{
    move_to_device(x, y);
    PathState& p = path();
    p.subpathOpen = true;
    p.userValid = false;
}

void path_origintopoint()
{
    const PathState& p = path();
    if (p.count < 1) {
        tela_splat("no current point");
        return;
    }
    double m[3][3];
    std::memcpy(m, gstate_ctm(), sizeof m);
    m[0][2] = p.x[p.count - 1];
    m[1][2] = p.y[p.count - 1];
    CTM_update(m);
}

void path_setpixelmatrix()
{
    const double identity[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    CTM_update(identity);
}
