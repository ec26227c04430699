#include "tela/canvas/RootCanvas.h"

#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/CanvasWalk.h"
#include "tela/canvas/DisplayPipeline.h"
#include "tela/canvas/DisplayRoad.h"
#include "tela/canvas/RootAppearance.h"
#include "tela/canvas/Tiling.h"
#include "tela/canvas/UpdateTracking.h"
#include "tela/core/TimedTask.h"
#include "tela/events/EventQueue.h"
#include "tela/events/EventTimeServer.h"
#include "tela/events/EventTypes.h"
#include "tela/platform/FxResources.h"
#include "tela/platform/GraphicPrimitives.h"
#include "tela/platform/iWindowingService.h"
#include "tela/platform/OS.h"
#include "tela/state/TelaState.h"
#include "tela/text/Fonts.h"
#include "tela/vector/Matrix.h"
#include "tela/vector/Regions.h"

#include <algorithm>
#include <cstring>

namespace {

RegionPtr window_shape(const Qv::Ptr<iRootWindow>& window)
{
    Qv::Box<int> box;
    window->getBox(box);
    return region_mkrect(TopDownRect{0, 0, box.width(), box.height()});
}

} // namespace

RootCanvas::RootCanvas(const Qv::Ptr<iRootWindow>& rootWindow) : Canvas(nullptr, nullptr)
{
    window = rootWindow;
    if (window)
        shape(window_shape(window));
}

RootCanvas::~RootCanvas()
{
    Qv::Vector<RootWindowRec>& rows = tela_state().rootWindows;
    rows.erase(std::remove_if(rows.begin(), rows.end(), [this](const RootWindowRec& row) { return row.rootCanvas == this; }),
               rows.end());
}

void RootCanvas::display(Qv::Ptr<iRegion> region)
{
    if (!window)
        return;
    if (tela_display_road(this) == DisplayRoad::Composited) {
        // A whole frame, back to front; the region asked for is not consulted.
        static Qv::TimedTask& task = Qv::TimedTaskManager::instance().task("RootCanvas::display");
        Qv::TimedTask::Run run(task);
        issueNotification(RootCanvasEvent{0}, NotifyMsgTypeDictionary::instance().allTypesId);
        CriticalSection::Guard guard(Qv::FxResources::Manager::instance().frameLock());
        Qv::Ptr<iGraphicPrimitivesRenderer> renderer;
        if (!window->getRenderer(renderer, 1) || !renderer)
            return;
        renderer->setClip(nullptr);
        drawBackground(renderer);
        displaySubtree(oldestChild, renderer);
        run.stage("present");
        renderer = nullptr; // ends the frame
        return;
    }
    Tela::UpdateDeferrer deferrer(nullptr, tela_refresh_presentation());
    if (!region)
        region = shape();
    for (Canvas* c = canvas_walk_subtree(this, nullptr); c; c = canvas_walk_subtree(this, c)) {
        c->releaseRenderers();
        canvupd_mark_region_exact(c, region, true, true);
    }
}

void RootCanvas::displayDirtyRegions(Canvas* canvas)
{
    static Qv::TimedTask& task = Qv::TimedTaskManager::instance().task("RootCanvas::displayDirtyRegions");
    Qv::TimedTask::Run run(task);
    // Damage under another window's root is that root's to show.
    if (canvas && canvas->getRootParent() != this)
        return;
    tela_display_root_dirty_regions(this, canvas);
}

void RootCanvas::drawBackground(Qv::Ptr<iGraphicPrimitivesRenderer>& renderer)
{
    // A bottom child over the whole window leaves nothing to see.
    if (oldestChild && region_eq(oldestChild->shape(), shape()))
        return;
    tela_fill_root_background(this, renderer, TopDownRect{0, 0, getWidth(), getHeight()});
}

void RootCanvas::displaySubtree(Canvas* first, Qv::Ptr<iGraphicPrimitivesRenderer>& renderer)
{
    for (Canvas* c = first; c; c = c->youngerSibling) {
        // Unmapped or wholly covered: skipped with everything on it. A canvas
        // that only its own children cover is not hidden: they show, and so
        // does what it draws outside its shape (its shadow).
        if (!c->mapped)
            continue;
        if (!c->visibleRegion() && !(c->oldestChild && canvupd_uncovered_region(c)))
            continue;
        c->display(renderer);
        displaySubtree(c->oldestChild, renderer);
    }
}

Qv::Ptr<iImage> RootCanvas::grabImage()
{
    if (!window || tela_display_road(this) != DisplayRoad::Composited)
        return nullptr;
    Qv::Ptr<iImage> image;
    if (!window->createOffscreenImage(image, getDimensions()) || !image)
        return nullptr;
    CriticalSection::Guard guard(Qv::FxResources::Manager::instance().frameLock());
    Qv::Ptr<iGraphicPrimitivesRenderer> renderer;
    if (image->getRenderer(renderer, 1) && renderer) {
        drawBackground(renderer);
        displaySubtree(oldestChild, renderer);
    }
    return image;
}

void RootCanvas::reshapeToWindow()
{
    if (!window)
        return;
    const int old_height = shape() ? getHeight() : 0;
    shape(window_shape(window));
    tela_refresh_wallpaper(this);
    const int delta = old_height ? getHeight() - old_height : 0;
    if (delta == 0)
        return;
    // Canvas y counts up from the bottom of the window: a taller window would
    // otherwise drag every canvas down with its bottom edge.
    for (Canvas* c = canvas_walk_subtree(this, nullptr); c && c != this; c = canvas_walk_subtree(this, c)) {
        c->matrix[1][2] += delta;
        double inverse[3][3];
        if (mat3_inv(c->matrix, inverse))
            std::memcpy(c->inverseMatrix, inverse, sizeof inverse);
    }
}

void tela_restart_tick()
{
    TelaState& state = tela_state();
    state.tickTimer = nullptr; // released first: one tick at a time
    Canvas* const first = tela_rootcanvas();
    Qv::Ptr<iPeriodicTimer> tick;
    if (first && first->window && first->window->createPeriodicTimer(tick, tela_tick_interval()))
        state.tickTimer = tick;
}

void tela_addRootWindow(RootCanvas* root, const Qv::Ptr<iEventHandler>& handler)
{
    tela_state().rootWindows.push_back(RootWindowRec(root, handler, tela_window_colour_preference()));
}

RootCanvas* tela_createRootCanvas(const iRootWindow::InitArgs& args)
{
    Qv::Ptr<iRootWindow> window;
    if (!OS()->windowing()->createRootWindow(window, static_cast<std::int32_t>(args.mode)) || !window)
        return nullptr;
    // Initialised first, so that the root's shape is the size asked for.
    if (!window->initWindow(args))
        return nullptr;
    auto* root = new (std::nothrow) RootCanvas(window);
    if (!root)
        return nullptr;
    tela_addRootWindow(root, args.eventHandler);
    root->interest |= EventType::TIMER_TICK; // the root takes the timer ticks
    event_set_kbd_focus(root);
    tela_setcanvas(root);
    tela_root_row(root)->wallpaperProvider = args.wallpaper;
    tela_refresh_wallpaper(root);
    if (!tela_state().tickTimer)
        tela_restart_tick();
    // The rounded shapes are drawn by shaders on a composited window; finding
    // them now keeps the first frame from stalling on it.
    if (tela_display_road(root) == DisplayRoad::Composited) {
        tela_shader(Tela::Shader::RoundedRectangle);
        tela_shader(Tela::Shader::Ellipse);
    }
    // The default fonts, plain and bold, so that the first text drawn does not
    // wait for them.
    Tela::loadFont(getDefaultFontName(0), getDefaultFontSize(), 0);
    Tela::loadFont(getDefaultFontName(0), getDefaultFontSize(), 1);
    // The first whole-window paint: a new window's frame is empty, and not
    // every platform asks for a paint when it first shows. On the host road
    // this paints the backdrop now; on a composited window it asks for a frame.
    canvupd_mark_all(root);
    return root;
}

void tela_fill_root_background(Canvas* root, Qv::Ptr<iGraphicPrimitivesRenderer>& renderer, const TopDownRect& area,
                               const XY<int>& targetOrigin)
{
    const RootWindowRec* row = tela_root_row(root);
    if (!renderer || !row)
        return;
    if (row->wallpaperImage) {
        tela_tile_image(row->wallpaperImage, *renderer, area,
                        XY<int>{area.left + targetOrigin.x, area.top + targetOrigin.y});
        return;
    }
    const RectDescription fill(area, fromColour(row->rootColour));
    renderer->drawRects(&fill, 1);
}

RootWindowRec* tela_root_row(Canvas* canvas)
{
    if (!canvas)
        return nullptr;
    Canvas* root = canvas->getRootParent();
    for (RootWindowRec& row : tela_state().rootWindows)
        if (row.rootCanvas == root)
            return &row;
    return nullptr;
}
