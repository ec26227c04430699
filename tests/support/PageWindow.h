#pragma once
// PageWindow: a root window on one display road holding one page canvas, as
// the gallery's pages sit in its window: `margin` pixels in from the top-left
// corner, rounded. Paint events go back to the library, so show() draws the
// window as an application's main loop would. The window goes with it.

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/RootCanvas.h"
#include "tela/vector/Regions.h"

#include "headless/HeadlessRootWindow.h"
#include "headless/HeadlessServices.h"
#include "support/PaintForwarder.h"

#include <string>

class PageWindow {
public:
    PageWindow(iImageBase::eLocation road, XY<int> pageSize, int margin = 8)
    {
        Headless::services().windowing()->setDefaultDisplayLocation(road);
        iRootWindow::InitArgs args;
        args.size = {pageSize.x + 2 * margin, pageSize.y + 2 * margin};
        args.eventHandler = sink;
        root = tela_createRootCanvas(args);
        Headless::services().windowing()->setDefaultDisplayLocation(iImageBase::eHostMemory);
        if (!root)
            return;
        sink->root = root;
        page = tela_newcanvas(nullptr, root);
        tela_placecanvas(page, TopDownRect{margin, margin, margin + pageSize.x, margin + pageSize.y},
                         makeCurvedRegion(pageSize, 15, eLargeCorners));
    }
    ~PageWindow()
    {
        if (root)
            tela_deletecanvas(root);
    }
    PageWindow(const PageWindow&) = delete;
    PageWindow& operator=(const PageWindow&) = delete;

    void show() const { Headless::services().windowing()->mainLoop().runPending(); }
    Headless::RootWindow& window() const { return *Qv::dynamicCast<Headless::RootWindow>(root->window); }

    Qv::Ptr<PaintForwarder> sink = Qv::make<PaintForwarder>();
    RootCanvas* root = nullptr;
    Canvas* page = nullptr;
};

inline std::string road_name(iImageBase::eLocation road)
{
    return road == iImageBase::eGPU ? "composited" : "host";
}
