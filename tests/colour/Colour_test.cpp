#include "tela/colour/Colour.h"
#include "tela/colour/CurrentColour.h"
#include "tela/colour/Gamma.h"
#include "tela/core/Config.h"

#include "colour/ColourPrinting.h"
#include "core/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

constexpr double NaN = std::numeric_limits<double>::quiet_NaN();

// pow(0.6, 1 / 2.37): where a channel of 1 lands without the bypass flag.
const double FULL_WITH_GAMMA = std::pow(0.6, 1.0 / 2.37);

} // namespace

// The packed value, the raw colour reference and ARGB each pack in their own way.
TEST(Colour, PackedFormsTruncateRoundAndClampEachInTheirOwnWay)
{
    EXPECT_EQ(Colour(1, 1, 1, false).getAsLong(), 0x00CDCDCD);
    EXPECT_EQ(Colour(1, 1, 1, true).getAsLong(), 0x00FFFFFF);
    // Red in the low byte, blue in the third; truncated, not rounded.
    EXPECT_EQ(Colour(1, 0.5, 0, true).getAsLong(), 0x00007FFF);
    // -0.5 gives int(-127.0) = -127, whose low byte is 0x81; 2.0 clamps to 255.
    EXPECT_EQ(Colour(-0.5, 2.0, 0.5, true).colorref(true), 0x0080FF81ul);
    // Rounded here, truncated in the packed value.
    EXPECT_EQ(Colour(0.5, 0.5, 0.5, true).colorref(true), 0x00808080ul);
    EXPECT_EQ(Colour(0.5, 0.5, 0.5, true).colorref(false), 0x007F7F7Ful);
    // ARGB puts blue low and alpha high, after gamma.
    EXPECT_EQ(asARGB(Colour(1, 0, 0, true), 0.5), 0x80FF0000ul);
    // Gamma applied, then rounded: 206, where packing truncates to 205.
    EXPECT_EQ(asARGB(Colour(1, 1, 1, false), 1.0), 0xFFCECECEul);
    EXPECT_NEAR(fromColour(Colour(1, 0, 1, false)).r, FULL_WITH_GAMMA, 1e-6);
    EXPECT_FLOAT_EQ(fromColour(Colour::make(255, 0, 0, 51)).a, 0.2f);
}

TEST(Colour, EqualityIgnoresAlphaButNotTheBypassFlag)
{
    EXPECT_NE(Colour(), Colour(0, 0, 0, true));
    EXPECT_NE(Colour(0.5, 0.5, 0.5, false), Colour(0.5 + 5e-6, 0.5, 0.5, false));

    const Colour translucent = Colour::make(10, 20, 30, 40);
    EXPECT_FLOAT_EQ(translucent.a, 40 / 255.0f);
    EXPECT_TRUE(translucent.bypassGamma());
    const Colour copied(translucent);
    EXPECT_FLOAT_EQ(copied.a, 40 / 255.0f); // copying keeps alpha
    Colour assigned(0.9, 0.9, 0.9, false);
    assigned = translucent;
    EXPECT_EQ(assigned.a, 1.0f); // assignment makes it opaque
    EXPECT_EQ(assigned, translucent);
    EXPECT_EQ(assigned.getAsLong(), translucent.getAsLong());
}

TEST(Colour, APackedValueIsTakenAsItIs)
{
    Colour c(0, 0, 0, false);
    c.setFromLong(static_cast<int>(0x80FF4000u));
    EXPECT_FLOAT_EQ(c.r, 0.0f);
    EXPECT_FLOAT_EQ(c.g, 64 / 255.0f);
    EXPECT_FLOAT_EQ(c.b, 1.0f);
    EXPECT_FLOAT_EQ(c.a, 128 / 255.0f);
    EXPECT_FALSE(c.bypassGamma()); // no inverse gamma, flag as it was
    EXPECT_EQ(c.getAsLong(), static_cast<int>(0x80FF4000u));
}

TEST(Colour, MixingScalingAndOffsettingClampButTintingDoesNot)
{
    const Colour red(1, 0, 0, true);
    const Colour blue(0, 0, 1, false);
    EXPECT_EQ(Colour::mix(red, blue, 0), Colour(0, 0, 1, true)); // t = 0 is b, bypass from either
    EXPECT_EQ(Colour::mix(red, blue, 1), Colour(1, 0, 0, true));
    EXPECT_EQ(Colour::mix(red, blue, 2.0), Colour(1, 0, 0, true)); // 2 - 1, clamped

    EXPECT_EQ(scale(Colour(0.4, 0.8, 0.1, false), 2.0), Colour(0.8, 1.0, 0.2, false));
    EXPECT_EQ(offsetColour(Colour(0.4, 0.8, 0.1, true), 0.7, -0.1, -0.5), Colour(1.0, 0.7, 0.0, true));
    EXPECT_EQ(tintColour(Colour(0.5, 0.5, 0.5, false), 1, 0, 0.5, 2.0), Colour(1.5, -0.5, 0.5, false));
}

TEST(Colour, TheTextFormIsThreeNumbersWithoutAlphaOrFlag)
{
    EXPECT_EQ(Colour(0.5, 0.25, 1, false).asString(), String("0.5 0.25 1"));
    EXPECT_EQ(Colour(NaN, -2, 1e6, true).asString(), String("nan -2 1e+06"));
}

TEST(Colour, ChannelsOfAnyValueNeverBreakPacking)
{
    const double huge = 1e300;
    // NaN packs as 0, huge as 255, a negative as 0; nothing overflows.
    EXPECT_EQ(Colour(NaN, huge, -huge, true).getAsLong(), 0x0000FF00);
    EXPECT_EQ(Colour(-0.5, NaN, 0, false).getAsLong(), 0);
    const Colour wild(NaN, huge, -huge, false);
    EXPECT_EQ(wild.colorref(true) & 0xFFu, 0u);
    (void)asARGB(wild, NaN);
    (void)asARGB(Colour(huge, -huge, NaN, true), huge);
    EXPECT_NE(wild, wild); // NaN equals nothing, not even itself
    EXPECT_EQ(scale(Colour(NaN, 3, -3, true), 1.0).g, 1.0f);
}

TEST(Gamma, TheInverseKeepsItsLiteralExponentAndStartUpRestoresTheCurve)
{
    vlibGamma = 2.2;
    const Colour inverse = vlib_rgbcol_inverse(Colour(0.5, 1, 0, true));
    EXPECT_NEAR(inverse.r, std::pow(0.5, 2.37) / 0.6, 1e-6);
    EXPECT_NEAR(vlib_gammaCorrect(1.0), std::pow(0.6, 1 / 2.2), 1e-12);

    vlib_screen()->x2 = 5;
    vlib_init();
    EXPECT_EQ(vlibGamma, 2.37);
    EXPECT_EQ(*vlib_screen(), (Qv::Box<int, Qv::BottomUpTraits>{0, 0, 1023, 767}));
}

class ConfiguredColour : public ::testing::Test {
protected:
    void SetUp() override
    {
        TemporaryDirectory::write(directory.file("config.json"),
                                  R"({"two": "0.1 0.2", "four": "0.1 0.2 0.3 0.4", "blank": "  \t",
                                      "number": 0.5, "huge": "1e999 0 0", "words": "red green blue"})");
        Qv::reloadConfigurationFrom(directory.path().string());
    }
    void TearDown() override { Qv::reloadConfigurationFrom(""); }

    TemporaryDirectory directory;
};

TEST_F(ConfiguredColour, ThreeFieldsOrTheDefault)
{
    const Colour fallback(0.9, 0.8, 0.7, true);
    EXPECT_EQ(config_colour("four", 0.9, 0.8, 0.7, true), Colour(0.1, 0.2, 0.3, true));
    for (const char* key : {"two", "blank", "number", "words", "missing"}) {
        SCOPED_TRACE(key);
        EXPECT_EQ(config_colour(key, fallback), fallback);
    }
    EXPECT_EQ(config_colour(nullptr, fallback), fallback);
    // Out of range is carried, and packing clamps it.
    EXPECT_EQ(config_colour("huge", fallback).getAsLong(), 0xFF);

    // The constructors take the flag from the default and pack afresh.
    const Colour keyed("four", Colour(0, 0, 0, false));
    EXPECT_EQ(keyed, Colour(0.1, 0.2, 0.3, false));
    EXPECT_EQ(keyed.getAsLong(), Colour(0.1, 0.2, 0.3, false).getAsLong());
    EXPECT_EQ(Colour("two", 0.9, 0.8, 0.7, true), fallback);
}
