// The gallery's shapes page, every primitive in colours of the default
// palette, painted on both display roads and compared with one reference
// picture. Shapes must look smooth and sit where the page's code puts them:
// look at the picture when it changes.

#include "tela/colour/Palette.h"

#include "gallery/ShapesPanel.h"
#include "support/PageWindow.h"
#include "support/ReferencePicture.h"

#include <gtest/gtest.h>

class ShapesPage : public ::testing::TestWithParam<iImageBase::eLocation> {};

TEST_P(ShapesPage, EveryPrimitiveLooksAsTheReferenceShows)
{
    const PageWindow shown(GetParam(), {Shapes::PAGE_WIDTH, Shapes::PAGE_HEIGHT});
    ASSERT_NE(shown.root, nullptr);
    // Nothing is marked by hand: what the renderer reports is what repaints.
    Shapes::paint(shown.page, Palette::getDefault());
    shown.show();
    EXPECT_TRUE(shows_reference(shown.window(), "shapes.png", "shapes_" + road_name(GetParam()) + ".png",
                                GetParam() == iImageBase::eHostMemory));
}

INSTANTIATE_TEST_SUITE_P(BothRoads, ShapesPage, ::testing::Values(iImageBase::eHostMemory, iImageBase::eGPU),
                         [](const auto& info) { return road_name(info.param); });
