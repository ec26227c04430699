#include "tela/colour/Colour.h"
#include "tela/colour/CurrentColour.h"
#include "tela/colour/Gamma.h"

#include "colour/ColourPrinting.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

constexpr double NaN = std::numeric_limits<double>::quiet_NaN();

// What the read-back curve gives for one channel byte.
double read_back(int byte)
{
    return 2.0 * std::pow(byte / 255.0, 2.37);
}

class CurrentColourTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        vlib_init();
        tela_reset_current_colour();
    }
    void TearDown() override { vlib_init(); }
};

} // namespace

TEST_F(CurrentColourTest, APackedValueIsReadBackWithFactorTwo)
{
    tela_setrgbcol(0.5, 0.5, 0.5, false);
    EXPECT_EQ(tela_currentcol_r(), 0.5); // exactly as set
    // Selecting the same value again keeps the exact view.
    tela_setcolour(tela_getcolour());
    EXPECT_EQ(tela_currentcol_g(), 0.5);

    tela_setcolour(0x00FF8040);
    EXPECT_DOUBLE_EQ(tela_currentcol_r(), read_back(0x40));
    EXPECT_DOUBLE_EQ(tela_currentcol_g(), read_back(0x80));
    EXPECT_DOUBLE_EQ(tela_currentcol_b(), 2.0); // a full byte reads as 2, not 1
    EXPECT_DOUBLE_EQ(tela_currentcol_value(), 2.0);
    tela_setgray(0.25);
    EXPECT_EQ(tela_getcolour(), vlib_rgbcol(0.25, 0.25, 0.25, 0));
}

TEST_F(CurrentColourTest, TheRingKeepsFourColoursAndAHitDoesNotRefreshOne)
{
    // A different gamma packs differently, so a packed value that survives a
    // change of gamma came from the ring.
    tela_setrgbcol(0.3, 0.3, 0.3, false);
    const int first = tela_getcolour();
    tela_setrgbcol(0.4, 0.4, 0.4, false);
    tela_setrgbcol(0.5, 0.5, 0.5, false);
    tela_setrgbcol(0.6, 0.6, 0.6, false); // the ring is full
    vlibGamma = 1.0;
    tela_setrgbcol(0.3, 0.3, 0.3, false);
    EXPECT_EQ(tela_getcolour(), first);
    tela_setrgbcol(0.3, 0.3, 0.3, true); // another flag is another entry
    EXPECT_EQ(tela_getcolour(), 0x004C4C4C);
    // That new entry took the oldest slot, which still was 0.3: the hit above
    // did not make it the newest.
    tela_setrgbcol(0.3, 0.3, 0.3, false);
    EXPECT_EQ(tela_getcolour(), vlib_rgbcol(0.3, 0.3, 0.3, 0));
    EXPECT_NE(tela_getcolour(), first);

    // Start-up empties it to black with the curve of the time.
    tela_reset_current_colour();
    EXPECT_EQ(tela_getcolour(), 0);
}

TEST_F(CurrentColourTest, HueSaturationAndValueSurviveAWayThroughRGB)
{
    for (int hue = 0; hue < 360; hue += 7) {
        for (const double saturation : {0.5, 1.0}) {
            for (const double value : {0.4, 1.0}) {
                SCOPED_TRACE(testing::Message() << hue << " " << saturation << " " << value);
                tela_sethsvcol(hue, saturation, value, true);
                tela_setrgbcol(tela_currentcol_r(), tela_currentcol_g(), tela_currentcol_b(), true);
                EXPECT_NEAR(tela_currentcol_hue(), hue, 1e-9);
                EXPECT_NEAR(tela_currentcol_saturation(), saturation, 1e-9);
                EXPECT_NEAR(tela_currentcol_value(), value, 1e-9);
            }
        }
    }
}

TEST_F(CurrentColourTest, TiesTakeTheEarlierSextantAndGreysHaveNoHue)
{
    tela_setrgbcol(1, 1, 0, true); // r = g: sextant 0 at its top edge
    EXPECT_DOUBLE_EQ(tela_currentcol_hue(), 60);
    tela_setrgbcol(0, 1, 1, true);
    EXPECT_DOUBLE_EQ(tela_currentcol_hue(), 180);
    tela_setrgbcol(0.5, 0.5, 0.5005, true);
    EXPECT_EQ(tela_currentcol_hue(), 0.0);
    EXPECT_NEAR(tela_currentcol_saturation(), 0.001, 1e-6);
    tela_setrgbcol(0.0009, 0, 0, true);
    EXPECT_EQ(tela_currentcol_saturation(), 0.0);
}

// The queries give back the hue as set, even where the colour wraps it.
TEST_F(CurrentColourTest, HSVQueriesReturnWhatWasSet)
{
    tela_sethsvcol(360, 1, 1, true);
    EXPECT_EQ(tela_getcolour(), 0xFF);
    EXPECT_EQ(tela_currentcol_hue(), 360.0);
    tela_sethsvcol(-120, 2, -1, true); // wrapped, clamped, floored
    EXPECT_EQ(tela_currentcol_hue(), -120.0);
    EXPECT_EQ(tela_currentcol_saturation(), 1.0);
    EXPECT_EQ(tela_currentcol_value(), 0.0);

    // A value above 1 is carried; packing clamps.
    tela_sethsvcol(0, 0, 2, true);
    EXPECT_EQ(tela_currentcol_r(), 2.0);
    EXPECT_EQ(tela_getcolour(), 0x00FFFFFF);
}

TEST_F(CurrentColourTest, HSLScalesValueToALuminance)
{
    tela_sethslcol(0, 1, 0.299 / 2, true); // red has luminance 0.299 at value 1
    EXPECT_NEAR(tela_currentcol_r(), 0.5, 1e-12);
    EXPECT_NEAR(tela_currentcol_value(), 0.5, 1e-12);
}

TEST_F(CurrentColourTest, NaNSelectsSafely)
{
    tela_sethsvcol(120, 1, 1, true);
    tela_setrgbcol(NaN, 0, 0, true);
    EXPECT_EQ(tela_getcolour(), 0);
    EXPECT_EQ(tela_currentcol_hue(), 120.0); // nothing orders a NaN: the view stays

    tela_sethsvcol(NaN, 1, 1, true); // no hue at all: black
    EXPECT_EQ(tela_getcolour(), 0);
    tela_sethsvcol(-1e300, NaN, 1e300, false);
    tela_sethsvcol(std::numeric_limits<double>::infinity(), 1, 1, true);
    EXPECT_EQ(tela_getcolour(), 0);
}

TEST_F(CurrentColourTest, ColoursBorrowTheMachineAndPutTheCurrentColourBack)
{
    tela_setcolour(0x00204060);
    Colour green;
    green.sethsv(120, 1, 1, true);
    EXPECT_EQ(green, Colour(0, 1, 0, true));
    EXPECT_EQ(green.getAsLong(), 0x0000FF00);
    EXPECT_EQ(tela_getcolour(), 0x00204060);
    EXPECT_DOUBLE_EQ(tela_currentcol_r(), read_back(0x60)); // the views are derived again

    // changehsv works without the bypass flag and keeps the colour's own.
    Colour red(1, 0, 0, true);
    red.changehsv(120, 0, -0.5);
    EXPECT_EQ(red, Colour(0, 0.5, 0, true));
    EXPECT_EQ(red.getAsLong(), vlib_rgbcol(0, 0.5, 0, 0));
    EXPECT_EQ(tela_getcolour(), 0x00204060);
}

TEST_F(CurrentColourTest, UseSelectsThePackedValueOrTheChannelsAsDeviceValues)
{
    const Colour grey(0.5, 0.5, 0.5, false);
    grey.use(false);
    EXPECT_EQ(tela_getcolour(), grey.getAsLong());
    grey.use(true);
    EXPECT_EQ(tela_getcolour(), 0x007F7F7F);
    Colour(0.25, 0.5, 1, true).setrgbcol(false);
    EXPECT_EQ(tela_getcolour(), 0x00FF7F3F);
}
