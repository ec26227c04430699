// The gallery's text page in DejaVu Sans, painted on both display roads with
// its wrapping box narrow and wide, and a tool tip as the gallery shows it,
// compared with reference pictures.
// Look at them when they change: baselines on one line must align, no
// descender may be cut, and ".." must stand where text was taken out.

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/RootCanvas.h"
#include "tela/colour/Palette.h"
#include "tela/text/Fonts.h"
#include "tela/text/TooltipDetails.h"
#include "tela/vector/Regions.h"

#include "gallery/TextPanel.h"
#include "gallery/TooltipPanel.h"
#include "headless/HeadlessRootWindow.h"
#include "headless/HeadlessServices.h"
#include "support/PaintForwarder.h"
#include "support/ReferencePicture.h"

#include <gtest/gtest.h>

#include <string>

namespace {

constexpr int MARGIN = 8;

struct Case {
    iImageBase::eLocation road;
    int wrapWidth;
    const char* reference;
};

std::string road_name(iImageBase::eLocation road)
{
    return road == iImageBase::eGPU ? "composited" : "host";
}

} // namespace

class TextPageOnScreen : public ::testing::TestWithParam<Case> {};

TEST_P(TextPageOnScreen, LooksAsTheReferenceShows)
{
    const Case& c = GetParam();
    Headless::services().windowing()->setDefaultDisplayLocation(c.road);
    const auto sink = Qv::make<PaintForwarder>();
    iRootWindow::InitArgs args;
    args.size = {TextPage::PAGE_WIDTH + 2 * MARGIN, TextPage::PAGE_HEIGHT + 2 * MARGIN};
    args.eventHandler = sink;
    RootCanvas* root = tela_createRootCanvas(args);
    Headless::services().windowing()->setDefaultDisplayLocation(iImageBase::eHostMemory);
    ASSERT_NE(root, nullptr);
    sink->root = root;

    Canvas* page = tela_newcanvas(nullptr, root);
    tela_placecanvas(page, TopDownRect{MARGIN, MARGIN, MARGIN + TextPage::PAGE_WIDTH, MARGIN + TextPage::PAGE_HEIGHT},
                     makeCurvedRegion({TextPage::PAGE_WIDTH, TextPage::PAGE_HEIGHT}, 15, eLargeCorners));
    TextPage::paint(page, Palette::getDefault(), c.wrapWidth);
    Headless::services().windowing()->mainLoop().runPending();

    const auto window = Qv::dynamicCast<Headless::RootWindow>(root->window);
    const std::string shown = std::string("text_") + std::to_string(c.wrapWidth) + "_" + road_name(c.road) + ".png";
    EXPECT_TRUE(shows_reference(*window, c.reference, shown, c.road == iImageBase::eHostMemory));

    tela_deletecanvas(root);
    Tela::releaseAllFonts();
}

INSTANTIATE_TEST_SUITE_P(BothRoads, TextPageOnScreen,
                         ::testing::Values(Case{iImageBase::eHostMemory, TextPage::NARROW_BOX, "text_narrow.png"},
                                           Case{iImageBase::eGPU, TextPage::NARROW_BOX, "text_narrow.png"},
                                           Case{iImageBase::eHostMemory, TextPage::WIDE_BOX, "text_wide.png"},
                                           Case{iImageBase::eGPU, TextPage::WIDE_BOX, "text_wide.png"}),
                         [](const auto& info) {
                             return road_name(info.param.road) + "_" + std::to_string(info.param.wrapWidth);
                         });

class TooltipOnScreen : public ::testing::TestWithParam<iImageBase::eLocation> {};

TEST_P(TooltipOnScreen, LooksAsTheReferenceShows)
{
    TooltipDetails details(UIString(WString(u"Page")), UIString(WString(u"Wrapped, justified and fitted text")));
    details.addLine(UIString(WString(u"Keys")), UIString(WString(u"Up and Down move between pages")),
                    String("Up, Down"));
    details.addLine(UIString(WString(u"A line with no label")), String());

    Headless::services().windowing()->setDefaultDisplayLocation(GetParam());
    const auto sink = Qv::make<PaintForwarder>();
    iRootWindow::InitArgs args;
    args.size = {420, 90};
    args.eventHandler = sink;
    RootCanvas* root = tela_createRootCanvas(args);
    Headless::services().windowing()->setDefaultDisplayLocation(iImageBase::eHostMemory);
    ASSERT_NE(root, nullptr);
    sink->root = root;
    // Measured once the window is there: fonts are made through it.
    const XY<int> size = Tooltip::sizeFor(details);
    ASSERT_LE(size.x, 420 - 2 * MARGIN);
    Canvas* tip = tela_newcanvas(nullptr, root);
    tela_placecanvas(tip, TopDownRect{MARGIN, MARGIN, MARGIN + size.x, MARGIN + size.y});
    Tooltip::paint(tip, details, Palette::getDefault());
    Headless::services().windowing()->mainLoop().runPending();

    const auto window = Qv::dynamicCast<Headless::RootWindow>(root->window);
    EXPECT_TRUE(shows_reference(*window, "tooltip.png", "tooltip_" + road_name(GetParam()) + ".png",
                                GetParam() == iImageBase::eHostMemory));
    tela_deletecanvas(root);
    Tela::releaseAllFonts();
}

INSTANTIATE_TEST_SUITE_P(BothRoads, TooltipOnScreen, ::testing::Values(iImageBase::eHostMemory, iImageBase::eGPU),
                         [](const auto& info) { return road_name(info.param); });
