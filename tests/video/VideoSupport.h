// Shared by the video window tests: a headless window with canvases on it,
// frames of one colour, and the main thread's share of the event queue.
#pragma once

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/Mapping.h"
#include "tela/canvas/RootCanvas.h"
#include "tela/canvas/UpdateTracking.h"
#include "tela/events/Event.h"
#include "tela/events/EventHandler.h"
#include "tela/events/EventQueue.h"
#include "tela/render/CanvasRenderer.h"
#include "tela/render/VideoWindow.h"

#include "headless/HeadlessRootWindow.h"
#include "headless/HeadlessServices.h"
#include "headless/HostImage.h"
#include "headless/VideoChildWindow.h"
#include "support/PaintForwarder.h"

#include <cstdint>

namespace VideoTest {

constexpr std::uint32_t RED = 0xFFE02020u, GREEN = 0xFF20C040u, BLUE = 0xFF2040E0u;

// A canvas at window rectangle (left, top, width, height), filled with `argb`.
inline Canvas* painted(Canvas* parent, int left, int top, int width, int height, std::uint32_t argb)
{
    Canvas* c = tela_newcanvas(nullptr, parent);
    tela_placecanvas(c, TopDownRect { left, top, left + width, top + height });
    const NormalisedRGB colour((argb >> 16 & 255) / 255.0f, (argb >> 8 & 255) / 255.0f, (argb & 255) / 255.0f);
    c->beginRender();
    c->renderer.render(Tela::RectDescription(Qv::Box<int> { 0, 0, width, height }, colour));
    c->endRender();
    return c;
}

inline Qv::Ptr<iGPUImage> frame_of(std::uint32_t argb, XY<int> size = { 16, 16 })
{
    Qv::Ptr<Headless::HostImage> image = Headless::HostImage::create(size);
    image->fill(argb);
    return image;
}

// Hands every queued event to its handler, as the dispatcher does.
inline int dispatch_all()
{
    int delivered = 0;
    while (Event* event = event_receive()) {
        if (EventHandler* target = event->getEventHandlerObj(); EventHandler::valid(target, IdStamp(0, 0, 0))) {
            target->handleEvent(*event);
            ++delivered;
        }
        event_free(event);
    }
    return delivered;
}

// A 200 x 150 root window on the road `road`, its paints forwarded, deleted
// with the fixture; the video canvas at (20, 20), 80 x 60, red.
class Scene {
public:
    explicit Scene(iImageBase::eLocation road = iImageBase::eHostMemory, bool shapeable = true)
    {
        event_queue_init();
        auto& windowing = *Headless::services().windowing();
        windowing.setDefaultDisplayLocation(road);
        windowing.setChildWindowsShapeable(shapeable);
        iRootWindow::InitArgs args;
        args.size = { 200, 150 };
        args.eventHandler = sink;
        root = tela_createRootCanvas(args);
        windowing.setDefaultDisplayLocation(iImageBase::eHostMemory);
        sink->root = root;
        window = Qv::dynamicCast<Headless::RootWindow>(root->window);
        video = painted(root, 20, 20, 80, 60, 0xFF808080u);
        settle();
    }
    ~Scene()
    {
        settle();
        tela_deletecanvas(root);
        Headless::services().windowing()->setChildWindowsShapeable(true);
    }
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    void settle()
    {
        dispatch_all();
        Headless::services().windowing()->mainLoop().runPending();
    }
    Headless::VideoChildWindow* child() const
    {
        return window->children().empty() ? nullptr : window->children().front();
    }
    std::uint32_t shownAt(int x, int y) const { return window->shownPixels()->pixelAt(x, y); }

    Qv::Ptr<PaintForwarder> sink = Qv::make<PaintForwarder>();
    RootCanvas* root = nullptr;
    Qv::Ptr<Headless::RootWindow> window;
    Canvas* video = nullptr;
    const Qv::Box<int> whole { 0, 0, 80, 60 };   // the video canvas, bottom-up
};

} // namespace VideoTest
