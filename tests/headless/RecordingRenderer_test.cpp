#include "headless/PixmanRegion.h"
#include "support/RecordingRenderer.h"

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
