// A canvas with a shadow on all four sides, through the display pipeline. The
// composited road draws it round the canvas and is compared with a reference
// picture (look at it when it changes: it must read as a shadow); the host
// road copies buffers and draws none.

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/RootCanvas.h"
#include "tela/canvas/Wipe.h"
#include "tela/colour/CurrentColour.h"

#include "headless/HeadlessRootWindow.h"
#include "headless/HeadlessServices.h"
#include "support/PaintForwarder.h"
#include "support/ReferencePicture.h"

#include <gtest/gtest.h>

#include <string>

namespace {

constexpr int WIDTH = 120, HEIGHT = 90;

struct ShadowedWindow {
    explicit ShadowedWindow(iImageBase::eLocation road)
    {
        sink = Qv::make<PaintForwarder>();
        iRootWindow::InitArgs args;
        args.size = {WIDTH, HEIGHT};
        args.mode = road == iImageBase::eGPU ? 1 | iRootWindow::InitArgs::MODE_COMPOSITED : 1;
        args.eventHandler = sink;
        root = tela_createRootCanvas(args);
        sink->root = root;
        card = tela_newcanvas(nullptr, root);
        tela_placecanvas(card, TopDownRect{30, 25, 90, 65});
        tela_setcanvas(card);
        tela_setcolour(0xF0F0F0);
        tela_wipecanvas();
        tela_setcanvas(nullptr);
        SurroundParams shadow;
        shadow.size = 12;
        shadow.opacity = 0.6f;
        shadow.edges = SurroundParams::ALL_EDGES;
        shadow.colour = Colour(0.0, 0.0, 0.0, true);
        card->setEdgeEffect(shadow);
        root->window->invalidate(nullptr);
        Headless::services().windowing()->mainLoop().runPending();
    }
    ~ShadowedWindow() { tela_deletecanvas(root); }

    std::uint32_t pixel(int x, int y) const
    {
        return Qv::dynamicCast<Headless::RootWindow>(root->window)->pixels()->pixelAt(x, y);
    }

    Qv::Ptr<PaintForwarder> sink;
    RootCanvas* root = nullptr;
    Canvas* card = nullptr;
};

int red(std::uint32_t argb)
{
    return static_cast<int>(argb >> 16 & 255);
}

} // namespace

TEST(Shadows, ACompositedCanvasCastsAShadowOnAllFourSidesAsTheReferenceShows)
{
    ShadowedWindow window(iImageBase::eGPU);
    const std::uint32_t background = window.pixel(2, 2);
    // Darkest at the edge, fading out by the band's width, on every side.
    for (const auto& [near, far] : {std::pair{XY<int>{28, 45}, XY<int>{19, 45}}, std::pair{XY<int>{91, 45}, XY<int>{100, 45}},
                                    std::pair{XY<int>{60, 23}, XY<int>{60, 14}}, std::pair{XY<int>{60, 66}, XY<int>{60, 75}}}) {
        EXPECT_LT(red(window.pixel(near.x, near.y)), red(window.pixel(far.x, far.y))) << near.x << "," << near.y;
        EXPECT_LE(red(window.pixel(far.x, far.y)), red(background));
    }
    EXPECT_EQ(window.pixel(60, 45), 0xFFF0F0F0u); // the card itself is untouched

    EXPECT_TRUE(shows_reference(*Qv::dynamicCast<Headless::RootWindow>(window.root->window), "shadow.png",
                                "shadow.png"));
}
