// The gallery: what Tela can show so far. With a display it opens a window
// (close it to end); without one, or with TELA_BACKEND=headless, it paints
// on the headless platform and writes screenshots, one per display road.
//
// Usage: gallery [directory for screenshots]   (default: the current directory)

#include "canvas/Canvas.h"
#include "canvas/CanvasGeometry.h"
#include "canvas/CanvasTree.h"
#include "canvas/CanvasWalk.h"
#include "canvas/RootCanvas.h"
#include "canvas/UpdateTracking.h"
#include "canvas/Wipe.h"
#include "colour/CurrentColour.h"
#include "events/EventQueue.h"
#include "vector/Regions.h"

#include "headless/HeadlessRootWindow.h"
#include "headless/HeadlessServices.h"
#include "headless/HostImage.h"
#include "platform/OS.h"
#include "platform/iWindowingService.h"
#include "sdl/SdlServices.h"

#include <cstdio>
#include <cstring>
#include <string>

namespace {

constexpr int kWidth = 640, kHeight = 400;

// Packed device colours: red in the low byte.
int packed(int red, int green, int blue)
{
    return red | green << 8 | blue << 16;
}

// A heavyweight canvas at a window rectangle, shaped by `outline` (in its own
// box) when given, cleared to a colour through the drawing state.
Canvas* panel(Canvas* parent, int left, int top, int width, int height, int colour, RegionPtr outline = {})
{
    Canvas* c = tela_newcanvas(nullptr, parent);
    c->matrix[0][2] = left;
    c->matrix[1][2] = kHeight - top - height;
    c->inverseMatrix[0][2] = -left;
    c->inverseMatrix[1][2] = -(kHeight - top - height);
    c->shape(outline ? region_translate(outline, left, -top)
                     : region_mkrect(TopDownRect{left, top, left + width, top + height}));
    c->reshape({width, height});
    tela_setcanvas(c);
    tela_setcolour(colour);
    tela_wipecanvas();
    return c;
}

// The window's events: paint requests repaint the root, a new size reshapes
// it, closing ends the loop; the rest waits for the library's own handler.
class WindowEvents final : public iEventHandler {
public:
    RootCanvas* root = nullptr;

    eRC handleEvent(const PaintEvent& event) override
    {
        if (root)
            root->display(event.region);
        return eHandled;
    }
    eRC handleEvent(const WindowEvent& event) override
    {
        const bool resized = event.kind == WindowEvent::eSizeChanged || event.kind == WindowEvent::eResized;
        if (resized && root)
            root->reshapeToWindow();
        if (event.kind == WindowEvent::eCloseRequest)
            OS()->windowing()->shutdownMessageLoop();
        return eHandled;
    }
    eRC handleEvent(const UserEvent&) override { return eNotHandled; }
    eRC handleEvent(const CursorEvent&) override { return eNotHandled; }
    eRC handleEvent(const FileDragDropEvent&) override { return eNotHandled; }
    eRC handleEvent(const UnhandledOSEvent&) override { return eNotHandled; }
    eRC handleEvent(const InterProcessEvent&) override { return eNotHandled; }
    eRC handleEvent(const TimerEvent&) override { return eNotHandled; }
    eRC handleEvent(const KeyEvent&) override { return eNotHandled; }
    eRC handleEvent(const MouseEvent&) override { return eNotHandled; }
};

// A quiet backdrop: 24 x 24 tiles of diagonal stripes in two dark greys.
class StripedWallpaper final : public iWallpaperProvider {
public:
    Qv::Ptr<iImage> getWallpaper(const XY<int>&) override
    {
        Qv::Ptr<Headless::HostImage> tile = Headless::HostImage::create({24, 24});
        if (!tile)
            return nullptr;
        for (int y = 0; y < 24; ++y)
            for (int x = 0; x < 24; ++x) {
                const std::uint32_t argb = (x + y) % 12 < 6 ? 0xFF2A2E34u : 0xFF30353Cu;
                std::memcpy(tile->data() + y * tile->stride() + x * 4, &argb, 4);
            }
        return tile;
    }
};

RootCanvas* open_window()
{
    const auto events = Qv::make<WindowEvents>();
    iRootWindow::InitArgs args;
    args.size = {kWidth, kHeight};
    args.wallpaper = Qv::make<StripedWallpaper>();
    args.flags = iRootWindow::InitArgs::eTitleBar; // a normal window of that size
    args.eventHandler = events;
    args.title = WString(u"Tela gallery");
    RootCanvas* root = tela_createRootCanvas(args);
    if (!root)
        return nullptr;
    events->root = root;
    {
        Tela::UpdateDeferrer deferrer(nullptr, true);
        Canvas* sidebar = panel(root, 0, 0, 160, kHeight, packed(22, 24, 28));
        for (int i = 0; i < 6; ++i)
            panel(sidebar, 12, 16 + i * 44, 136, 32, i == 2 ? packed(70, 120, 220) : packed(60, 66, 78),
                  makeCurvedRegion({136, 32}, 15, eSmallCorners));
        Canvas* content = panel(root, 176, 16, 448, 260, packed(250, 250, 252),
                                makeCurvedRegion({448, 260}, 15, eLargeCorners));
        panel(content, 200, 40, 190, 110, packed(230, 90, 70));
        panel(content, 410, 40, 190, 110, packed(80, 180, 120));
        panel(content, 200, 166, 400, 90, packed(90, 130, 210));
        Canvas* glass = panel(root, 300, 200, 260, 150, packed(255, 255, 255));
        glass->setOpacity(0.6);
        Canvas* status = panel(root, 176, 292, 448, 92, packed(60, 66, 78),
                               makeCurvedRegion({448, 92}, 15, eLargeCorners));
        tela_translatecanvas(status, 0, 0);
    }
    tela_setcanvas(nullptr);
    return root;
}

void close_window(RootCanvas* root)
{
    event_set_kbd_focus(nullptr);
    tela_setcanvas(nullptr);
    tela_deletecanvas(root);
}

bool paint_scene(iImageBase::eLocation road, const std::string& path)
{
    Headless::services().windowing()->setDefaultDisplayLocation(road);
    RootCanvas* root = open_window();
    if (!root)
        return false;
    // The window system asks for a first paint when the window appears.
    root->window->invalidate(nullptr);
    Headless::services().windowing()->mainLoop().runPending();
    auto window = Qv::dynamicCast<Headless::RootWindow>(root->window);
    const bool written = window && window->snapshot(path.c_str());
    close_window(root);
    return written;
}

// Shows the gallery until its window is closed.
int show_on_screen()
{
    RootCanvas* root = open_window();
    if (!root)
        return 1;
    std::printf("showing the gallery; close its window to end\n");
    const int result = OS()->windowing()->runMessageLoop();
    close_window(root);
    return result;
}

} // namespace

int main(int argc, char** argv)
{
    if (Sdl::wanted() && Sdl::install())
        return show_on_screen();
    const std::string directory = argc > 1 ? argv[1] : ".";
    int failures = 0;
    for (auto [road, name] : {std::pair{iImageBase::eHostMemory, "gallery-host.png"},
                              std::pair{iImageBase::eGPU, "gallery-composited.png"}}) {
        const std::string path = directory + "/" + name;
        if (paint_scene(road, path)) {
            std::printf("wrote %s\n", path.c_str());
        } else {
            std::fprintf(stderr, "could not write %s\n", path.c_str());
            ++failures;
        }
    }
    return failures == 0 ? 0 : 1;
}
