// The drawing helpers against a recording renderer: which primitives, in which
// order, where, and in which colours.

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/RootCanvas.h"
#include "tela/render/CanvasRenderer.h"
#include "tela/render/DrawingHelpers.h"

#include "render/RecordingCanvas.h"
#include "support/RecordingRenderer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <ostream>
#include <vector>

namespace {

using Box = Qv::Box<int>;

// Colours that bypass gamma reach the renderer with their channels unchanged.
const Colour GREY(0.5, 0.5, 0.5, true);
const Colour RED(1.0, 0.0, 0.0, true);
const Colour BLUE(0.0, 0.0, 1.0, true);

// Canvas box (x1, y1, x2, y2) lands on renderer rectangle (x1, 50 - y2, x2, 50 - y1).
class DrawingHelpersTest : public RecordingCanvasTest {
protected:

    static TopDownRect at(const Box& box) { return {box.x1, 50 - box.y2, box.x2, 50 - box.y1}; }

    // The canvas boxes of every rectangle drawn, in order.
    std::vector<Box> rectangles() const
    {
        std::vector<Box> boxes;
        for (std::size_t call = 0; call < recorder->callCount(); ++call) {
            if (std::string(recorder->calls()[call].operation) != "drawRects")
                continue;
            const TopDownRect& r = recorder->primitive<RectDescription>(call).rect;
            boxes.push_back(Box{r.left, 50 - r.bottom, r.right, 50 - r.top});
        }
        return boxes;
    }
    const RectDescription& rect(std::size_t call) const { return recorder->primitive<RectDescription>(call); }
    const EllipseDescription& ellipse(std::size_t call) const { return recorder->primitive<EllipseDescription>(call); }

};

} // namespace

namespace Qv {
void PrintTo(const Box<int>& box, std::ostream* out)
{
    *out << "(" << box.x1 << ", " << box.y1 << ", " << box.x2 << ", " << box.y2 << ")";
}
} // namespace Qv

namespace {

void expect_colour(const NormalisedRGB& actual, const Colour& expected)
{
    const NormalisedRGB wanted = fromColour(expected);
    EXPECT_NEAR(actual.r, wanted.r, 1e-6);
    EXPECT_NEAR(actual.g, wanted.g, 1e-6);
    EXPECT_NEAR(actual.b, wanted.b, 1e-6);
}

} // namespace

TEST_F(DrawingHelpersTest, FramesAndOutlinedRectanglesDrawTheirBarsInOrderAndMayOverlap)
{
    CanvasRenderer renderer(canvas, Box{});
    recorder->clear();
    Tela::drawOutlinedRect(renderer, RED, BLUE, Box{10, 10, 30, 20});
    EXPECT_EQ(rectangles(), (std::vector<Box>{{10, 10, 30, 20}, {10, 10, 11, 20}, {29, 10, 30, 20},
                                               {10, 10, 30, 11}, {10, 19, 30, 20}}));
    expect_colour(rect(0).colour, BLUE);
    expect_colour(rect(4).colour, RED);
    EXPECT_EQ(rect(0).blendMode, eBlendReplace);
    EXPECT_FALSE(rect(0).twoColours);

    // Wider than half the box: the bars cross, and nothing stops them.
    recorder->clear();
    Tela::drawFrame(renderer, RED, Box{0, 0, 10, 10}, 6);
    EXPECT_EQ(rectangles(), (std::vector<Box>{{0, 0, 6, 10}, {4, 0, 10, 10}, {0, 0, 10, 6}, {0, 4, 10, 10}}));
}

TEST_F(DrawingHelpersTest, DepthBoxLightsLeftAndTopUnlessSunken)
{
    CanvasRenderer renderer(canvas, Box{});
    for (int sunken : {0, 1}) {
        SCOPED_TRACE(sunken);
        recorder->clear();
        Tela::drawDepthBox(renderer, GREY, Box{10, 10, 40, 30}, sunken, 2);
        EXPECT_EQ(rectangles(), (std::vector<Box>{{10, 10, 12, 30}, {10, 28, 40, 30}, {10, 10, 40, 12},
                                                   {38, 10, 40, 30}}));
        const Colour lit = scale(GREY, sunken ? 0.7 : 1.3);
        const Colour shaded = scale(GREY, sunken ? 1.3 : 0.7);
        expect_colour(rect(0).colour, lit);
        expect_colour(rect(1).colour, lit);
        expect_colour(rect(2).colour, shaded);
        expect_colour(rect(3).colour, shaded);
    }
}

TEST_F(DrawingHelpersTest, FocusRectIsFourDottedLinesJustInsideTheBox)
{
    CanvasRenderer renderer(canvas, Box{});
    recorder->clear();
    Tela::drawFocusRect(renderer, Box{10, 10, 20, 30}, RED);
    ASSERT_EQ(recorder->operations(), "drawLines drawLines drawLines drawLines");
    const XY<int> corners[] = {{10, 40}, {10, 21}, {19, 21}, {19, 40}};
    for (std::size_t index = 0; index < 4; ++index) {
        SCOPED_TRACE(index);
        const LineDescription& line = recorder->primitive<LineDescription>(index);
        EXPECT_EQ(line.start, corners[index]);
        EXPECT_EQ(line.end, corners[(index + 1) % 4]);
        EXPECT_TRUE(line.patterned);
        expect_colour(line.colour, RED);
    }
}

TEST_F(DrawingHelpersTest, RoundedFillStepsOnlyTheCornersOfTheMask)
{
    CanvasRenderer renderer(canvas, Box{});
    recorder->clear();
    Tela::drawRoundedRectFilled(renderer, GREY, Box{0, 0, 20, 20}, 0);
    EXPECT_EQ(rectangles(), (std::vector<Box>{{0, 0, 20, 1}, {0, 1, 20, 3}, {0, 19, 20, 20}, {0, 17, 20, 19},
                                               {0, 3, 20, 17}}));
    // Top left and bottom right: one side of each strip pair steps in.
    recorder->clear();
    Tela::drawRoundedRectFilled(renderer, GREY, Box{0, 0, 20, 20}, 1 | 8);
    EXPECT_EQ(rectangles(), (std::vector<Box>{{0, 0, 17, 1}, {0, 1, 19, 3}, {3, 19, 20, 20}, {1, 17, 20, 19},
                                               {0, 3, 20, 17}}));
}

TEST_F(DrawingHelpersTest, RoundedOutlineShadesByStyleAndDrawsOneRingPerPixelOfThickness)
{
    CanvasRenderer renderer(canvas, Box{});
    recorder->clear();
    Tela::drawRoundedRectOutline(renderer, GREY, Box{0, 0, 20, 20}, 0, 15, 1);
    EXPECT_EQ(rectangles(), (std::vector<Box>{{0, 3, 1, 17}, {19, 3, 20, 17}, {3, 0, 17, 1}, {3, 19, 17, 20},
                                               {1, 18, 4, 19}, {1, 16, 2, 19}, {16, 18, 19, 19}, {18, 16, 19, 19},
                                               {1, 1, 2, 4}, {1, 1, 4, 2}, {16, 1, 19, 2}, {18, 1, 19, 4}}));
    // Raised: left, top and the top-left step lit; right, bottom and the
    // bottom-right step shaded; the two mixed corners plain.
    const Colour lit = scale(GREY, 1.4);
    const Colour shaded = scale(GREY, 0.6);
    const Colour* expected[] = {&lit, &shaded, &shaded, &lit, &lit, &lit,
                                &GREY, &GREY, &GREY, &GREY, &shaded, &shaded};
    for (std::size_t call = 0; call < 12; ++call) {
        SCOPED_TRACE(call);
        expect_colour(rect(call).colour, *expected[call]);
    }

    // Sunken swaps the shading; style 3 is not refused and draws in black.
    recorder->clear();
    Tela::drawRoundedRectOutline(renderer, GREY, Box{0, 0, 20, 20}, 1, 15, 1);
    expect_colour(rect(0).colour, scale(GREY, 0.6));
    expect_colour(rect(1).colour, scale(GREY, 1.4));
    recorder->clear();
    Tela::drawRoundedRectOutline(renderer, GREY, Box{0, 0, 20, 20}, 3, 0, 1);
    ASSERT_EQ(recorder->callCount(), 4u);
    expect_colour(rect(0).colour, Colour());
    expect_colour(rect(1).colour, Colour());

    // Two rings, the second one pixel further in; none for a thickness of 0.
    recorder->clear();
    Tela::drawRoundedRectOutline(renderer, GREY, Box{0, 0, 20, 20}, 2, 0, 2);
    EXPECT_EQ(rectangles(), (std::vector<Box>{{0, 0, 1, 20}, {19, 0, 20, 20}, {0, 0, 20, 1}, {0, 19, 20, 20},
                                               {1, 1, 2, 19}, {18, 1, 19, 19}, {1, 1, 19, 2}, {1, 18, 19, 19}}));
    recorder->clear();
    Tela::drawRoundedRectOutline(renderer, GREY, Box{0, 0, 20, 20}, 2, 15, 0);
    EXPECT_EQ(recorder->callCount(), 0u);
}

TEST_F(DrawingHelpersTest, RoundedRectFillsInsideItsOutlineAndIndentBoxesDarkenTheColour)
{
    CanvasRenderer renderer(canvas, Box{});
    recorder->clear();
    Tela::drawRoundedRect(renderer, RED, BLUE, Box{0, 0, 20, 20}, 2, 0, 2);
    std::vector<Box> boxes = rectangles();
    ASSERT_EQ(boxes.size(), 13u); // two rings of four, then five strips
    EXPECT_EQ(boxes[8], (Box{2, 2, 18, 3}));
    EXPECT_EQ(boxes[12], (Box{2, 5, 18, 15}));
    expect_colour(rect(12).colour, BLUE);

    // Without a thickness there is no outline and the fill is not inset.
    recorder->clear();
    Tela::drawRoundedRect(renderer, RED, BLUE, Box{0, 0, 20, 20}, 2, 0, 0);
    boxes = rectangles();
    ASSERT_EQ(boxes.size(), 5u);
    EXPECT_EQ(boxes[4], (Box{0, 3, 20, 17}));

    recorder->clear();
    Tela::drawIndentBox(renderer, GREY, Box{0, 0, 20, 20});
    ASSERT_EQ(recorder->callCount(), 17u); // one ring with four steps, five strips
    expect_colour(rect(0).colour, scale(GREY, 0.8));
    expect_colour(rect(16).colour, getIndentBoxColour(GREY));
    expect_colour(getIndentBoxColour(GREY), scale(GREY, 0.9));
    EXPECT_EQ(rectangles()[16], (Box{1, 4, 19, 16}));
}

TEST_F(DrawingHelpersTest, SquircleCornersAreQuarterEllipsesAndTheBottomRightOneTakesX1ForItsLowerEdge)
{
    CanvasRenderer renderer(canvas, Box{});
    recorder->clear();
    const Colour translucent = [] {
        Colour colour(0.0, 1.0, 0.0, true);
        colour.a = 0.5f;
        return colour;
    }();
    Tela::drawSquircleFilled(renderer, Box{10, 12, 40, 42}, translucent, 5, 15);
    ASSERT_EQ(recorder->operations(), "drawEllipses drawEllipses drawEllipses drawEllipses drawRects drawRects drawRects");
    struct Quarter {
        int start;
        int end;
        Box box;
    };
    const Quarter quarters[] = {
        {180, 270, {10, 32, 20, 42}},
        {270, 360, {30, 32, 40, 42}},
        {0, 90, {30, 10, 40, 22}}, // from x1 = 10 up, not from y1 = 12
        {90, 180, {10, 12, 20, 22}},
    };
    for (std::size_t call = 0; call < 4; ++call) {
        SCOPED_TRACE(call);
        EXPECT_EQ(ellipse(call).startAngle, quarters[call].start);
        EXPECT_EQ(ellipse(call).endAngle, quarters[call].end);
        EXPECT_EQ(ellipse(call).rect, at(quarters[call].box));
        EXPECT_EQ(ellipse(call).style, 0);
        EXPECT_EQ(ellipse(call).fillColour.g, 1.0f);
        EXPECT_EQ(ellipse(call).fillColour.a, 0.5f);
    }
    EXPECT_EQ(rectangles(), (std::vector<Box>{{15, 37, 35, 42}, {10, 17, 40, 37}, {15, 12, 35, 17}}));
    EXPECT_EQ(rect(4).blendMode, eBlendOver); // the translucent colour blends
    EXPECT_EQ(rect(4).colour.a, 0.5f);

    // The outline's corners are one pixel wide whatever its thickness, and
    // its sides stop where the corners start.
    recorder->clear();
    Tela::drawSquircleOutlined(renderer, Box{10, 10, 40, 40}, RED, 5, 2 | 4, 4);
    ASSERT_EQ(recorder->operations(), "drawEllipses drawEllipses drawRects drawRects drawRects drawRects");
    EXPECT_EQ(ellipse(0).startAngle, 270);
    EXPECT_EQ(ellipse(1).startAngle, 90);
    for (std::size_t call = 0; call < 2; ++call) {
        EXPECT_EQ(ellipse(call).style, 1);
        EXPECT_EQ(ellipse(call).thickness, 1);
        expect_colour(ellipse(call).lineColour, RED);
    }
    EXPECT_EQ(rectangles(), (std::vector<Box>{{10, 15, 14, 40}, {36, 10, 40, 35}, {10, 36, 35, 40}, {15, 10, 40, 14}}));
}

TEST_F(DrawingHelpersTest, PiecesThatComeOutBackToFrontAreDrawnAndEmptyOnesAreNot)
{
    CanvasRenderer renderer(canvas, Box{});
    recorder->clear();
    // x1 well above y1: the bottom-right quarter's box comes out upside down,
    // and is drawn with its corners in order.
    Tela::drawSquircleFilled(renderer, Box{60, 0, 80, 20}, RED, 4, 8);
    EXPECT_EQ(recorder->operations(), "drawEllipses drawRects drawRects drawRects");
    // A radius larger than the box: the top and bottom strips reach past it,
    // and the middle one, back to front, covers the box between them.
    recorder->clear();
    Tela::drawSquircleFilled(renderer, Box{0, 0, 10, 10}, RED, 40, 0);
    EXPECT_EQ(rectangles(), (std::vector<Box>{{0, -30, 10, 10}, {0, -30, 10, 40}, {0, 0, 10, 40}}));
    // A small rounded box keeps its middle rows: the fifth strip, (0, 3, 20, 1),
    // covers rows 1 and 2 at full width.
    recorder->clear();
    Tela::drawRoundedRectFilled(renderer, RED, Box{0, 0, 20, 4}, 15);
    ASSERT_EQ(recorder->callCount(), 5u);
    EXPECT_EQ(rectangles().back(), (Box{0, 1, 20, 3}));
    // Pieces of no width or height are left out.
    recorder->clear();
    Tela::drawDepthBox(renderer, RED, Box{10, 10, 10, 30}, 0, 0);
    Tela::drawRoundedRectFilled(renderer, RED, Box{5, 5, 5, 5}, 0);
    EXPECT_EQ(recorder->callCount(), 0u);
}

TEST_F(DrawingHelpersTest, GradientRowsRunDownFromTheTopEndOnTheBottomColourAndOnlyWhereTheyShow)
{
    CanvasRenderer renderer(canvas, Box{});
    recorder->clear();
    Tela::drawVertGradRect(renderer, Box{0, 10, 30, 14}, RED, BLUE);
    ASSERT_EQ(rectangles(), (std::vector<Box>{{0, 13, 30, 14}, {0, 12, 30, 13}, {0, 11, 30, 12}, {0, 10, 30, 11}}));
    // The first row has already taken one step.
    EXPECT_NEAR(rect(0).colour.r, 0.75f, 1e-6);
    EXPECT_NEAR(rect(0).colour.b, 0.25f, 1e-6);
    EXPECT_NEAR(rect(3).colour.r, 0.0f, 1e-6);
    EXPECT_NEAR(rect(3).colour.b, 1.0f, 1e-6);

    recorder->clear();
    Tela::drawVertGradRect(renderer, Box{0, 10, 30, 11}, RED, BLUE);
    ASSERT_EQ(recorder->callCount(), 1u);
    EXPECT_NEAR(rect(0).colour.b, 1.0f, 1e-6);

    recorder->clear();
    Tela::drawVertGradRect(renderer, Box{0, 10, 30, 10}, RED, BLUE);
    EXPECT_EQ(recorder->callCount(), 0u);

    // Two thousand million rows; the canvas has fifty: only rows that can show are drawn.
    recorder->clear();
    Tela::drawVertGradRect(renderer, Box{0, -1000000000, 30, 1000000000}, RED, BLUE);
    const std::vector<Box> boxes = rectangles();
    ASSERT_GE(boxes.size(), 50u);
    ASSERT_LE(boxes.size(), 52u);
    // Row 25 sits just above the middle: about half-way between the colours.
    for (std::size_t call = 0; call < boxes.size(); ++call) {
        if (boxes[call].y1 == 25) {
            EXPECT_NEAR(rect(call).colour.r, 0.5f, 1e-3);
            EXPECT_NEAR(rect(call).colour.b, 0.5f, 1e-3);
        }
    }
}

TEST_F(DrawingHelpersTest, HelpersOnAnInvalidRendererOrAnUnmappedCurrentCanvasDrawNothing)
{
    CanvasRenderer renderer(canvas, Box{});
    renderer.valid = false;
    recorder->clear();
    Tela::drawFrame(renderer, RED, Box{0, 0, 10, 10}, 1);
    Tela::drawRoundedRect(renderer, RED, BLUE, Box{0, 0, 20, 20}, 0, 15, 1);
    Tela::drawSquircleOutlined(renderer, Box{0, 0, 20, 20}, RED, 4, 15, 1);
    Tela::drawVertGradRect(renderer, Box{0, 0, 20, 20}, RED, BLUE);
    EXPECT_EQ(recorder->callCount(), 0u);

    // Without a current canvas the current-canvas forms do nothing.
    tela_setcanvas(nullptr);
    drawFrame(RED, Box{0, 0, 10, 10}, 1);
    depthBox(RED, Box{0, 0, 10, 10}, 0, 1);
    indent_box(RED, 0, 0, 10, 10);
    EXPECT_EQ(recorder->callCount(), 0u);

    tela_setcanvas(canvas);
    canvas->mapped = 0;
    tela_roundedRect(RED, BLUE, Box{0, 0, 20, 20}, 2, nullptr, 15);
    tela_roundedRectOutline(RED, Box{0, 0, 20, 20}, 2, nullptr, 15);
    EXPECT_EQ(recorder->callCount(), 0u);
}

TEST_F(DrawingHelpersTest, CurrentCanvasFormsUseTheirOwnRendererAndClip)
{
    tela_setcanvas(canvas);
    recorder->clear();
    const Box clip{0, 0, 10, 10};
    tela_roundedRectOutline(RED, Box{0, 0, 20, 20}, 2, &clip, 0);
    // The clip box is set, and the pieces that miss it are not drawn.
    ASSERT_EQ(recorder->operations(), "setClip drawRects drawRects");
    EXPECT_EQ(rectangles(), (std::vector<Box>{{0, 0, 1, 20}, {0, 0, 20, 1}}));

    recorder->clear();
    indent_box(GREY, 0, 0, 20, 20);
    ASSERT_EQ(recorder->callCount(), 18u); // the clip, then as drawIndentBox
    expect_colour(rect(1).colour, scale(GREY, 0.8));
    EXPECT_EQ(rectangles()[16], (Box{1, 4, 19, 16}));
}
