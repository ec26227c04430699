// What one canvas hands the renderer in a composited frame.

#include "canvas/Canvas.h"
#include "canvas/CanvasTree.h"
#include "platform/OS.h"
#include "platform/iWindowingService.h"
#include "vector/Regions.h"

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

TEST(CanvasDisplay, a_translucent_rectangle_goes_through_the_in_front_shader)
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

TEST(CanvasDisplay, a_shaped_canvas_blits_through_its_shape_and_ignores_opacity)
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

TEST(CanvasDisplay, nothing_without_a_shape_or_a_buffer)
{
    Scene scene;
    scene.canvas->display(scene.renderer);
    scene.canvas->shape(region_mkrect(TopDownRect{0, 0, 10, 10}));
    scene.canvas->display(scene.renderer);
    EXPECT_EQ(scene.recorder->callCount(), 0u);
}
