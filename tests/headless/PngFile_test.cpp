#include "headless/HeadlessRootWindow.h"
#include "headless/PngFile.h"
#include "headless/SoftwareRenderer.h"
#include "support/LiveBlocks.h"
#include "support/ReportCapture.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <random>
#include <string>
#include <unistd.h>

namespace {

// A file name of its own in the temporary folder, removed again at the end of the test.
class TemporaryPath {
public:
    explicit TemporaryPath(const char* leaf)
        : m_path(std::string(::testing::TempDir()) + "tela_" + std::to_string(::getpid()) + "_" + leaf)
    {
    }
    ~TemporaryPath() { std::remove(m_path.c_str()); }
    TemporaryPath(const TemporaryPath&) = delete;
    TemporaryPath& operator=(const TemporaryPath&) = delete;

    const char* c_str() const { return m_path.c_str(); }

private:
    std::string m_path;
};

void write_bytes(const char* path, const std::string& bytes)
{
    std::ofstream file(path, std::ios::binary);
    file << bytes;
}

std::string read_bytes(const char* path)
{
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

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
    const TemporaryPath path("round_trip.png");
    ASSERT_TRUE(Headless::savePng(*image, path.c_str()));
    const Qv::Ptr<Headless::HostImage> loaded = Headless::loadPng(path.c_str());
    ASSERT_TRUE(loaded);
    EXPECT_TRUE(same_pixels(*loaded, *image));
    EXPECT_EQ(loaded->location(), iImageBase::eHostMemory);
}

TEST(PngFile, MissingOrCorruptFilesGiveAMessageAndNoImage)
{
    ReportCapture reports;
    const TemporaryPath missing("missing.png");
    EXPECT_FALSE(Headless::loadPng(missing.c_str()));
    EXPECT_NE(reports.text().find(std::string("PngFile: cannot read ") + missing.c_str()), std::string::npos);

    // A real file cut short in the middle of its pixel data, and one that is no PNG at all.
    const Qv::Ptr<Headless::HostImage> image = Headless::HostImage::create({ 64, 64 });
    image->fill(0xff336699);
    const TemporaryPath truncated("truncated.png");
    ASSERT_TRUE(Headless::savePng(*image, truncated.c_str()));
    const std::string whole = read_bytes(truncated.c_str());
    write_bytes(truncated.c_str(), whole.substr(0, whole.size() / 2));
    const TemporaryPath garbage("garbage.png");
    write_bytes(garbage.c_str(), "GIF89a, not what it says on the label");

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
    const TemporaryPath path("kept.png");
    ASSERT_TRUE(Headless::savePng(*image, path.c_str()));
    const std::string before = read_bytes(path.c_str());

    EXPECT_FALSE(Headless::savePng(*image, "/nonexistent-folder/for/sure.png"));
    EXPECT_EQ(reports.count("PngFile: cannot write /nonexistent-folder/for/sure.png"), 1);
    const Qv::Ptr<Headless::HostImage> empty = Headless::HostImage::create({ 0, 3 });
    EXPECT_FALSE(Headless::savePng(*empty, path.c_str()));
    EXPECT_EQ(reports.count("PngFile: cannot write an image of 0 x 3 pixels"), 1);
    EXPECT_EQ(read_bytes(path.c_str()), before);
}
