// The gallery's HTML page in DejaVu Sans on both display roads, compared with
// reference pictures: both pages of its help text, the second reached through
// the first one's link. Look at them when they change: runs of differing
// style on one line must share a baseline, the centred line must be centred,
// and the links must stand out in their colour.

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/RootCanvas.h"
#include "tela/colour/Palette.h"
#include "tela/text/Fonts.h"
#include "tela/vector/Regions.h"

#include "gallery/HTMLPanel.h"
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
    bool followed;   // the first page's link clicked
    const char* reference;
};

std::string road_name(iImageBase::eLocation road)
{
    return road == iImageBase::eGPU ? "composited" : "host";
}

// The first point, scanning the page, where a link was drawn.
bool find_link(const HTMLPage& page, XY<int>& found)
{
    for (int y = 0; y < HTMLPage::PAGE_HEIGHT; y += 2)
        for (int x = 0; x < HTMLPage::PAGE_WIDTH; x += 2)
            if (!page.linkAt({x, y}).empty()) {
                found = {x, y};
                return true;
            }
    return false;
}

} // namespace

class HTMLPageOnScreen : public ::testing::TestWithParam<Case> {};

TEST_P(HTMLPageOnScreen, LooksAsTheReferenceShows)
{
    const Case& c = GetParam();
    Headless::services().windowing()->setDefaultDisplayLocation(c.road);
    const auto sink = Qv::make<PaintForwarder>();
    iRootWindow::InitArgs args;
    args.size = {HTMLPage::PAGE_WIDTH + 2 * MARGIN, HTMLPage::PAGE_HEIGHT + 2 * MARGIN};
    args.eventHandler = sink;
    RootCanvas* root = tela_createRootCanvas(args);
    Headless::services().windowing()->setDefaultDisplayLocation(iImageBase::eHostMemory);
    ASSERT_NE(root, nullptr);
    sink->root = root;

    Canvas* canvas = tela_newcanvas(nullptr, root);
    tela_placecanvas(canvas, TopDownRect{MARGIN, MARGIN, MARGIN + HTMLPage::PAGE_WIDTH, MARGIN + HTMLPage::PAGE_HEIGHT},
                     makeCurvedRegion({HTMLPage::PAGE_WIDTH, HTMLPage::PAGE_HEIGHT}, 15, eLargeCorners));
    HTMLPage page;
    page.paint(canvas, Palette::getDefault());
    XY<int> link;
    ASSERT_TRUE(find_link(page, link));
    if (c.followed) {
        ASSERT_TRUE(page.follow(page.linkAt(link)));
        EXPECT_EQ(page.page(), 1);
        page.paint(canvas, Palette::getDefault());
        ASSERT_TRUE(find_link(page, link));   // the way back
    }
    Headless::services().windowing()->mainLoop().runPending();

    const auto window = Qv::dynamicCast<Headless::RootWindow>(root->window);
    const std::string shown =
        std::string("html_") + (c.followed ? "second" : "first") + "_" + road_name(c.road) + ".png";
    EXPECT_TRUE(shows_reference(*window, c.reference, shown, c.road == iImageBase::eHostMemory));

    tela_deletecanvas(root);
    Tela::releaseAllFonts();
}

INSTANTIATE_TEST_SUITE_P(BothRoads, HTMLPageOnScreen,
                         ::testing::Values(Case{iImageBase::eHostMemory, false, "html_first.png"},
                                           Case{iImageBase::eGPU, false, "html_first.png"},
                                           Case{iImageBase::eHostMemory, true, "html_second.png"},
                                           Case{iImageBase::eGPU, true, "html_second.png"}),
                         [](const auto& info) {
                             return road_name(info.param.road) + (info.param.followed ? "_second" : "_first");
                         });
