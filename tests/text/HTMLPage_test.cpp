// The gallery's HTML page in DejaVu Sans on both display roads, compared with
// reference pictures: both pages of its help text, the second reached through
// the first one's link. Look at them when they change: runs of differing
// style on one line must share a baseline, the centred line must be centred,
// and the links must stand out in their colour.

#include "tela/colour/Palette.h"
#include "tela/text/Fonts.h"

#include "gallery/HTMLPanel.h"
#include "support/PageWindow.h"
#include "support/ReferencePicture.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct Case {
    iImageBase::eLocation road;
    bool followed;   // the first page's link clicked
    const char* reference;
};


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
    {
        const PageWindow shown(c.road, {HTMLPage::PAGE_WIDTH, HTMLPage::PAGE_HEIGHT});
        ASSERT_NE(shown.root, nullptr);
        Canvas* canvas = shown.page;
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
        shown.show();
        const std::string picture =
            std::string("html_") + (c.followed ? "second" : "first") + "_" + road_name(c.road) + ".png";
        EXPECT_TRUE(shows_reference(shown.window(), c.reference, picture, c.road == iImageBase::eHostMemory));
    }
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
