// The headless decoders: every kind of PNG the format allows and JPEG in
// colour and grey come out as premultiplied BGRA; bad files give a message and
// nothing else, with every block handed back.

#include "headless/HeadlessServices.h"
#include "headless/ImageDecoding.h"
#include "images/PictureFiles.h"
#include "support/LiveBlocks.h"
#include "support/ReportCapture.h"
#include "tela/platform/ImageLoader.h"

#include "core/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

using PictureFiles::Bytes;

namespace {

Qv::Ptr<Headless::HostImage> decode(const Bytes& bytes)
{
    return Headless::decodeImage(bytes.data(), bytes.size(), "test");
}

// Channels may differ by `tolerance`; alpha must match.
void expect_near(std::uint32_t actual, std::uint32_t expected, int tolerance)
{
    EXPECT_EQ(actual >> 24, expected >> 24) << std::hex << actual << " vs " << expected;
    for (int shift = 0; shift < 24; shift += 8) {
        const int difference = static_cast<int>((actual >> shift) & 0xff) - static_cast<int>((expected >> shift) & 0xff);
        EXPECT_LE(std::abs(difference), tolerance) << std::hex << actual << " vs " << expected;
    }
}

} // namespace

TEST(ImageDecoding, EveryKindOfPngBecomesPremultipliedBgra)
{
    struct Case {
        const char* what;
        PictureFiles::PngSpec spec;
        std::vector<std::uint32_t> expected;   // row after row, 0xAARRGGBB
    };
    PictureFiles::PngSpec rgba;
    rgba.width = 2;
    rgba.rows = { 255, 0, 0, 255, 200, 100, 50, 128 };
    PictureFiles::PngSpec palette;   // one bit a pixel, the second colour transparent
    palette.width = 2;
    palette.height = 2;
    palette.bitDepth = 1;
    palette.colourType = PNG_COLOR_TYPE_PALETTE;
    palette.rows = { 0x40, 0x80 };
    palette.palette = { 10, 20, 30, 200, 150, 100 };
    palette.transparency = { 255, 0 };
    PictureFiles::PngSpec grey;
    grey.width = 2;
    grey.colourType = PNG_COLOR_TYPE_GRAY;
    grey.rows = { 0, 200 };
    PictureFiles::PngSpec grey_two_bits;
    grey_two_bits.width = 4;
    grey_two_bits.bitDepth = 2;
    grey_two_bits.colourType = PNG_COLOR_TYPE_GRAY;
    grey_two_bits.rows = { 0x1b };   // 0, 1, 2, 3
    PictureFiles::PngSpec deep;      // 16 bits a channel, big-endian
    deep.bitDepth = 16;
    deep.rows = { 0xff, 0xff, 0x80, 0x00, 0x00, 0x00, 0xff, 0xff };
    PictureFiles::PngSpec grey_key;  // grey with a transparent value
    grey_key.width = 2;
    grey_key.colourType = PNG_COLOR_TYPE_GRAY;
    grey_key.rows = { 7, 9 };
    grey_key.transparency = { 0, 7 };

    const Case cases[] = {
        { "RGBA", rgba, { 0xFFFF0000u, 0x80643219u } },
        { "palette", palette, { 0xFF0A141Eu, 0x00000000u, 0x00000000u, 0xFF0A141Eu } },
        { "grey", grey, { 0xFF000000u, 0xFFC8C8C8u } },
        { "grey, 2 bits", grey_two_bits, { 0xFF000000u, 0xFF555555u, 0xFFAAAAAAu, 0xFFFFFFFFu } },
        { "16 bits", deep, { 0xFFFF8000u } },
        { "grey with a key", grey_key, { 0x00000000u, 0xFF090909u } },
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.what);
        const Bytes file = PictureFiles::encodePng(test.spec);
        ASSERT_FALSE(file.empty());
        const Qv::Ptr<Headless::HostImage> image = decode(file);
        ASSERT_TRUE(image);
        XY<int> size;
        image->getSize(size);
        ASSERT_EQ(size, XY<int>(test.spec.width, test.spec.height));
        for (int y = 0; y < size.y; ++y)
            for (int x = 0; x < size.x; ++x)
                EXPECT_EQ(image->pixelAt(x, y), test.expected[static_cast<std::size_t>(y * size.x + x)])
                    << std::hex << "at " << std::dec << x << ", " << y;
    }
}

TEST(ImageDecoding, AnInterlacedPngMatchesThePlainOne)
{
    PictureFiles::PngSpec spec;
    spec.width = 13;
    spec.height = 11;
    spec.colourType = PNG_COLOR_TYPE_GRAY_ALPHA;
    for (int y = 0; y < spec.height; ++y)
        for (int x = 0; x < spec.width; ++x) {
            spec.rows.push_back(static_cast<std::uint8_t>(x * 19 + y * 3));
            spec.rows.push_back(static_cast<std::uint8_t>(255 - x * y));
        }
    const Qv::Ptr<Headless::HostImage> plain = decode(PictureFiles::encodePng(spec));
    spec.interlaced = true;
    const Qv::Ptr<Headless::HostImage> interlaced = decode(PictureFiles::encodePng(spec));
    ASSERT_TRUE(plain && interlaced);
    for (int y = 0; y < spec.height; ++y)
        for (int x = 0; x < spec.width; ++x)
            ASSERT_EQ(interlaced->pixelAt(x, y), plain->pixelAt(x, y)) << x << ", " << y;
    EXPECT_EQ(plain->pixelAt(12, 10) >> 24, 255u - 120u);   // alpha survives, premultiplied below
}

TEST(ImageDecoding, JpegInColourAndGreyIsOpaqueBgra)
{
    const Bytes colour(16 * 16 * 3, 0);
    Bytes pixels = colour;
    for (std::size_t at = 0; at < pixels.size(); at += 3) {
        pixels[at] = 200;
        pixels[at + 1] = 50;
        pixels[at + 2] = 100;
    }
    for (const bool progressive : { false, true }) {
        SCOPED_TRACE(progressive ? "progressive" : "baseline");
        const Qv::Ptr<Headless::HostImage> image = decode(PictureFiles::encodeJpeg(16, 16, 3, pixels, 100, progressive));
        ASSERT_TRUE(image);
        expect_near(image->pixelAt(8, 8), 0xFFC83264u, 3);
    }
    const Qv::Ptr<Headless::HostImage> grey = decode(PictureFiles::encodeJpeg(8, 4, 1, Bytes(32, 128), 100));
    ASSERT_TRUE(grey);
    XY<int> size;
    grey->getSize(size);
    EXPECT_EQ(size, XY<int>(8, 4));
    expect_near(grey->pixelAt(3, 2), 0xFF808080u, 2);
}

TEST(ImageDecoding, BadInputGivesAMessageAndNoImageAndKeepsNoMemory)
{
    PictureFiles::PngSpec spec;
    spec.width = 32;
    spec.height = 32;
    spec.rows = PictureFiles::rgbaWithOpaqueBox(32, 32, 4, 4, 28, 28);
    const Bytes png = PictureFiles::encodePng(spec);
    const Bytes jpeg = PictureFiles::encodeJpeg(32, 32, 1, Bytes(32 * 32, 90));
    ASSERT_FALSE(png.empty());
    ASSERT_FALSE(jpeg.empty());

    Bytes bad_crc = png;
    bad_crc[png.size() / 2] ^= 0x55;   // inside the pixel data
    Bytes noise(500);
    for (std::size_t at = 0; at < noise.size(); ++at)
        noise[at] = static_cast<std::uint8_t>(at * 151 + 7);
    Bytes png_with_noise(33 + noise.size());   // a good header, then rubbish
    std::copy_n(png.begin(), 33, png_with_noise.begin());
    std::copy(noise.begin(), noise.end(), png_with_noise.begin() + 33);
    // A palette picture whose next chunk claims to be almost 2 GB long.
    const Bytes huge_chunk = {0x89, 0x50, 0x4e, 0x47, 0x0d, 0x0a, 0x1a, 0x0a, 0x00, 0x00, 0x00, 0x0d, 0x49, 0x48,
                              0x44, 0x52, 0x00, 0x00, 0x00, 0x03, 0x00, 0x00, 0x00, 0x03, 0x01, 0x03, 0x00, 0x00,
                              0x01, 0x1b, 0xe1, 0x17, 0x6a, 0x77, 0x00, 0x00, 0x06, 0x73, 0x50, 0x4c, 0x54, 0x45,
                              0x68, 0x60};


    struct Case {
        const char* what;
        Bytes bytes;
        const char* message;
    };
    const Case cases[] = {
        { "empty", {}, "neither PNG nor JPEG" },
        { "noise", noise, "neither PNG nor JPEG" },
        { "PNG signature only", Bytes(png.begin(), png.begin() + 8), "cannot be decoded" },
        { "PNG cut in its header", Bytes(png.begin(), png.begin() + 20), "cannot be decoded" },
        { "PNG cut in its pixels", Bytes(png.begin(), png.begin() + static_cast<std::ptrdiff_t>(png.size() / 2)),
          "cannot be decoded" },
        { "PNG with a damaged chunk", bad_crc, "cannot be decoded" },
        { "PNG header then noise", png_with_noise, "cannot be decoded" },
        // Skipped unread, so the file simply ends early: nothing is allocated for it.
        { "PNG chunk longer than the file", huge_chunk, "cannot be decoded" },
        { "PNG of no width", PictureFiles::withPngSize(png, 0, 32), "cannot be decoded" },
        { "PNG of 30000 x 30000", PictureFiles::withPngSize(png, 30000, 30000),
          "is 30000 x 30000 pixels, too large to load" },
        { "JPEG cut in its header", Bytes(jpeg.begin(), jpeg.begin() + 20), "cannot be decoded" },
        { "JPEG of no height", PictureFiles::withJpegSize(jpeg, 32, 0), "cannot be decoded" },
        { "JPEG of 30000 x 30000", PictureFiles::withJpegSize(jpeg, 30000, 30000),
          "is 30000 x 30000 pixels, too large to load" },
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.what);
        const std::int64_t blocks_before = live_blocks();
        ReportCapture reports;
        EXPECT_FALSE(decode(test.bytes));
        EXPECT_NE(reports.text().find(test.message), std::string::npos) << reports.text();
        EXPECT_EQ(reports.count("\n"), 1) << reports.text();   // one message, one line
        EXPECT_EQ(live_blocks(), blocks_before);
    }

    // A JPEG that ends early is shown as far as it goes, and said to be damaged.
    Bytes busy(64 * 64);
    for (std::size_t at = 0; at < busy.size(); ++at)
        busy[at] = static_cast<std::uint8_t>(at * 37 % 251);
    const Bytes detailed = PictureFiles::encodeJpeg(64, 64, 1, busy);
    ReportCapture reports;
    const Qv::Ptr<Headless::HostImage> partial = decode(Bytes(detailed.begin(), detailed.end() - 500));
    ASSERT_TRUE(partial);
    EXPECT_NE(reports.text().find("Image test is damaged ("), std::string::npos) << reports.text();
}

TEST(ImageDecoding, FilesAreReadWholeAndAMissingOneIsReported)
{
    TemporaryDirectory directory;
    PictureFiles::PngSpec spec;
    spec.width = 3;
    spec.height = 2;
    spec.rows = PictureFiles::rgbaWithOpaqueBox(3, 2, 0, 0, 3, 2);
    const std::string path = directory.file("small.png");
    PictureFiles::writeFile(path, PictureFiles::encodePng(spec));

    Qv::Ptr<iHostImage> image;
    ASSERT_TRUE(OS()->imaging()->loadImage(image, fromUTF8(path.c_str())));
    XY<int> size;
    image->getSize(size);
    EXPECT_EQ(size, XY<int>(3, 2));

    ReportCapture reports;
    const std::string missing = directory.file("missing.png");
    EXPECT_FALSE(QvImage::Loader::loadImage(fromUTF8(missing.c_str())));
    EXPECT_EQ(reports.text(), "Image file " + missing + " cannot be opened: No such file or directory\n");

    // The surface road gives the same pixels in the order asked for.
    QvImage::DecodeFormat format;
    format.pixelOrder = String("RGBA");
    const Qv::Image::Surface surface = QvImage::Loader::loadSurface(fromUTF8(path.c_str()), format);
    ASSERT_TRUE(surface.hasPixels());
    const std::uint8_t* first = surface.getData().pixels();
    EXPECT_EQ(first[0], 40);    // red first
    EXPECT_EQ(first[2], 90);
    format.pixelOrder = String("ARGB");
    reports.clear();
    EXPECT_FALSE(QvImage::Loader::loadSurface(fromUTF8(path.c_str()), format).hasPixels());
    EXPECT_EQ(reports.text(), "QvImage::Loader::loadSurface: pixel order ARGB is not one it writes\n");
}

// What is saved reads back as it was, and an icon is scaled to the size asked
// for, or not at all when that size is empty.
TEST(ImageDecoding, SavedPicturesReadBackAndIconsResize)
{
    TemporaryDirectory directory;
    auto picture = Headless::HostImage::create({4, 4});
    ASSERT_TRUE(picture);
    picture->fill(0xff204080u);
    const WString path = fromUTF8(directory.file("saved.png").c_str());
    ASSERT_TRUE(QvImage::Saver::saveImage(picture, path));
    EXPECT_FALSE(QvImage::Saver::saveImage(nullptr, path));

    const Qv::Ptr<iHostImage> loaded = QvImage::Loader::loadImage(path);
    ASSERT_TRUE(loaded);
    const Qv::Ptr<iHostImage> larger = QvImage::createResizedIcon(loaded, {6, 6});
    ASSERT_TRUE(larger);
    XY<int> size;
    larger->getSize(size);
    EXPECT_EQ(size, XY<int>(6, 6));
    const Qv::Ptr<iPixelGuard> guard = larger->lock();
    std::uint32_t middle;
    std::memcpy(&middle, guard->pixels() + 3 * guard->stride() + 3 * 4, 4);
    EXPECT_EQ(middle, 0xff204080u);
    EXPECT_FALSE(QvImage::createResizedIcon(loaded, {0, 6}));
    EXPECT_FALSE(QvImage::createResizedIcon(nullptr, {6, 6}));
}
