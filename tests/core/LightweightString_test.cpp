#include "tela/core/LightweightString.h"
#include "support/LiveBlocks.h"

#include <gtest/gtest.h>

#include <limits>

TEST(LightweightStringTest, NullAndEmptyAreBothEmptyButDistinct)
{
    String null_string;
    String empty_string("");
    EXPECT_TRUE(null_string.isNull());
    EXPECT_FALSE(empty_string.isNull());
    EXPECT_TRUE(null_string.empty());
    EXPECT_TRUE(empty_string.empty());
    EXPECT_STREQ(null_string.c_str(), "");
    EXPECT_TRUE(null_string == empty_string);
}

TEST(LightweightStringTest, CopiesShareTheBodyUntilOneChanges)
{
    String original("canvas");
    String copy = original;
    EXPECT_TRUE(copy.sharesBodyWith(original));
    copy += String("_connect");
    EXPECT_FALSE(copy.sharesBodyWith(original));
    EXPECT_STREQ(original.c_str(), "canvas");
    EXPECT_STREQ(copy.c_str(), "canvas_connect");
}

TEST(LightweightStringTest, AppendingASliceOfItselfSurvivesReallocation)
{
    String text("abc");
    for (int round = 0; round < 6; ++round)
        text.append(text.data(), text.size());
    EXPECT_EQ(text.size(), 3u * 64u);
    EXPECT_EQ(text.substr(189), String("abc"));
}

TEST(LightweightStringTest, Utf8RoundTripsEveryPlane)
{
    const char* samples[] = { "plain", "caf\xC3\xA9", "\xE2\x82\xAC 5", "\xF0\x9F\x98\x80!" };
    for (const char* sample : samples) {
        SCOPED_TRACE(sample);
        EXPECT_STREQ(toUTF8(fromUTF8(sample)).c_str(), sample);
    }
    EXPECT_EQ(fromUTF8("caf\xC3\xA9").size(), 4u);
    const WString wide(L"a\U0001F600");   // one unit, then a surrogate pair
    EXPECT_EQ(wide, WString(u"a\xD83D\xDE00"));
}

TEST(LightweightStringTest, MalformedUtf8BecomesReplacementCharacters)
{
    // A lone continuation byte, a truncated sequence, an overlong '/' and an encoded surrogate.
    const WString decoded = fromUTF8("\x80" "a\xE2\x82" "b\xC0\xAF" "c\xED\xA0\x80");
    const char16_t expected[] = { 0xFFFD, u'a', 0xFFFD, u'b', 0xFFFD, u'c', 0xFFFD };
    ASSERT_EQ(decoded.size(), std::size(expected));
    for (std::size_t index = 0; index < decoded.size(); ++index)
        EXPECT_EQ(decoded[index], expected[index]) << "at " << index;
    const char16_t lone_surrogate[] = { u'x', 0xD800 };
    EXPECT_STREQ(toUTF8(WString(lone_surrogate, 2)).c_str(), "x\xEF\xBF\xBD");
}

TEST(LightweightStringTest, BodiesComeFromTheMemorySeamAndGoBack)
{
    const auto before = live_blocks();
    {
        String text("some text that needs a body");
        String copy = text;
        EXPECT_EQ(live_blocks(), before + 1);
        copy += String("!");
        EXPECT_EQ(live_blocks(), before + 2);
    }
    EXPECT_EQ(live_blocks(), before);
}

TEST(LightweightStringTest, NumbersAppendWithSixSignificantDigitsInAnyLocale)
{
    String text;
    text << 0.5;
    text += ' ';
    text << -2.0 << 1.0 / 3.0;
    text += ' ';
    text << 1e300 << std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(text, String("0.5 -20.333333 1e+300nan"));
    WString wide;
    wide << 0.25f;
    EXPECT_EQ(toUTF8(wide), String("0.25"));
}
