// Edge effects against a recording renderer: which shader rectangles reach the
// renderer, in which order, with which parameter lists.

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/Composition.h"
#include "tela/canvas/RootCanvas.h"

#include "render/RecordingCanvas.h"
#include "support/RecordingRenderer.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using FloatRect = Qv::Rectangle<float>;

// A parameter list written out as "Colour OriginX=1 OriginX=0", in list order.
class ParamTrace final : public iShaderParamSink {
public:
    void setColour(const String& name, const NormalisedRGB&) override { add(name, ""); }
    void setFloat(const String& name, float value) override { add(name, "=" + std::to_string(int(value))); }

    static std::string of(const ShaderRectDescription& description)
    {
        ParamTrace trace;
        for (const Qv::Ptr<iShaderParamValue>& param : description.params)
            param->apply(trace);
        return trace.m_text;
    }

private:
    void add(const String& name, const std::string& value)
    {
        m_text += (m_text.empty() ? "" : " ") + std::string(name.c_str()) + value;
    }
    std::string m_text;
};

class EdgeEffectsTest : public RecordingCanvasTest {
protected:
    void SetUp() override
    {
        RecordingCanvasTest::SetUp();
        renderer = recorder;
    }

    void setEffect(std::uint32_t edges, std::uint16_t size = 5, float opacity = 0.5f)
    {
        SurroundParams params;
        params.size = size;
        params.edges = edges;
        params.opacity = opacity;
        params.colour = Colour(0.25, 0.5, 0.75, true);
        canvas->setEdgeEffect(params);
    }

    // The rectangles of the one drawShaderRects call, after a null clip.
    const ShaderRectDescription& rectangle(std::size_t index) const
    {
        return recorder->primitive<ShaderRectDescription>(1, index);
    }

    Qv::Ptr<iGraphicPrimitivesRenderer> renderer;
};

} // namespace

TEST_F(EdgeEffectsTest, AllEdgesGiveEightRectanglesBandsFirstThenCornersEachEndingOnItsOwnOrigins)
{
    setEffect(SurroundParams::ALL_EDGES);
    canvas->renderEdgeEffects(renderer);
    ASSERT_EQ(recorder->operations(), "setClip drawShaderRects");
    EXPECT_FALSE(recorder->calls()[0].clip);
    ASSERT_EQ(recorder->calls()[1].count, 8u);

    struct Expected {
        const char* shader;
        FloatRect rect;
    };
    const Expected expected[] = {
        {"ShadowLR", {15, 10, 20, 60}},   {"ShadowLR", {120, 10, 125, 60}}, {"ShadowTB", {20, 5, 120, 10}},
        {"ShadowTB", {20, 60, 120, 65}},  {"ShadowC", {15, 5, 20, 10}},     {"ShadowC", {120, 5, 125, 10}},
        {"ShadowC", {15, 60, 20, 65}},    {"ShadowC", {120, 60, 125, 65}},
    };
    for (std::size_t index = 0; index < 8; ++index) {
        SCOPED_TRACE(index);
        const ShaderRectDescription& shadow = rectangle(index);
        ASSERT_TRUE(shadow.shader);
        EXPECT_EQ(shadow.shader->name(), String(expected[index].shader));
        EXPECT_EQ(shadow.rect, expected[index].rect);
        // The input is the band's own size, and carries no image.
        ASSERT_EQ(shadow.inputs.size(), 1u);
        EXPECT_FALSE(shadow.inputs[0].first);
        const FloatRect& rect = expected[index].rect;
        EXPECT_EQ(shadow.inputs[0].second, (FloatRect{0, 0, rect.right - rect.left, rect.bottom - rect.top}));
        // The colour's r, g and b as they are, with the opacity for alpha.
        const NormalisedRGB colour = shadow.colourParam("Colour", NormalisedRGB(-1, -1, -1, -1));
        EXPECT_EQ(colour.r, 0.25f);
        EXPECT_EQ(colour.g, 0.5f);
        EXPECT_EQ(colour.b, 0.75f);
        EXPECT_EQ(colour.a, 0.5f);
    }

    // The parameters accumulate, so each rectangle ends on its own origins.
    EXPECT_EQ(ParamTrace::of(rectangle(0)), "Colour OriginX=1");
    EXPECT_EQ(ParamTrace::of(rectangle(1)), "Colour OriginX=1 OriginX=0");
    EXPECT_EQ(ParamTrace::of(rectangle(3)), "Colour OriginX=1 OriginX=0 Colour OriginY=1 OriginY=0");
    EXPECT_EQ(ParamTrace::of(rectangle(7)), "Colour OriginX=1 OriginX=0 Colour OriginY=1 OriginY=0 Colour "
                                            "OriginX=1 OriginY=1 OriginX=0 OriginY=1 OriginX=1 OriginY=0 "
                                            "OriginX=0 OriginY=0");
    // What a renderer applying the list in order ends on.
    const float origins[8][2] = {{1, -1}, {0, -1}, {0, 1}, {0, 0}, {1, 1}, {0, 1}, {1, 0}, {0, 0}};
    for (std::size_t index = 0; index < 8; ++index) {
        SCOPED_TRACE(index);
        EXPECT_EQ(rectangle(index).floatParam("OriginX", -1), origins[index][0]);
        EXPECT_EQ(rectangle(index).floatParam("OriginY", -1), origins[index][1]);
    }
}

TEST_F(EdgeEffectsTest, CornersNeedBothEdgesAndTheColourIsSentOncePerShaderTried)
{
    setEffect(SurroundParams::LEFT);
    canvas->renderEdgeEffects(renderer);
    ASSERT_EQ(recorder->calls()[1].count, 1u);
    EXPECT_EQ(rectangle(0).rect, (FloatRect{15, 10, 20, 60}));
    EXPECT_EQ(ParamTrace::of(rectangle(0)), "Colour OriginX=1");

    recorder->clear();
    setEffect(SurroundParams::BOTTOM | SurroundParams::RIGHT);
    canvas->renderEdgeEffects(renderer);
    ASSERT_EQ(recorder->calls()[1].count, 3u);
    EXPECT_EQ(rectangle(0).rect, (FloatRect{120, 10, 125, 60}));
    EXPECT_EQ(rectangle(1).rect, (FloatRect{20, 60, 120, 65}));
    EXPECT_EQ(rectangle(2).rect, (FloatRect{120, 60, 125, 65}));
    EXPECT_EQ(ParamTrace::of(rectangle(2)), "Colour OriginX=0 Colour OriginY=0 Colour OriginX=0 OriginY=0");
}

TEST_F(EdgeEffectsTest, BandsAreCutToTheRootAndABandOutsideItLeavesAnEmptyCall)
{
    // Flush with the root's left edge: the left band has nowhere to go, and
    // the renderer still gets its one call.
    ASSERT_EQ(tela_placecanvas(canvas, TopDownRect{0, 2, 100, 52}), 1);
    setEffect(SurroundParams::LEFT);
    canvas->renderEdgeEffects(renderer);
    ASSERT_EQ(recorder->operations(), "setClip drawShaderRects");
    EXPECT_EQ(recorder->calls()[1].count, 0u);

    // Two pixels below the root's top: the top band and its corner are cut to
    // two rows, and their inputs say so.
    recorder->clear();
    setEffect(SurroundParams::TOP | SurroundParams::RIGHT);
    canvas->renderEdgeEffects(renderer);
    ASSERT_EQ(recorder->calls()[1].count, 3u);
    EXPECT_EQ(rectangle(1).rect, (FloatRect{0, 0, 100, 2}));
    EXPECT_EQ(rectangle(1).inputs[0].second, (FloatRect{0, 0, 100, 2}));
    EXPECT_EQ(rectangle(2).rect, (FloatRect{100, 0, 105, 2}));
    EXPECT_EQ(rectangle(2).inputs[0].second, (FloatRect{0, 0, 5, 2}));
}

TEST_F(EdgeEffectsTest, NoSizeNoEdgesOrNoOpacityCallNothingAtAll)
{
    for (const auto& [edges, size, opacity] :
         {std::tuple{15u, 0, 0.5f}, std::tuple{0u, 5, 0.5f}, std::tuple{15u, 5, 0.0f}}) {
        setEffect(edges, static_cast<std::uint16_t>(size), opacity);
        canvas->renderEdgeEffects(renderer);
        EXPECT_EQ(recorder->callCount(), 0u) << edges << " " << size << " " << opacity;
    }
    // A canvas without a shape has nothing to surround, and a null renderer is ignored.
    setEffect(SurroundParams::ALL_EDGES);
    Qv::Ptr<iGraphicPrimitivesRenderer> none;
    canvas->renderEdgeEffects(none);
    canvas->shape(nullptr);
    canvas->renderEdgeEffects(renderer);
    EXPECT_EQ(recorder->callCount(), 0u);
}

TEST_F(EdgeEffectsTest, TheFrameDrawsTheShadowUnderTheCanvasAndTheHostRoadDrawsNone)
{
    setEffect(SurroundParams::LEFT);
    canvas->display(renderer);
    EXPECT_EQ(recorder->operations(), "setClip drawShaderRects setClip drawImagesEx");

    // A copy of part of the window lays the shadow where the copy shows it.
    recorder->clear();
    tela_compose_canvas(canvas, renderer, XY<int>(10, 5), DisplayRoad::Composited);
    ASSERT_EQ(recorder->calls()[1].count, 1u);
    EXPECT_EQ(rectangle(0).rect, (FloatRect{5, 5, 10, 55}));

    recorder->clear();
    tela_compose_canvas(canvas, renderer, XY<int>(0, 0), DisplayRoad::Host);
    EXPECT_EQ(recorder->operations().find("drawShaderRects"), std::string::npos);
}
