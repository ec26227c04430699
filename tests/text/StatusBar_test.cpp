// The gallery's status bar in DejaVu Sans, compared with reference pictures.
// Look at them when they change: a description too long for its line must
// end in ".." with no letter cut by the line's right edge (the glass lies
// beyond it), and the count must read in dark figures on the frosted white.

#include "tela/colour/Palette.h"
#include "tela/text/Fonts.h"

#include "gallery/StatusBar.h"
#include "support/PageWindow.h"
#include "support/ReferencePicture.h"

#include <gtest/gtest.h>

TEST(StatusBarOnScreen, LongDescriptionStopsShortOfTheGlass)
{
    {
        const PageWindow shown(iImageBase::eHostMemory, {StatusBar::LINE_WIDTH, StatusBar::LINE_HEIGHT});
        ASSERT_NE(shown.root, nullptr);
        StatusBar::paintLine(shown.page, WString(u"Video"),
                             WString(u"A video window, cut by its shape and the canvas in front of it, and more"),
                             Palette::getDefault());
        shown.show();
        EXPECT_TRUE(shows_reference(shown.window(), "status_line.png", "status_line.png"));
    }
    Tela::releaseAllFonts();
}

TEST(StatusBarOnScreen, GlassShowsTheCount)
{
    {
        const PageWindow shown(iImageBase::eHostMemory, {StatusBar::GLASS_WIDTH, StatusBar::GLASS_HEIGHT});
        ASSERT_NE(shown.root, nullptr);
        StatusBar::paintGlass(shown.page, 12345, Palette::getDefault());
        shown.show();
        EXPECT_TRUE(shows_reference(shown.window(), "status_glass.png", "status_glass.png"));
    }
    Tela::releaseAllFonts();
}
