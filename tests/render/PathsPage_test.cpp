// The gallery's paths page: canvases cut to shape by paths (a star whose
// outline crosses itself, a soft rectangle) and by a picture's opaque pixels,
// on both display roads, compared with one reference picture. Edges must be
// clean and the picture's hole must show the page through it.

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/RootCanvas.h"
#include "tela/colour/Palette.h"
#include "tela/render/RasterImage.h"
#include "tela/vector/Path.h"
#include "tela/vector/ScanTable.h"
#include "tela/vector/Regions.h"

#include "gallery/PathsPanel.h"
#include "headless/HeadlessRootWindow.h"
#include "headless/HeadlessServices.h"
#include "support/PaintForwarder.h"
#include "support/ReferencePicture.h"

#include <gtest/gtest.h>

namespace {

constexpr int MARGIN = 8;

} // namespace

class PathsPageOnScreen : public ::testing::TestWithParam<iImageBase::eLocation> {};

TEST_P(PathsPageOnScreen, ShapesCutByPathsAndByAPictureLookAsTheReferenceShows)
{
    // What an application's start-up does for the paths.
    path_init();
    scan_heap_init();
    Headless::services().windowing()->setDefaultDisplayLocation(GetParam());
    const auto sink = Qv::make<PaintForwarder>();
    iRootWindow::InitArgs args;
    args.size = {PathsPage::PAGE_WIDTH + 2 * MARGIN, PathsPage::PAGE_HEIGHT + 2 * MARGIN};
    args.eventHandler = sink;
    RootCanvas* root = tela_createRootCanvas(args);
    Headless::services().windowing()->setDefaultDisplayLocation(iImageBase::eHostMemory);
    ASSERT_NE(root, nullptr);
    sink->root = root;

    Canvas* page = tela_newcanvas(nullptr, root);
    tela_placecanvas(page, TopDownRect{MARGIN, MARGIN, MARGIN + PathsPage::PAGE_WIDTH, MARGIN + PathsPage::PAGE_HEIGHT},
                     makeCurvedRegion({PathsPage::PAGE_WIDTH, PathsPage::PAGE_HEIGHT}, 15, eLargeCorners));
    PathsPage::build(page, MARGIN, MARGIN, Palette::getDefault(), fromUTF8(GALLERY_PICTURES "/flower.png"));
    Headless::services().windowing()->mainLoop().runPending();

    const auto window = Qv::dynamicCast<Headless::RootWindow>(root->window);
    EXPECT_TRUE(shows_reference(*window, "paths.png",
                                GetParam() == iImageBase::eGPU ? "paths_composited.png" : "paths_host.png",
                                GetParam() == iImageBase::eHostMemory));

    tela_deletecanvas(root);
    RasterImage::releaseUnusedCacheEntries();
}

INSTANTIATE_TEST_SUITE_P(BothRoads, PathsPageOnScreen, ::testing::Values(iImageBase::eHostMemory, iImageBase::eGPU),
                         [](const auto& info) { return info.param == iImageBase::eGPU ? "composited" : "host"; });
