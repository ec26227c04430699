// A path turned into a region: the library's scan converter against the two
// obvious other roads, on a circle of 8 cubic curves (radius 200) and on a
// wavy closed path of 150 cubic curves in a 400x400 box.
// - Cairo fills the same path into a one-bit mask, and pixman reads the mask
//   back as a region: what a program without a scan converter of its own does.
// - X11's XPolygonRegion builds a region straight from a polygon, here Cairo's
//   own flattening of the path: made once beforehand, which times the region
//   building alone, and made afresh each round, which times the same road
//   as the library's figure, building the path and flattening it included.
// - The library's scan converter fed Cairo's polygon as lines, which sets
//   the region building of the two side by side.
// Every road flattens to the same tolerance, the argument in tenths of a pixel
// (the library's flatness; Cairo's tolerance). 10 is the library's default.

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/vector/GraphicsState.h"
#include "tela/vector/Path.h"
#include "tela/vector/Regions.h"
#include "tela/vector/ScanConverter.h"
#include "tela/vector/ScanTable.h"

#include <benchmark/benchmark.h>
#include <cairo.h>
#include <pixman.h>

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <cmath>
#include <vector>

namespace {

constexpr int SIZE = 400;

struct Curve {
    double x1, y1, x2, y2, x3, y3;
};
struct Shape {
    double startX, startY;
    std::vector<Curve> curves;
};

// The library's own circle: tela_arc cuts it into 8 sectors of one curve each.
Shape circle()
{
    Shape shape{0, 0, {}};
    const double k = 4.0 / 3.0 * std::tan(M_PI / 16); // control distance for 45 degrees
    const double r = 200, cx = 200, cy = 200;
    shape.startX = cx + r;
    shape.startY = cy;
    for (int i = 0; i < 8; ++i) {
        const double a0 = i * M_PI / 4, a1 = (i + 1) * M_PI / 4;
        shape.curves.push_back({cx + r * (std::cos(a0) - k * std::sin(a0)), cy + r * (std::sin(a0) + k * std::cos(a0)),
                                cx + r * (std::cos(a1) + k * std::sin(a1)), cy + r * (std::sin(a1) - k * std::cos(a1)),
                                cx + r * std::cos(a1), cy + r * std::sin(a1)});
    }
    return shape;
}

// A blob whose radius swings 16 times around the centre, through 150 points
// joined by curves with Catmull-Rom tangents: smooth, closed, in the box.
Shape wavy()
{
    constexpr int N = 150;
    std::vector<double> xs(N), ys(N);
    for (int i = 0; i < N; ++i) {
        const double a = 2 * M_PI * i / N;
        const double r = 150 + 40 * std::sin(16 * a) + 5 * std::cos(3 * a);
        xs[i] = 200 + r * std::cos(a);
        ys[i] = 200 + r * std::sin(a);
    }
    Shape shape{xs[0], ys[0], {}};
    for (int i = 0; i < N; ++i) {
        const int p = (i + N - 1) % N, q = (i + 1) % N, s = (i + 2) % N;
        shape.curves.push_back({xs[i] + (xs[q] - xs[p]) / 6, ys[i] + (ys[q] - ys[p]) / 6, xs[q] - (xs[s] - xs[i]) / 6,
                                ys[q] - (ys[s] - ys[i]) / 6, xs[q], ys[q]});
    }
    return shape;
}

const Shape& shape_of(int which)
{
    static const Shape shapes[] = {circle(), wavy()};
    return shapes[which];
}

double tolerance_of(const benchmark::State& state)
{
    return state.range(1) / 10.0;
}

// The library's road: build the path, convert it.
void BM_Tela(benchmark::State& state)
{
    path_init();
    scan_heap_init();
    Canvas* root = tela_newcanvas(nullptr, nullptr);
    root->shape(region_mkrect(TopDownRect{0, 0, SIZE, SIZE}));
    tela_setmatrix(1, 0, 0, 1, 0, 0);
    tela_setflatness(tolerance_of(state));
    const Shape& shape = shape_of(int(state.range(0)));
    std::size_t rectangles = 0;
    for (auto _ : state) {
        tela_newpath();
        tela_moveto(shape.startX, shape.startY);
        for (const Curve& c : shape.curves)
            tela_curveto(c.x1, c.y1, c.x2, c.y2, c.x3, c.y3);
        tela_closepath();
        const RegionPtr region = path_to_region(root, 0, 1, 0);
        benchmark::DoNotOptimize(region.get());
        if (rectangles == 0) {
            Qv::Vector<TopDownRect> rects;
            region->getRects(rects);
            rectangles = rects.size();
        }
    }
    state.counters["rects"] = double(rectangles);
    tela_setflatness(1.0);
    tela_deletecanvas(root);
}

void trace(cairo_t* cr, const Shape& shape)
{
    cairo_new_path(cr);
    cairo_move_to(cr, shape.startX, shape.startY);
    for (const Curve& c : shape.curves)
        cairo_curve_to(cr, c.x1, c.y1, c.x2, c.y2, c.x3, c.y3);
    cairo_close_path(cr);
}

// Cairo into a one-bit mask, then pixman reads the mask back as a region.
void BM_CairoMaskToRegion(benchmark::State& state)
{
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_A1, SIZE, SIZE);
    cairo_t* cr = cairo_create(surface);
    cairo_set_antialias(cr, CAIRO_ANTIALIAS_NONE);
    cairo_set_tolerance(cr, tolerance_of(state));
    cairo_set_fill_rule(cr, CAIRO_FILL_RULE_WINDING);
    auto* data = reinterpret_cast<uint32_t*>(cairo_image_surface_get_data(surface));
    const int stride = cairo_image_surface_get_stride(surface);
    pixman_image_t* mask = pixman_image_create_bits(PIXMAN_a1, SIZE, SIZE, data, stride);
    const Shape& shape = shape_of(int(state.range(0)));
    std::size_t rectangles = 0;
    for (auto _ : state) {
        cairo_set_operator(cr, CAIRO_OPERATOR_CLEAR);
        cairo_paint(cr);
        cairo_set_operator(cr, CAIRO_OPERATOR_OVER);
        trace(cr, shape);
        cairo_fill(cr);
        cairo_surface_flush(surface);
        pixman_region32_t region;
        pixman_region32_init_from_image(&region, mask);
        if (rectangles == 0)
            rectangles = std::size_t(pixman_region32_n_rects(&region));
        benchmark::DoNotOptimize(region.data);
        pixman_region32_fini(&region);
    }
    state.counters["rects"] = double(rectangles);
    pixman_image_unref(mask);
    cairo_destroy(cr);
    cairo_surface_destroy(surface);
}

// Cairo's flattening of the path as X11 points, the polygon closing itself.
std::vector<XPoint> flat_polygon(cairo_t* cr, const Shape& shape)
{
    trace(cr, shape);
    cairo_path_t* flat = cairo_copy_path_flat(cr);
    std::vector<XPoint> points;
    for (int i = 0; i < flat->num_data; i += flat->data[i].header.length) {
        const cairo_path_data_t& header = flat->data[i];
        if (header.header.type != CAIRO_PATH_MOVE_TO && header.header.type != CAIRO_PATH_LINE_TO)
            continue;
        const cairo_path_data_t& point = flat->data[i + 1];
        points.push_back({short(std::lround(point.point.x)), short(std::lround(point.point.y))});
    }
    cairo_path_destroy(flat);
    return points;
}

// X11's polygon region of Cairo's flattening. With `flattenEachTime` 0 the
// polygon is made once, beforehand, and only the region building is timed;
// with 1 every round traces and flattens the path too, the whole road from
// a path to a region that the library's figure covers.
void BM_XPolygonRegion(benchmark::State& state)
{
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_A1, SIZE, SIZE);
    cairo_t* cr = cairo_create(surface);
    cairo_set_tolerance(cr, tolerance_of(state));
    const Shape& shape = shape_of(int(state.range(0)));
    std::vector<XPoint> points = flat_polygon(cr, shape);
    const bool flattenEachTime = state.range(2) != 0;
    for (auto _ : state) {
        if (flattenEachTime)
            points = flat_polygon(cr, shape);
        Region region = XPolygonRegion(points.data(), int(points.size()), WindingRule);
        benchmark::DoNotOptimize(region);
        XDestroyRegion(region);
    }
    state.counters["points"] = double(points.size());
    cairo_destroy(cr);
    cairo_surface_destroy(surface);
}

// The library's scan converter on Cairo's polygon, given as lines: the same
// input XPolygonRegion gets, so the two differ in building the region
// alone. A path holds 500 entries, enough for the polygons at the default
// tolerance only.
void BM_TelaOfCairoPolygon(benchmark::State& state)
{
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_A1, SIZE, SIZE);
    cairo_t* cr = cairo_create(surface);
    cairo_set_tolerance(cr, tolerance_of(state));
    const std::vector<XPoint> points = flat_polygon(cr, shape_of(int(state.range(0))));
    cairo_destroy(cr);
    cairo_surface_destroy(surface);
    path_init();
    scan_heap_init();
    Canvas* root = tela_newcanvas(nullptr, nullptr);
    root->shape(region_mkrect(TopDownRect{0, 0, SIZE, SIZE}));
    tela_setmatrix(1, 0, 0, 1, 0, 0);
    for (auto _ : state) {
        tela_newpath();
        tela_moveto(points[0].x, points[0].y);
        for (std::size_t i = 1; i < points.size(); ++i)
            tela_lineto(points[i].x, points[i].y);
        tela_closepath();
        const RegionPtr region = path_to_region(root, 0, 1, 0);
        benchmark::DoNotOptimize(region.get());
    }
    state.counters["points"] = double(points.size());
    tela_deletecanvas(root);
}

void shapes(benchmark::internal::Benchmark* b)
{
    b->ArgNames({"shape", "tolerance10"});
    for (int shape : {0, 1})
        for (int tolerance : {10, 1})
            b->Args({shape, tolerance});
}

} // namespace

BENCHMARK(BM_Tela)->Apply(shapes);
BENCHMARK(BM_CairoMaskToRegion)->Apply(shapes);
BENCHMARK(BM_TelaOfCairoPolygon)->ArgNames({"shape", "tolerance10"})->Args({0, 10})->Args({1, 10});
BENCHMARK(BM_XPolygonRegion)->Apply([](benchmark::internal::Benchmark* b) {
    b->ArgNames({"shape", "tolerance10", "flattenEachTime"});
    for (int flatten : {0, 1})
        for (int shape : {0, 1})
            for (int tolerance : {10, 1})
                b->Args({shape, tolerance, flatten});
});
