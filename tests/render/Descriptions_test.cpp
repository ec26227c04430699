// The descriptions in canvas coordinates: what their constructors settle and
// the boxes they claim.

#include "tela/render/Descriptions.h"
#include "tela/state/TelaState.h"
#include "tela/text/Fonts.h"

#include "render/FakeFont.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>

namespace {

using Box = Qv::Box<int>;

} // namespace

TEST(RectDescription, OnlyATranslucentRendererColourIsBlendedAndOnlyTwoColoursSendTheSecond)
{
    const NormalisedRGB glass(1.0f, 0.0f, 0.0f, 0.5f);
    EXPECT_EQ(Tela::RectDescription(Box{0, 0, 4, 4}, glass).blendMode, eBlendOver);
    EXPECT_EQ(Tela::RectDescription(Box{0, 0, 4, 4}, NormalisedRGB(1.0f, 0.0f, 0.0f)).blendMode, eBlendReplace);
    // A Colour replaces whatever its alpha.
    Colour translucent(1.0, 0.0, 0.0, true);
    translucent.a = 0.5f;
    const Tela::RectDescription from_colour(Box{0, 0, 4, 4}, translucent);
    EXPECT_EQ(from_colour.blendMode, eBlendReplace);
    EXPECT_FALSE(from_colour.twoColours);
    EXPECT_TRUE(Tela::RectDescription(Box{0, 0, 4, 4}, glass, NormalisedRGB()).twoColours);
    EXPECT_EQ(Tela::RectDescription(Box{0, 0, 4, 4}, glass, static_cast<eBlendMode>(3)).blendMode, 3);
}

TEST(EllipseDescription, ADoubleBoxKeepsSixteenBitsAndTheExtentsGrowByTheThickness)
{
    const Tela::EllipseDescription wrapped(Qv::Box<double>{40000.0, 10.7, 40010.0, -20.9}, NormalisedRGB(),
                                           Tela::EllipseDescription::eOutline, 2);
    EXPECT_EQ(wrapped.box, (Box{40000 - 65536, 10, 40010 - 65536, -20}));
    EXPECT_EQ(wrapped.style, Tela::EllipseDescription::eOutline);
    EXPECT_EQ(wrapped.endAngle, 360);
    EXPECT_EQ(wrapped.getExtents(), (Box{40000 - 65536 - 2, 8, 40010 - 65536 + 2, -18}));

    // Out of any range stays defined: NaN and infinity give 0.
    const Tela::EllipseDescription absurd(Qv::Box<double>{std::nan(""), -INFINITY, 1e300, 5.0}, NormalisedRGB(),
                                          NormalisedRGB(), 1);
    EXPECT_EQ(absurd.box.x1, 0);
    EXPECT_EQ(absurd.box.y1, 0);
    EXPECT_EQ(absurd.box.y2, 5);
    EXPECT_EQ(absurd.style, Tela::EllipseDescription::eFilledAndOutlined);
}

TEST(LineStripDescription, ExtentsNeedTwoPointsAndWidenOnlyAFlatAxis)
{
    Tela::LineStripDescription strip;
    strip.points.push_back(XY<double>(3.0, 4.0));
    EXPECT_EQ(strip.getExtents(), Box{});
    strip.thickness = 3;
    strip.points.push_back(XY<double>(3.9, 4.2)); // truncates onto the first
    EXPECT_EQ(strip.getExtents(), (Box{3, 4, 6, 7}));

    Tela::LineStripDescription flat;
    flat.thickness = 3;
    flat.points.push_back(XY<double>(0.0, 5.0));
    flat.points.push_back(XY<double>(10.0, 5.0));
    EXPECT_EQ(flat.getExtents(), (Box{0, 5, 10, 8}));
    flat.translate(2, -1);
    EXPECT_EQ(flat.getExtents(), (Box{2, 4, 12, 7}));
}

TEST(TextDescription, BoundsFollowTheAlignmentAroundThePosition)
{
    const auto font = Qv::make<FakeFont>(); // ascent 10, descent 3, 7 pixels a character
    const WString text(u"abc");             // 21 pixels
    const Tela::TextDescription left(text, XY<int>(100, 50), NormalisedRGB(), TextAlignment{0, 1}, font);
    EXPECT_EQ(left.getExtents(), (Box{100, 47, 121, 60}));
    EXPECT_EQ(left.style, eTextPlain);
    const Tela::TextDescription right(text, XY<int>(100, 50), NormalisedRGB(), TextAlignment{1, 1}, font);
    EXPECT_EQ(right.getExtents(), (Box{79, 47, 100, 60}));
    // 21 / 2 truncates to 10.
    const Tela::TextDescription centred(text, XY<int>(100, 50), NormalisedRGB(), TextAlignment{2, 1}, eTextHalo, font);
    EXPECT_EQ(centred.getExtents(), (Box{90, 47, 111, 60}));
    EXPECT_EQ(centred.style, eTextHalo);

    Tela::TextDescription moved = left;
    moved.translate(5, -5);
    EXPECT_EQ(moved.getExtents(), (Box{105, 42, 126, 55}));
}

TEST(TextDescription, WithoutAFontThatCanBeHadTheExtentsStayEmpty)
{
    // No root window, and no fonts kept from earlier tests: the default font
    // the description falls back on cannot be made either.
    Tela::releaseAllFonts();
    ASSERT_EQ(tela_rootcanvas(), nullptr);
    const Tela::TextDescription none(WString(u"abc"), XY<int>(100, 50), NormalisedRGB(), TextAlignment{0, 1},
                                     Qv::Ptr<iFont>());
    EXPECT_FALSE(none.font);
    EXPECT_EQ(none.getExtents(), Box{});

    // The selection colours go crosswise: the first given is the third kept.
    Tela::TextDescription text;
    text.setSelectionColours(NormalisedRGB(1.0f, 0.0f, 0.0f), NormalisedRGB(0.0f, 0.0f, 1.0f));
    EXPECT_EQ(text.secondColour.b, 1.0f);
    EXPECT_EQ(text.thirdColour.r, 1.0f);
}

TEST(TextStyles, MapShiftsDownByOneAndSendsTheRestToPlain)
{
    using Style = Tela::TextStyles::TextStyle;
    const std::pair<Style, int> cases[] = { { Tela::TextStyles::eNormal, eTextPlain },
                                            { Tela::TextStyles::eDropShadow, eTextDropShadow },
                                            { Tela::TextStyles::eHeavy, eTextHeavy },
                                            { static_cast<Style>(0), eTextPlain },
                                            { static_cast<Style>(5), eTextPlain } };
    for (const auto& [style, mapped] : cases)
        EXPECT_EQ(Tela::mapTextStyle(style), mapped) << style;
}
