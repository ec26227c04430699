// Box arithmetic is half-open: low edges inside, high edges outside.

#include "tela/platform/Geometry.h"

#include <gtest/gtest.h>

using Box = Qv::Box<int>;

TEST(Box, BoxesThatOnlyTouchShareNothing)
{
    const Box left{0, 0, 10, 10};
    EXPECT_FALSE(left.intersects(Box{10, 0, 20, 10})); // side by side
    EXPECT_FALSE(left.intersects(Box{0, 10, 10, 20})); // one above the other
    EXPECT_TRUE(left.intersects(Box{9, 9, 20, 20}));   // one pixel in common
    EXPECT_EQ(left.intersected(Box{9, 9, 20, 20}), (Box{9, 9, 10, 10}));
    EXPECT_TRUE(left.intersected(Box{30, 30, 40, 40}).isEmpty()); // far apart: empty, whatever its corners

    Box clipped{-5, -5, 5, 5};
    clipped.intersect(left);
    EXPECT_EQ(clipped, (Box{0, 0, 5, 5}));
}

TEST(Box, AnEmptyBoxAddsNothingToAUnion)
{
    const Box a{0, 0, 10, 10};
    EXPECT_EQ(a.united(Box{20, 5, 30, 15}), (Box{0, 0, 30, 15}));
    EXPECT_EQ(a.united(Box{50, 50, 50, 60}), a); // no width: covers nothing
    EXPECT_EQ(Box{}.united(Box{20, 5, 30, 15}), (Box{20, 5, 30, 15}));

    Box growing;
    for (const Box& part : {Box{5, 5, 6, 6}, Box{}, Box{-3, 2, 0, 4}})
        growing.unite(part);
    EXPECT_EQ(growing, (Box{-3, 2, 6, 6}));
}
