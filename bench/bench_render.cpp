// Drawing through a canvas's renderer against drawing the same shapes straight
// into the same pixels with the libraries underneath: 100,000 small
// rectangles against pixman, 10,000 antialiased ellipses against Cairo. The
// ratio is what the library's layer costs: describing, flipping, clipping
// and reporting the damage. The same ellipses once more on the shader road (a
// soft ellipse computed per pixel) against the plain road (the renderer's
// antialiased ellipse) tell what the soft edges cost.

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/RootCanvas.h"
#include "tela/canvas/UpdateTracking.h"
#include "tela/events/EventQueue.h"
#include "tela/render/CanvasRenderer.h"
#include "tela/render/Descriptions.h"
#include "tela/state/TelaState.h"

#include "headless/HostImage.h"
#include "headless/SoftwareRenderer.h"

#include <benchmark/benchmark.h>
#include <cairo.h>
#include <pixman.h>

#include <cmath>
#include <vector>

namespace {

constexpr int WIDTH = 1024, HEIGHT = 768;
constexpr int RECTANGLES = 100000, ELLIPSES = 10000;

enum class Shaders { Used, Hidden };

// One opaque canvas covering a window, as a panel's content does. With shaders
// hidden, its renderer draws ellipses with the renderer's plain primitive.
struct Scene {
    explicit Scene(Shaders shaders = Shaders::Used)
    {
        Headless::SoftwareRenderer::hideCaps(shaders == Shaders::Hidden ? iGraphicPrimitivesRenderer::CAP_SHADERS : 0);
        iRootWindow::InitArgs args;
        args.size = {WIDTH, HEIGHT};
        root = tela_createRootCanvas(args);
        canvas = tela_newcanvas(nullptr, root);
        tela_placecanvas(canvas, TopDownRect{0, 0, WIDTH, HEIGHT});
        image = Qv::dynamicCast<Headless::HostImage>(canvas->offscreenBuffer);
    }
    ~Scene()
    {
        Headless::SoftwareRenderer::hideCaps(0);
        tela_state().rootWindows.clear();
        event_set_kbd_focus(nullptr);
        tela_setcanvas(nullptr);
        tela_deletecanvas(root);
    }

    RootCanvas* root = nullptr;
    Canvas* canvas = nullptr;
    Qv::Ptr<Headless::HostImage> image;
};

// Positions spread over the canvas so no two neighbours share cache lines.
int spread_x(int i, int size) { return static_cast<int>(static_cast<unsigned>(i) * 7919u % unsigned(WIDTH - size)); }
int spread_y(int i, int size) { return static_cast<int>(static_cast<unsigned>(i) * 104729u % unsigned(HEIGHT - size)); }

// Colours come from a table, as an interface's come from its palette. Made
// afresh for every shape instead, each colour is written field by field just
// before the description copies it whole, and the copy waits for those
// stores to land (about a third of the time of the library's road, and none
// of the direct one, which reads the fields one by one).
const NormalisedRGB& shade(int i)
{
    static const std::vector<NormalisedRGB> shades = [] {
        std::vector<NormalisedRGB> table;
        for (int k = 0; k < 256; ++k)
            table.emplace_back(float(k) / 255.0f, float(255 - k) / 255.0f, 0.5f, 1.0f);
        return table;
    }();
    return shades[static_cast<std::size_t>(i & 255)];
}

void BM_RectanglesThroughCanvasRenderer(benchmark::State& state)
{
    Scene scene;
    for (auto _ : state) {
        scene.canvas->beginRender();
        CanvasRenderer& renderer = scene.canvas->getRenderer();
        for (int i = 0; i < RECTANGLES; ++i) {
            const int x = spread_x(i, 8), y = spread_y(i, 8);
            renderer.render(Tela::RectDescription({x, y, x + 8, y + 8}, shade(i)));
        }
        scene.canvas->endRender();
    }
    state.SetItemsProcessed(state.iterations() * RECTANGLES);
}

void BM_RectanglesWithPixman(benchmark::State& state)
{
    Scene scene;
    const Qv::Ptr<iPixelGuard> pixels = scene.image->lock();
    pixman_image_t* target = pixman_image_create_bits(PIXMAN_a8r8g8b8, WIDTH, HEIGHT,
                                                      reinterpret_cast<std::uint32_t*>(pixels->pixels()), pixels->stride());
    for (auto _ : state) {
        for (int i = 0; i < RECTANGLES; ++i) {
            const NormalisedRGB& c = shade(i);
            const pixman_color_t colour {std::uint16_t(c.r * 65535), std::uint16_t(c.g * 65535),
                                         std::uint16_t(c.b * 65535), 0xFFFF};
            const int x = spread_x(i, 8), y = HEIGHT - 8 - spread_y(i, 8);
            const pixman_box32_t box {x, y, x + 8, y + 8};
            pixman_image_fill_boxes(PIXMAN_OP_SRC, target, &colour, 1, &box);
        }
        benchmark::ClobberMemory();
    }
    pixman_image_unref(target);
    state.SetItemsProcessed(state.iterations() * RECTANGLES);
}

// The same with pixman's plain fill, which the renderer itself uses for an
// opaque rectangle inside a clip of one rectangle: the cheapest road pixman has.
void BM_RectanglesWithPixmanPlainFill(benchmark::State& state)
{
    Scene scene;
    const Qv::Ptr<iPixelGuard> pixels = scene.image->lock();
    auto* const bits = reinterpret_cast<std::uint32_t*>(pixels->pixels());
    for (auto _ : state) {
        for (int i = 0; i < RECTANGLES; ++i) {
            const NormalisedRGB& c = shade(i);
            const std::uint32_t pixel = 0xFF000000u | std::uint32_t(c.r * 255) << 16 | std::uint32_t(c.g * 255) << 8 |
                                        std::uint32_t(c.b * 255);
            const int x = spread_x(i, 8), y = HEIGHT - 8 - spread_y(i, 8);
            pixman_fill(bits, pixels->stride() / 4, 32, x, y, 8, 8, pixel);
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * RECTANGLES);
}

void ellipses_through_canvas_renderer(benchmark::State& state, Shaders shaders)
{
    Scene scene(shaders);
    for (auto _ : state) {
        scene.canvas->beginRender();
        CanvasRenderer& renderer = scene.canvas->getRenderer();
        for (int i = 0; i < ELLIPSES; ++i) {
            const double x = spread_x(i, 24), y = spread_y(i, 24);
            renderer.render(Tela::EllipseDescription({x, y, x + 24, y + 16}, shade(i), Tela::EllipseDescription::eFilled, 1));
        }
        scene.canvas->endRender();
    }
    state.SetItemsProcessed(state.iterations() * ELLIPSES);
}

void BM_EllipsesThroughCanvasRenderer(benchmark::State& state)
{
    ellipses_through_canvas_renderer(state, Shaders::Hidden);
}

void BM_ShadedEllipsesThroughCanvasRenderer(benchmark::State& state)
{
    ellipses_through_canvas_renderer(state, Shaders::Used);
}

void BM_EllipsesWithCairo(benchmark::State& state)
{
    Scene scene;
    const Qv::Ptr<iPixelGuard> pixels = scene.image->lock();
    cairo_surface_t* surface =
        cairo_image_surface_create_for_data(pixels->pixels(), CAIRO_FORMAT_ARGB32, WIDTH, HEIGHT, pixels->stride());
    cairo_t* cr = cairo_create(surface);
    for (auto _ : state) {
        for (int i = 0; i < ELLIPSES; ++i) {
            const NormalisedRGB& c = shade(i);
            const double x = spread_x(i, 24), y = HEIGHT - 16 - spread_y(i, 24);
            cairo_save(cr);
            cairo_translate(cr, x + 12, y + 8);
            cairo_scale(cr, 12, 8);
            cairo_arc(cr, 0, 0, 1, 0, 2 * M_PI);
            cairo_restore(cr);
            cairo_set_source_rgba(cr, c.r, c.g, c.b, c.a);
            cairo_fill(cr);
        }
        cairo_surface_flush(surface);
        benchmark::ClobberMemory();
    }
    cairo_destroy(cr);
    cairo_surface_destroy(surface);
    state.SetItemsProcessed(state.iterations() * ELLIPSES);
}

} // namespace

BENCHMARK(BM_RectanglesThroughCanvasRenderer)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RectanglesWithPixman)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RectanglesWithPixmanPlainFill)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_EllipsesThroughCanvasRenderer)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_EllipsesWithCairo)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ShadedEllipsesThroughCanvasRenderer)->Unit(benchmark::kMillisecond);
