// The persisted colour: its packed integer forms (kept exactly as files and
// callers expect, spills and truncations included), exact equality, and the
// packing through a real file, truncated and corrupt records included.

#include "tela/colour/UifColour.h"
#include "tela/core/PStream.h"

#include "core/TemporaryDirectory.h"
#include "support/ReportCapture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace {

struct Packed {
    double r, g, b;
    unsigned short bits16;
    unsigned int bits32;
    unsigned long winCol;
};

} // namespace

TEST(UifColour, PackedFormsTruncateAndSpillWithoutMasking)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const Packed cases[] = {
        {1, 1, 1, 0x7FFF, 0x00FFFFFF, 0x00FFFFFF},
        {1, 0, 0, 0x7C00, 0x00FF0000, 0x000000FF},
        {0.5, 0.25, 0.999, 0x3CFE, 0x007F3FFE, 0x00FE3F7F},   // each channel truncated, never rounded
        {2, 0, 0, 0xF800, 0x01FE0000, 0x000000FE},              // red beyond 1 runs into the bits above it
        {0, 0, 2, 0x003E, 0x000001FE, 0x00FE0000},              // blue beyond 1 runs into green
        {nan, 1, 0, 0x03E0, 0x0000FF00, 0x0000FF00},            // not a number counts as 0
    };
    for (const Packed& c : cases) {
        const UifColour colour(c.r, c.g, c.b, COLOUR_SPACE_RGB);
        SCOPED_TRACE(colour.asString().c_str());
        EXPECT_EQ(colour.to16Bit(), c.bits16);
        EXPECT_EQ(static_cast<unsigned short>(colour), c.bits16);
        EXPECT_EQ(static_cast<unsigned int>(colour), c.bits32);
        EXPECT_EQ(colour.getWinCol(), c.winCol);
    }
    // Far beyond an int: defined, and still no crash.
    const UifColour huge(1e300, -1e300, std::numeric_limits<double>::infinity(), COLOUR_SPACE_RGB);
    EXPECT_EQ(huge.getWinCol() & ~0xFFFFFFul, 0ul);
    (void)static_cast<unsigned int>(huge);
}

TEST(UifColour, LumaChromaFormTruncatesBeforeScaling)
{
    // Within 0..1 every channel truncates to 0 before it is scaled, white too
    // (its luma falls just short of 1 in this order of sums).
    EXPECT_EQ(UifColour(0, 0, 0, 0).get32BitYUV(), 0x101010u);
    EXPECT_EQ(UifColour(1, 1, 1, 0).get32BitYUV(), 0x101010u);
    EXPECT_EQ(UifColour(0.3, 0.9, 0.1, 0).get32BitYUV(), 0x101010u);
    // Only channels beyond 1 reach the higher values: luma 2 sets its field.
    EXPECT_EQ(UifColour(2, 2, 2, 0).get32BitYUV(), (0xDB0000u + 0x100000u) | 0x1000u | 0x10u);

    // The stored space decides, not the argument.
    const UifColour stored_as_luma(0.5, 0.0, 0.0, COLOUR_SPACE_YCRCB);
    EXPECT_EQ(stored_as_luma.to32Bit(COLOUR_SPACE_RGB), stored_as_luma.get32BitYUV());
    const UifColour stored_as_rgb(1, 0, 0, COLOUR_SPACE_RGB);
    EXPECT_EQ(stored_as_rgb.to32Bit(COLOUR_SPACE_YCRCB), 0xFF0000u);
}

TEST(UifColour, EqualityIsExactAndSpaceBound)
{
    UifColour red(1, 0, 0, COLOUR_SPACE_RGB);
    UifColour as_hsv(red);
    ASSERT_TRUE(as_hsv.colourSpace(COLOUR_SPACE_HSV));
    EXPECT_EQ(as_hsv.component1(), 0.0);
    EXPECT_EQ(as_hsv.component2(), 1.0);
    EXPECT_EQ(as_hsv.component3(), 1.0);
    EXPECT_FALSE(red == as_hsv);                             // same colour, other space
    EXPECT_DOUBLE_EQ(as_hsv.red(), 1.0);                     // reading converts a copy...
    EXPECT_EQ(as_hsv.colourSpace(), COLOUR_SPACE_HSV);       // ...and leaves the colour as it was
    EXPECT_FALSE(red == UifColour(1, 0, 1e-12, COLOUR_SPACE_RGB));
    EXPECT_FALSE(as_hsv.colourSpace(7));
    EXPECT_EQ(as_hsv.colourSpace(), COLOUR_SPACE_HSV);
}

TEST(UifColour, SpacesConvertBothWays)
{
    const double colours[][3] = {{0.2, 0.4, 0.6}, {1, 0.5, 0}, {0.9, 0.1, 0.7}, {0.3, 0.3, 0.3}, {1.4, -0.2, 0.5}};
    for (const auto& c : colours) {
        for (const ColourSpace space : {COLOUR_SPACE_YCRCB, COLOUR_SPACE_HSV}) {
            UifColour colour(c[0], c[1], c[2], COLOUR_SPACE_RGB);
            ASSERT_TRUE(colour.colourSpace(space));
            EXPECT_NEAR(colour.red(), c[0], 1e-12);
            EXPECT_NEAR(colour.green(), c[1], 1e-12);
            EXPECT_NEAR(colour.blue(), c[2], 1e-12);
        }
    }
    const UifColour orange(1, 0.5, 0, COLOUR_SPACE_RGB);
    EXPECT_DOUBLE_EQ(orange.hue(), 30.0);
    EXPECT_DOUBLE_EQ(orange.Y(), 0.299 + 0.587 * 0.5);

    // Tinting works in the colour's own space, the other colour taken into it.
    UifColour grey(0.5, 0.5, 0.5, COLOUR_SPACE_RGB);
    grey.tint(UifColour(0, 1, 1, COLOUR_SPACE_HSV), 0.5);   // HSV (0, 1, 1) is red
    EXPECT_DOUBLE_EQ(grey.component1(), 0.75);
    EXPECT_DOUBLE_EQ(grey.component2(), 0.25);
    EXPECT_DOUBLE_EQ(grey.scale(2).offset(-1, 0, 0).component1(), 0.5);
}

TEST(UifColour, RoundTripThroughAFile)
{
    TemporaryDirectory directory;
    const String path(directory.file("colours.bin").c_str());
    const UifColour written[] = {UifColour(0.25, 0.5, 1.0, COLOUR_SPACE_RGB), UifColour(200, 0.5, 0.75, COLOUR_SPACE_HSV),
                                 UifColour(0.5, -0.1, 0.2, COLOUR_SPACE_YCRCB)};
    {
        StreamFile file(path);
        PStream stream(file);
        for (const UifColour& colour : written)
            stream << colour;
        // A revision byte, four doubles and the space, for each.
        ASSERT_EQ(file.bytes().size(), 3u * 37u);
        EXPECT_EQ(file.bytes()[0], '\x01');
        ASSERT_TRUE(file.save());
    }
    StreamFile file(path);
    ASSERT_TRUE(file.load());
    PStream stream(file);
    for (const UifColour& colour : written) {
        UifColour read;
        stream >> read;
        EXPECT_TRUE(read == colour);
    }
    EXPECT_TRUE(stream.good());
    EXPECT_TRUE(file.atEnd());
}

TEST(UifColour, TruncatedOrCorruptRecordsReadAsTheInvalidColour)
{
    StreamFile good;
    PStream writer(good);
    writer << UifColour(0.1, 0.2, 0.3, COLOUR_SPACE_RGB);
    const std::string record = good.bytes();

    std::string wrong_revision = record;
    wrong_revision[0] = 9;
    std::string unknown_space = record;
    unknown_space[33] = 5;
    std::string not_a_number = record;
    for (int i = 1; i <= 8; ++i)
        not_a_number[static_cast<std::size_t>(i)] = '\xFF';
    const std::string damaged[] = {record.substr(0, 20), std::string(), wrong_revision, unknown_space, not_a_number};

    for (const std::string& bytes : damaged) {
        ReportCapture reports;
        StreamFile file;
        file.setBytes(bytes);
        PStream stream(file);
        UifColour colour(0.9, 0.9, 0.9, COLOUR_SPACE_HSV);
        stream >> colour;
        EXPECT_TRUE(colour == UifColour(-1, -1, -1, COLOUR_SPACE_RGB));
        EXPECT_FALSE(colour.globColour().valid());
        EXPECT_EQ(reports.count("truncated or corrupt"), 1);
    }
}

TEST(UifColour, AFileThatCannotBeReadIsNotWrittenOver)
{
    TemporaryDirectory directory;
    ReportCapture reports;
    StreamFile file(String(directory.path().string().c_str()));   // a directory: there, but not readable as a file
    EXPECT_FALSE(file.load());
    PStream stream(file);
    stream << UifColour(1, 1, 1, COLOUR_SPACE_RGB);
    EXPECT_FALSE(file.save());
    EXPECT_NE(reports.text().find("not written over"), std::string::npos);
}

namespace {

class PanelColour : public UifColour {
public:
    void unpackWithoutRevision(PStream& stream) { unpack(stream); }
};

} // namespace

TEST(UifColour, UnpackingWithoutARevisionIsReportedAndReadsNothing)
{
    StreamFile file;
    PStream writer(file);
    writer << UifColour(0.5, 0.5, 0.5, COLOUR_SPACE_RGB);
    PStream stream(file);
    ReportCapture reports;
    PanelColour colour;
    colour.unpackWithoutRevision(stream);
    EXPECT_NE(reports.text().find("Call made using illegal unpack syntax in"), std::string::npos);
    EXPECT_NE(reports.text().find("PanelColour"), std::string::npos);   // the object's own class
    EXPECT_EQ(file.readPosition(), 0u);
}
