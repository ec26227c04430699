#include "headless/HostImage.h"
#include "headless/PixmanRegion.h"
#include "support/LiveBlocks.h"
#include "support/RecordingRenderer.h"
#include "support/ReportCapture.h"

#include <gtest/gtest.h>

TEST(RecordingRenderer, KeepsEveryCallInOrderWithCopiesOfItsDescriptions)
{
    RecordingRenderer recorder;
    const TopDownRect square { 0, 0, 5, 5 };
    Qv::Ptr<iRegion> clip;
    Headless::PixmanRegion::create(clip, &square, 1);
    recorder.setClip(clip);
    RectDescription rects[2];
    rects[0].rect = { 1, 2, 3, 4 };
    rects[1].blendMode = eBlendOver;
    recorder.drawRects(rects, 2);
    rects[0].rect = {};   // the recorder holds a copy, not the caller's array
    AlphaRectDescription shade;
    shade.mode = 7;
    recorder.drawAlphaRects(&shade, 1);
    recorder.drawLines(nullptr, 0);

    EXPECT_EQ(recorder.operations(), "setClip drawRects drawAlphaRects drawLines");
    EXPECT_EQ(recorder.calls()[0].clip, clip);
    EXPECT_EQ(recorder.calls()[1].count, 2u);
    EXPECT_EQ(recorder.primitive<RectDescription>(1, 0).rect, (TopDownRect { 1, 2, 3, 4 }));
    EXPECT_EQ(recorder.primitive<RectDescription>(1, 1).blendMode, eBlendOver);
    EXPECT_EQ(recorder.primitive<AlphaRectDescription>(2).mode, 7u);
    EXPECT_EQ(recorder.calls()[3].count, 0u);
}

TEST(RecordingRenderer, AskingForTheWrongTypeIsReportedAndGivesADefault)
{
    ReportCapture reports;
    RecordingRenderer recorder;
    RectDescription rect;
    rect.rect = { 1, 1, 2, 2 };
    recorder.drawRects(&rect, 1);
    EllipseDescription ellipse;
    ellipse.rect = { 5, 5, 9, 9 };
    recorder.drawEllipses(&ellipse, 1);

    // An alpha rectangle is a rectangle by type, but drawRects never took one.
    EXPECT_EQ(recorder.primitive<AlphaRectDescription>(0).rect, TopDownRect {});
    EXPECT_EQ(recorder.primitive<EllipseDescription>(0).rect, TopDownRect {});
    EXPECT_EQ(recorder.primitive<EllipseDescription>(1, 1).rect, TopDownRect {});
    EXPECT_EQ(reports.count("RecordingRenderer: call "), 3);
    EXPECT_EQ(recorder.primitive<EllipseDescription>(1).rect, (TopDownRect { 5, 5, 9, 9 }));
}

TEST(RecordingRenderer, ClearingLetsGoOfRecordedImagesAndShaderValues)
{
    const std::int64_t blocks_before = live_blocks();
    {
        RecordingRenderer recorder;
        const Qv::Ptr<Headless::HostImage> image = Headless::HostImage::create({ 3, 2 });
        const ImageDescription blit(image, XY<int> { 4, 5 }, true);
        recorder.drawImages(&blit, 1);
        ShaderRectDescription shaded;
        shaded.addParam("Opacity", 0.25f);
        shaded.addParam("FillColour", NormalisedRGB(1.0f, 0.5f, 0.0f));
        recorder.drawShaderRects(&shaded, 1);

        const ImageDescription& recorded_blit = recorder.primitive<ImageDescription>(0);
        EXPECT_EQ(recorded_blit.destRect, (TopDownRect { 4, 5, 7, 7 }));
        EXPECT_EQ(recorded_blit.sourceRect, (TopDownRect { 0, 0, 3, 2 }));
        const ShaderRectDescription& recorded_shader = recorder.primitive<ShaderRectDescription>(1);
        EXPECT_EQ(recorded_shader.floatParam("Opacity", 1.0f), 0.25f);
        EXPECT_EQ(recorded_shader.colourParam("FillColour", NormalisedRGB()).g, 0.5f);
        EXPECT_EQ(recorded_shader.floatParam("FillColour", -1.0f), -1.0f);   // a colour is not a float

        EXPECT_EQ(image->refCount(), 3);   // ours, blit's and the recorder's
        EXPECT_EQ(shaded.params[0]->refCount(), 2);
        recorder.clear();
        EXPECT_EQ(recorder.callCount(), 0u);
        EXPECT_EQ(image->refCount(), 2);
        EXPECT_EQ(shaded.params[0]->refCount(), 1);
    }
    EXPECT_EQ(live_blocks(), blocks_before);
}

TEST(GraphicPrimitives, ExtentsFollowTheirPointsAndRoundOutward)
{
    LineStripDescription strip;
    EXPECT_EQ(strip.getExtents(), (Qv::Box<int> { 10000, 10000, -10000, -10000 }));   // nothing folded in
    strip.points.push_back({ -2.5f, 3.25f });
    strip.points.push_back({ 7.25f, 20000.0f });   // far out below: widens y only
    EXPECT_EQ(strip.getExtents(), (Qv::Box<int> { -2, 3, 8, 20000 }));

    LineDescription line;
    line.start = { 9, 1 };
    line.end = { 2, 6 };
    line.thickness = 5;   // not part of the extents
    EXPECT_EQ(line.getExtents(), (Qv::Box<int> { 2, 1, 9, 6 }));

    BezierCurveDescription curve;
    curve.start = { 0, 0 };
    curve.end = { 10, 0 };
    curve.control1 = { -3, 8 };
    curve.control2 = { 12, -4 };
    EXPECT_EQ(curve.getExtents(), (Qv::Box<int> { -3, -4, 12, 8 }));

    ImageDescriptionEx blit;
    blit.destRect = { -0.5f, 1.25f, 3.0f, 4.01f };
    EXPECT_EQ(blit.getExtents(), (Qv::Box<int> { -1, 1, 3, 5 }));
    EXPECT_TRUE(blit.enabled);

    TextDescription text;   // no font: nothing to measure
    text.position = { 4, 4 };
    EXPECT_EQ(text.getExtents(), Qv::Box<int> {});
}
