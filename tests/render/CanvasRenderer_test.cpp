// CanvasRenderer against a recording renderer: what reaches the renderer, in
// renderer coordinates, and what reaches update tracking.

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/RootCanvas.h"
#include "tela/canvas/UpdateTracking.h"
#include "tela/render/CanvasRenderer.h"
#include "tela/vector/Regions.h"

#include "headless/HostImage.h"
#include "render/FakeFont.h"
#include "render/RecordingCanvas.h"
#include "support/RecordingRenderer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

using Box = Qv::Box<int>;

const NormalisedRGB RED(1.0f, 0.0f, 0.0f);
const NormalisedRGB BLUE(0.0f, 0.0f, 1.0f);

class CanvasRendererTest : public RecordingCanvasTest {
protected:
    void TearDown() override
    {
        canvupdTrace = 0;
        RecordingCanvasTest::TearDown();
    }
};

// How many canvases update tracking marked while `draw` ran.
template <typename Draw>
int marks_during(Draw draw)
{
    canvupdTrace = 1;
    Tela::UpdateDeferrer deferrer(nullptr, false);
    testing::internal::CaptureStdout();
    draw();
    const std::string trace = testing::internal::GetCapturedStdout();
    canvupdTrace = 0;
    return static_cast<int>(std::count(trace.begin(), trace.end(), '\n'));
}

} // namespace

TEST_F(CanvasRendererTest, PrimitivesReachTheRendererTopDownAgainstTheCanvasOrigin)
{
    CanvasRenderer renderer(canvas, Box{});
    recorder->clear();

    renderer.renderPrimitive(Tela::RectDescription(Box{10, 5, 30, 15}, NormalisedRGB(1, 0, 0, 0.5f),
                                                   static_cast<eBlendMode>(3)));
    renderer.renderPrimitive(Tela::RectDescription(Box{10, 5, 30, 15}, RED, static_cast<eBlendMode>(3)));
    Tela::AlphaRectDescription alpha;
    alpha.box = Box{0, 0, 4, 4};
    alpha.colour = RED;
    alpha.alpha = 0.25f;
    renderer.renderPrimitive(alpha);
    Tela::LineDescription line;
    line.start = XY<double>(1.9, 2.0);
    line.end = XY<double>(5.0, 7.0);
    renderer.renderPrimitive(line);
    Tela::ImageDescription image;
    image.image = Headless::HostImage::create({40, 30});
    image.sourceBox = Box{0, 0, 10, 5};
    image.destBox = Box{0, 0, 10, 5};
    renderer.renderPrimitive(image);

    ASSERT_EQ(recorder->operations(), "drawRects drawRects drawAlphaRects drawLines drawImages");
    const auto& translucent = recorder->primitive<RectDescription>(0);
    EXPECT_EQ(translucent.rect, (TopDownRect{10, 35, 30, 45}));
    EXPECT_EQ(translucent.blendMode, 3);
    EXPECT_EQ(translucent.secondColour.r, 0.0f); // one colour: the second stays black
    EXPECT_EQ(recorder->primitive<RectDescription>(1).blendMode, 0); // opaque: nothing to blend
    EXPECT_EQ(recorder->primitive<AlphaRectDescription>(2).colour.a, 0.25f);
    EXPECT_EQ(recorder->primitive<AlphaRectDescription>(2).mode, 2u);
    EXPECT_EQ(recorder->primitive<LineDescription>(3).start, (XY<int>(1, 48)));
    EXPECT_EQ(recorder->primitive<LineDescription>(3).end, (XY<int>(5, 43)));
    const auto& blit = recorder->primitive<ImageDescription>(4);
    EXPECT_EQ(blit.destRect, (TopDownRect{0, 45, 10, 50}));
    EXPECT_EQ(blit.sourceRect, (TopDownRect{0, 25, 10, 30})); // flipped against the image's 30 rows
}

TEST_F(CanvasRendererTest, RoundedRectangleRadiusIsCutToTheBoxExceptBelowTwoPixels)
{
    CanvasRenderer renderer(canvas, Box{});
    recorder->clear();
    auto radius_for = [&](const Box& box, std::uint16_t radius) {
        Tela::RoundedRectDescription rounded;
        rounded.box = box;
        rounded.radius = radius;
        renderer.renderPrimitive(rounded);
        return recorder->primitive<RoundedRectDescription>(recorder->callCount() - 1).radius;
    };
    EXPECT_EQ(radius_for(Box{0, 0, 20, 10}, 8), 4);
    EXPECT_EQ(radius_for(Box{0, 0, 40, 40}, 3), 3);
    EXPECT_EQ(radius_for(Box{0, 0, 2, 10}, 8), 0);
    // Under two pixels the limit is -1, read as 65535, and the request stands.
    EXPECT_EQ(radius_for(Box{0, 0, 1, 10}, 8), 8);
    EXPECT_EQ(radius_for(Box{0, 0, 0, 0}, 8), 8);
}

TEST_F(CanvasRendererTest, TheGuardDrawsOnlyWhatMeetsTheClipBoxAndRecordsTheClippedPart)
{
    CanvasRenderer renderer(canvas, Box{0, 0, 20, 20});
    // The clip reaches the renderer as a region in its own coordinates.
    ASSERT_EQ(recorder->operations(), "setClip");
    Box clip;
    ASSERT_TRUE(recorder->calls()[0].clip);
    recorder->calls()[0].clip->getBox(clip);
    EXPECT_EQ(clip, (Box{0, 30, 20, 50}));
    recorder->clear();

    renderer.render(Tela::RectDescription(Box{10, 10, 40, 40}, RED));
    renderer.render(Tela::RectDescription(Box{30, 30, 40, 40}, RED)); // misses the clip box
    renderer.render(Tela::RectDescription(Box{5, 5, 5, 9}, RED));     // no width
    EXPECT_EQ(recorder->operations(), "drawRects");
    ASSERT_EQ(renderer.modifiedAreas.size(), 1u);
    EXPECT_EQ(renderer.modifiedAreas[0], (Box{10, 10, 20, 20}));
    // Back to front is drawn, its corners in order; it must still meet the clip box.
    recorder->clear();
    renderer.render(Tela::RectDescription(Box{40, 40, 30, 30}, RED));
    renderer.render(Tela::RectDescription(Box{9, 9, 5, 5}, RED));
    EXPECT_EQ(recorder->operations(), "drawRects");
    EXPECT_EQ(renderer.modifiedAreas[0], (Box{5, 5, 20, 20}));
    renderer.clear();
    recorder->clear();

    // Unbound, or bound to a canvas with no shape: nothing, and no crash.
    CanvasRenderer unbound;
    unbound.render(Tela::RectDescription(Box{0, 0, 10, 10}, RED));
    EXPECT_FALSE(unbound.canDraw());
    EXPECT_EQ(unbound.renderPrimitive(Tela::TextDescription()), (XY<int>(0, 0)));
    Canvas* shapeless = tela_newcanvas(nullptr, root);
    CanvasRenderer on_shapeless(shapeless, Box{});
    on_shapeless.render(Tela::RectDescription(Box{0, 0, 10, 10}, RED));
    EXPECT_TRUE(on_shapeless.modifiedAreas.empty());
    // An image description without an image: the guard counts its area, nothing is drawn.
    Tela::ImageDescription empty;
    empty.destBox = Box{0, 0, 10, 10};
    renderer.render(empty);
    renderer.clear();
    EXPECT_EQ(recorder->operations(), "");
}

TEST_F(CanvasRendererTest, AreasCoalesceIntoOneMarkPerFlushOrStayApartInOrder)
{
    canvupd_mark_clean(canvas);
    const std::int32_t revision = canvas->getRevision();
    const int coalesced = marks_during([&] {
        canvas->beginRender();
        canvas->renderer.render(Tela::RectDescription(Box{10, 10, 20, 20}, RED));
        canvas->renderer.render(Tela::RectDescription(Box{0, 0, 60, 40}, RED));
        canvas->endRender();
    });
    EXPECT_EQ(coalesced, 1);
    EXPECT_EQ(canvas->getRevision(), revision + 1);
    // Canvas (0, 0)-(60, 40) is window (20, 20)-(80, 60).
    Box damage;
    ASSERT_TRUE(canvas->updateRegion());
    canvas->updateRegion()->getBox(damage);
    EXPECT_EQ(damage, (Box{20, 20, 80, 60}));
    canvupd_mark_clean(canvas);

    // Apart, the small one comes first and the large one, not inside it, marks
    // again; the other way round the second would fall inside the first.
    canvas->renderer.setCoalesceDirtyRegions(false);
    const int apart = marks_during([&] {
        canvas->beginRender();
        canvas->renderer.render(Tela::RectDescription(Box{10, 10, 20, 20}, RED));
        canvas->renderer.render(Tela::RectDescription(Box{0, 0, 60, 40}, RED));
        canvas->endRender();
    });
    EXPECT_EQ(apart, 2);
    canvupd_mark_clean(canvas);

    // Only a change of coalescing flushes.
    CanvasRenderer renderer(canvas, Box{});
    renderer.addModifiedArea(Box{0, 0, 5, 5});
    renderer.setCoalesceDirtyRegions(true);
    EXPECT_EQ(renderer.modifiedAreas.size(), 1u);
    {
        Tela::UpdateDeferrer deferrer(nullptr, false);
        renderer.setCoalesceDirtyRegions(false);
    }
    EXPECT_TRUE(renderer.modifiedAreas.empty());
    canvupd_mark_clean(canvas);
}

TEST_F(CanvasRendererTest, CapsAreZeroUntilARendererIsFetched)
{
    recorder->setCaps(iGraphicPrimitivesRenderer::CAP_NATIVE_LINE_STRIPS);
    canvas->beginRender();
    EXPECT_EQ(canvas->renderer.getCaps(), iGraphicPrimitivesRenderer::CAP_NATIVE_LINE_STRIPS);
    canvas->endRender();
    // The canvas still caches the renderer (the test holds it too), but the
    // outermost endRender let go of it.
    EXPECT_EQ(canvas->osRenderer.get(), recorder.get());
    EXPECT_EQ(canvas->renderer.getCaps(), 0u);
    EXPECT_TRUE(canvas->renderer.canDraw());
    EXPECT_EQ(canvas->renderer.getCaps(), iGraphicPrimitivesRenderer::CAP_NATIVE_LINE_STRIPS);
}

TEST_F(CanvasRendererTest, LineStripsWithoutNativeSupportBecomeOneCallOfSegments)
{
    CanvasRenderer renderer(canvas, Box{});
    recorder->clear();
    Tela::LineStripDescription strip;
    strip.thickness = 2;
    strip.colour = RED;
    for (const XY<double>& point : {XY<double>(0, 0), XY<double>(10, 0), XY<double>(10, 10.7)})
        strip.points.push_back(point);
    renderer.renderPrimitive(strip);
    ASSERT_EQ(recorder->operations(), "drawLines");
    ASSERT_EQ(recorder->calls()[0].count, 2u);
    const auto& second = recorder->primitive<LineDescription>(0, 1);
    EXPECT_EQ(second.start, (XY<int>(10, 50)));
    EXPECT_EQ(second.end, (XY<int>(10, 40))); // truncated before the flip
    EXPECT_EQ(second.thickness, 2u);

    Tela::LineStripDescription single;
    single.points.push_back(XY<double>(1, 1));
    renderer.renderPrimitive(single);
    EXPECT_EQ(recorder->calls()[1].count, 0u);

    recorder->setCaps(iGraphicPrimitivesRenderer::CAP_NATIVE_LINE_STRIPS);
    renderer.renderPrimitive(strip);
    ASSERT_EQ(recorder->calls()[2].operation, std::string("drawLineStrips"));
    EXPECT_FLOAT_EQ(recorder->primitive<LineStripDescription>(2).points[2].y, 50.0f - 10.7f);
}

TEST_F(CanvasRendererTest, BeziersWithoutNativeSupportBecomeTwentyOnePointsThroughTheGuard)
{
    CanvasRenderer renderer(canvas, Box{});
    recorder->clear();
    Tela::BezierCurveDescription curve;
    curve.start = {0, 0};
    curve.control1 = {0, 30};
    curve.control2 = {30, 30};
    curve.end = {30, 0};
    renderer.render(curve);
    ASSERT_EQ(recorder->operations(), "drawLines");
    ASSERT_EQ(recorder->calls()[0].count, 20u);
    EXPECT_EQ(recorder->primitive<LineDescription>(0, 0).start, (XY<int>(0, 50)));
    EXPECT_EQ(recorder->primitive<LineDescription>(0, 10).start, (XY<int>(15, 50 - 22))); // t = 0.5: y 22.5
    EXPECT_EQ(recorder->primitive<LineDescription>(0, 19).end, (XY<int>(30, 50)));
    ASSERT_EQ(renderer.modifiedAreas.size(), 1u);
    EXPECT_EQ(renderer.modifiedAreas[0], (Box{0, 0, 30, 30}));
    renderer.clear();

    recorder->setCaps(iGraphicPrimitivesRenderer::CAP_NATIVE_BEZIERS);
    renderer.render(curve);
    ASSERT_EQ(recorder->calls()[1].operation, std::string("drawBeziers"));
    EXPECT_EQ(recorder->primitive<BezierCurveDescription>(1).control1, (XY<int>(0, 20)));
    renderer.clear();
}

TEST_F(CanvasRendererTest, TextStylesDressTheTextAndThePenEndsOnTheBaseline)
{
    CanvasRenderer renderer(canvas, Box{});
    const auto font = Qv::make<FakeFont>(); // ascent 10, descent 3, height 17
    auto text_in = [&](eTextStyle style) {
        Tela::TextDescription text(WString(u"abc"), XY<int>(10, 20), RED, TextAlignment{0, 1}, style, font);
        text.secondColour = BLUE;
        text.selectionStart = 5;
        text.selectionEnd = 2;
        recorder->clear();
        return renderer.renderPrimitive(text);
    };

    EXPECT_EQ(text_in(eTextPlain), (XY<int>(31, 20)));
    ASSERT_EQ(recorder->operations(), "drawTexts");
    const auto& plain = recorder->primitive<TextDescription>(0);
    EXPECT_EQ(plain.position, (XY<int>(10, 30))); // the baseline, top-down
    EXPECT_FALSE(plain.heavy);
    EXPECT_EQ(plain.selectionStart, 2);
    EXPECT_EQ(plain.selectionEnd, 5);

    text_in(eTextHeavy);
    ASSERT_EQ(recorder->operations(), "drawTexts");
    EXPECT_TRUE(recorder->primitive<TextDescription>(0).heavy);

    text_in(eTextDropShadow);
    ASSERT_EQ(recorder->operations(), "drawTexts drawTexts");
    EXPECT_EQ(recorder->primitive<TextDescription>(0).position, (XY<int>(11, 31)));
    EXPECT_EQ(recorder->primitive<TextDescription>(0).colour.b, 1.0f);
    EXPECT_EQ(recorder->primitive<TextDescription>(1).position, (XY<int>(10, 30)));
    EXPECT_EQ(recorder->primitive<TextDescription>(1).colour.r, 1.0f);

    text_in(eTextHalo);
    ASSERT_EQ(recorder->callCount(), 9u);
    const XY<int> halo[] = {{-1, -1}, {1, 1}, {-1, 1}, {1, -1}, {-1, 0}, {1, 0}, {0, 1}, {0, -1}};
    for (std::size_t index = 0; index < 8; ++index) {
        const auto& copy = recorder->primitive<TextDescription>(index);
        EXPECT_EQ(copy.position, (XY<int>(10 + halo[index].x, 30 + halo[index].y))) << index;
        EXPECT_EQ(copy.colour.b, 1.0f);
    }
    EXPECT_EQ(recorder->primitive<TextDescription>(8).position, (XY<int>(10, 30)));
    EXPECT_EQ(recorder->primitive<TextDescription>(8).colour.r, 1.0f);

    // Baseline 20 plus half the 4-pixel gap: a row at canvas y 22, renderer rows 27 to 28.
    text_in(eTextLineThrough);
    ASSERT_EQ(recorder->operations(), "drawTexts drawRects");
    EXPECT_EQ(recorder->primitive<RectDescription>(1).rect, (TopDownRect{10, 27, 31, 28}));
    EXPECT_EQ(recorder->primitive<RectDescription>(1).colour.b, 1.0f);

    // Without a font there is nothing to place. (Made without one, a
    // description takes the default font, so the font is taken away after.)
    Tela::TextDescription fontless(WString(u"abc"), XY<int>(10, 20), RED, TextAlignment{0, 1}, Qv::Ptr<iFont>());
    fontless.font = nullptr;
    recorder->clear();
    EXPECT_EQ(renderer.renderPrimitive(fontless), (XY<int>(0, 0)));
    EXPECT_EQ(recorder->callCount(), 0u);
    renderer.render(fontless);
    EXPECT_EQ(recorder->callCount(), 0u);
}

TEST_F(CanvasRendererTest, ShaderCapableSurfacesShadeWholeEllipsesAndRoundedRectangles)
{
    recorder->setCaps(iGraphicPrimitivesRenderer::CAP_SHADERS);
    CanvasRenderer renderer(canvas, Box{});
    ASSERT_TRUE(renderer.ellipseShader);
    recorder->clear();

    Tela::EllipseDescription outline(Qv::Box<double>{0, 0, 40, 20}, BLUE, Tela::EllipseDescription::eOutline, 2);
    outline.lineColour = RED;
    renderer.renderPrimitive(outline);
    outline.endAngle = 180; // a partial ellipse is never shaded
    renderer.renderPrimitive(outline);
    ASSERT_EQ(recorder->operations(), "drawShaderRects drawEllipses");
    const auto& shaded = recorder->primitive<ShaderRectDescription>(0);
    EXPECT_EQ(shaded.rect, (Qv::Rectangle<float>{0, 30, 40, 50}));
    EXPECT_FLOAT_EQ(shaded.floatParam("Thickness", -1), 0.2f);
    EXPECT_FLOAT_EQ(shaded.floatParam("Softness", -1), 0.1f);
    EXPECT_EQ(shaded.colourParam("FillColour", RED).a, 0.0f);
    EXPECT_EQ(shaded.colourParam("LineColour", BLUE).r, 1.0f);

    Tela::RoundedRectDescription rounded;
    rounded.box = Box{0, 0, 50, 100};
    rounded.radius = 10;
    rounded.fillColour = Colour(0.0, 0.0, 1.0, true);
    rounded.lineColour = Colour(1.0, 0.0, 0.0, true);
    renderer.setUIScale(2.0f);
    renderer.renderPrimitive(rounded);
    const auto& panel = recorder->primitive<ShaderRectDescription>(2);
    EXPECT_FLOAT_EQ(panel.floatParam("Radius", -1), 0.1f);
    EXPECT_FLOAT_EQ(panel.floatParam("Thickness", -1), 0.1f);
    EXPECT_FLOAT_EQ(panel.floatParam("Aspect", -1), 0.5f);
    EXPECT_FLOAT_EQ(panel.floatParam("Softness", -1), 0.04f);
    EXPECT_EQ(panel.colourParam("LineColour", RED).b, 1.0f); // no thickness: the fill
    EXPECT_EQ(panel.colourParam("FillColour", RED).b, 1.0f);

    rounded.thickness = 2;
    rounded.lineColour = rounded.fillColour; // equal colours with a thickness: hollow
    renderer.renderPrimitive(rounded);
    EXPECT_EQ(recorder->primitive<ShaderRectDescription>(3).colourParam("FillColour", RED).a, 0.0f);
}

TEST_F(CanvasRendererTest, ACopiedCanvasLeavesTheOriginalsDrawingToTheOriginal)
{
    canvas->beginRender();
    canvas->renderer.render(Tela::RectDescription(Box{0, 0, 10, 10}, RED));
    {
        const Canvas copy(*canvas);
        EXPECT_TRUE(copy.renderer.modifiedAreas.empty());
        EXPECT_EQ(copy.renderer.getCanvas(), canvas);
    }
    ASSERT_EQ(canvas->renderer.modifiedAreas.size(), 1u);
    {
        Tela::UpdateDeferrer deferrer(nullptr, false);
        canvas->endRender();
    }
    EXPECT_TRUE(canvas->renderer.modifiedAreas.empty());
    canvupd_mark_clean(canvas);
}
