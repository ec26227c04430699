// RasterImage and its cache: shared and private images and the counts they
// leave on an entry, the placeholder for a missing picture, the shape of a
// picture, drawing, preloading and the statistics.

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/RootCanvas.h"
#include "tela/canvas/UpdateTracking.h"
#include "tela/core/Config.h"
#include "tela/render/RasterImage.h"

#include "core/TemporaryDirectory.h"
#include "headless/HeadlessServices.h"
#include "headless/HostImage.h"
#include "images/PictureFiles.h"
#include "support/PaintForwarder.h"
#include "support/ReportCapture.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

constexpr const char* ENTRY_WARNING = "!! Warning: Deleting RasterImageCacheRec where refCount != 0\n";

Qv::Ptr<Headless::HostImage> host(const Qv::Ptr<iHostImage>& image)
{
    return Qv::dynamicCast<Headless::HostImage>(image);
}

class RasterImageTest : public ::testing::Test {
protected:
    void SetUp() override { Qv::reloadConfigurationFrom(directory.path().string()); }
    void TearDown() override
    {
        RasterImage::releaseUnusedCacheEntries();
        Qv::reloadConfigurationFrom("");
    }

    // A PNG of the given straight RGBA rows, written into the test's directory.
    WString picture(const std::string& leaf, int width, int height, const PictureFiles::Bytes& rows)
    {
        PictureFiles::PngSpec spec;
        spec.width = width;
        spec.height = height;
        spec.rows = rows;
        const std::string path = directory.file(leaf);
        PictureFiles::writeFile(path, PictureFiles::encodePng(spec));
        return fromUTF8(path.c_str());
    }
    // Opaque inside [left, right) x [top, bottom), transparent around it.
    WString boxPicture(const std::string& leaf, int width, int height, int left, int top, int right, int bottom)
    {
        return picture(leaf, width, height, PictureFiles::rgbaWithOpaqueBox(width, height, left, top, right, bottom));
    }

    TemporaryDirectory directory;
};

} // namespace

TEST_F(RasterImageTest, SharedImagesOfANameCountHitsAndReferencesOnOneEntry)
{
    const WString name = boxPicture("a.png", 12, 10, 0, 0, 12, 10);
    {
        const RasterImage first(name);
        ASSERT_TRUE(first.imageLoaded());
        ASSERT_TRUE(first.shared);
        RasterImageCacheRec* const entry = first.cacheRec;
        ASSERT_NE(entry, nullptr);
        EXPECT_EQ(entry->hits, 0);   // the first load is not a hit
        EXPECT_EQ(entry->refCount, 1);
        EXPECT_FALSE(first.bitmap);  // shared images hold no pixels of their own
        {
            const RasterImage second(name);
            EXPECT_EQ(second.cacheRec, entry);
            EXPECT_EQ(second.getBitmap(), first.getBitmap());
            EXPECT_EQ(entry->hits, 1);
            EXPECT_EQ(entry->refCount, 2);
        }
        EXPECT_EQ(entry->refCount, 1);

        // A private image of the same name: its own pixels, the same picture, no reference.
        RasterImage own;
        EXPECT_TRUE(own.initImage(name, false));
        EXPECT_FALSE(own.shared);
        EXPECT_EQ(own.cacheRec, nullptr);
        EXPECT_EQ(entry->hits, 2);
        EXPECT_EQ(entry->refCount, 1);
        ASSERT_TRUE(own.getBitmap());
        EXPECT_NE(own.getBitmap(), first.getBitmap());
        EXPECT_EQ(host(own.getBitmap())->pixelAt(5, 4), host(first.getBitmap())->pixelAt(5, 4));
        EXPECT_EQ(RasterImage::cacheEntryCount(), 1u);
        EXPECT_EQ(RasterImage::releaseUnusedCacheEntries(), 0);   // `first` still holds it
    }
    ReportCapture reports;
    EXPECT_EQ(RasterImage::releaseUnusedCacheEntries(), 1);
    EXPECT_EQ(reports.text(), "");
    EXPECT_EQ(RasterImage::cacheEntryCount(), 0u);
}

TEST_F(RasterImageTest, ACopyTakesTheEntryWithoutCountingKeepsItAliveAndLeavesAWarningBehind)
{
    const WString name = boxPicture("a.png", 6, 6, 0, 0, 6, 6);
    auto original = std::make_unique<RasterImage>(name);
    RasterImageCacheRec* const entry = original->cacheRec;
    auto copy = std::make_unique<const RasterImage>(*original);
    EXPECT_EQ(copy->cacheRec, entry);
    EXPECT_EQ(entry->refCount, 1);   // not raised by the copy
    original.reset();
    EXPECT_EQ(entry->refCount, 0);
    // The copy still points at the entry, so it must not go.
    EXPECT_EQ(RasterImage::releaseUnusedCacheEntries(), 0);
    EXPECT_EQ(host(copy->getBitmap())->pixelAt(2, 2) >> 24, 255u);

    // The copy's destruction takes refCount below zero; dropping the entry then warns.
    copy.reset();
    ReportCapture reports;
    EXPECT_EQ(RasterImage::releaseUnusedCacheEntries(), 1);
    EXPECT_EQ(reports.text(), ENTRY_WARNING);
}

TEST_F(RasterImageTest, AssignmentMakesAPrivateCopyAndSelfAssignmentChangesNothing)
{
    const WString name = boxPicture("a.png", 8, 5, 0, 0, 8, 5);
    RasterImage shared_image(name);
    RasterImageCacheRec* const entry = shared_image.cacheRec;
    RasterImage& same = shared_image;
    shared_image = same;
    EXPECT_TRUE(shared_image.shared);
    EXPECT_EQ(shared_image.cacheRec, entry);
    EXPECT_EQ(entry->refCount, 1);

    RasterImage other;
    other = shared_image;
    EXPECT_FALSE(other.shared);
    EXPECT_EQ(other.cacheRec, nullptr);
    EXPECT_EQ(entry->refCount, 1);
    ASSERT_TRUE(other.getBitmap());
    EXPECT_NE(other.getBitmap(), shared_image.getBitmap());
    EXPECT_EQ(host(other.getBitmap())->pixelAt(3, 3), host(shared_image.getBitmap())->pixelAt(3, 3));
}

TEST_F(RasterImageTest, AMissingPictureGivesTheBlankPlaceholderAfterItsMessages)
{
    TemporaryDirectory::write(directory.file("config.json"), R"({"Show RastImag Cache Misses": true})");
    Qv::reloadConfigurationFrom(directory.path().string());
    const std::string missing = directory.file("missing.png");
    ReportCapture reports;
    const RasterImage image(fromUTF8(missing.c_str()));
    const std::string opening = "Image file " + missing + " cannot be opened: No such file or directory\n";
    // The cache tries, then the surface road, then the placeholder.
    EXPECT_EQ(reports.text(), opening + "!! RastImag: Failed to cache '" + missing + "'\n" + opening +
                                  "Unable to load image " + missing + "\n");
    EXPECT_TRUE(image.imageLoaded());
    EXPECT_FALSE(image.shared);
    EXPECT_EQ(image.cacheRec, nullptr);
    ASSERT_TRUE(image.getBitmap());
    XY<int> size;
    image.getBitmap()->getSize(size);
    EXPECT_EQ(size, XY<int>(40, 40));
    EXPECT_EQ(host(image.getBitmap())->pixelAt(20, 20), 0u);   // left as it comes: blank
    EXPECT_EQ(RasterImage::cacheEntryCount(), 0u);

    // An empty name skips the cache, and without the flag nothing says it missed.
    Qv::reloadConfigurationFrom(std::string(directory.path().string()) + "/none");
    reports.clear();
    RasterImage unnamed;
    EXPECT_TRUE(unnamed.initImage(WString(), true));
    EXPECT_EQ(reports.text(), "Unable to load image \n");
    EXPECT_EQ(unnamed.width(), 40);
}

TEST_F(RasterImageTest, TheRegionIsTheOpaquePartMovedToTheOriginAndBuiltOncePerEntry)
{
    const WString name = boxPicture("a.png", 10, 8, 3, 2, 9, 7);
    const RasterImage first(name);
    ASSERT_TRUE(first.region);
    Qv::Box<int> box;
    first.region->getBox(box);
    EXPECT_EQ(box, (Qv::Box<int>{0, 0, 6, 5}));
    EXPECT_EQ(first.regionOffset, XY<int>(3, 2));
    EXPECT_EQ(first.width(), 6);    // the region's, not the file's
    EXPECT_EQ(first.height(), 5);
    EXPECT_TRUE(first.cacheRec->regionBuilt);

    const RasterImage second(name);
    EXPECT_EQ(second.region, first.region);   // the entry's, shared
    EXPECT_EQ(second.regionOffset, XY<int>(3, 2));

    RasterImage own;
    own.initImage(name, false);
    ASSERT_TRUE(own.region);
    EXPECT_NE(own.region, first.region);      // a copy it may change
    EXPECT_TRUE(own.region->equals(first.region));
}

TEST_F(RasterImageTest, PreloadingReadsTheUsersListAndTheStatisticsShowTheEntries)
{
    const WString a = boxPicture("a.png", 4, 4, 0, 0, 4, 4);
    const WString b = boxPicture("b.png", 4, 4, 0, 0, 4, 4);
    const std::string path_a = toUTF8(a).c_str();
    const std::string path_b = toUTF8(b).c_str();
    TemporaryDirectory::write(directory.file("preferences.json"),
                              R"({"Configuration\\FrequentlyUsedBitmaps": [")" + path_b + R"(", ")" + path_a + R"("]})");
    ReportCapture reports;
    EXPECT_EQ(RasterImage::preloadCache(), 2);
    EXPECT_EQ(reports.text(),
              "Preloading bitmap image '" + path_b + "'...\nPreloading bitmap image '" + path_a + "'...\n");
    EXPECT_EQ(RasterImage::cacheEntryCount(), 2u);

    const RasterImage image(a);
    EXPECT_EQ(image.cacheRec->hits, 1);   // preloaded: found, not decoded again

    // The 20-character column shows only the start of these long names, so
    // the two rows are told apart by their counts; a sorts first.
    reports.clear();
    RasterImage::dumpCacheStats();
    char row_a[64];
    char row_b[64];
    std::snprintf(row_a, sizeof row_a, "%-20.20s %8d %8d\n", path_a.c_str(), 1, 1);
    std::snprintf(row_b, sizeof row_b, "%-20.20s %8d %8d\n", path_b.c_str(), 0, 0);
    EXPECT_EQ(reports.text(), std::string("Name                 Hits     Refs\n-------------------- -------- --------\n") +
                                  row_a + row_b);
}

TEST_F(RasterImageTest, ThreadsLoadingOneNameShareOneDecodedEntry)
{
    const WString name = boxPicture("a.png", 64, 64, 0, 0, 64, 64);
    constexpr int THREADS = 4;
    std::vector<std::unique_ptr<RasterImage>> images(THREADS);
    std::vector<std::thread> threads;
    for (int index = 0; index < THREADS; ++index)
        threads.emplace_back([&, index] { images[static_cast<std::size_t>(index)] = std::make_unique<RasterImage>(name); });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(RasterImage::cacheEntryCount(), 1u);
    RasterImageCacheRec* const entry = images[0]->cacheRec;
    for (const auto& image : images)
        EXPECT_EQ(image->cacheRec, entry);
    EXPECT_EQ(entry->hits, THREADS - 1);
    EXPECT_EQ(entry->refCount, THREADS);
}

class RasterImageDrawingTest : public RasterImageTest {
protected:
    void SetUp() override
    {
        RasterImageTest::SetUp();
        iRootWindow::InitArgs args;
        args.size = {160, 100};
        args.eventHandler = sink;
        root = tela_createRootCanvas(args);
        ASSERT_NE(root, nullptr);
        sink->root = root;
        canvas = tela_newcanvas(nullptr, root);
        ASSERT_EQ(tela_placecanvas(canvas, TopDownRect{20, 20, 120, 80}), 1);   // 100 x 60
        Headless::services().windowing()->mainLoop().runPending();
        buffer()->fill(0xFFFFFFFFu);
        canvupd_mark_clean(canvas);
    }
    void TearDown() override
    {
        tela_deletecanvas(root);
        RasterImageTest::TearDown();
    }

    Qv::Ptr<Headless::HostImage> buffer() const { return Qv::dynamicCast<Headless::HostImage>(canvas->offscreenBuffer); }

    const Qv::Ptr<PaintForwarder> sink = Qv::make<PaintForwarder>();
    RootCanvas* root = nullptr;
    Canvas* canvas = nullptr;
};

TEST_F(RasterImageDrawingTest, AShapedCanvasTakesThePictureWithoutItsTransparentCorners)
{
    // 20 x 16, opaque but for 3 x 3 corners.
    PictureFiles::Bytes rows = PictureFiles::rgbaWithOpaqueBox(20, 16, 0, 0, 20, 16);
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 20; ++x)
            if ((x < 3 || x >= 17) && (y < 3 || y >= 13))
                rows[static_cast<std::size_t>((y * 20 + x) * 4 + 3)] = 0;
    RasterImage image(picture("corners.png", 20, 16, rows));
    ASSERT_TRUE(image.region);
    EXPECT_FALSE(image.region->contains({0, 0}));
    EXPECT_TRUE(image.region->contains({3, 0}));
    EXPECT_EQ(image.regionOffset, XY<int>(0, 0));

    image.makeShapeRegion(canvas, 999, 999);   // x and y are not used
    ASSERT_TRUE(canvas->shape());
    Qv::Box<int> box;
    canvas->shape()->getBox(box);
    EXPECT_EQ(box, (Qv::Box<int>{20, 20, 40, 36}));   // at the canvas's corner, the picture's size
    EXPECT_FALSE(canvas->shape()->contains({20, 20}));
    EXPECT_FALSE(canvas->shape()->contains({39, 35}));
    EXPECT_TRUE(canvas->shape()->contains({23, 20}));
    EXPECT_TRUE(canvas->shape()->contains({30, 28}));
}

TEST_F(RasterImageDrawingTest, DrawingCentresOnMinusOneAndMarksTheDamage)
{
    PictureFiles::Bytes red;
    for (int pixel = 0; pixel < 20 * 10; ++pixel)
        red.insert(red.end(), { 255, 0, 0, 255 });
    RasterImage image(picture("red.png", 20, 10, red));
    const Tela::UpdateDeferrer deferrer(nullptr, true);   // keeps the damage from being shown at once
    image.draw(canvas, -1, 5);   // x = (100 - 20) / 2 = 40; rows 5 to 15 from the bottom
    EXPECT_EQ(buffer()->pixelAt(40, 50), 0xFFFF0000u);
    EXPECT_EQ(buffer()->pixelAt(59, 45), 0xFFFF0000u);
    EXPECT_EQ(buffer()->pixelAt(39, 50), 0xFFFFFFFFu);
    EXPECT_EQ(buffer()->pixelAt(60, 50), 0xFFFFFFFFu);
    EXPECT_EQ(buffer()->pixelAt(45, 44), 0xFFFFFFFFu);
    EXPECT_EQ(buffer()->pixelAt(45, 55), 0xFFFFFFFFu);
    ASSERT_TRUE(canvas->updateRegion());
    Qv::Box<int> damage;
    canvas->updateRegion()->getBox(damage);
    EXPECT_EQ(damage, (Qv::Box<int>{60, 65, 80, 75}));   // in the window, top-down

    // The placeholder is blank, and drawing replaces what was there.
    ReportCapture quiet;
    RasterImage placeholder(WString(u"no such picture.png"));
    placeholder.draw(canvas, 0, 0);
    EXPECT_EQ(buffer()->pixelAt(1, 58), 0u);
    EXPECT_EQ(buffer()->pixelAt(39, 20), 0u);
    EXPECT_EQ(buffer()->pixelAt(40, 20), 0xFFFFFFFFu);

    // Nothing happens without a drawable canvas or a picture.
    image.draw(nullptr, 0, 0);
    RasterImage().draw(canvas, 0, 0);
}

TEST_F(RasterImageDrawingTest, ALightweightCanvasBlendsThePictureByHand)
{
    Canvas* const child = tela_newcanvas(nullptr, canvas);
    ASSERT_EQ(tela_placecanvas(child, TopDownRect{30, 30, 70, 50}), 1);   // 40 x 20, at 10, 10 in the parent
    tela_setlightweight(child, 1);
    buffer()->fill(0xFFFFFFFFu);
    // Straight (200, 100, 50) at alpha 128 is stored premultiplied as (100, 50, 25),
    // and the hand blend weights those bytes by the alpha once more.
    PictureFiles::Bytes rows;
    for (int pixel = 0; pixel < 4 * 4; ++pixel)
        rows.insert(rows.end(), { 200, 100, 50, 128 });
    RasterImage image(picture("half.png", 4, 4, rows));
    image.draw(child, 0, 0);   // the child's bottom-left corner
    // Colour bytes (s * a + d * (255 - a)) / 255, the larger alpha kept.
    EXPECT_EQ(buffer()->pixelAt(10, 29), 0xFFB1988Bu);
    EXPECT_EQ(buffer()->pixelAt(13, 26), 0xFFB1988Bu);
    EXPECT_EQ(buffer()->pixelAt(14, 29), 0xFFFFFFFFu);
    EXPECT_EQ(buffer()->pixelAt(10, 25), 0xFFFFFFFFu);

    // Clipped at the child's right edge: no pixel lands beyond it.
    image.draw(child, 38, 0);
    EXPECT_EQ(buffer()->pixelAt(49, 29), 0xFFB1988Bu);
    EXPECT_EQ(buffer()->pixelAt(50, 29), 0xFFFFFFFFu);
}
