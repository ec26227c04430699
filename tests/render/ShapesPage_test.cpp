// The gallery's shapes page, every primitive in colours of the default
// palette, painted on both display roads and compared with one reference
// picture. Shapes must look smooth and sit where the page's code puts them:
// look at the picture when it changes.

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/RootCanvas.h"
#include "tela/colour/Palette.h"
#include "tela/vector/Regions.h"

#include "gallery/ShapesPanel.h"
#include "headless/HeadlessRootWindow.h"
#include "headless/HeadlessServices.h"
#include "support/PaintForwarder.h"
#include "support/ReferencePicture.h"

#include <gtest/gtest.h>

#include <string>

namespace {

constexpr int MARGIN = 8;

} // namespace

class ShapesPage : public ::testing::TestWithParam<iImageBase::eLocation> {};

TEST_P(ShapesPage, EveryPrimitiveLooksAsTheReferenceShows)
{
    Headless::services().windowing()->setDefaultDisplayLocation(GetParam());
    const auto sink = Qv::make<PaintForwarder>();
    iRootWindow::InitArgs args;
    args.size = {Shapes::PAGE_WIDTH + 2 * MARGIN, Shapes::PAGE_HEIGHT + 2 * MARGIN};
    args.eventHandler = sink;
    RootCanvas* root = tela_createRootCanvas(args);
    Headless::services().windowing()->setDefaultDisplayLocation(iImageBase::eHostMemory);
    ASSERT_NE(root, nullptr);
    sink->root = root;

    Canvas* page = tela_newcanvas(nullptr, root);
    tela_placecanvas(page, TopDownRect{MARGIN, MARGIN, MARGIN + Shapes::PAGE_WIDTH, MARGIN + Shapes::PAGE_HEIGHT},
                     makeCurvedRegion({Shapes::PAGE_WIDTH, Shapes::PAGE_HEIGHT}, 15, eLargeCorners));
    // Nothing is marked by hand: what the renderer reports is what repaints.
    Shapes::paint(page, Palette::getDefault());
    Headless::services().windowing()->mainLoop().runPending();

    const auto window = Qv::dynamicCast<Headless::RootWindow>(root->window);
    EXPECT_TRUE(shows_reference(*window, "shapes.png",
                                GetParam() == iImageBase::eGPU ? "shapes_composited.png" : "shapes_host.png",
                                GetParam() == iImageBase::eHostMemory));

    tela_deletecanvas(root);
}

INSTANTIATE_TEST_SUITE_P(BothRoads, ShapesPage, ::testing::Values(iImageBase::eHostMemory, iImageBase::eGPU),
                         [](const auto& info) { return info.param == iImageBase::eGPU ? "composited" : "host"; });
