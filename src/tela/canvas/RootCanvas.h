#pragma once
// RootCanvas: the canvas that stands for one native window. It tops a canvas
// tree, paints the window's background and carries out the display roads.
// Listeners hear a RootCanvasEvent just before a composited frame is drawn.

#include "tela/canvas/Canvas.h"
#include "tela/core/Notifier.h"
#include "tela/platform/iRootWindow.h"

#include <cstdint>

struct RootWindowRec;

struct RootCanvasEvent {
    std::int32_t value = 0;
};

class RootCanvas : public Canvas, public GenericNotifier<RootCanvasEvent> {
public:
    // The shape is the window's box; the row in the library state is added
    // by tela_addRootWindow and removed by the destructor.
    explicit RootCanvas(const Qv::Ptr<iRootWindow>& window);
    ~RootCanvas() override;

    // Repaint of a window region (null: the whole window) on request.
    virtual void display(Qv::Ptr<iRegion> region);
    virtual void displayDirtyRegions(Canvas* canvas);
    virtual void drawBackground(Qv::Ptr<iGraphicPrimitivesRenderer>& renderer);

    // The tree drawn into a new image as a composited frame would show it;
    // null on the host road, whose canvases are read from the window instead.
    Qv::Ptr<iImage> grabImage();

    // The native window changed size: new shape, and every canvas keeps its
    // distance from the top of the window.
    void reshapeToWindow();

private:
    // Paints `first` and its younger siblings, each followed by its subtree.
    void displaySubtree(Canvas* first, Qv::Ptr<iGraphicPrimitivesRenderer>& renderer);
};

// The row of the root canvas of `canvas`; null when it has none.
RootWindowRec* tela_root_row(Canvas* canvas);
// Appends the row of a root: its event sink, and the window colour the user
// chose last.
void tela_addRootWindow(RootCanvas* root, const Qv::Ptr<iEventHandler>& handler);

// The library's one periodic tick, from the first root's window, started
// afresh (the first root's window is what its events go to).
void tela_restart_tick();

// Makes the window and its root canvas, which takes the keyboard focus and
// becomes the current canvas; the window's events go to args.eventHandler.
// Null when the window cannot be made.
RootCanvas* tela_createRootCanvas(const iRootWindow::InitArgs& args);

// Fills `area` of the renderer's target with the root's background: the
// wallpaper tiled from the window's corner, or the window colour. The
// target's top-left pixel shows the window at `targetOrigin`; (0, 0) for the
// window itself.
void tela_fill_root_background(Canvas* root, Qv::Ptr<iGraphicPrimitivesRenderer>& renderer, const TopDownRect& area,
                               const XY<int>& targetOrigin = XY<int>(0, 0));
