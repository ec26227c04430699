#include "headless/HeadlessRootWindow.h"
#include "headless/PngFile.h"
#include "headless/SoftwareRenderer.h"
#include "core/TemporaryDirectory.h"
#include "support/LiveBlocks.h"
#include "support/ReportCapture.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

namespace {

bool same_pixels(const Headless::HostImage& first, const Headless::HostImage& second)
{
    XY<int> first_size;
    XY<int> second_size;
    first.getSize(first_size);
    second.getSize(second_size);
    return first_size == second_size
        && std::memcmp(first.data(), second.data(), static_cast<std::size_t>(first.stride()) * first_size.y) == 0;
}

} // namespace

TEST(PngFile, EveryPremultipliedPixelSurvivesARoundTrip)
{
    // Every alpha with colours spread over 0..alpha: the unpremultiply on the way out and
    // the premultiply on the way in must cancel exactly.
    std::mt19937 random(7);
    const Qv::Ptr<Headless::HostImage> image = Headless::HostImage::create({ 256, 16 });
    for (int y = 0; y < 16; ++y) {
        for (int alpha = 0; alpha < 256; ++alpha) {
            std::uint8_t* pixel = image->data() + y * image->stride() + alpha * 4;
            for (int channel = 0; channel < 3; ++channel)
                pixel[channel] = static_cast<std::uint8_t>(y == 0 ? alpha : random() % (alpha + 1));
            pixel[3] = static_cast<std::uint8_t>(alpha);
        }
    }
    const TemporaryDirectory directory;
    const std::string path = directory.file("round_trip.png");
    ASSERT_TRUE(Headless::savePng(*image, path.c_str()));
    const Qv::Ptr<Headless::HostImage> loaded = Headless::loadPng(path.c_str());
    ASSERT_TRUE(loaded);
    EXPECT_TRUE(same_pixels(*loaded, *image));
    EXPECT_EQ(loaded->location(), iImageBase::eHostMemory);
}

TEST(PngFile, MissingOrCorruptFilesGiveAMessageAndNoImage)
{
    ReportCapture reports;
    const TemporaryDirectory directory;
    const std::string missing = directory.file("missing.png");
    EXPECT_FALSE(Headless::loadPng(missing.c_str()));
    EXPECT_NE(reports.text().find("PngFile: cannot read " + missing), std::string::npos);

    // A real file cut short in the middle of its pixel data, and one that is no PNG at all.
    const Qv::Ptr<Headless::HostImage> image = Headless::HostImage::create({ 64, 64 });
    image->fill(0xff336699);
    const std::string truncated = directory.file("truncated.png");
    ASSERT_TRUE(Headless::savePng(*image, truncated.c_str()));
    const std::string whole = TemporaryDirectory::read(truncated);
    TemporaryDirectory::write(truncated, whole.substr(0, whole.size() / 2));
    const std::string garbage = directory.file("garbage.png");
    TemporaryDirectory::write(garbage, "GIF89a, not what it says on the label");

    reports.clear();
    const std::int64_t blocks_before = live_blocks();
    EXPECT_FALSE(Headless::loadPng(truncated.c_str()));
    EXPECT_FALSE(Headless::loadPng(garbage.c_str()));
    EXPECT_EQ(reports.count("PngFile: cannot read "), 2);
    EXPECT_EQ(live_blocks(), blocks_before);   // the half-filled image went again
}

TEST(PngFile, AFailedWriteLeavesTheEarlierFileAlone)
{
    ReportCapture reports;
    const Qv::Ptr<Headless::HostImage> image = Headless::HostImage::create({ 4, 4 });
    image->fill(0xff00ff00);
    const TemporaryDirectory directory;
    const std::string path = directory.file("kept.png");
    ASSERT_TRUE(Headless::savePng(*image, path.c_str()));
    const std::string before = TemporaryDirectory::read(path);

    EXPECT_FALSE(Headless::savePng(*image, "/nonexistent-folder/for/sure.png"));
    EXPECT_EQ(reports.count("PngFile: cannot write /nonexistent-folder/for/sure.png"), 1);
    const Qv::Ptr<Headless::HostImage> empty = Headless::HostImage::create({ 0, 3 });
    EXPECT_FALSE(Headless::savePng(*empty, path.c_str()));
    EXPECT_EQ(reports.count("PngFile: cannot write an image of 0 x 3 pixels"), 1);
    EXPECT_EQ(TemporaryDirectory::read(path), before);
}
