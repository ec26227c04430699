#include "tela/colour/Palette.h"

#include "colour/ColourPrinting.h"

#include <gtest/gtest.h>


namespace {

Colour grey(double level, bool bypass = true)
{
    return Colour(level, level, level, bypass);
}

// Channels within float rounding of the given ones, flag as given.
void expect_colour(const Colour& actual, double r, double g, double b, bool bypass)
{
    EXPECT_NEAR(actual.r, r, 1e-6);
    EXPECT_NEAR(actual.g, g, 1e-6);
    EXPECT_NEAR(actual.b, b, 1e-6);
    EXPECT_EQ(actual.bypassGamma(), bypass);
}

} // namespace

TEST(Palette, OnlyTheDefaultPaletteHasItsOwnHeadingColour)
{
    EXPECT_EQ(Palette().headingText(), Palette::defaultHeadingText());

    const Palette windowed(grey(0.5));
    EXPECT_EQ(windowed.window(0), grey(0.5));
    EXPECT_EQ(windowed.headingText(), Palette::defaultText());

    const Palette both(grey(0.9), grey(0.1)); // text first
    EXPECT_EQ(both.text(eTextNormal), grey(0.9));
    EXPECT_EQ(both.window(0), grey(0.1));
    EXPECT_EQ(both.headingText(), Palette::defaultText());
}

TEST(Palette, HexValuesAreDeviceColours)
{
    for (const unsigned hex : {0x000000u, 0x123456u, 0xFFFFFFu, 0x80FF01u})
        EXPECT_EQ(toHex(fromHex(hex)), hex);
    // Without the flag, gamma comes first: white reads as 0xCE on each channel.
    EXPECT_EQ(toHex(grey(1.0, false)), 0xCECECEu);
}

TEST(Palette, ShadesStepAdditivelyAndShallowerBelowADarkWindow)
{
    Colour translucent(grey(0.6));
    translucent.a = 0.5f;
    const Palette mid(translucent);
    EXPECT_EQ(mid.window(0).a, 1.0f);
    expect_colour(mid.window(-3), 0.6 - 3 * 0.035f, 0.6 - 3 * 0.035f, 0.6 - 3 * 0.035f, true);
    expect_colour(mid.highlight(), 0.6 + 7 * 0.035f, 0.6 + 7 * 0.035f, 0.6 + 7 * 0.035f, true);
    EXPECT_EQ(Palette(grey(0.95)).highlight(), grey(1.0)); // clamped

    const Palette black(grey(0.0, false));
    EXPECT_EQ(black.window(-1), grey(0.0, false));
    expect_colour(black.window(1), 0.035f, 0.035f, 0.035f, false);
    // A dark window's steps down are a third of its brightness: three reach black.
    const Palette dark(grey(0.03));
    expect_colour(dark.window(-1), 0.02, 0.02, 0.02, true);
    expect_colour(dark.shadow(), 0.0, 0.0, 0.0, true);

    // The scale table serves other callers; shade 2 has no factor of its own.
    EXPECT_EQ(Palette::getScaleFactor(static_cast<eWindowShade>(2)), 1.0);
}

TEST(Palette, ContrastPushesScalesAwayFromOne)
{
    Palette p(grey(0.8), grey(0.2));
    p.setContrast(2.0f);
    expect_colour(p.text(eTextStronglyDimmed), 0.2 + 0.6 * 0.15, 0.2 + 0.6 * 0.15, 0.2 + 0.6 * 0.15, true);
    expect_colour(p.text(eTextLightlyDimmed), 0.2 + 0.6 * 0.375, 0.2 + 0.6 * 0.375, 0.2 + 0.6 * 0.375, true);
    expect_colour(p.childWindow(eChildDarker), 0.2 * 0.45, 0.2 * 0.45, 0.2 * 0.45, true);
    expect_colour(p.childWindow(eChildLighter), 0.2 * 2.4, 0.2 * 2.4, 0.2 * 2.4, true);
    // A factor of exactly 1 multiplies: normal text is scaled by the contrast.
    EXPECT_EQ(p.text(eTextNormal), grey(1.0));
    EXPECT_EQ(p.text(static_cast<eTextAppearance>(9)), Colour());
    // Buttons scale the window directly, whatever the contrast.
    expect_colour(p.button(), 0.2 * 1.45, 0.2 * 1.45, 0.2 * 1.45, true);
    // An unfocused selection leans towards the window.
    p.setSelection(Colour(0, 0, 1, false));
    EXPECT_EQ(p.selection(eSelectionFocused), Colour(0, 0, 1, false));
    expect_colour(p.selection(static_cast<eSelectionAppearance>(3)), 0.12, 0.12, 0.52, true);
}

TEST(Palette, EqualityLeavesOutSelectedTextAndContrast)
{
    Palette a;
    Palette b;
    b.setSelectedText(grey(0.5));
    b.setContrast(3.0f);
    EXPECT_EQ(a, b);
    b.setSubheadingText(grey(0.5));
    EXPECT_NE(a, b);
}

TEST(Palette, BrighteningMovesFiveColoursTowardsWhiteAsDeviceColours)
{
    Palette p(grey(0.2, false), grey(0.4, false));
    p.setSelectedText(grey(0.6, false));
    p.setWarning(grey(0.6, false));
    p.setHeadingText(grey(0.0, false));
    p.brighten(1.0f);
    EXPECT_EQ(p.window(0), grey(0.4, true));
    EXPECT_EQ(p.text(eTextNormal), grey(0.2, true));
    EXPECT_EQ(p.selectedText(), grey(0.6, false));
    EXPECT_EQ(p.warning(), grey(0.6, false));

    p.brighten(2.0f);
    EXPECT_EQ(p.window(0), grey(0.7));
    EXPECT_EQ(p.headingText(), grey(0.5));
}

TEST(Palette, APopupIsTwoShadesUpWithItsTextLifted)
{
    const Palette popup = makePopupPalette(Palette(grey(0.5), grey(0.4)));
    expect_colour(popup.window(0), 0.4 + 2 * 0.035f, 0.4 + 2 * 0.035f, 0.4 + 2 * 0.035f, true);
    expect_colour(popup.text(eTextNormal), 0.55, 0.55, 0.55, true);
}
