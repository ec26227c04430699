#include "tela/platform/GraphicPrimitives.h"

#include <gtest/gtest.h>

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

    TextDescription text;   // no font: nothing to measure
    text.position = { 4, 4 };
    EXPECT_EQ(text.getExtents(), Qv::Box<int> {});
}
