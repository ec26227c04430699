#include "canvas/RootCanvas.h"

#include "app/TelaState.h"
#include "canvas/CanvasGeometry.h"
#include "canvas/CanvasTree.h"
#include "canvas/CanvasWalk.h"
#include "canvas/DisplayPipeline.h"
#include "canvas/UpdateTracking.h"
#include "events/EventQueue.h"
#include "platform/GraphicPrimitives.h"
#include "platform/OS.h"
#include "platform/iWindowingService.h"
#include "vector/Matrix.h"
#include "vector/Regions.h"

#include <algorithm>
#include <cstring>

namespace {

RegionPtr window_shape(const Qv::Ptr<iRootWindow>& window)
{
    Qv::Box<int> box;
    window->getBox(box);
    return region_mkrect(TopDownRect{0, 0, box.x2 - box.x1, box.y2 - box.y1});
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
    if (window->displayLocation() != iImageBase::eHostMemory) {
        // A whole frame, back to front; the region asked for is not consulted.
        issueNotification(RootCanvasEvent{0}, NotifyMsgTypeDictionary::instance().allTypesId);
        static CriticalSection s_frame_lock; // one composited frame at a time
        CriticalSection::Guard guard(s_frame_lock);
        Qv::Ptr<iGraphicPrimitivesRenderer> renderer;
        if (!window->getRenderer(renderer, 1) || !renderer)
            return;
        renderer->setClip(nullptr);
        drawBackground(renderer);
        displaySubtree(oldestChild, renderer);
        renderer = nullptr; // presents the frame
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
    tela_display_dirty_regions(canvas ? canvas : this);
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
        // Unmapped or wholly covered: skipped with everything on it.
        if (!c->mapped || !c->getVisibleRegion())
            continue;
        c->display(renderer);
        displaySubtree(c->oldestChild, renderer);
    }
}

void RootCanvas::reshapeToWindow()
{
    if (!window)
        return;
    const int old_height = shape() ? getHeight() : 0;
    shape(window_shape(window));
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

void tela_addRootWindow(RootCanvas* root, const Qv::Ptr<iEventHandler>& handler)
{
    tela_state().rootWindows.push_back(RootWindowRec(root, handler));
}

RootCanvas* tela_createRootCanvas(const iRootWindow::InitArgs& args, const Qv::Ptr<iEventHandler>& handler)
{
    Qv::Ptr<iRootWindow> window;
    if (!OS()->windowing()->createRootWindow(window, args.mode) || !window)
        return nullptr;
    if (!window->initWindow(args))
        return nullptr;
    auto* root = new (std::nothrow) RootCanvas(window);
    if (!root)
        return nullptr;
    tela_addRootWindow(root, handler);
    root->interest |= 0x1001; // the root takes the timer ticks
    event_set_kbd_focus(root);
    tela_setcanvas(root);
    return root;
}

void tela_fill_root_background(Canvas* root, Qv::Ptr<iGraphicPrimitivesRenderer>& renderer, const TopDownRect& area)
{
    const RootWindowRec* row = tela_root_row(root);
    if (!renderer || !row)
        return;
    const RectDescription fill(area, row->rootColour);
    renderer->drawRects(&fill, 1);
}
