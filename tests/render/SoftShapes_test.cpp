// Ellipses and rounded rectangles through a canvas's renderer on a surface that
// offers shaders: soft edges at two UI scales, painted on both display roads and
// compared with one reference picture.

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/RootCanvas.h"
#include "tela/canvas/UpdateTracking.h"
#include "tela/render/CanvasRenderer.h"
#include "tela/render/Descriptions.h"

#include "headless/HeadlessRootWindow.h"
#include "headless/HeadlessServices.h"
#include "support/PaintForwarder.h"
#include "support/ReferencePicture.h"

#include <gtest/gtest.h>

#include <string>

namespace {

constexpr int WIDTH = 260, HEIGHT = 150;
const NormalisedRGB PAPER(0.96f, 0.96f, 0.94f);
const NormalisedRGB INK(0.1f, 0.2f, 0.55f);
const NormalisedRGB WARM(0.95f, 0.6f, 0.15f);

// Three ellipses and three rounded rectangles in a row each, bottom-up canvas
// coordinates, in a canvas `height` high.
void paint_shapes(CanvasRenderer& renderer, int height)
{
    renderer.render(Tela::RectDescription(Qv::Box<int>{0, 0, 120, height}, PAPER));
    const double top = height - 8;
    renderer.render(Tela::EllipseDescription({6.0, top - 30, 42.0, top}, WARM, Tela::EllipseDescription::eFilled, 1));
    renderer.render(Tela::EllipseDescription({46.0, top - 30, 76.0, top}, INK, Tela::EllipseDescription::eOutline, 3));
    renderer.render(Tela::EllipseDescription({80.0, top - 30, 116.0, top}, WARM, INK, 2));
    Tela::RoundedRectDescription rounded;
    rounded.box = {6, int(top) - 66, 56, int(top) - 38};
    rounded.fillColour = WARM;
    rounded.lineColour = INK;
    rounded.radius = 8;
    rounded.thickness = 2;
    renderer.render(rounded);
    rounded.box = {62, int(top) - 66, 114, int(top) - 38};
    rounded.fillColour = rounded.lineColour = INK;
    rounded.thickness = 3;   // the same colour twice: hollow
    renderer.render(rounded);
    rounded.box = {6, int(top) - 100, 114, int(top) - 72};
    rounded.fillColour = WARM;
    rounded.radius = 14;
    rounded.thickness = 0;
    renderer.render(rounded);
}
} // namespace

class SoftShapes : public ::testing::TestWithParam<iImageBase::eLocation> {};

TEST_P(SoftShapes, SoftEdgesAtTwoScalesLookAsTheReferenceShows)
{
    Headless::services().windowing()->setDefaultDisplayLocation(GetParam());
    const auto sink = Qv::make<PaintForwarder>();
    iRootWindow::InitArgs args;
    args.size = {WIDTH, HEIGHT};
    args.eventHandler = sink;
    RootCanvas* root = tela_createRootCanvas(args);
    Headless::services().windowing()->setDefaultDisplayLocation(iImageBase::eHostMemory);
    ASSERT_NE(root, nullptr);
    sink->root = root;
    {
        Tela::UpdateDeferrer deferrer(nullptr, true);
        for (const int scale : {1, 2}) {
            Canvas* canvas = tela_newcanvas(nullptr, root);
            const int left = 8 + (scale - 1) * 128;
            tela_placecanvas(canvas, TopDownRect{left, 8, left + 120, HEIGHT - 8});
            canvas->getRenderer().setUIScale(float(scale));
            canvas->beginRender();
            paint_shapes(canvas->getRenderer(), HEIGHT - 16);
            canvas->endRender();
        }
    }
    Headless::services().windowing()->mainLoop().runPending();

    const auto window = Qv::dynamicCast<Headless::RootWindow>(root->window);
    EXPECT_TRUE(shows_reference(*window, "soft_shapes.png",
                                GetParam() == iImageBase::eGPU ? "soft_shapes_composited.png" : "soft_shapes_host.png",
                                GetParam() == iImageBase::eHostMemory));

    tela_deletecanvas(root);
}

INSTANTIATE_TEST_SUITE_P(BothRoads, SoftShapes, ::testing::Values(iImageBase::eHostMemory, iImageBase::eGPU),
                         [](const auto& info) { return info.param == iImageBase::eGPU ? "composited" : "host"; });
