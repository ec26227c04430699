// A canvas drawn through its renderer on the headless platform: the pixels land
// in the canvas's buffer, the damage reaches update tracking, and the next
// repaint shows them in the window.

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/RootCanvas.h"
#include "tela/canvas/UpdateTracking.h"
#include "tela/render/CanvasRenderer.h"

#include "headless/HeadlessRootWindow.h"
#include "headless/HeadlessServices.h"
#include "headless/HostImage.h"
#include "support/PaintForwarder.h"

#include <gtest/gtest.h>

TEST(HeadlessDrawing, ARectangleReachesTheBufferTheDamageAndTheWindow)
{
    const auto sink = Qv::make<PaintForwarder>();
    iRootWindow::InitArgs args;
    args.size = {120, 80};
    args.eventHandler = sink;
    RootCanvas* root = tela_createRootCanvas(args);
    ASSERT_NE(root, nullptr);
    sink->root = root;
    const auto window = Qv::dynamicCast<Headless::RootWindow>(root->window);
    Canvas* canvas = tela_newcanvas(nullptr, root);
    ASSERT_EQ(tela_placecanvas(canvas, TopDownRect{10, 10, 110, 70}), 1); // 100 x 60
    Headless::services().windowing()->mainLoop().runPending();
    canvupd_mark_clean(canvas);

    {
        Tela::UpdateDeferrer deferrer(nullptr, true);
        canvas->beginRender();
        canvas->renderer.render(Tela::RectDescription(Qv::Box<int>{20, 10, 40, 30}, NormalisedRGB(1.0f, 0.0f, 0.0f)));
        canvas->endRender();
        // Canvas rows 10 to 30 from the bottom are window rows 40 to 60.
        ASSERT_TRUE(canvas->updateRegion());
        Qv::Box<int> damage;
        canvas->updateRegion()->getBox(damage);
        EXPECT_EQ(damage, (Qv::Box<int>{30, 40, 50, 60}));
    }
    Headless::services().windowing()->mainLoop().runPending();

    const auto buffer = Qv::dynamicCast<Headless::HostImage>(canvas->offscreenBuffer);
    ASSERT_TRUE(buffer);
    EXPECT_EQ(buffer->pixelAt(25, 35), 0xFFFF0000u);
    EXPECT_NE(buffer->pixelAt(25, 25), 0xFFFF0000u); // above the rectangle
    EXPECT_EQ(window->pixels()->pixelAt(35, 45), 0xFFFF0000u);
    EXPECT_NE(window->pixels()->pixelAt(55, 45), 0xFFFF0000u);
    tela_deletecanvas(root);
}
