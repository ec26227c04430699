// A whole window painted on both display roads and compared with one
// reference picture: opaque, translucent, shaped and nested canvases, moved
// and restacked after the first paint.

#include "tela/state/TelaState.h"
#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/RootAppearance.h"
#include "tela/canvas/RootCanvas.h"
#include "tela/canvas/ScreenGrab.h"
#include "tela/canvas/UpdateTracking.h"
#include "tela/colour/Palette.h"
#include "tela/core/Preferences.h"
#include "tela/platform/OS.h"
#include "tela/platform/iWindowingService.h"
#include "tela/events/EventQueue.h"
#include "tela/render/CanvasRenderer.h"
#include "tela/vector/Regions.h"

#include "headless/HeadlessRootWindow.h"
#include "headless/HeadlessServices.h"
#include "headless/HostImage.h"
#include "support/PaintForwarder.h"
#include "support/ReferencePicture.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr int WIDTH = 240, HEIGHT = 160;

// A canvas at window rectangle (left, top, width, height), cut by `shape` (in
// its own box, top-down) when given, and filled with one colour through its
// renderer, which reports the damage at endRender. A lightweight one draws
// into its parent's buffer.
Canvas* painted(Canvas* parent, int left, int top, int width, int height, std::uint32_t argb,
                RegionPtr shape = {}, bool lightweight = false)
{
    Canvas* c = tela_newcanvas(nullptr, parent);
    c->lightweight = lightweight ? 1 : 0; // first, so that it gets no buffer of its own
    tela_placecanvas(c, TopDownRect{left, top, left + width, top + height}, shape);
    const NormalisedRGB colour((argb >> 16 & 255) / 255.0f, (argb >> 8 & 255) / 255.0f, (argb & 255) / 255.0f);
    c->beginRender();
    c->renderer.render(Tela::RectDescription(Qv::Box<int>{0, 0, width, height}, colour));
    c->endRender();
    return c;
}

// A backdrop of 16 x 16 tiles, two greys checkered in 8 x 8 squares, so that
// a tile placed off the window's grid shows as a seam. Counts its calls.
class CheckerWallpaper final : public iWallpaperProvider {
public:
    int calls = 0;
    XY<int> lastSize;

    Qv::Ptr<iImage> getWallpaper(const XY<int>& size) override
    {
        ++calls;
        lastSize = size;
        Qv::Ptr<Headless::HostImage> tile = Headless::HostImage::create({16, 16});
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < 16; ++x) {
                const std::uint32_t argb = ((x / 8 + y / 8) % 2) ? 0xFF505860u : 0xFF383C44u;
                std::memcpy(tile->data() + y * tile->stride() + x * 4, &argb, 4);
            }
        return tile;
    }
};
// A root window of `size` on the display road `road`, whose paint events go
// back to the library; the next windows are made on the host road again.
RootCanvas* root_on(iImageBase::eLocation road, XY<int> size, const Qv::Ptr<PaintForwarder>& sink,
                    Qv::Ptr<iWallpaperProvider> wallpaper = {})
{
    Headless::services().windowing()->setDefaultDisplayLocation(road);
    iRootWindow::InitArgs args;
    args.size = size;
    args.wallpaper = std::move(wallpaper);
    args.eventHandler = sink;
    RootCanvas* root = tela_createRootCanvas(args);
    Headless::services().windowing()->setDefaultDisplayLocation(iImageBase::eHostMemory);
    sink->root = root;
    return root;
}

} // namespace

// A root window on the road under test, deleted with the test.
class DisplayRoads : public ::testing::TestWithParam<iImageBase::eLocation> {
protected:
    void open(XY<int> size, Qv::Ptr<iWallpaperProvider> wallpaper = {})
    {
        root = root_on(GetParam(), size, sink, std::move(wallpaper));
        ASSERT_NE(root, nullptr);
        window = Qv::dynamicCast<Headless::RootWindow>(root->window);
    }
    void TearDown() override
    {
        if (root)
            tela_deletecanvas(root);
    }

    const Qv::Ptr<PaintForwarder> sink = Qv::make<PaintForwarder>();
    RootCanvas* root = nullptr;
    Qv::Ptr<Headless::RootWindow> window;
};

TEST_P(DisplayRoads, ADozenCanvasesPaintMovedAndRestackedAsTheReferenceShows)
{
    open({WIDTH, HEIGHT}, Qv::make<CheckerWallpaper>());
    ASSERT_EQ(window->displayLocation(), GetParam());
    Canvas* glass = nullptr;
    Canvas* moving = nullptr;
    {
        Tela::UpdateDeferrer deferrer(nullptr, true);
        Canvas* panel = painted(root, 10, 10, 120, 90, 0xFF3060C0);                     // opaque blue panel
        painted(panel, 20, 20, 40, 30, 0xFFF0F0F0);                                    // nested, light
        painted(panel, 70, 20, 40, 30, 0xFFE0A020);                                    // nested, amber
        painted(panel, 30, 60, 80, 20, 0xFF60C0F0, {}, true);                          // lightweight, in the panel's buffer
        painted(root, 150, 10, 80, 60, 0xFF20A050, makeCurvedRegion({80, 60}, 15, eLargeCorners)); // rounded
        painted(root, 150, 80, 80, 70, 0xFFC03030, makeCurvedRegion({80, 70}, 9, eSmallCorners));  // two corners
        glass = painted(root, 90, 60, 90, 60, 0xFFFFFFFF);                             // translucent white
        glass->setOpacity(0.5);
        painted(root, 10, 110, 130, 20, 0xFF202020);                                   // dark strip
        painted(root, 20, 135, 20, 20, 0xFF8040C0);                                    // small squares
        painted(root, 50, 135, 20, 20, 0xFF40C0C0);
        moving = painted(root, 80, 135, 20, 20, 0xFFC0C040);
    }
    // Move one square and push the translucent one below the panel.
    tela_translatecanvas(moving, 30, 0); // 30 to the right
    canvas_push_to_bottom(glass);
    // The composited road only asked for a frame, and however many changes
    // asked, one paint event draws it. The host road has drawn already.
    Headless::services().windowing()->mainLoop().runPending();
    EXPECT_EQ(sink->paints, GetParam() == iImageBase::eGPU ? 1 : 0);

    EXPECT_TRUE(shows_reference(*window, "host_road.png",
                                GetParam() == iImageBase::eGPU ? "composited_road.png" : "host_road.png",
                                GetParam() == iImageBase::eHostMemory));

    // A grab draws the frame again into an image of its own; the host road
    // has no frame to draw, and the screen is composed from the buffers.
    const Qv::Ptr<iImage> grabbed = root->grabImage();
    EXPECT_EQ(static_cast<bool>(grabbed), GetParam() == iImageBase::eGPU);
    const auto screen = Qv::dynamicCast<Headless::HostImage>(tela_getScreenRect());
    ASSERT_TRUE(screen);
    EXPECT_EQ(differing_pixels(*screen, *window->pixels(), 1), 0);
    // A part of it: the bottom-up box (150, 10)-(230, 40) is the window's
    // rows 120 to 150, across the small squares.
    const auto part = Qv::dynamicCast<Headless::HostImage>(tela_getScreenRect(Qv::Box<int>{150, 10, 230, 40}));
    ASSERT_TRUE(part);
    EXPECT_EQ(part->pixelAt(0, 20), window->pixels()->pixelAt(150, 140));
}

INSTANTIATE_TEST_SUITE_P(BothRoads, DisplayRoads, ::testing::Values(iImageBase::eHostMemory, iImageBase::eGPU),
                         [](const auto& info) { return info.param == iImageBase::eGPU ? "composited" : "host"; });

TEST_P(DisplayRoads, ANewWindowShowsItsColourWhereNoCanvasCoversIt)
{
    open({40, 30});
    Headless::services().windowing()->mainLoop().runPending();
    const std::uint32_t shown = window->pixels()->pixelAt(5, 5);
    EXPECT_EQ(shown >> 24, 0xFFu) << std::hex << shown; // opaque, not the empty frame
    // What a later whole-window paint, such as an expose, would show.
    window->invalidate(nullptr);
    Headless::services().windowing()->mainLoop().runPending();
    EXPECT_EQ(window->pixels()->pixelAt(5, 5), shown);
    EXPECT_EQ(window->pixels()->pixelAt(39, 29), shown);
}

TEST_P(DisplayRoads, ACanvasThatOnlyItsOwnChildCoversStillShowsTheChild)
{
    open({60, 40});
    // A page filling its frame exactly, as a tab of a dialogue does.
    Canvas* frame = painted(root, 10, 10, 40, 20, 0xFFC03030, makeCurvedRegion({40, 20}, 5, eLargeCorners));
    painted(frame, 10, 10, 40, 20, 0xFF30C030, makeCurvedRegion({40, 20}, 5, eLargeCorners));
    Headless::services().windowing()->mainLoop().runPending();
    EXPECT_EQ(window->pixels()->pixelAt(30, 20), 0xFF30C030u);
}

TEST(RootCanvas, ATallerWindowKeepsCanvasesAtTheirDistanceFromTheTop)
{
    const auto wallpaper = Qv::make<CheckerWallpaper>();
    iRootWindow::InitArgs args;
    args.size = {200, 100};
    args.wallpaper = wallpaper;
    RootCanvas* root = tela_createRootCanvas(args);
    ASSERT_NE(root, nullptr);
    Canvas* child = painted(root, 10, 10, 20, 20, 0xFF000000);
    Canvas* grandchild = painted(child, 12, 12, 5, 5, 0xFF000000);
    const double child_y = child->matrix[1][2];
    const double grandchild_y = grandchild->matrix[1][2];
    Qv::Box<int> shape_before;
    child->shape()->getBox(shape_before);

    Qv::dynamicCast<Headless::RootWindow>(root->window)->setSize({200, 130});
    root->reshapeToWindow();
    EXPECT_EQ(root->getHeight(), 130);
    EXPECT_EQ(child->matrix[1][2], child_y + 30);
    EXPECT_EQ(grandchild->matrix[1][2], grandchild_y + 30);
    EXPECT_EQ(child->inverseMatrix[1][2], -(child_y + 30));
    Qv::Box<int> shape_after;
    child->shape()->getBox(shape_after);
    EXPECT_EQ(shape_after, shape_before); // shapes stay where they are in the window
    // The backdrop is asked for again at the new size.
    EXPECT_EQ(wallpaper->calls, 2);
    EXPECT_EQ(wallpaper->lastSize, (XY<int>{200, 130}));

    tela_deletecanvas(root);
}

// A window's class that counts what the refresh cycle hands it.
class CountingRoot final : public RootCanvas {
public:
    using RootCanvas::RootCanvas;
    void displayDirtyRegions(Canvas* canvas) override
    {
        shown.push_back(canvas);
        RootCanvas::displayDirtyRegions(canvas);
    }
    std::vector<Canvas*> shown;
};

TEST(RootCanvas, TheRefreshShowsDamageThroughTheRootsOwnDisplayDirtyRegions)
{
    iRootWindow::InitArgs args;
    args.size = {100, 80};
    Qv::Ptr<iRootWindow> window;
    ASSERT_TRUE(OS()->windowing()->createRootWindow(window, 0) && window && window->initWindow(args));
    auto* root = new CountingRoot(window);
    tela_addRootWindow(root, nullptr);
    Canvas* child = painted(root, 10, 10, 20, 20, 0xFF00FF00);
    root->shown.clear();
    {
        Tela::UpdateDeferrer deferrer(nullptr, true);
        child->beginRender();
        child->renderer.render(Tela::RectDescription(Qv::Box<int>{0, 0, 5, 5}, NormalisedRGB(1.0f, 0.0f, 0.0f)));
        child->endRender();
        EXPECT_TRUE(root->shown.empty());   // not while deferred
    }
    EXPECT_EQ(root->shown, (std::vector<Canvas*>{child}));
    tela_deletecanvas(root);
}

TEST(RootCanvas, TheWindowColourIsTheUsersChoiceFromRunToRun)
{
    iRootWindow::InitArgs args;
    args.size = {40, 30};
    RootCanvas* first = tela_createRootCanvas(args);
    ASSERT_NE(first, nullptr);
    const Colour chosen(0.2, 0.4, 0.6, true);
    tela_setRootColour(first, chosen);
    EXPECT_EQ(tela_rootColour(first).g, chosen.g);
    EXPECT_EQ(prefs().getPreference("UI : Window colour"), String("336699"));

    // A canvas with no root reads as black and changes nothing.
    Canvas* stray = tela_newcanvas(nullptr, nullptr);
    EXPECT_EQ(tela_rootColour(stray).r, 0.0f);
    tela_setRootColour(stray, Colour(1, 1, 1, true));
    EXPECT_EQ(prefs().getPreference("UI : Window colour"), String("336699"));
    tela_deletecanvas(stray);

    // The next root, as in the next run, starts with it and paints with it.
    const auto sink = Qv::make<PaintForwarder>();
    RootCanvas* second = root_on(iImageBase::eGPU, {40, 30}, sink);
    ASSERT_NE(second, nullptr);
    second->window->invalidate(nullptr);
    Headless::services().windowing()->mainLoop().runPending();
    EXPECT_EQ(Qv::dynamicCast<Headless::RootWindow>(second->window)->pixels()->pixelAt(5, 5), 0xFF336699u);

    // A value that is not a colour falls back on the default, with no fuss.
    prefs().setPreference("UI : Window colour", String("teal"));
    EXPECT_EQ(tela_window_colour_preference(), Palette::defaultWindow());

    tela_deletecanvas(second);
    tela_deletecanvas(first);
}

TEST(RootCanvas, ANewWallpaperTakesEffectOnlyWhileChangesAreEnabled)
{
    iRootWindow::InitArgs args;
    args.size = {64, 48};
    RootCanvas* root = tela_createRootCanvas(args);
    ASSERT_NE(root, nullptr);
    std::vector<std::string> heard;
    auto guard = Tela::addListener(Qv::makeCallback<int, NotifyMsg>([&](const NotifyMsg& message) {
        heard.push_back(message.text().c_str());
        return 0;
    }), 11);
    const auto wallpaper = Qv::make<CheckerWallpaper>();

    tela_setRootTextureChangeEnabled(false);
    tela_setRootTexture(root, wallpaper, true);
    EXPECT_EQ(wallpaper->calls, 0);
    EXPECT_FALSE(tela_rootTexture(root));

    tela_setRootTextureChangeEnabled(true);
    tela_setRootTexture(root, wallpaper, true);
    EXPECT_EQ(wallpaper->lastSize, (XY<int>{64, 48}));
    ASSERT_TRUE(tela_rootTexture(root));
    EXPECT_EQ(heard, std::vector<std::string>{"tela_setRootTexture"});
    // The whole window repainted, from the new backdrop.
    EXPECT_EQ(Qv::dynamicCast<Headless::RootWindow>(root->window)->pixels()->pixelAt(0, 0), 0xFF383C44u);
    EXPECT_EQ(Qv::dynamicCast<Headless::RootWindow>(root->window)->pixels()->pixelAt(8, 0), 0xFF505860u);

    tela_setRootTextureChangeEnabled(false);
    tela_deletecanvas(root);
}

TEST_P(DisplayRoads, ACanvasPlacedAgainShowsAtItsNewRectangleAndUncoversTheOld)
{
    open({80, 40});
    painted(root, 0, 0, 80, 40, 0xFFC03030);                  // red below
    Canvas* blue = painted(root, 5, 5, 20, 20, 0xFF3030C0);  // blue on top
    Headless::services().windowing()->mainLoop().runPending();
    ASSERT_EQ(window->pixels()->pixelAt(10, 10), 0xFF3030C0u);

    // Same size: the pixels go with it, as a move takes them.
    tela_placecanvas(blue, TopDownRect{45, 10, 65, 30});
    Headless::services().windowing()->mainLoop().runPending();
    EXPECT_EQ(window->pixels()->pixelAt(10, 10), 0xFFC03030u);   // the old place shows what was below
    EXPECT_EQ(window->pixels()->pixelAt(50, 15), 0xFF3030C0u);   // the new one shows the canvas
    EXPECT_EQ(window->pixels()->pixelAt(64, 29), 0xFF3030C0u);
}
