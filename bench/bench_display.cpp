// The host display road on a 1920x1080 window with 50 canvases: a full
// repaint against a plain memcpy of the same pixels (the bandwidth limit),
// and a small repaint of one 32x32 canvas. Then the full repaint of a window
// whose n sibling canvases overlap, for n from 50 to 5,000: what each canvas
// shows is worked out against all those above it, and the curve should stay
// near linear. Then a whole frame of the composited road over 50 cards, with
// and without a shadow round each, against the same memcpy. Last, one step of
// a drag: a canvas moved a few pixels over a window tiled with n siblings,
// with the repaint that follows, for n from 100 to 1,000.

#include "tela/state/TelaState.h"
#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/CanvasWalk.h"
#include "tela/canvas/RootCanvas.h"
#include "tela/canvas/UpdateTracking.h"
#include "tela/events/EventQueue.h"
#include "tela/vector/Regions.h"

#include "headless/HeadlessRootWindow.h"
#include "headless/HostImage.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

namespace {

constexpr int WIDTH = 1920, HEIGHT = 1080;

struct Scene {
    Scene()
    {
        iRootWindow::InitArgs args;
        args.size = {WIDTH, HEIGHT};
        root = tela_createRootCanvas(args);
        // A 10x5 grid of opaque canvases covering the window, as panels do.
        Tela::UpdateDeferrer deferrer(nullptr, true);
        const int columns = 10, rows = 5;
        const int w = WIDTH / columns, h = HEIGHT / rows;
        for (int row = 0; row < rows; ++row)
            for (int column = 0; column < columns; ++column)
                add(column * w, row * h, w, h, 0xFF000000u | static_cast<std::uint32_t>(row * 40 << 8 | column * 25));
        small = add(100, 100, 32, 32, 0xFFFF0000);
    }
    ~Scene()
    {
        tela_state().rootWindows.clear();
        event_set_kbd_focus(nullptr);
        tela_setcanvas(nullptr);
        tela_deletecanvas(root);
    }

    Canvas* add(int left, int top, int width, int height, std::uint32_t argb)
    {
        Canvas* c = tela_newcanvas(nullptr, root);
        tela_placecanvas(c, TopDownRect{left, top, left + width, top + height});
        Qv::dynamicCast<Headless::HostImage>(c->offscreenBuffer)->fill(argb);
        return c;
    }

    void mark_everything()
    {
        Tela::UpdateDeferrer deferrer(nullptr, true);
        for (Canvas* c = canvas_walk_postorder(root, nullptr); c; c = canvas_walk_postorder(root, c))
            canvupd_mark_all(c);
    }

    RootCanvas* root = nullptr;
    Canvas* small = nullptr;
};

void BM_FullRepaint(benchmark::State& state)
{
    Scene scene;
    for (auto _ : state)
        scene.mark_everything();
    state.SetBytesProcessed(state.iterations() * WIDTH * HEIGHT * 4);
}

void BM_Memcpy(benchmark::State& state)
{
    std::vector<std::uint8_t> from(WIDTH * HEIGHT * 4, 1), to(WIDTH * HEIGHT * 4);
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), from.size());
        benchmark::DoNotOptimize(to.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * WIDTH * HEIGHT * 4);
}

void BM_SmallDamage(benchmark::State& state)
{
    Scene scene;
    scene.mark_everything();
    auto window = Qv::dynamicCast<Headless::RootWindow>(scene.root->window);
    for (auto _ : state)
        canvupd_mark_all(scene.small);
    // Only the small canvas's pixels may change: paint a marker elsewhere and
    // see that it survives a repaint.
    window->pixels()->fill(0xFF123456);
    canvupd_mark_all(scene.small);
    int changed = 0;
    for (int y = 0; y < HEIGHT; y += 7)
        for (int x = 0; x < WIDTH; x += 7)
            changed += window->pixels()->pixelAt(x, y) != 0xFF123456u;
    state.counters["sampled_pixels_changed"] = changed; // only inside the 32x32 square
}

// A composited window with 50 cards in a 10x5 grid, gaps between them, each
// casting a 12-pixel shadow on all four sides (or none): one whole frame.
struct CompositedScene {
    explicit CompositedScene(bool shadows)
    {
        iRootWindow::InitArgs args;
        args.size = {WIDTH, HEIGHT};
        args.mode = 1 | iRootWindow::InitArgs::MODE_COMPOSITED;
        root = tela_createRootCanvas(args);
        Tela::UpdateDeferrer deferrer(nullptr, true);
        const int columns = 10, rows = 5, margin = 16;
        const int w = WIDTH / columns, h = HEIGHT / rows;
        for (int row = 0; row < rows; ++row)
            for (int column = 0; column < columns; ++column) {
                Canvas* c = tela_newcanvas(nullptr, root);
                const int left = column * w + margin, top = row * h + margin;
                tela_placecanvas(c, TopDownRect{left, top, left + w - 2 * margin, top + h - 2 * margin});
                Qv::dynamicCast<Headless::HostImage>(c->offscreenBuffer)->fill(0xFF000000u | static_cast<std::uint32_t>(row * 40 << 8 | column * 25));
                if (shadows) {
                    SurroundParams shadow;
                    shadow.size = 12;
                    shadow.opacity = 0.5f;
                    shadow.edges = SurroundParams::ALL_EDGES;
                    c->setEdgeEffect(shadow);
                }
                canvupd_mark_all(c); // as drawing does: the frame shows what was marked
            }
    }
    ~CompositedScene()
    {
        tela_state().rootWindows.clear();
        event_set_kbd_focus(nullptr);
        tela_setcanvas(nullptr);
        tela_deletecanvas(root);
    }

    RootCanvas* root = nullptr;
};

void BM_CompositedFrame(benchmark::State& state)
{
    CompositedScene scene(false);
    for (auto _ : state)
        scene.root->display(nullptr);
    state.SetBytesProcessed(state.iterations() * WIDTH * HEIGHT * 4);
}

void BM_CompositedFrameWithShadows(benchmark::State& state)
{
    CompositedScene scene(true);
    for (auto _ : state)
        scene.root->display(nullptr);
    state.SetBytesProcessed(state.iterations() * WIDTH * HEIGHT * 4);
    // What the frame showed: the second card's middle (0x000019), and the
    // first card's shadow two pixels below it (darker than the window).
    const auto window = Qv::dynamicCast<Headless::RootWindow>(scene.root->window);
    state.counters["card_pixel"] = window->pixels()->pixelAt(300, 100) & 0xFFFFFF;
    state.counters["shadow_red"] = window->pixels()->pixelAt(100, 202) >> 16 & 255;
}

// n canvases of 200x150 at scattered places over the window, each over all
// older ones. They share one buffer: what is measured is the visible-region
// arithmetic and the painting, not memory for thousands of buffers.
struct OverlappingScene {
    explicit OverlappingScene(int count)
    {
        iRootWindow::InitArgs args;
        args.size = {WIDTH, HEIGHT};
        root = tela_createRootCanvas(args);
        constexpr int w = 200, h = 150;
        Qv::Ptr<iImage> buffer;
        root->window->createOffscreenImage(buffer, {w, h});
        Qv::dynamicCast<Headless::HostImage>(buffer)->fill(0xFF336699);
        std::uint32_t seed = 12345;
        const auto next = [&seed](int below) {
            seed = seed * 1664525u + 1013904223u;
            return static_cast<int>((seed >> 8) % static_cast<std::uint32_t>(below));
        };
        for (int i = 0; i < count; ++i) {
            Canvas* c = tela_newcanvas(nullptr, root);
            const int left = next(WIDTH - w), top = next(HEIGHT - h);
            c->shape(region_mkrect(TopDownRect{left, top, left + w, top + h}));
            c->offscreenBuffer = buffer;
        }
    }
    ~OverlappingScene()
    {
        tela_state().rootWindows.clear();
        event_set_kbd_focus(nullptr);
        tela_setcanvas(nullptr);
        tela_deletecanvas(root);
    }

    RootCanvas* root = nullptr;
};

void BM_OverlappingSiblings(benchmark::State& state)
{
    OverlappingScene scene(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        Tela::UpdateDeferrer deferrer(nullptr, true);
        for (Canvas* c = canvas_walk_postorder(scene.root, nullptr); c; c = canvas_walk_postorder(scene.root, c))
            canvupd_mark_all(c);
    }
    state.SetComplexityN(state.range(0));
}

// A window tiled edge to edge with n opaque canvases, every third holding a
// smaller one of its own, and a 240x180 canvas on top of them all that is
// dragged over them: what one step of the drag costs, the move and the
// repaint of what it uncovers and covers, as a user's drag pays it.
struct DragScene {
    explicit DragScene(int count)
    {
        iRootWindow::InitArgs args;
        args.size = {WIDTH, HEIGHT};
        root = tela_createRootCanvas(args);
        Tela::UpdateDeferrer deferrer(nullptr, true);
        // Columns to rows as the window's sides are, so the tiles stay near square.
        int columns = 1;
        while (columns * columns * HEIGHT < count * WIDTH)
            ++columns;
        const int rows = (count + columns - 1) / columns;
        const int w = WIDTH / columns, h = HEIGHT / rows;
        for (int i = 0; i < count; ++i) {
            const int left = i % columns * w, top = i / columns * h;
            const std::uint32_t colour = 0xFF000000u | (static_cast<std::uint32_t>(i) * 2654435761u >> 8);
            Canvas* tile = add(root, TopDownRect{left, top, left + w, top + h}, colour);
            if (i % 3 == 0)
                add(tile, TopDownRect{left + w / 4, top + h / 4, left + w - w / 4, top + h - h / 4}, 0xFFFFFFFFu);
        }
        dragged = add(root, TopDownRect{0, 0, 240, 180}, 0xFFFF0000u);
    }
    ~DragScene()
    {
        tela_state().rootWindows.clear();
        event_set_kbd_focus(nullptr);
        tela_setcanvas(nullptr);
        tela_deletecanvas(root);
    }

    Canvas* add(Canvas* parent, const TopDownRect& rect, std::uint32_t argb)
    {
        Canvas* c = tela_newcanvas(nullptr, parent);
        tela_placecanvas(c, rect);
        Qv::dynamicCast<Headless::HostImage>(c->offscreenBuffer)->fill(argb);
        canvupd_mark_all(c);
        return c;
    }

    // Four pixels across and two up a step (the matrix counts y up, as its
    // extents do), turning at the window's edges.
    void step()
    {
        const Qv::Box<int> box = dragged->getExtents();
        if (box.x1 + dx < 0 || box.x2 + dx > WIDTH)
            dx = -dx;
        if (box.y1 + dy < 0 || box.y2 + dy > HEIGHT)
            dy = -dy;
        tela_translatecanvas(dragged, dx, dy);
    }

    RootCanvas* root = nullptr;
    Canvas* dragged = nullptr;
    int dx = 4, dy = 2;
};

void BM_DragOverSiblings(benchmark::State& state)
{
    DragScene scene(static_cast<int>(state.range(0)));
    const auto window = Qv::dynamicCast<Headless::RootWindow>(scene.root->window);
    for (auto _ : state)
        scene.step(); // the move's own deferrer repaints as it ends
    state.SetComplexityN(state.range(0));
    // The dragged canvas shows where it is now, and what it left shows again.
    Qv::Box<int> box; // top-down, as the window's pixels are
    scene.dragged->shape()->getBox(box);
    state.counters["dragged_shown"] = window->pixels()->pixelAt(box.x1 + 1, box.y1 + 1) == 0xFFFF0000u;
}

} // namespace

BENCHMARK(BM_FullRepaint)->Name("full_repaint_1920x1080_50_canvases/tela")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Memcpy)->Name("full_repaint_1920x1080_50_canvases/memcpy")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CompositedFrame)->Name("composited_frame_1920x1080_50_canvases/tela")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CompositedFrameWithShadows)
    ->Name("composited_frame_1920x1080_50_canvases/tela_with_shadows")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SmallDamage)->Name("small_damage_32x32/tela")->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_OverlappingSiblings)
    ->Name("full_repaint_overlapping_siblings/tela")
    ->Arg(50)
    ->Arg(500)
    ->Arg(5000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity();
BENCHMARK(BM_DragOverSiblings)
    ->Name("drag_step_over_siblings/tela")
    ->Arg(100)
    ->Arg(300)
    ->Arg(1000)
    ->Unit(benchmark::kMicrosecond)
    ->Complexity();
