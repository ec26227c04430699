#include "tela/vector/GraphicsState.h"
#include "tela/vector/Path.h"
#include "tela/vector/Path_private.h"
#include "tela/vector/ScanConverter.h"
#include "tela/vector/ScanTable.h"

#include "support/LiveBlocks.h"
#include "support/ReportCapture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

struct Entry {
    int code;
    double x, y;
};

std::vector<Entry> entries()
{
    const PathEntries path = path_entries();
    std::vector<Entry> out;
    for (int i = 0; i < path.count; ++i)
        out.push_back({path.codes[i], path.x[i], path.y[i]});
    return out;
}

class PathTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        path_init();
        scan_heap_init();
        tela_setmatrix(1, 0, 0, 1, 0, 0);
        tela_newpath();
    }
    void TearDown() override
    {
        tela_newpath();
        tela_setmatrix(1, 0, 0, 1, 0, 0);
    }
    ReportCapture reports;
};

} // namespace

TEST_F(PathTest, PointsAreStoredThroughTheMatrixAndStayWhenItChanges)
{
    tela_translate(100, 50);
    tela_scale(2, 2);
    tela_moveto(1, 1);
    tela_moveto(3, 4); // a second move replaces the first
    tela_lineto(5, 4);
    ASSERT_EQ(entries().size(), 2u);
    EXPECT_DOUBLE_EQ(entries()[0].x, 106);
    EXPECT_DOUBLE_EQ(entries()[0].y, 58);
    EXPECT_DOUBLE_EQ(path_device_x(), 110);

    // A new matrix leaves what is stored alone; the user point follows it.
    tela_setmatrix(1, 0, 0, 1, 10, 0);
    EXPECT_DOUBLE_EQ(entries()[1].x, 110);
    EXPECT_DOUBLE_EQ(tela_user_x(), 100);
    EXPECT_DOUBLE_EQ(tela_user_y(), 58);
    EXPECT_EQ(reports.text(), "");
}

TEST_F(PathTest, CloseStoresTheSubpathStartAndALineContinuesFromIt)
{
    tela_closepath(); // nothing open: nothing happens
    EXPECT_TRUE(entries().empty());
    tela_moveto(0, 0);
    tela_lineto(10, 0);
    tela_lineto(10, 10);
    tela_closepath();
    tela_closepath(); // already closed
    ASSERT_EQ(entries().size(), 4u);
    EXPECT_EQ(entries()[3].code, PathCodes::CLOSE);
    EXPECT_EQ(entries()[3].x, 0);
    tela_lineto(0, 20);
    tela_closepath(); // closes back to the close entry, which is the start
    ASSERT_EQ(entries().size(), 6u);
    EXPECT_EQ(entries()[5].y, 0);
}

TEST_F(PathTest, ArcsAreCutIntoSectorsOfAboutFortyFiveDegreesOnTheCircle)
{
    const auto curves_for = [](double sweep) {
        tela_newpath();
        tela_arc1(0, 0, 10, 0, sweep);
        return (entries().size() - 1) / 3;
    };
    EXPECT_EQ(curves_for(45), 1u);
    EXPECT_EQ(curves_for(60), 1u);
    EXPECT_EQ(curves_for(70), 2u);
    EXPECT_EQ(curves_for(-70), 2u);

    // 350 to 10 goes counter-clockwise through 0: 20 degrees, one curve.
    tela_newpath();
    tela_arc(5, 5, 10, 350, 10);
    const std::vector<Entry> arc = entries();
    ASSERT_EQ(arc.size(), 4u);
    EXPECT_NEAR(arc[0].x, 5 + 10 * std::cos(-10 * M_PI / 180), 1e-9);
    EXPECT_NEAR(arc[3].y, 5 + 10 * std::sin(10 * M_PI / 180), 1e-9);

    // A full circle: 1 move and 8 curves, every end on the circle, and the
    // middle of each curve too.
    tela_newpath();
    tela_arc(0, 0, 200, 0, 360);
    const std::vector<Entry> circle = entries();
    ASSERT_EQ(circle.size(), 25u);
    for (std::size_t i = 3; i < circle.size(); i += 3) {
        EXPECT_NEAR(std::hypot(circle[i].x, circle[i].y), 200, 1e-9);
        const Entry& p0 = circle[i - 3];
        const Entry &p1 = circle[i - 2], &p2 = circle[i - 1], &p3 = circle[i];
        const double mx = (p0.x + 3 * p1.x + 3 * p2.x + p3.x) / 8, my = (p0.y + 3 * p1.y + 3 * p2.y + p3.y) / 8;
        EXPECT_NEAR(std::hypot(mx, my), 200, 1e-9);
    }

    // Equal angles: a move to the start and one sector of no sweep.
    tela_newpath();
    tela_arc(0, 0, 10, 30, 30);
    EXPECT_EQ(entries().size(), 4u);
    // An open subpath is joined to the arc with a line.
    tela_newpath();
    tela_moveto(-50, 0);
    tela_arc1(0, 0, 10, 0, 90);
    EXPECT_EQ(entries()[1].code, PathCodes::LINE);
    EXPECT_EQ(reports.text(), "");
}

TEST_F(PathTest, SoftRectanglesCutTheRadiusToHalfTheSmallerSide)
{
    // Radius 50 on a box 20 high: the corners are half circles of radius 10,
    // centred at (10, 10) and (90, 10).
    tela_addsoftrect(0, 0, 100, 20, 50);
    const std::vector<Entry> rect = entries();
    EXPECT_EQ(rect[0].x, 0);
    EXPECT_EQ(rect[0].y, 10);
    int ends = 0;
    for (const Entry& e : rect) {
        if (e.code != PathCodes::CURVE_END)
            continue;
        ++ends;
        const double to_left = std::hypot(e.x - 10, e.y - 10), to_right = std::hypot(e.x - 90, e.y - 10);
        EXPECT_NEAR(std::min(to_left, to_right), 10, 1e-9);
    }
    EXPECT_EQ(ends, 8); // two sectors a quarter
    EXPECT_EQ(rect.back().code, PathCodes::CLOSE);

    // A radius of 0 is a plain rectangle: five entries.
    tela_newpath();
    tela_addsoftrect(0, 0, 100, 20, 0);
    EXPECT_EQ(entries().size(), 5u);
    // tela_rect starts afresh.
    tela_rect(1, 1, 2, 2);
    EXPECT_EQ(entries().size(), 5u);
    EXPECT_EQ(entries()[0].x, 1);
}

TEST_F(PathTest, TheCurrentPointCallsWorkInDeviceSpace)
{
    path_movetopixel(7, 9);
    EXPECT_EQ(path_device_x(), 7);
    path_origintopoint();
    double a, b, c, d, e, f;
    tela_currentmatrix(&a, &b, &c, &d, &e, &f);
    EXPECT_EQ(e, 7);
    EXPECT_EQ(f, 9);
    EXPECT_DOUBLE_EQ(tela_user_x(), 0); // the point is now the origin
    path_setpixelmatrix();
    tela_currentmatrix(&a, &b, &c, &d, &e, &f);
    EXPECT_EQ(e, 0);
    EXPECT_TRUE(tela_user_point_valid());
}

// Misuse is reported in the stated words and the call carries on; nothing
// is written past the 500th entry, and building allocates nothing.
TEST_F(PathTest, MisuseIsReportedAndTheBuffersHoldTheirLimit)
{
    const auto blocks = live_blocks();
    tela_lineto(1, 1); // no current point: reported, and still stored
    EXPECT_EQ(reports.count("no current point"), 1);
    EXPECT_EQ(entries().size(), 1u);
    EXPECT_EQ(tela_user_x(), 1);

    tela_newpath();
    reports.clear();
    tela_user_x();
    path_check_currpoint();
    path_origintopoint();
    EXPECT_EQ(reports.count("no current point"), 3);
    EXPECT_EQ(path_device_x(), 0.0);

    // 501 entries: the last is reported, and the path stays at 500.
    reports.clear();
    tela_moveto(0, 0);
    for (int i = 1; i < PATH_CAPACITY; ++i)
        tela_lineto(i % 7, i);
    EXPECT_EQ(reports.text(), "");
    tela_lineto(1000, 1000);
    tela_closepath();
    tela_curveto(1, 2, 3, 4, 5, 6);
    EXPECT_EQ(reports.count("path overflow"), 3);
    EXPECT_EQ(path_entries().count, PATH_CAPACITY);
    EXPECT_EQ(live_blocks(), blocks);
    // The full path is still read, and used up.
    path_to_region(nullptr, 0, 1, 0);
    EXPECT_FALSE(tela_user_point_valid());

    // A curve that does not fit is cut short and left out by the converter.
    tela_newpath();
    tela_moveto(0, 0);
    for (int i = 1; i < PATH_CAPACITY - 2; ++i)
        tela_lineto(10, i);
    reports.clear();
    tela_curveto(20, 0, 30, 0, 40, 500);
    EXPECT_EQ(reports.count("path overflow"), 1);
    EXPECT_EQ(path_entries().count, PATH_CAPACITY);
    EXPECT_EQ(path_entries().codes[PATH_CAPACITY - 1], PathCodes::CURVE_CONTROL);

    // An absurd sweep would need more sectors than the buffers hold.
    tela_newpath();
    reports.clear();
    tela_arc1(0, 0, 10, 0, 1e12);
    EXPECT_EQ(reports.count("path_arc2: too large a sector"), 1);
    tela_newpath();
    reports.clear();
    tela_arc1(0, 0, 10, 0, NAN);
    EXPECT_EQ(reports.count("path_arc2: too large a sector"), 1);

    // A second start-up keeps the buffers it has.
    path_init();
    EXPECT_EQ(live_blocks(), blocks);
}
