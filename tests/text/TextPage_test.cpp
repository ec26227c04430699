// The gallery's text page in DejaVu Sans, painted on both display roads with
// its wrapping box narrow and wide, and a tool tip as the gallery shows it,
// compared with reference pictures.
// Look at them when they change: baselines on one line must align, no
// descender may be cut, and ".." must stand where text was taken out.

#include "tela/colour/Palette.h"
#include "tela/text/Fonts.h"
#include "tela/text/TooltipDetails.h"

#include "gallery/TextPanel.h"
#include "gallery/TooltipPanel.h"
#include "support/PageWindow.h"
#include "support/ReferencePicture.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct Case {
    iImageBase::eLocation road;
    int wrapWidth;
    const char* reference;
};

} // namespace

class TextPageOnScreen : public ::testing::TestWithParam<Case> {};

TEST_P(TextPageOnScreen, LooksAsTheReferenceShows)
{
    const Case& c = GetParam();
    {
        const PageWindow shown(c.road, {TextPage::PAGE_WIDTH, TextPage::PAGE_HEIGHT});
        ASSERT_NE(shown.root, nullptr);
        TextPage::paint(shown.page, Palette::getDefault(), c.wrapWidth);
        shown.show();
        EXPECT_TRUE(shows_reference(shown.window(), c.reference,
                                    "text_" + std::to_string(c.wrapWidth) + "_" + road_name(c.road) + ".png",
                                    c.road == iImageBase::eHostMemory));
    }
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

    {
        // The tip takes the page's place; measured once the window is there,
        // since fonts are made through it.
        const PageWindow shown(GetParam(), {404, 74});
        ASSERT_NE(shown.root, nullptr);
        const XY<int> size = Tooltip::sizeFor(details);
        ASSERT_LE(size.x, 404);
        tela_placecanvas(shown.page, TopDownRect{8, 8, 8 + size.x, 8 + size.y});
        Tooltip::paint(shown.page, details, Palette::getDefault());
        shown.show();
        EXPECT_TRUE(shows_reference(shown.window(), "tooltip.png", "tooltip_" + road_name(GetParam()) + ".png",
                                    GetParam() == iImageBase::eHostMemory));
    }
    Tela::releaseAllFonts();
}

INSTANTIATE_TEST_SUITE_P(BothRoads, TooltipOnScreen, ::testing::Values(iImageBase::eHostMemory, iImageBase::eGPU),
                         [](const auto& info) { return road_name(info.param); });
