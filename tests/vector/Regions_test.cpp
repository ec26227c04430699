#include "tela/state/TelaState.h"
#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/vector/RegionBuilder.h"
#include "tela/vector/Regions.h"

#include "headless/HostImage.h"
#include "headless/PixmanRegion.h"
#include "support/LiveBlocks.h"

#include <gtest/gtest.h>

#include <array>
#include <bitset>
#include <climits>
#include <random>
#include <vector>

namespace {

constexpr int GRID = 48;
using Bitmap = std::bitset<GRID * GRID>;

Bitmap bitmap_of(const RegionPtr& r)
{
    Bitmap bits;
    if (!r)
        return bits;
    for (int y = 0; y < GRID; ++y)
        for (int x = 0; x < GRID; ++x)
            bits[y * GRID + x] = r->contains({x, y});
    return bits;
}

struct RandomShape {
    Bitmap bits;
    RegionPtr region;
};

// Random rectangles, deliberately in no band order, some empty, some overlapping.
RandomShape random_shape(std::mt19937& rng)
{
    std::uniform_int_distribution<int> coordinate(0, GRID);
    RandomShape shape;
    if (rng() % 8 == 0)
        return shape; // now and then the null region
    std::vector<TopDownRect> rects(1 + rng() % 12);
    for (TopDownRect& r : rects) {
        r = {coordinate(rng), coordinate(rng), coordinate(rng), coordinate(rng)};
        for (int y = r.top; y < r.bottom; ++y)
            for (int x = r.left; x < r.right; ++x)
                shape.bits[y * GRID + x] = true;
    }
    OS()->windowing()->createRegion(shape.region, rects.data(), rects.size());
    if (shape.bits.none())
        shape.region = nullptr; // an object covering nothing: treat as the empty region
    return shape;
}

Qv::Box<int> box_of(const RegionPtr& r)
{
    Qv::Box<int> box;
    r->getBox(box);
    return box;
}

std::vector<TopDownRect> rects_of(const Tela::RegionBuilder& builder)
{
    std::vector<TopDownRect> out;
    for (std::size_t i = 0; i < builder.size(); ++i)
        out.push_back(builder[i]);
    return out;
}

} // namespace

TEST(Regions, SetOperationsAgreeWithPixelMembershipOnRandomShapes)
{
    for (unsigned seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 rng(seed);
        const RandomShape a = random_shape(rng);
        const RandomShape b = random_shape(rng);
        ASSERT_EQ(bitmap_of(a.region), a.bits);

        EXPECT_EQ(bitmap_of(region_union(a.region, b.region)), a.bits | b.bits);
        EXPECT_EQ(bitmap_of(region_intersect(a.region, b.region)), a.bits & b.bits);
        EXPECT_EQ(bitmap_of(region_subtract(a.region, b.region, true)), a.bits & ~b.bits);
        const RegionPtr kept = region_subtract(a.region, b.region, false);
        if (a.region) {
            EXPECT_TRUE(kept); // the caller asked for an object
        }
        EXPECT_EQ(bitmap_of(kept), a.bits & ~b.bits);
        EXPECT_EQ(region_eq(a.region, b.region), a.bits == b.bits ? 1 : 0);

        const RegionPtr moved = region_translate(a.region, 3, 5); // 5 up: window y falls
        Bitmap expected;
        for (int y = 0; y < GRID; ++y)
            for (int x = 0; x < GRID; ++x)
                if (a.bits[y * GRID + x] && x + 3 < GRID && y - 5 >= 0)
                    expected[(y - 5) * GRID + x + 3] = true;
        EXPECT_EQ(bitmap_of(moved), expected);
        if (a.region) {
            EXPECT_NE(moved->identity(), a.region->identity());
        }

        if (a.region && b.region) {
            const Qv::Box<int> ba = box_of(a.region), bb = box_of(b.region);
            const bool overlap = std::max(ba.x1, bb.x1) < std::min(ba.x2, bb.x2) &&
                                 std::max(ba.y1, bb.y1) < std::min(ba.y2, bb.y2);
            EXPECT_EQ(region_bbx_overlap(a.region, b.region), overlap);
            EXPECT_EQ(static_cast<bool>(region_bbx_intersect(a.region, b.region)), overlap);
            EXPECT_EQ(region_area(a.region), static_cast<long long>(ba.width()) * ba.height());
        }
    }
}

TEST(Regions, NullsAndSharedOperands)
{
    const RegionPtr a = region_mkrect(TopDownRect{0, 0, 10, 10});
    const RegionPtr b = region_mkrect(TopDownRect{5, 5, 20, 20});
    EXPECT_EQ(region_union(a, nullptr).get(), a.get());
    EXPECT_EQ(region_union(nullptr, b).get(), b.get());
    EXPECT_EQ(region_union(nullptr, nullptr), nullptr);
    EXPECT_EQ(region_intersect(a, a).get(), a.get());
    EXPECT_EQ(region_intersect(a, nullptr), nullptr);
    EXPECT_EQ(region_subtract(a, a, false), nullptr); // itself: null whatever the flag
    EXPECT_EQ(region_subtract(nullptr, b, false), nullptr);
    const RegionPtr emptied = region_subtract(a, region_mkrect(TopDownRect{-1, -1, 11, 11}), false);
    ASSERT_TRUE(emptied);
    EXPECT_EQ(box_of(emptied), (Qv::Box<int>{0, 0, 0, 0}));
    EXPECT_EQ(region_eq(nullptr, nullptr), 1);
    EXPECT_EQ(region_eq(a, nullptr), 0);
    // The platform compares point sets: an empty region is the set no region is.
    EXPECT_TRUE(emptied->equals(nullptr));
    EXPECT_FALSE(a->equals(nullptr));
    EXPECT_EQ(region_is_rect(nullptr), 0);
    EXPECT_EQ(region_is_rect(a), 1);
    EXPECT_EQ(region_is_rect(region_union(a, b)), 0);
    EXPECT_EQ(region_area(nullptr), 0);
    EXPECT_EQ(region_area(region_union(a, b)), 400); // the box, not the L shape
    EXPECT_EQ(region_copy(nullptr), nullptr);
    EXPECT_NE(region_copy(a).get(), a.get());
    EXPECT_EQ(region_grow(a, 5, 5).get(), a.get());
    EXPECT_EQ(region_border(a, -5, 9).get(), a.get());

    // Touching boxes do not overlap.
    const RegionPtr right = region_mkrect(TopDownRect{10, 0, 20, 10});
    EXPECT_FALSE(region_bbx_overlap(a, right));
    EXPECT_EQ(region_intersect(a, right), nullptr);
    EXPECT_EQ(region_bbx_intersect(a, right), nullptr);
}

TEST(Regions, AbsurdRectanglesGiveASafeResult)
{
    const RegionPtr huge = region_mkrect(TopDownRect{INT_MIN / 2, INT_MIN / 2, INT_MAX / 2, INT_MAX / 2});
    ASSERT_TRUE(huge);
    EXPECT_TRUE(huge->contains({0, 0}));
    const RegionPtr inverted = region_mkrect(TopDownRect{10, 10, 0, 0});
    EXPECT_FALSE(inverted && inverted->contains({5, 5}));
    EXPECT_EQ(bitmap_of(region_intersect(huge, region_mkrect(TopDownRect{1, 1, 3, 3}))).count(), 4u);
}

TEST(RegionBuilder, MergesEqualColumnsAndSplitsBands)
{
    Tela::RegionBuilder merged;
    merged.appendRect(0, 0, 10, 5);
    merged.appendRect(0, 5, 10, 9);
    EXPECT_EQ(rects_of(merged), (std::vector<TopDownRect>{{0, 0, 10, 9}}));

    Tela::RegionBuilder split; // no reserve: the split must survive the array moving
    split.appendRect(0, 0, 10, 10);
    split.appendRect(20, 5, 30, 10);
    EXPECT_EQ(rects_of(split), (std::vector<TopDownRect>{{0, 0, 10, 5}, {0, 5, 10, 10}, {20, 5, 30, 10}}));

    Tela::RegionBuilder copy(split);
    EXPECT_EQ(rects_of(copy), rects_of(split));
    Tela::RegionBuilder moved(std::move(copy));
    EXPECT_EQ(moved.size(), 3u);
    EXPECT_EQ(bitmap_of(moved.create()), bitmap_of(split.create()));
    EXPECT_EQ(Tela::RegionBuilder().create(), nullptr);
}

TEST(RegionBuilder, RowsOfRandomRunsBuildTheShapeTheyDescribe)
{
    for (unsigned seed = 1; seed <= 50; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 rng(seed);
        Bitmap bits;
        Tela::RegionBuilder builder;
        for (int y = 0; y < GRID; ++y) {
            for (int x = 0; x < GRID;) {
                x += static_cast<int>(rng() % 6);
                const int run = static_cast<int>(rng() % 8);
                const int end = std::min(GRID, x + run);
                if (end > x) {
                    builder.appendRect(x, y, end, y + 1);
                    for (int i = x; i < end; ++i)
                        bits[y * GRID + i] = true;
                }
                x = end + 1;
            }
        }
        EXPECT_EQ(bitmap_of(builder.create()), bits);
    }
}

// Rectangles already in the region's own form are taken as they stand; any
// other form must still come out as the one form of its point set.
TEST(RegionBuilder, BandedRectanglesGiveTheSameRegionAsAnyOther)
{
    const auto created = [](const std::vector<TopDownRect>& rects) {
        RegionPtr region;
        OS()->windowing()->createRegion(region, rects.data(), rects.size());
        EXPECT_TRUE(static_cast<const Headless::PixmanRegion*>(region.get())->selfcheck());
        Qv::Vector<TopDownRect> out;
        region->getRects(out);
        return std::vector<TopDownRect>(out.begin(), out.end());
    };
    for (unsigned seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 rng(seed);
        const RandomShape shape = random_shape(rng);
        if (!shape.region)
            continue;
        Qv::Vector<TopDownRect> form;
        shape.region->getRects(form);
        const std::vector<TopDownRect> canonical(form.begin(), form.end());
        EXPECT_EQ(created(canonical), canonical);

        // Through the builder, a band at a time, as the scan converter gives them.
        Tela::RegionBuilder bands;
        for (std::size_t index = 0; index < canonical.size(); ++index) {
            TopDownRect rect = canonical[index];
            rect.bottom = rect.top + 1;
            bands.appendBandRect(rect);
            const bool bandEnds = index + 1 == canonical.size() || canonical[index + 1].top != rect.top;
            if (bandEnds) {
                std::size_t count = 1;
                while (count <= index && canonical[index - count].top == rect.top)
                    ++count;
                bands.extendBand(count, canonical[index].bottom);
            }
        }
        EXPECT_EQ(rects_of(bands), canonical);

        // A band cut in two rows of the same columns, and a rectangle cut in
        // two that touch: both must be folded back.
        std::size_t firstBand = 0;
        while (firstBand < canonical.size() && canonical[firstBand].top == canonical[0].top)
            ++firstBand;
        std::vector<TopDownRect> repeated;
        if (canonical[0].bottom - canonical[0].top >= 2) {
            for (std::size_t index = 0; index < firstBand; ++index)
                repeated.push_back({canonical[index].left, canonical[index].top, canonical[index].right, canonical[index].top + 1});
            for (std::size_t index = 0; index < firstBand; ++index)
                repeated.push_back({canonical[index].left, canonical[index].top + 1, canonical[index].right, canonical[index].bottom});
            repeated.insert(repeated.end(), canonical.begin() + std::ptrdiff_t(firstBand), canonical.end());
        } else {
            repeated = canonical;
        }
        EXPECT_EQ(created(repeated), canonical);
        std::vector<TopDownRect> touching = canonical;
        if (touching[0].right - touching[0].left >= 2) {
            const int middle = (touching[0].left + touching[0].right) / 2;
            touching.insert(touching.begin() + 1, TopDownRect{middle, touching[0].top, touching[0].right, touching[0].bottom});
            touching[0].right = middle;
        }
        EXPECT_EQ(created(touching), canonical);
    }
}

TEST(CurvedRegions, CornerMasksCutTheRightCorners)
{
    const int w = 40, h = 30;
    EXPECT_EQ(bitmap_of(makeCurvedRegion({w, h}, 0, eLargeCorners)), bitmap_of(region_mkrect(TopDownRect{0, 0, w, h})));

    // Top left and bottom right rounded, the others square.
    const RegionPtr diagonal = makeCurvedRegion({w, h}, 9, eSmallCorners);
    RegionPtr expected;
    const TopDownRect bands[] = {{3, 0, w, 1}, {1, 1, w, 3}, {0, 3, w, h - 3}, {0, h - 3, w - 1, h - 1}, {0, h - 1, w - 3, h}};
    OS()->windowing()->createRegion(expected, bands, 5);
    EXPECT_EQ(region_eq(diagonal, expected), 1);

    for (unsigned mask = 0; mask < 16; ++mask) {
        SCOPED_TRACE(mask);
        const RegionPtr r = makeCurvedRegion({w, h}, mask, eSmallCorners);
        EXPECT_EQ(r->contains({0, 0}), !(mask & 1));
        EXPECT_EQ(r->contains({w - 1, 0}), !(mask & 2));
        EXPECT_EQ(r->contains({0, h - 1}), !(mask & 4));
        EXPECT_EQ(r->contains({w - 1, h - 1}), !(mask & 8));
        EXPECT_TRUE(r->contains({w / 2, h / 2}));
        // The large form rounds all four whatever the mask.
        const RegionPtr large = makeCurvedRegion({w, h}, mask, eLargeCorners);
        EXPECT_EQ(large->contains({1, 1}), mask == 0);
        EXPECT_EQ(large->contains({6, 0}), true);
    }
}

TEST(ImageRegions, OpaquePixelsMakeTheShape)
{
    const auto before = live_blocks();
    {
        auto image = Headless::HostImage::create({8, 4});
        image->fill(0);
        const auto guard = image->lock();
        auto set_alpha = [&](int x, int y) { guard->pixels()[y * guard->stride() + x * 4 + 3] = 255; };
        set_alpha(1, 0);
        set_alpha(2, 0);
        set_alpha(1, 1);
        set_alpha(2, 1);
        set_alpha(6, 3);
        const RegionPtr r = tela_buildRegionFromImage(image);
        ASSERT_TRUE(r);
        Bitmap expected;
        for (auto [x, y] : {std::pair{1, 0}, {2, 0}, {1, 1}, {2, 1}, {6, 3}})
            expected[y * GRID + x] = true;
        EXPECT_EQ(bitmap_of(r), expected);
        EXPECT_EQ(tela_buildRegionFromImage(nullptr), nullptr);
    }
    EXPECT_EQ(live_blocks(), before);
}

// Long runs of opaque and clear pixels, odd widths and faint alphas: every
// pixel with any alpha is in the shape, and no other.
TEST(ImageRegions, RunsOfAnyLengthAndFaintAlphaFollowThePixels)
{
    std::mt19937 random(7);
    for (const int width : {1, 2, 3, 9, 64, 101}) {
        SCOPED_TRACE(width);
        auto image = Headless::HostImage::create({width, 6});
        const auto guard = image->lock();
        for (int y = 0; y < 6; ++y) {
            std::uint8_t alpha = 0;
            for (int x = 0; x < width; ++x) {
                if (random() % 5 == 0)
                    alpha = std::array<std::uint8_t, 4>{0, 1, 128, 255}[random() % 4];
                guard->pixels()[y * guard->stride() + x * 4 + 3] = alpha;
            }
        }
        const RegionPtr r = tela_buildRegionFromImage(image);
        for (int y = 0; y < 6; ++y)
            for (int x = 0; x < width; ++x)
                ASSERT_EQ(r && r->contains({x, y}), guard->pixels()[y * guard->stride() + x * 4 + 3] > 0)
                    << x << "," << y;
    }
}

TEST(CanvasRegions, FlipsBetweenTheRootAndTheWindow)
{
    Canvas* root = tela_newcanvas(nullptr, nullptr);
    root->shape(region_mkrect(TopDownRect{0, 0, 200, 100}));
    Canvas* child = tela_newcanvas(nullptr, root);

    // A bottom-up box near the bottom of the root lands near the window's bottom.
    const RegionPtr r = region_mkrect(child, 10, 0, 30, 20);
    EXPECT_EQ(box_of(r), (Qv::Box<int>{10, 80, 30, 100}));
    EXPECT_EQ(Tela::getExtentsQV(root, r), (Qv::Box<int>{10, 0, 30, 20}));
    EXPECT_EQ(Tela::getExtentsQV(root, nullptr), (Qv::Box<int>{}));
    EXPECT_EQ(Tela::screenRegionToCanvasRegion(nullptr, r, false), nullptr);
    tela_deletecanvas(root);
}

TEST(CanvasRegions, TheTwoFormsOfScreenToCanvasMoveVerticallyInOppositeDirections)
{
    // The first root gives every canvas its position; register one for this test.
    Canvas* root = tela_newcanvas(nullptr, nullptr);
    tela_state().rootWindows.push_back(RootWindowRec(root));
    root->shape(region_mkrect(TopDownRect{0, 0, 200, 100}));
    Canvas* child = tela_newcanvas(nullptr, root);
    child->shape(region_mkrect(TopDownRect{20, 30, 60, 50}));
    ASSERT_EQ(child->getPosition(), (XY<int>{20, 30}));

    const RegionPtr copy = Tela::screenRegionToCanvasRegion(child, region_mkrect(TopDownRect{20, 30, 25, 35}), false);
    EXPECT_EQ(box_of(copy), (Qv::Box<int>{0, 0, 5, 5}));
    const RegionPtr own = region_mkrect(TopDownRect{20, 30, 25, 35});
    const RegionPtr in_place = Tela::screenRegionToCanvasRegion(child, own, true);
    EXPECT_EQ(in_place.get(), own.get());
    EXPECT_EQ(box_of(in_place), (Qv::Box<int>{0, 60, 5, 65}));

    tela_state().rootWindows.clear();
    tela_deletecanvas(root);
}
