#pragma once
// RasterImage: a bitmap loaded by file name or taken from an image, drawn on a
// canvas, whose opaque pixels also give a region (so that a window can take
// the shape of its picture).
//
// Loading by name goes through one process-wide cache keyed by the name as
// given. An entry holds the decoded bitmap once, and its shape region, built
// the first time an image asks for it. A RasterImage either shares an entry
// (holds no pixels of its own: `shared`, `cacheRec`) or takes a private copy
// of its pixels (`bitmap`).
//
// - A picture that cannot be loaded still gives a usable image: 40 by 40,
//   blank, after "Unable to load image <name>" in the log.
// - Counting quirk, kept on purpose: a copy made by the copy constructor takes
//   over `cacheRec` without raising the entry's `refCount`, while its
//   destruction lowers it; so `refCount` can fall below the number of
//   holders. Entries themselves stay alive while anything points at them.
// - Images may be loaded on any thread: the cache's lookups, and every change
//   to an entry, hold the cache's lock. Drawing is main-thread work.

#include "tela/core/Array.h"
#include "tela/core/LightweightString.h"
#include "tela/core/Ptr.h"
#include "tela/core/RefCount.h"
#include "tela/platform/Geometry.h"
#include "tela/platform/iImage.h"
#include "tela/platform/iRegion.h"

#include <cstddef>
#include <cstdint>

class Canvas;

// One cache entry: a decoded picture by name, and its shape once built.
class RasterImageCacheRec : public ArrayRec {
public:
    explicit RasterImageCacheRec(const WString& entryName = WString()) : name(entryName) {}
    // Warns when images still count on the entry; it goes anyway.
    ~RasterImageCacheRec() override;
    // By name, as wide-character strings compare; a missing name is "".
    int compare(const ArrayRec& other) const override;
    // The name in UTF-8.
    void toString(GrowString& out) const override;

    Qv::Ptr<iRegion> region;
    bool regionBuilt = false;          // false until the first RasterImage asks
    WString name;                      // the cache key: the file name as given
    Qv::Ptr<iHostImage> bitmap;
    std::int32_t width = 0;
    std::int32_t height = 0;
    XY<int> regionOffset;
    std::int32_t refCount = 0;         // RasterImage objects sharing this entry
    std::int32_t hits = 0;             // lookups that found this entry

    // Every RasterImage whose cacheRec is this entry, copies included (unlike
    // refCount): the entry may be dropped only at zero.
    std::int32_t m_holders = 0;
};

class RasterImage : public virtual Qv::InternalRefCount, public virtual iVirtual {
public:
    // Lifetime
    RasterImage();                                        // nothing loaded
    RasterImage(const WString& name);                     // initImage(name, true)
    RasterImage(Qv::Ptr<iImage> image);                   // initImage(image)
    RasterImage(const RasterImage& other);                // member copy (see the quirk above)
    // Nothing when both give the same getBitmap(); otherwise a private copy of
    // the other's pixels.
    RasterImage& operator=(const RasterImage& other);
    ~RasterImage() override;                              // deInit()

    // Loads `name` through the cache, shared or as a private copy; a picture
    // that cannot be loaded gives the 40 by 40 placeholder. Returns `loaded`.
    bool initImage(const WString& name, bool shared);
    // A private copy of `image`; true when it is non-null (a null one leaves
    // the object as it was).
    bool initImage(Qv::Ptr<iImage> image);
    // Lets go of the pixels: a shared entry's count drops (the region stays),
    // a private bitmap and region are released.
    void deInit();

    // Queries
    bool imageLoaded() const { return loaded; }
    int depth() const { return m_depth; }
    // The size of the region's box when there is a region, otherwise of the picture.
    int width() const;
    int height() const;
    // The entry's bitmap when shared, otherwise the private one.
    Qv::Ptr<iHostImage> getBitmap() const;

    // Drawing (main thread). x or y negative centres the picture that way.
    void draw(Canvas* canvas, int x, int y);
    // The region becomes a copy of `r`, moved by the negated low corner of its
    // box as the root canvas sees it; null rebuilds it from the bitmap.
    void setRegion(const Qv::Ptr<iRegion>& r);
    // A heavyweight canvas takes the picture's shape, placed at its own
    // corner; x and y are not used.
    void makeShapeRegion(Canvas* canvas, int x, int y);

    // The cache
    // Called at start-up; entries live until released, so there is nothing to do.
    static void flushCache() {}
    // Loads each name of the user's "Configuration\FrequentlyUsedBitmaps";
    // returns how many names there were.
    static int preloadCache();
    // Prints the entries' names, hits and references.
    static void dumpCacheStats();
    // Drops the entries no image points at; returns how many went. For tests,
    // benchmarks and memory pressure: the next load decodes afresh.
    static int releaseUnusedCacheEntries();
    static std::size_t cacheEntryCount();

    // The fields, in their fixed order. The picture's width, height and depth
    // take the m_ prefix: the member functions of those names read them.
    Qv::Ptr<iRegion> region;           // the opaque part, its box moved to begin at (0, 0)
    std::int32_t m_width = 0;
    std::int32_t m_height = 0;
    std::int32_t m_depth = 0;          // never set beyond this
    bool loaded = false;
    Qv::Ptr<iHostImage> bitmap;        // the private bitmap; not read while shared
    XY<int> regionOffset;              // where the region's box began in the picture
    bool shared = false;               // the pixels belong to cacheRec
    RasterImageCacheRec* cacheRec = nullptr;

private:
    void initFromCacheEntry(RasterImageCacheRec& entry, bool shareEntry);
    void makeRegion(const Qv::Ptr<iHostImage>& image);
    void loadPrivately(const WString& name);
};
