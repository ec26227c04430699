// The gallery's paths page: canvases cut to shape by paths (a star whose
// outline crosses itself, a soft rectangle) and by a picture's opaque pixels,
// on both display roads, compared with one reference picture. Edges must be
// clean and the picture's hole must show the page through it.

#include "tela/colour/Palette.h"
#include "tela/render/RasterImage.h"
#include "tela/vector/Path.h"
#include "tela/vector/ScanTable.h"

#include "gallery/PathsPanel.h"
#include "support/PageWindow.h"
#include "support/ReferencePicture.h"

#include <gtest/gtest.h>

class PathsPageOnScreen : public ::testing::TestWithParam<iImageBase::eLocation> {};

TEST_P(PathsPageOnScreen, ShapesCutByPathsAndByAPictureLookAsTheReferenceShows)
{
    // What an application's start-up does for the paths.
    path_init();
    scan_heap_init();
    {
        const PageWindow shown(GetParam(), {PathsPage::PAGE_WIDTH, PathsPage::PAGE_HEIGHT});
        ASSERT_NE(shown.root, nullptr);
        PathsPage::build(shown.page, 8, 8, Palette::getDefault(), fromUTF8(GALLERY_PICTURES "/flower.png"));
        shown.show();
        EXPECT_TRUE(shows_reference(shown.window(), "paths.png", "paths_" + road_name(GetParam()) + ".png",
                                    GetParam() == iImageBase::eHostMemory));
    }
    RasterImage::releaseUnusedCacheEntries();
}

INSTANTIATE_TEST_SUITE_P(BothRoads, PathsPageOnScreen, ::testing::Values(iImageBase::eHostMemory, iImageBase::eGPU),
                         [](const auto& info) { return road_name(info.param); });
