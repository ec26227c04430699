// What one canvas, and the root's background, hand the renderer in a composited frame.

#include "tela/state/TelaState.h"
#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/RootCanvas.h"
#include "tela/canvas/Tiling.h"
#include "tela/events/EventQueue.h"
#include "tela/platform/iWindowingService.h"
#include "tela/platform/OS.h"
#include "tela/vector/Regions.h"

#include "support/RecordingRenderer.h"

#include <gtest/gtest.h>

namespace {

struct Scene {
    Scene()
    {
        OS()->windowing()->createRootWindow(window, 0);
        canvas = tela_newcanvas(nullptr, nullptr);
        canvas->window = window;
        recorder = Qv::make<RecordingRenderer>();
        renderer = recorder;
    }
    ~Scene() { tela_deletecanvas(canvas); }

    void give_buffer(int width, int height)
    {
        canvas->window->createOffscreenImage(canvas->offscreenBuffer, {width, height});
    }

    Qv::Ptr<iRootWindow> window;
    Canvas* canvas = nullptr;
    Qv::Ptr<RecordingRenderer> recorder;
    Qv::Ptr<iGraphicPrimitivesRenderer> renderer;
};

} // namespace

TEST(CanvasDisplay, ATranslucentRectangleGoesThroughTheInFrontShader)
{
    Scene scene;
    scene.canvas->shape(region_mkrect(TopDownRect{10, 20, 50, 40}));
    scene.give_buffer(40, 20);
    scene.canvas->setOpacity(0.25);
    scene.canvas->display(scene.renderer);
    ASSERT_EQ(scene.recorder->operations(), "setClip drawShaderRects");
    EXPECT_FALSE(scene.recorder->calls()[0].clip);
    const auto& shader = scene.recorder->primitive<ShaderRectDescription>(1);
    ASSERT_TRUE(shader.shader);
    EXPECT_EQ(shader.shader->name(), String("InFront"));
    EXPECT_EQ(shader.floatParam("Opacity", -1), 0.25f);
    EXPECT_EQ(shader.rect, (Qv::Rectangle<float>{10, 20, 50, 40}));
    ASSERT_EQ(shader.inputs.size(), 1u);
    EXPECT_EQ(shader.inputs[0].first.get(), scene.canvas->offscreenBuffer.get());
    EXPECT_EQ(shader.inputs[0].second, (Qv::Rectangle<float>{0, 0, 40, 20}));
}

TEST(CanvasDisplay, AShapedCanvasBlitsThroughItsShapeAndIgnoresOpacity)
{
    Scene scene;
    scene.canvas->shape(makeCurvedRegion({40, 20}, 15, eLargeCorners));
    scene.give_buffer(40, 20);
    scene.canvas->setOpacity(0.25);
    scene.canvas->display(scene.renderer);
    ASSERT_EQ(scene.recorder->operations(), "setClip drawImagesEx");
    EXPECT_EQ(scene.recorder->calls()[0].clip.get(), scene.canvas->shape().get());
    const auto& image = scene.recorder->primitive<ImageDescriptionEx>(1);
    EXPECT_FALSE(image.enabled); // no alpha channel: replaces
    EXPECT_EQ(image.destRect, (Qv::Rectangle<float>{0, 0, 40, 20}));

    // With an alpha channel the buffer blends and is not clipped to the shape.
    scene.recorder->clear();
    scene.canvas->setUseAlphaChannel(true);
    scene.canvas->display(scene.renderer);
    EXPECT_FALSE(scene.recorder->calls()[0].clip);
    EXPECT_TRUE(scene.recorder->primitive<ImageDescriptionEx>(1).enabled);
}

TEST(CanvasDisplay, NothingWithoutAShapeOrABuffer)
{
    Scene scene;
    scene.canvas->display(scene.renderer);
    scene.canvas->shape(region_mkrect(TopDownRect{0, 0, 10, 10}));
    scene.canvas->display(scene.renderer);
    EXPECT_EQ(scene.recorder->callCount(), 0u);
}

TEST(RootBackground, TilesLineUpWithTheWindowAndLaterTilesCoverTheCutOnes)
{
    RecordingRenderer recorder;
    Qv::Ptr<iImage> tile;
    Scene().window->createOffscreenImage(tile, {16, 16});
    // The area of a damaged box at (5, 3), tiled as the window's background.
    const TopDownRect area{5, 3, 40, 20};
    tela_tile_image(tile, recorder, area, XY<int>{area.left, area.top});
    ASSERT_EQ(recorder.callCount(), 6u); // columns at 0, 16, 32; rows at 0, 16
    // The cut corner tile keeps its full size from the area's corner; the
    // tiles drawn after it cover its overhang.
    const auto& first = recorder.primitive<ImageDescription>(0);
    EXPECT_EQ(first.destRect, (TopDownRect{5, 3, 21, 19}));
    EXPECT_EQ(first.sourceRect, (TopDownRect{5, 3, 21, 19}));
    EXPECT_EQ(recorder.primitive<ImageDescription>(1).destRect, (TopDownRect{16, 3, 32, 19}));
    EXPECT_EQ(recorder.primitive<ImageDescription>(3).destRect, (TopDownRect{5, 16, 21, 20}));
    const auto& last = recorder.primitive<ImageDescription>(5);
    EXPECT_EQ(last.destRect, (TopDownRect{32, 16, 40, 20}));
    EXPECT_EQ(last.sourceRect, (TopDownRect{0, 0, 8, 4}));
    for (std::size_t call = 0; call < recorder.callCount(); ++call)
        EXPECT_FALSE(recorder.primitive<ImageDescription>(call).blend);

    // A phase of whole tiles starts a whole tile at the corner.
    recorder.clear();
    tela_tile_image(tile, recorder, TopDownRect{0, 0, 16, 16}, XY<int>{32, -16});
    ASSERT_EQ(recorder.callCount(), 1u);
    EXPECT_EQ(recorder.primitive<ImageDescription>(0).sourceRect, (TopDownRect{0, 0, 16, 16}));
}

TEST(RootBackground, ANegativePhaseStartsTheGridInsideAndLeavesStrips)
{
    RecordingRenderer recorder;
    Qv::Ptr<iImage> tile;
    Scene().window->createOffscreenImage(tile, {16, 16});
    // -5 % 16 is -5 and -20 % 16 is -4: the grid starts 5 right and 4 down.
    tela_tile_image(tile, recorder, TopDownRect{0, 0, 30, 24}, XY<int>{-5, -20});
    ASSERT_EQ(recorder.callCount(), 4u); // columns at 5, 21; rows at 4, 20
    EXPECT_EQ(recorder.primitive<ImageDescription>(0).destRect, (TopDownRect{5, 4, 21, 20}));
    EXPECT_EQ(recorder.primitive<ImageDescription>(0).sourceRect, (TopDownRect{0, 0, 16, 16}));
    EXPECT_EQ(recorder.primitive<ImageDescription>(1).destRect, (TopDownRect{21, 4, 30, 20}));
    EXPECT_EQ(recorder.primitive<ImageDescription>(3).destRect, (TopDownRect{21, 20, 30, 24}));
    EXPECT_EQ(recorder.primitive<ImageDescription>(3).sourceRect, (TopDownRect{0, 0, 9, 4}));
    for (std::size_t call = 0; call < recorder.callCount(); ++call) {
        const TopDownRect dest = recorder.primitive<ImageDescription>(call).destRect;
        EXPECT_GE(dest.left, 5); // the strip at the left stays unpainted
        EXPECT_GE(dest.top, 4);  // and so does the one at the top
    }
}

TEST(RootBackground, ABottomChildOverTheWholeWindowLeavesNothingToFill)
{
    iRootWindow::InitArgs args;
    args.size = {100, 80};
    RootCanvas* root = tela_createRootCanvas(args);
    ASSERT_NE(root, nullptr);
    Canvas* cover = tela_newcanvas(nullptr, root);
    auto recorder = Qv::make<RecordingRenderer>();
    Qv::Ptr<iGraphicPrimitivesRenderer> renderer = recorder;

    cover->shape(region_mkrect(TopDownRect{0, 0, 100, 79}));
    root->drawBackground(renderer);
    ASSERT_EQ(recorder->operations(), "drawRects");
    EXPECT_EQ(recorder->primitive<RectDescription>(0).rect, (TopDownRect{0, 0, 100, 80}));

    recorder->clear();
    cover->shape(region_mkrect(TopDownRect{0, 0, 100, 80}));
    root->drawBackground(renderer);
    EXPECT_EQ(recorder->callCount(), 0u);

    tela_deletecanvas(root);
}
