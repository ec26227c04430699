#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/vector/GraphicsState.h"
#include "tela/vector/Path.h"
#include "tela/vector/Path_private.h"
#include "tela/vector/Regions.h"
#include "tela/vector/ScanConverter.h"
#include "tela/vector/ScanTable.h"

#include "support/LiveBlocks.h"
#include "support/ReportCapture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>
#include <vector>

namespace {

constexpr int SIZE = 300; // the root is SIZE x SIZE

struct P {
    double x, y;
};
using Polygon = std::vector<P>;

double segment_distance(P p, P a, P b)
{
    const double dx = b.x - a.x, dy = b.y - a.y;
    const double length2 = dx * dx + dy * dy;
    double t = length2 > 0 ? ((p.x - a.x) * dx + (p.y - a.y) * dy) / length2 : 0;
    t = std::clamp(t, 0.0, 1.0);
    return std::hypot(p.x - (a.x + t * dx), p.y - (a.y + t * dy));
}

// The reference: winding numbers of closed polygons at a point, and the
// distance from the point to their outlines.
int winding(const std::vector<Polygon>& shape, P p)
{
    int w = 0;
    for (const Polygon& poly : shape)
        for (std::size_t i = 0; i < poly.size(); ++i) {
            const P a = poly[i], b = poly[(i + 1) % poly.size()];
            const double side = (b.x - a.x) * (p.y - a.y) - (p.x - a.x) * (b.y - a.y);
            if (a.y <= p.y && b.y > p.y && side > 0)
                ++w;
            else if (a.y > p.y && b.y <= p.y && side < 0)
                --w;
        }
    return w;
}

double outline_distance(const std::vector<Polygon>& shape, P p)
{
    double d = 1e300;
    for (const Polygon& poly : shape)
        for (std::size_t i = 0; i < poly.size(); ++i)
            d = std::min(d, segment_distance(p, poly[i], poly[(i + 1) % poly.size()]));
    return d;
}

Polygon soft_rect(double x1, double y1, double x2, double y2, double r)
{
    Polygon out;
    const P centres[4] = {{x1 + r, y1 + r}, {x2 - r, y1 + r}, {x2 - r, y2 - r}, {x1 + r, y2 - r}};
    for (int corner = 0; corner < 4; ++corner)
        for (int i = 0; i <= 100; ++i) {
            const double a = M_PI * (1.0 + corner * 0.5 + 0.5 * i / 100);
            out.push_back({centres[corner].x + r * std::cos(a), centres[corner].y + r * std::sin(a)});
        }
    return out;
}

Polygon star(double cx, double cy, double r, int points, int step)
{
    Polygon out;
    for (int i = 0; i < points; ++i) {
        const double a = M_PI / 2 + 2 * M_PI * i * step / points;
        out.push_back({cx + r * std::cos(a), cy + r * std::sin(a)});
    }
    return out;
}

void add_polygon(const Polygon& poly)
{
    tela_moveto(poly[0].x, poly[0].y);
    for (std::size_t i = 1; i < poly.size(); ++i)
        tela_lineto(poly[i].x, poly[i].y);
    tela_closepath();
}

struct Comparison {
    int covered = 0;      // pixels the converter gave
    int bad = 0;          // disagreements further than the tolerance from the outline
    int near_misses = 0;  // disagreements within it
};

// Every pixel of the root: its centre inside the reference (by `inside`)
// against its membership of the region. Disagreements are allowed only for
// centres within `tolerance` of the outline.
Comparison compare(const RegionPtr& region, const std::function<bool(P)>& inside,
                   const std::function<double(P)>& distance, double tolerance)
{
    Comparison result;
    for (int py = 0; py < SIZE; ++py)
        for (int px = 0; px < SIZE; ++px) {
            const P centre{px + 0.5, py + 0.5};
            const bool got = region && region->contains({px, SIZE - 1 - py});
            result.covered += got;
            if (got == inside(centre))
                continue;
            if (distance(centre) <= tolerance)
                ++result.near_misses;
            else
                ++result.bad;
        }
    return result;
}

// Ties: a centre exactly on an edge goes one way or the other by the
// sampling rule (left edges in, right edges out, ends on a row nudged down by
// 0.001), which a winding count at that very point cannot reproduce.
constexpr double TIE = 0.002;

class ScanConverterTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        path_init();
        scan_heap_init();
        tela_setmatrix(1, 0, 0, 1, 0, 0);
        tela_setflatness(0.05);
        tela_setlinewidth(1.0);
        tela_newpath();
        root = tela_newcanvas(nullptr, nullptr);
        root->shape(region_mkrect(TopDownRect{0, 0, SIZE, SIZE}));
    }
    void TearDown() override
    {
        tela_newpath();
        tela_setflatness(1.0);
        tela_setlinewidth(1.0);
        tela_setmatrix(1, 0, 0, 1, 0, 0);
        tela_deletecanvas(root);
    }
    // The window rectangle of a region's bounding box.
    static TopDownRect box(const RegionPtr& r)
    {
        Qv::Box<int> b;
        r->getBox(b);
        return {b.x1, b.y1, b.x2, b.y2};
    }
    // Fills `shape` by the chosen rule and returns how many pixels away from
    // its outline disagree with the winding reference.
    int misplaced_pixels(const std::vector<Polygon>& shape, int even_odd_form)
    {
        for (const Polygon& poly : shape)
            add_polygon(poly);
        const RegionPtr region = path_to_region(root, 0, even_odd_form, 0);
        const auto inside = [&](P p) {
            const int w = winding(shape, p);
            return even_odd_form ? w != 0 : (w % 2) != 0;
        };
        return compare(region, inside, [&](P p) { return outline_distance(shape, p); }, TIE).bad;
    }

    Canvas* root = nullptr;
    ReportCapture reports;
};

} // namespace

TEST_F(ScanConverterTest, CirclesCoverThePixelsWhoseCentresAreInside)
{
    const double centres[][3] = {{150, 150, 100}, {60.3, 200.7, 33.3}, {200.5, 80.5, 7.2}};
    for (const auto& c : centres) {
        SCOPED_TRACE(c[2]);
        tela_arc(c[0], c[1], c[2], 0, 360);
        const RegionPtr region = path_to_region(root, 0, 1, 0);
        const auto inside = [&](P p) { return std::hypot(p.x - c[0], p.y - c[1]) < c[2]; };
        const auto distance = [&](P p) { return std::fabs(std::hypot(p.x - c[0], p.y - c[1]) - c[2]); };
        // The chords of the flattening stay within the flatness of the curve,
        // and the curves within 0.03% of the radius of the true circle.
        const Comparison result = compare(region, inside, distance, 0.05 + 3e-4 * c[2] + TIE);
        EXPECT_EQ(result.bad, 0);
        EXPECT_LT(result.near_misses, 2 * M_PI * c[2] * 0.1 + 2);
        EXPECT_NEAR(result.covered, M_PI * c[2] * c[2], 2 * M_PI * c[2] * 0.1 + 2);
        EXPECT_FALSE(tela_user_point_valid()); // the path is used up
    }
    // At the default flatness a chord may cut up to a pixel into the curve:
    // the one place where a pixel's distance from the edge may reach 1. The
    // chords lie inside the curve, so nothing further out is ever given.
    tela_setflatness(1.0);
    tela_arc(150, 150, 100, 0, 360);
    const RegionPtr coarse = path_to_region(root, 0, 1, 0);
    const auto distance = [](P p) { return std::hypot(p.x - 150, p.y - 150) - 100; };
    const Comparison result = compare(
        coarse, [&](P p) { return distance(p) < 0; }, [&](P p) { return std::fabs(distance(p)); }, 1.0);
    EXPECT_EQ(result.bad, 0);
    int given_outside = 0;
    for (int py = 0; py < SIZE; ++py)
        for (int px = 0; px < SIZE; ++px)
            given_outside += coarse->contains({px, SIZE - 1 - py}) && distance({px + 0.5, py + 0.5}) > 0.03 + TIE;
    EXPECT_EQ(given_outside, 0);
}

TEST_F(ScanConverterTest, SoftRectanglesMatchTheirRoundedOutline)
{
    const double boxes[][5] = {{20.2, 30.7, 250.9, 120.1, 25}, {100, 100, 180, 290, 60}, {10.5, 200.5, 60.5, 210.5, 3}};
    for (const auto& b : boxes) {
        SCOPED_TRACE(b[4]);
        tela_addsoftrect(b[0], b[1], b[2], b[3], b[4]);
        const RegionPtr region = path_to_region(root, 0, 1, 0);
        const double r = std::min({b[4], (b[2] - b[0]) / 2, (b[3] - b[1]) / 2});
        const std::vector<Polygon> shape{soft_rect(b[0], b[1], b[2], b[3], r)};
        const Comparison result = compare(
            region, [&](P p) { return winding(shape, p) != 0; }, [&](P p) { return outline_distance(shape, p); },
            0.05 + 3e-4 * r + TIE);
        EXPECT_EQ(result.bad, 0);
        EXPECT_GT(result.covered, 0);
    }
}

// A self-intersecting star: by non-zero winding its centre is filled, by the
// even-odd rule it is a hole.
TEST_F(ScanConverterTest, SelfIntersectingStarsFollowTheChosenRule)
{
    const std::vector<Polygon> stars[] = {{star(150.3, 150.6, 120, 5, 2)}, {star(140.1, 160.2, 100, 7, 3)},
                                          {star(100.7, 100.2, 80, 9, 4), star(200.2, 190.9, 60, 5, 2)}};
    for (const std::vector<Polygon>& shape : stars) {
        for (int even_odd_form : {1, 0}) {
            SCOPED_TRACE(even_odd_form);
            EXPECT_EQ(misplaced_pixels(shape, even_odd_form), 0);
        }
    }
    // The centre of the five-pointed star tells the two rules apart.
    add_polygon(star(150, 150, 100, 5, 2));
    EXPECT_TRUE(path_to_region(root, 0, 1, 0)->contains({150, SIZE - 150}));
    add_polygon(star(150, 150, 100, 5, 2));
    EXPECT_FALSE(path_to_region(root, 0, 0, 0)->contains({150, SIZE - 150}));
}

// Rows come out by two roads: short rows whose edges alternate in sense,
// and the rest (same-sense neighbours, many spans). Random polygons, some
// of them combs with more teeth than a short row holds, cross both.
TEST_F(ScanConverterTest, RandomPolygonsFollowTheWindingReference)
{
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> coordinate(10, SIZE - 10);
    for (int round = 0; round < 24; ++round) {
        SCOPED_TRACE(round);
        std::vector<Polygon> shape;
        if (round % 3 == 2) {
            Polygon comb; // teeth pointing up from a spine along the bottom
            const int teeth = 6 + round % 9;
            const double width = (SIZE - 40.0) / teeth;
            for (int tooth = 0; tooth < teeth; ++tooth) {
                const double x = 20 + tooth * width;
                comb.push_back({x + 0.3, 40.2});
                comb.push_back({x + width * 0.5, 40.2 + coordinate(rng) * 0.8});
            }
            comb.push_back({SIZE - 20.0, 40.2});
            comb.push_back({SIZE - 20.0, 20.7});
            comb.push_back({20.3, 20.7});
            shape.push_back(comb);
        }
        for (int polygon = 0; polygon < 1 + round % 3; ++polygon) {
            Polygon poly;
            for (int vertex = 0; vertex < 3 + round % 7; ++vertex)
                poly.push_back({coordinate(rng), coordinate(rng)});
            shape.push_back(poly);
        }
        for (int even_odd_form : {1, 0}) {
            SCOPED_TRACE(even_odd_form);
            EXPECT_EQ(misplaced_pixels(shape, even_odd_form), 0);
        }
    }
}

TEST_F(ScanConverterTest, OverlappingSquaresUniteWhenWoundAlikeAndCancelWhenNot)
{
    add_polygon({{20, 20}, {120, 20}, {120, 120}, {20, 120}});
    add_polygon({{70, 70}, {170, 70}, {170, 170}, {70, 170}});
    const RegionPtr alike = path_to_region(root, 0, 1, 0);
    EXPECT_TRUE(alike->contains({100, SIZE - 100}));
    add_polygon({{20, 20}, {120, 20}, {120, 120}, {20, 120}});
    add_polygon({{70, 70}, {70, 170}, {170, 170}, {170, 70}});
    const RegionPtr opposite = path_to_region(root, 0, 1, 0);
    EXPECT_FALSE(opposite->contains({100, SIZE - 100}));
    EXPECT_TRUE(opposite->contains({50, SIZE - 50}));
    EXPECT_TRUE(opposite->contains({150, SIZE - 150}));
}

// Strokes: each segment a band of the line width, corners cut by a bevel,
// ends cut square. The reference is that union, built independently.
TEST_F(ScanConverterTest, StrokesAreBandsOfTheLineWidthWithBevelledCorners)
{
    struct Case {
        Polygon points;
        bool closed;
        double width;
        double scale;
    };
    const Case cases[] = {
        {{{30.3, 40.2}, {150.7, 60.1}, {120.2, 200.9}, {260.6, 250.3}}, false, 9.0, 1.0},
        {{{50.2, 50.1}, {240.7, 80.3}, {200.1, 230.6}, {70.4, 180.2}}, true, 14.0, 1.0},
        {{{20.1, 20.3}, {60.2, 130.7}, {100.4, 30.6}}, false, 3.0, 2.0}, // the pen scales with the matrix
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.width);
        tela_setmatrix(c.scale, 0, 0, c.scale, 0, 0);
        tela_setlinewidth(c.width);
        tela_moveto(c.points[0].x, c.points[0].y);
        for (std::size_t i = 1; i < c.points.size(); ++i)
            tela_lineto(c.points[i].x, c.points[i].y);
        if (c.closed)
            tela_closepath();
        const RegionPtr region = path_to_region(root, 1, 0, 0);
        tela_setmatrix(1, 0, 0, 1, 0, 0);

        // In device space: every point scaled, the half width too.
        Polygon device;
        for (const P& p : c.points)
            device.push_back({p.x * c.scale, p.y * c.scale});
        if (c.closed)
            device.push_back(device[0]);
        const double half = c.width * c.scale / 2;
        std::vector<Polygon> pieces;
        const auto normal = [&](P a, P b) {
            const double l = std::hypot(b.x - a.x, b.y - a.y);
            return P{-(b.y - a.y) / l * half, (b.x - a.x) / l * half};
        };
        for (std::size_t i = 0; i + 1 < device.size(); ++i) {
            const P a = device[i], b = device[i + 1], n = normal(a, b);
            pieces.push_back({{a.x + n.x, a.y + n.y}, {b.x + n.x, b.y + n.y}, {b.x - n.x, b.y - n.y},
                              {a.x - n.x, a.y - n.y}});
        }
        const std::size_t segments = device.size() - 1;
        const std::size_t joins = c.closed ? segments : segments - 1;
        for (std::size_t j = 0; j < joins; ++j) {
            const P a = device[j], v = device[j + 1], b = device[(j + 2) % device.size() == 0 ? 1 : j + 2];
            const P n1 = normal(a, v), n2 = normal(v, b);
            pieces.push_back({v, {v.x + n1.x, v.y + n1.y}, {v.x + n2.x, v.y + n2.y}});
            pieces.push_back({v, {v.x - n1.x, v.y - n1.y}, {v.x - n2.x, v.y - n2.y}});
        }
        const auto inside = [&](P p) {
            return std::any_of(pieces.begin(), pieces.end(),
                               [&](const Polygon& piece) { return winding({piece}, p) != 0; });
        };
        const Comparison result =
            compare(region, inside, [&](P p) { return outline_distance(pieces, p); }, TIE);
        EXPECT_EQ(result.bad, 0);
        EXPECT_GT(result.covered, 0);
    }
}

TEST_F(ScanConverterTest, RectanglesTakeTheFastRoadAndKeepThePath)
{
    // x rounds to 0 and 10; y goes through the half-pixel shift and the
    // nudge first, which gives rows 0 to 9, so the box is (0, 0, 10, 9).
    tela_rect(0.4, 0.4, 9.6, 9.6);
    const RegionPtr fast = path_to_region(root, 0, 1, 0);
    EXPECT_EQ(box(fast), (TopDownRect{0, SIZE - 9, 10, SIZE}));
    EXPECT_TRUE(tela_user_point_valid());
    // The same rectangle with its sides in the other order, and closed by a
    // line and then a close, is still a rectangle.
    tela_newpath();
    tela_moveto(20, 20);
    tela_lineto(20, 40);
    tela_lineto(50, 40);
    tela_lineto(50, 20);
    tela_lineto(20, 20);
    tela_closepath();
    EXPECT_EQ(box(path_to_region(root, 0, 1, 0)), (TopDownRect{20, SIZE - 40, 50, SIZE - 20}));
    EXPECT_TRUE(tela_user_point_valid());
    // Rotated, it is not, and goes through the table.
    tela_newpath();
    add_polygon({{50, 20}, {80, 50}, {50, 80}, {20, 50}});
    const RegionPtr diamond = path_to_region(root, 0, 1, 0);
    EXPECT_FALSE(region_is_rect(diamond));
    EXPECT_FALSE(tela_user_point_valid());
}

TEST_F(ScanConverterTest, EdgesAreSampledAtRowCentres)
{
    scan_begin(0, 0, 10, 10);
    scan_add_line(1, 0.5, 1, 2.5); // ends on row centres: rows 0 and 1 only
    EXPECT_NE(scan_first_trans(0), nullptr);
    EXPECT_NE(scan_first_trans(1), nullptr);
    EXPECT_EQ(scan_first_trans(2), nullptr);
    scan_add_line(0, 5, 9, 5); // horizontal: nothing
    EXPECT_EQ(scan_first_trans(4), nullptr);
    EXPECT_EQ(scan_first_trans(5), nullptr);
    // A lone move marks nothing: the table is emptied and the result is null.
    tela_moveto(10, 10);
    EXPECT_EQ(path_to_region(root, 0, 1, 0), nullptr);
    EXPECT_EQ(scan_lines(), 0);
}

TEST_F(ScanConverterTest, WideningKeepsThinSpansAPixelWide)
{
    const Polygon sliver{{100.6, 20}, {100.8, 20}, {100.8, 200}, {100.6, 200}, {100.7, 110}};
    add_polygon(sliver);
    EXPECT_EQ(path_to_region(root, 0, 1, 0), nullptr); // no centre inside
    add_polygon(sliver);
    const RegionPtr widened = path_to_region(root, 0, 1, 4);
    ASSERT_NE(widened, nullptr);
    EXPECT_EQ(box(widened), (TopDownRect{101, SIZE - 200, 102, SIZE - 20}));
}

TEST_F(ScanConverterTest, ReshapingACanvasTakesTheAreaOfThePath)
{
    Canvas* child = tela_newcanvas(nullptr, root);
    tela_arc(100, 100, 40, 0, 360);
    EXPECT_EQ(tela_reshapecanvas(child, 0, 0), 1);
    ASSERT_NE(child->shape(), nullptr);
    EXPECT_TRUE(child->shape()->contains({100, SIZE - 100}));
    EXPECT_FALSE(child->shape()->contains({100, SIZE - 145}));
    // An empty path leaves the shape.
    const RegionPtr before = child->shape();
    EXPECT_EQ(tela_reshapecanvas(child, 0, 0), 0);
    EXPECT_EQ(child->shape(), before);
    tela_arc(100, 100, 40, 0, 360);
    tela_copy(nullptr, child, 0, 0); // nothing to copy from: only the path goes
    EXPECT_FALSE(tela_user_point_valid());
}

// Bad input: the stated message, a safe result, and memory that stays
// within ten blocks and comes back.
TEST_F(ScanConverterTest, AbsurdPathsAreReportedAndStayBounded)
{
    const auto blocks = live_blocks();
    {
        // 100,000 rows: the table is cut at 80,000 and what lies beyond is reported.
        add_polygon({{10, 10}, {200, 10}, {100, 100010}});
        const RegionPtr tall = path_to_region(root, 0, 1, 0);
        EXPECT_EQ(reports.count("scan_add_trans: index too big!\n"), 1);
        EXPECT_EQ(scan_lines(), SCAN_BLOCK_RECORDS);
        EXPECT_NE(tall, nullptr);
        reports.clear();

        // Nearly vertical teeth over the whole table use up every block.
        tela_moveto(0, 0);
        for (int i = 1; i < 40; ++i)
            tela_lineto(i * 3, i % 2 ? 95000 : 0);
        tela_closepath();
        const RegionPtr comb = path_to_region(root, 0, 1, 0);
        EXPECT_EQ(reports.count("not enough scan-conversion heap"), 1);
        EXPECT_EQ(scan_heap_blocks(), SCAN_MOST_BLOCKS);
        reports.clear();

        // Huge and infinite coordinates are cut, not converted to garbage.
        tela_moveto(-1e300, 5);
        tela_lineto(1e300, 7);
        tela_curveto(HUGE_VAL, -HUGE_VAL, 3e9, 1e18, 50, 50);
        tela_lineto(-HUGE_VAL, 60);
        const RegionPtr huge = path_to_region(root, 0, 1, 0);
        EXPECT_NE(reports.text(), "");
        reports.clear();

        // Points that are not numbers are left out with their edges.
        tela_moveto(10, 10);
        tela_lineto(NAN, 50);
        tela_curveto(1, NAN, 2, 3, 4, 5);
        tela_lineto(100, 10);
        tela_lineto(50, 100);
        const RegionPtr partly = path_to_region(root, 0, 1, 0);
        EXPECT_EQ(reports.count("path_to_region: points that are not numbers were left out, with their edges\n"), 1);
        tela_moveto(NAN, NAN);
        tela_lineto(NAN, 1);
        EXPECT_EQ(path_to_region(root, 1, 0, 0), nullptr);
        // A stroke of absurd width reaches out of its margin; it is reported.
        tela_setlinewidth(1e200);
        tela_moveto(10, 10);
        tela_lineto(20, 20);
        path_to_region(root, 1, 0, 0);
        tela_setlinewidth(1.0);
        // Nothing above held the heap: the next path gives the blocks back.
        tela_arc(50, 50, 10, 0, 360);
        EXPECT_NE(path_to_region(root, 0, 1, 0), nullptr);
        EXPECT_EQ(scan_heap_blocks(), 1);
    }
    EXPECT_EQ(live_blocks(), blocks);
}
