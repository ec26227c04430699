// What a window shows and what a copy of its screen holds must be laid out by
// the same rules: the frame, the host road's blits and the screen grabs all
// lay canvases through one routine, with the window's road as the rule. Each
// scene holds what the two roads lay differently: a shaped translucent
// canvas, a rectangular one, one nested in an opaque panel, and a canvas a
// translucent sibling covers wholly.

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/RootCanvas.h"
#include "tela/canvas/ScreenGrab.h"
#include "tela/canvas/UpdateTracking.h"
#include "tela/canvas/Wipe.h"
#include "tela/colour/CurrentColour.h"
#include "tela/vector/Regions.h"

#include "headless/HeadlessRootWindow.h"
#include "headless/HeadlessServices.h"
#include "headless/HostImage.h"
#include "support/PaintForwarder.h"
#include "support/PixelCompare.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

constexpr int WIDTH = 160, HEIGHT = 120;

struct Window {
    explicit Window(iImageBase::eLocation location)
    {
        Headless::services().windowing()->setDefaultDisplayLocation(location);
        iRootWindow::InitArgs args;
        args.size = {WIDTH, HEIGHT};
        args.eventHandler = sink;
        root = tela_createRootCanvas(args);
        Headless::services().windowing()->setDefaultDisplayLocation(iImageBase::eHostMemory);
        sink->root = root;
        pixels = root ? Qv::dynamicCast<Headless::RootWindow>(root->window)->pixels() : nullptr;
    }
    ~Window()
    {
        if (root)
            tela_deletecanvas(root);
    }

    // A canvas at window rectangle (left, top, width, height), cut by `shape`
    // (in its own box, top-down) when given, cleared to one colour.
    Canvas* painted(Canvas* parent, int left, int top, int width, int height, std::uint32_t argb,
                    double opacity = 1.0, RegionPtr shape = {})
    {
        Canvas* c = tela_newcanvas(nullptr, parent);
        c->matrix[0][2] = left;
        c->matrix[1][2] = HEIGHT - top - height;
        c->inverseMatrix[0][2] = -left;
        c->inverseMatrix[1][2] = -(HEIGHT - top - height);
        c->shape(shape ? region_translate(shape, left, -top)
                       : region_mkrect(TopDownRect{left, top, left + width, top + height}));
        c->reshape({width, height});
        c->setOpacity(opacity);
        tela_setcanvas(c);
        // Packed colours hold red in the low byte.
        tela_setcolour(static_cast<int>((argb >> 16 & 255) | (argb & 0xFF00) | (argb & 255) << 16));
        tela_wipecanvas();
        tela_setcanvas(nullptr);
        return c;
    }

    // The scene, drawn under one deferrer and shown.
    void build()
    {
        {
            Tela::UpdateDeferrer deferrer(nullptr, true);
            Canvas* panel = painted(root, 10, 10, 90, 70, 0xFF3060C0);
            painted(panel, 20, 20, 30, 30, 0xFFF0F0F0);
            painted(panel, 60, 20, 30, 40, 0xFFE0A020, 0.5);                                        // nested, translucent
            painted(root, 70, 40, 60, 50, 0xFF20A050, 0.5, makeCurvedRegion({60, 50}, 15, eLargeCorners)); // shaped
            painted(root, 40, 60, 100, 40, 0xFFFFFFFF, 0.4);                                        // rectangular
            painted(root, 120, 95, 20, 15, 0xFFC03030);                                             // wholly covered
            painted(root, 115, 90, 40, 25, 0xFF202020, 0.6);                                        // ... by this one
        }
        Headless::services().windowing()->mainLoop().runPending();
    }

    Qv::Ptr<PaintForwarder> sink = Qv::make<PaintForwarder>();
    RootCanvas* root = nullptr;
    Qv::Ptr<Headless::HostImage> pixels;
};

// Pixels of a grabbed image that differ from the window's at (left, top)
// onwards by more than `tolerance`; -1 when nothing was grabbed.
int grab_differs(const Qv::Ptr<iImage>& grabbed, const Headless::HostImage& window, int left, int top, int tolerance)
{
    const auto image = Qv::dynamicCast<Headless::HostImage>(grabbed);
    return image ? differing_pixels(*image, window, tolerance, left, top) : -1;
}

} // namespace

TEST(Composition, AGrabOfACompositedWindowHoldsExactlyWhatItsFrameShows)
{
    Window window(iImageBase::eGPU);
    ASSERT_TRUE(window.root);
    window.build();
    ASSERT_EQ(window.sink->paints, 1);
    // The frame laid the shaped canvas at full strength: its middle is its own green.
    EXPECT_EQ(window.pixels->pixelAt(100, 50), 0xFF20A050u);

    // Both grabs lay canvases as the frame does, to the last bit.
    EXPECT_EQ(grab_differs(window.root->grabImage(), *window.pixels, 0, 0, 0), 0);
    EXPECT_EQ(grab_differs(tela_getScreenRect(Qv::Box<int>{0, 0, WIDTH, HEIGHT}), *window.pixels, 0, 0, 0), 0);
    // A part across all of them: bottom-up (30, 10)-(150, 90) is window rows 30 to 110.
    EXPECT_EQ(grab_differs(tela_getScreenRect(Qv::Box<int>{30, 10, 150, 90}), *window.pixels, 30, 30, 0), 0);
}

TEST(Composition, AGrabOfAHostWindowHoldsWhatItsBlitsShow)
{
    Window window(iImageBase::eHostMemory);
    ASSERT_TRUE(window.root);
    window.build();
    // The blit laid the shaped canvas at its opacity, over the panel's blue.
    EXPECT_NE(window.pixels->pixelAt(100, 50), 0xFF20A050u);

    // The translucent blits compose in a scratch image of their own: one step
    // of rounding per channel. A nested translucent canvas is blitted over
    // the whole of the root's children, itself among them, so its panel is
    // left out of the comparison.
    const Qv::Box<int> outside_panel{100, 0, WIDTH, HEIGHT - 30}; // window rows 30 to 120, columns 100 on
    EXPECT_EQ(grab_differs(tela_getScreenRect(outside_panel), *window.pixels, 100, 30, 1), 0);
}

TEST(Composition, DamageOnACompositedWindowWaitsForTheFrame)
{
    Window window(iImageBase::eGPU);
    ASSERT_TRUE(window.root);
    window.build();
    const int paints = window.sink->paints;
    Canvas* top = window.painted(window.root, 5, 100, 20, 15, 0xFF8040C0); // refresh on: flushed at once
    EXPECT_NE(window.pixels->pixelAt(10, 105), 0xFF8040C0u); // not blitted into the frame
    Headless::services().windowing()->mainLoop().runPending();
    EXPECT_EQ(window.sink->paints, paints + 1);
    EXPECT_EQ(window.pixels->pixelAt(10, 105), 0xFF8040C0u);
    tela_deletecanvas(top);
}
