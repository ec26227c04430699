// path_to_region on any path: moves, lines, curves and closes with ordinary,
// huge, infinite and not-a-number coordinates, under any matrix, line width
// and flatness, filled or stroked. What is checked besides surviving it:
// - the scan heap never holds more than its ten blocks;
// - a fill of finite points covers nothing outside the box of those points
//   (pixels count by their centres; a pixel of slack for the rectangle road);
// - off the rectangle road, the region is the table's rows read the plainest
//   way, the table made again from the same path with a null canvas, which
//   reduces every row to even-odd form first when the emission would do it
//   on the way: the emission's short roads, its bands and its one-pass
//   reduction all answer to it.
//
// Input: settings (1 byte: bit 0 stroke, bit 1 winding form, bit 2 widening,
// bits 3-4 the matrix, bits 5-7 the line width and flatness), then commands of
// one byte each (low 3 bits: 0 move, 1 line, 2 curve, 3 close, 4 arc, 5 soft
// rectangle, 6 rectangle, 7 new path), each followed by its coordinates,
// 2 bytes apiece: a value from -256 to 1791 in eighths, or, when the first
// byte is 0xFF, a special value picked by the second.

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/core/Log.h"
#include "tela/core/Memory.h"
#include "tela/platform/OS.h"
#include "tela/platform/iWindowingService.h"
#include "tela/vector/GraphicsState.h"
#include "tela/vector/Path.h"
#include "tela/vector/Path_private.h"
#include "tela/vector/Regions.h"
#include "tela/vector/ScanConverter.h"
#include "tela/vector/ScanTable.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>

namespace {

constexpr int ROOT_SIZE = 2048;

class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}
    bool empty() const { return m_at >= m_size; }
    std::uint8_t byte() { return m_at < m_size ? m_data[m_at++] : 0; }
    double coordinate()
    {
        const std::uint8_t high = byte();
        const std::uint8_t low = byte();
        if (high == 0xFF) {
            static const double specials[] = {std::numeric_limits<double>::quiet_NaN(),
                                              std::numeric_limits<double>::infinity(),
                                              -std::numeric_limits<double>::infinity(),
                                              1e300, -1e300, 3e9, -3e9, 1e-300, 100000.5, -0.0};
            return specials[low % (sizeof specials / sizeof *specials)];
        }
        return ((high << 8 | low) - 2048) / 8.0;
    }

private:
    const std::uint8_t* m_data;
    std::size_t m_size;
    std::size_t m_at = 0;
};

void discard(const char*, void*) {}

Canvas* root_canvas()
{
    static Canvas* const root = [] {
        Qv::setLogSink({&discard, nullptr});
        path_init();
        scan_heap_init();
        Canvas* canvas = tela_newcanvas(nullptr, nullptr);
        canvas->shape(region_mkrect(TopDownRect{0, 0, ROOT_SIZE, ROOT_SIZE}));
        return canvas;
    }();
    return root;
}

void set_matrix(int choice)
{
    switch (choice) {
    case 0: tela_setmatrix(1, 0, 0, 1, 0, 0); break;
    case 1: tela_setmatrix(2, 0, 0, 0.5, 10, -20); break;
    case 2: tela_setmatrix(0.7071, 0.7071, -0.7071, 0.7071, 300, 100); break;
    default: tela_setmatrix(1e-9, 0, 0, 1e-9, 0, 0); break; // singular: the inverse stays the old one
    }
}

void build_path(Input& in)
{
    for (int commands = 0; !in.empty() && commands < 2000; ++commands) {
        switch (in.byte() & 7) {
        case 0: { const double x = in.coordinate(); tela_moveto(x, in.coordinate()); break; }
        case 1: { const double x = in.coordinate(); tela_lineto(x, in.coordinate()); break; }
        case 2: {
            double c[6];
            for (double& v : c)
                v = in.coordinate();
            tela_curveto(c[0], c[1], c[2], c[3], c[4], c[5]);
            break;
        }
        case 3: tela_closepath(); break;
        case 4: {
            double c[5];
            for (double& v : c)
                v = in.coordinate();
            tela_arc(c[0], c[1], c[2], c[3] * 8, c[4] * 8);
            break;
        }
        case 5: {
            double c[5];
            for (double& v : c)
                v = in.coordinate();
            tela_addsoftrect(c[0], c[1], c[2], c[3], c[4]);
            break;
        }
        case 6: {
            double c[4];
            for (double& v : c)
                v = in.coordinate();
            tela_addrect(c[0], c[1], c[2], c[3]);
            break;
        }
        default: tela_newpath(); break;
        }
    }
}

// The rows of the table as a region, read without the emission: each pair of
// records, the first opening and the next closing, is a rectangle one row
// high, and an odd last record adds nothing. The platform sorts and merges.
RegionPtr rows_as_region()
{
    Qv::Vector<TopDownRect> rects;
    for (int line = 0; line < scan_lines(); ++line) {
        const int bottom = ROOT_SIZE - scan_origin_y() - line;
        for (const ScanTrans* opening = scan_first_trans(line); opening && opening->next;
             opening = opening->next->next)
            if (opening->next->x > opening->x)
                rects.push_back(TopDownRect{opening->x + scan_origin_x(), bottom - 1,
                                            opening->next->x + scan_origin_x(), bottom});
    }
    RegionPtr region;
    if (!rects.empty())
        OS()->windowing()->createRegion(region, rects.data(), rects.size());
    return region;
}

bool same_area(const RegionPtr& a, const RegionPtr& b)
{
    return a && b ? a->equals(b) : !a && !b;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Canvas* const root = root_canvas();
    Input in(data, size);
    const std::uint8_t settings = in.byte();
    const int stroke = settings & 1;
    const int even_odd_form = (settings >> 1) & 1;
    const int flags = settings & 4;
    set_matrix((settings >> 3) & 3);
    const int pen = settings >> 5;
    tela_setlinewidth(pen == 7 ? 1e200 : pen * 3.0);
    tela_setflatness(pen == 6 ? 0.0 : 0.25 * (pen + 1));

    tela_newpath();
    build_path(in);

    // The device box of the finite points, for the check of a fill below.
    const PathEntries path = path_entries();
    bool finite = true;
    double min_x = 1e300, min_y = 1e300, max_x = -1e300, max_y = -1e300;
    for (int i = 0; i < path.count; ++i) {
        finite = finite && std::isfinite(path.x[i]) && std::isfinite(path.y[i]) && std::fabs(path.x[i]) < 1e6 &&
                 std::fabs(path.y[i]) < 1e6;
        min_x = std::min(min_x, path.x[i]);
        max_x = std::max(max_x, path.x[i]);
        min_y = std::min(min_y, path.y[i]);
        max_y = std::max(max_y, path.y[i]);
    }

    // The points as they are now: the first conversion moves them in place,
    // and a rebuilt path need not repeat them (a close in a path that began
    // without a move takes whatever entry the last close left).
    const Qv::Vector<double> xs(path.x, path.x + path.count), ys(path.y, path.y + path.count);

    const RegionPtr region = path_to_region(root, stroke, even_odd_form, flags);
    const bool rectangle_road = path_entries().count > 0; // the only road that keeps the path
    tela_newpath();
    if (scan_heap_blocks() > SCAN_MOST_BLOCKS)
        std::abort();
    if (!rectangle_road) {
        Input again(data, size);
        again.byte();
        build_path(again);
        const PathEntries rebuilt = path_entries();
        if (rebuilt.count != path.count)
            std::abort();
        std::copy(xs.begin(), xs.end(), rebuilt.x);
        std::copy(ys.begin(), ys.end(), rebuilt.y);
        path_to_region(nullptr, stroke, even_odd_form, flags);
        tela_newpath();
        if (!same_area(region, rows_as_region()))
            std::abort();
    }
    tela_setmatrix(1, 0, 0, 1, 0, 0);
    if (!region || stroke || flags || !finite || path.count < 2)
        return 0;
    Qv::Box<int> box;
    region->getBox(box);
    if (box.x1 == box.x2 || box.y1 == box.y2)
        return 0; // an empty rectangle stays an object: it covers nothing
    // Window rows back to device y: row r is device y = ROOT_SIZE - 1 - r.
    // One pixel of slack: a rectangle rounds its sides half away from zero,
    // so a side at y 0 takes in the row below it.
    const bool inside = box.x1 >= std::floor(min_x) - 1 && box.x2 <= std::ceil(max_x) + 1 &&
                        ROOT_SIZE - box.y2 >= std::floor(min_y) - 1 && ROOT_SIZE - box.y1 <= std::ceil(max_y) + 1;
    if (!inside)
        std::abort();
    return 0;
}
