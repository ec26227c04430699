// RasterImage.cpp: the image, and the process-wide cache behind loading by name.
//
// Invariants
// - The cache's array holds RasterImageCacheRec*, sorted by name and owned by
//   the array; an entry is never moved to another address while it lives.
// - Every read or change of an entry (hits, refCount, m_holders, its region)
//   happens under the cache's lock, whichever thread owns the image.
// - An entry lives while m_holders is above zero; refCount is the count the
//   images report, with the copy-constructor quirk described in the header.

#include "tela/render/RasterImage.h"

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/UpdateTracking.h"
#include "tela/core/Config.h"
#include "tela/core/CriticalSection.h"
#include "tela/core/Log.h"
#include "tela/core/NeverDestroyed.h"
#include "tela/core/Threads.h"
#include "tela/platform/GraphicPrimitives.h"
#include "tela/platform/ImageLoader.h"
#include "tela/platform/iImagingService.h"
#include "tela/platform/OS.h"
#include "tela/state/TelaState.h"
#include "tela/vector/Regions.h"

#include <algorithm>
#include <cstring>

namespace {

// [SECTION] The cache

constexpr int PLACEHOLDER_SIDE = 40;

struct RasterImageCache {
    RasterImageCache() { entries.sorted(true); }

    Array entries;   // of RasterImageCacheRec*
    CriticalSection lock;
};

RasterImageCache& cache()
{
    // Never destroyed: images held by other statics may still let go of their
    // entries during exit.
    static Qv::NeverDestroyed<RasterImageCache> instance;
    return *instance;
}

RasterImageCacheRec* entry_at(std::size_t index)
{
    return static_cast<RasterImageCacheRec*>(cache().entries[index]);
}

// The entry of `name`, loading the picture on a miss; null when it cannot be
// loaded. Called with the cache's lock held: a picture is decoded once even
// when several threads ask for it together.
RasterImageCacheRec* lookup(const WString& name)
{
    const RasterImageCacheRec probe(name);
    const int found = cache().entries.find(probe);
    if (found >= 0) {
        RasterImageCacheRec* entry = entry_at(static_cast<std::size_t>(found));
        ++entry->hits;
        return entry;
    }
    const Qv::Ptr<iHostImage> image = QvImage::Loader::loadImage(name);
    if (!image)
        return nullptr;
    auto* entry = new RasterImageCacheRec(name);
    XY<int> size;
    image->getSize(size);
    entry->width = size.x;
    entry->height = size.y;
    entry->bitmap = image;
    cache().entries.add(entry);
    return entry;
}

// [SECTION] Pixels

// A blank offscreen image of `size` in host memory. On the main thread the
// root window makes it, as it makes every buffer; elsewhere, or before there
// is a window, the imaging service does, since windows belong to the main thread.
Qv::Ptr<iHostImage> make_offscreen(const XY<int>& size)
{
    Qv::Ptr<iImage> image;
    Canvas* const root = isMainThread() ? tela_rootcanvas() : nullptr;
    if (root && root->window)
        root->window->createOffscreenImage(image, size);
    Qv::Ptr<iHostImage> host = Qv::dynamicCast<iHostImage>(image);
    if (!host) {
        image = nullptr;
        OS()->imaging()->createTargetImage(image, size, iImageBase::eHostMemory);
        host = Qv::dynamicCast<iHostImage>(image);
    }
    return host;
}

// `source` drawn over all of `target` at (0, 0), replacing what was there.
void copy_into(const Qv::Ptr<iImage>& target, const Qv::Ptr<iImage>& source)
{
    Qv::Ptr<iGraphicPrimitivesRenderer> renderer;
    if (!target || !source || !target->getRenderer(renderer, 1) || !renderer)
        return;
    const ImageDescription description(source, XY<int>(0, 0), false);
    renderer->drawImages(&description, 1);
}

// The decoded pixels copied into `target`, one block when the rows line up.
void copy_surface(const Qv::Image::Core::Data& data, iHostImage& target)
{
    const Qv::Ptr<iPixelGuard> guard = target.lock();
    if (!guard || !guard->pixels())
        return;
    const XY<int> size = guard->size();
    if (size.x != data.width() || size.y != data.height())
        return;
    if (guard->stride() == data.stride()) {
        std::memcpy(guard->pixels(), data.pixels(), data.byteCount());
        return;
    }
    for (int row = 0; row < size.y; ++row)
        std::memcpy(guard->pixels() + static_cast<std::ptrdiff_t>(row) * guard->stride(),
                    data.pixels() + static_cast<std::ptrdiff_t>(row) * data.stride(),
                    static_cast<std::size_t>(data.stride()));
}

// The rectangle of a bottom-up box of a canvas `height` high, in the top-down
// pixels of its buffer, the canvas's top left corner standing at `offset`.
TopDownRect buffer_rect(const Qv::Box<int>& box, int height, const XY<int>& offset)
{
    return { offset.x + box.x1, offset.y + height - box.y2, offset.x + box.x2, offset.y + height - box.y1 };
}

// Source over destination by hand, colour bytes weighted by the source alpha
// and the larger alpha kept. `target` and `source` are already clipped to the
// same size and lie inside their buffers.
void blend_rows(const iPixelGuard& into, const TopDownRect& target, const iPixelGuard& from, const XY<int>& source)
{
    const int columns = target.right - target.left;
    for (int row = 0; row < target.bottom - target.top; ++row) {
        std::uint8_t* to = into.pixels() + static_cast<std::ptrdiff_t>(target.top + row) * into.stride()
                         + static_cast<std::ptrdiff_t>(target.left) * 4;
        const std::uint8_t* pixel = from.pixels() + static_cast<std::ptrdiff_t>(source.y + row) * from.stride()
                                  + static_cast<std::ptrdiff_t>(source.x) * 4;
        for (int column = 0; column < columns; ++column, to += 4, pixel += 4) {
            const unsigned alpha = pixel[3];
            for (int channel = 0; channel < 3; ++channel)
                to[channel] = static_cast<std::uint8_t>((pixel[channel] * alpha + to[channel] * (255u - alpha)) / 255u);
            to[3] = std::max(to[3], pixel[3]);
        }
    }
}

} // namespace

// [SECTION] Cache entries

RasterImageCacheRec::~RasterImageCacheRec()
{
    if (refCount != 0)
        murl_printf("!! Warning: Deleting RasterImageCacheRec where refCount != 0\n");
}

int RasterImageCacheRec::compare(const ArrayRec& other) const
{
    // The names' units in order, up to the first zero, as wcscmp reads them.
    const char16_t* a = name.c_str();
    const char16_t* b = static_cast<const RasterImageCacheRec&>(other).name.c_str();
    while (*a && *a == *b) {
        ++a;
        ++b;
    }
    return *a == *b ? 0 : (*a < *b ? -1 : 1);
}

void RasterImageCacheRec::toString(GrowString& out) const
{
    out.append(toUTF8(name).view());
}

// [SECTION] Lifetime

RasterImage::RasterImage() = default;

RasterImage::RasterImage(const WString& name)
{
    initImage(name, true);
}

RasterImage::RasterImage(Qv::Ptr<iImage> image)
{
    initImage(std::move(image));
}

RasterImage::RasterImage(const RasterImage& other)
    : Qv::InternalRefCount(other)
    , iVirtual(other)
    , region(other.region)
    , m_width(other.m_width)
    , m_height(other.m_height)
    , m_depth(other.m_depth)
    , loaded(other.loaded)
    , bitmap(other.bitmap)
    , regionOffset(other.regionOffset)
    , shared(other.shared)
    , cacheRec(other.cacheRec)
{
    if (cacheRec) {
        const CriticalSection::Guard guard(cache().lock);
        ++cacheRec->m_holders;
    }
}

RasterImage& RasterImage::operator=(const RasterImage& other)
{
    const Qv::Ptr<iHostImage> theirs = other.getBitmap();
    if (getBitmap() == theirs)
        return *this;
    deInit();
    initImage(Qv::Ptr<iImage>(theirs));
    return *this;
}

RasterImage::~RasterImage()
{
    deInit();
}

// [SECTION] Loading

bool RasterImage::initImage(const WString& name, bool shareEntry)
{
    deInit();
    if (!name.empty()) {
        const CriticalSection::Guard guard(cache().lock);
        if (RasterImageCacheRec* entry = lookup(name)) {
            initFromCacheEntry(*entry, shareEntry);
            return loaded;
        }
    }
    if (GlobalConfig().getBool("Show RastImag Cache Misses", false))
        murl_printf("!! RastImag: Failed to cache '%s'\n", toUTF8(name).c_str());
    loadPrivately(name);
    return loaded;
}

// The miss road: the file decoded again as plain pixels, or the placeholder.
void RasterImage::loadPrivately(const WString& name)
{
    QvImage::DecodeFormat format;
    format.pixelOrder = String("BGRA");
    const Qv::Image::Surface surface = QvImage::Loader::loadSurface(name, format);
    if (surface.hasPixels()) {
        const Qv::Image::Core::Data& data = surface.getData();
        m_width = data.width();
        m_height = data.height();
        loaded = true;
        bitmap = make_offscreen(data.size());
        if (bitmap)
            copy_surface(data, *bitmap);
        makeRegion(bitmap);
        return;
    }
    LogBoth("Unable to load image %s\n", toUTF8(name).c_str());
    // A usable object of a fixed size rather than a failure.
    m_width = PLACEHOLDER_SIDE;
    m_height = PLACEHOLDER_SIDE;
    loaded = true;
    bitmap = make_offscreen({ PLACEHOLDER_SIDE, PLACEHOLDER_SIDE });
    makeRegion(bitmap);
}

// Called with the cache's lock held.
void RasterImage::initFromCacheEntry(RasterImageCacheRec& entry, bool shareEntry)
{
    if (!entry.regionBuilt) {
        // Walks every pixel: done once per entry, for the first image that asks.
        makeRegion(entry.bitmap);
        entry.region = region;
        entry.regionOffset = regionOffset;
        entry.regionBuilt = true;
    }
    m_width = entry.width;
    m_height = entry.height;
    regionOffset = entry.regionOffset;
    if (shareEntry) {
        region = entry.region;
        cacheRec = &entry;
        ++entry.refCount;
        ++entry.m_holders;
        shared = true;
        loaded = true;
        return;
    }
    region = region_copy(entry.region);
    shared = false;
    Qv::Ptr<iImage> copy;
    if (entry.bitmap && entry.bitmap->createOffscreenImage(copy, XY<int>(m_width, m_height)))
        copy_into(copy, Qv::Ptr<iImage>(entry.bitmap));
    bitmap = Qv::dynamicCast<iHostImage>(copy);
    loaded = true;
}

bool RasterImage::initImage(Qv::Ptr<iImage> image)
{
    if (!image)
        return false;
    deInit();
    XY<int> size;
    image->getSize(size);
    bitmap = make_offscreen(size);
    copy_into(Qv::Ptr<iImage>(bitmap), image);
    makeRegion(bitmap);
    if (bitmap)
        bitmap->getSize(size);
    m_width = size.x;
    m_height = size.y;
    loaded = true;
    shared = false;
    cacheRec = nullptr;
    return true;
}

void RasterImage::deInit()
{
    if (shared && cacheRec) {
        const CriticalSection::Guard guard(cache().lock);
        --cacheRec->refCount;
    } else {
        region = nullptr;
        bitmap = nullptr;
    }
    if (cacheRec) {
        // A copy's cacheRec counts as a holder even where its refCount does not.
        const CriticalSection::Guard guard(cache().lock);
        --cacheRec->m_holders;
    }
    loaded = false;
    shared = false;
    cacheRec = nullptr;
}

void RasterImage::makeRegion(const Qv::Ptr<iHostImage>& image)
{
    region = tela_buildRegionFromImage(image);
    if (!region)
        return;
    Qv::Box<int> box;
    region->getBox(box);
    regionOffset = XY<int>(box.x1, box.y1);
    if (box.x1 != 0 || box.y1 != 0)
        region->translateInPlace(-box.x1, -box.y1);
}

// [SECTION] Queries

int RasterImage::width() const
{
    if (!region)
        return m_width;
    Qv::Box<int> box;
    region->getBox(box);
    return box.width();
}

int RasterImage::height() const
{
    if (!region)
        return m_height;
    Qv::Box<int> box;
    region->getBox(box);
    return box.height();
}

Qv::Ptr<iHostImage> RasterImage::getBitmap() const
{
    if (shared)
        return cacheRec ? cacheRec->bitmap : nullptr;
    return bitmap;
}

// [SECTION] Drawing and shapes

void RasterImage::draw(Canvas* canvas, int x, int y)
{
    Canvas* const draw_canvas = canvas ? canvas->getDrawCanvas() : nullptr;
    const Qv::Ptr<iHostImage> picture = getBitmap();
    if (!canvas || !canvas->shape() || !draw_canvas || !draw_canvas->shape() || !picture)
        return;
    const int canvas_width = canvas->getWidth();
    const int canvas_height = canvas->getHeight();

    if (canvas->lightweight) {
        // The field sizes here, not the region's: the whole picture is blended.
        if (x < 0)
            x = (canvas_width - m_width) / 2;
        if (y < 0)
            y = (canvas_height - m_height) / 2;
        const Qv::Box<int> whole { x, y, x + m_width, y + m_height };
        const Qv::Box<int> clipped = clipRectToLightweightCanvas(whole, canvas);
        if (clipped.width() <= 0 || clipped.height() <= 0)
            return;
        const XY<int> offset = telaLightweightCanvasOffset(canvas, 1);
        const TopDownRect whole_rect = buffer_rect(whole, canvas_height, offset);
        TopDownRect target = buffer_rect(clipped, canvas_height, offset);
        const Qv::Ptr<iPixelGuard> into = draw_canvas->lockPixels();
        const Qv::Ptr<iPixelGuard> from = picture->lock();
        if (!into || !from || !into->pixels() || !from->pixels())
            return;
        XY<int> source(target.left - whole_rect.left, target.top - whole_rect.top);
        // Kept inside both buffers, whatever the canvas geometry says.
        const XY<int> into_size = into->size();
        const XY<int> from_size = from->size();
        const int skip_left = std::max({ 0, -target.left, -source.x });
        const int skip_top = std::max({ 0, -target.top, -source.y });
        target.left += skip_left;
        source.x += skip_left;
        target.top += skip_top;
        source.y += skip_top;
        target.right = std::min({ target.right, into_size.x, target.left + from_size.x - source.x });
        target.bottom = std::min({ target.bottom, into_size.y, target.top + from_size.y - source.y });
        if (target.right <= target.left || target.bottom <= target.top)
            return;
        blend_rows(*into, target, *from, source);
        return;
    }

    // The member sizes here: they follow the region's box.
    if (x < 0)
        x = (canvas_width - width()) / 2;
    if (y < 0)
        y = (canvas_height - height()) / 2;
    const Qv::Box<int> box { x, y, x + width(), y + height() };
    const TopDownRect rect = buffer_rect(box, canvas_height, XY<int>(0, 0));
    {
        const CriticalSection::Guard guard(canvas->m_lock);
        const Qv::Ptr<iImage> buffer = canvas->offscreenBuffer;
        Qv::Ptr<iGraphicPrimitivesRenderer> renderer;
        if (!buffer || !buffer->getRenderer(renderer, 1) || !renderer)
            return;
        const TopDownRect source { regionOffset.x, regionOffset.y, regionOffset.x + width(),
                                   regionOffset.y + height() };
        const ImageDescription description(Qv::Ptr<iImage>(picture), XY<int>(rect.left, rect.top), source, false);
        renderer->drawImages(&description, 1);
    }
    const Qv::Box<int> extents = canvas->getExtents();
    canvupd_mark_rect(canvas, extents.x1 + x, extents.y1 + y, extents.x1 + x + width(), extents.y1 + box.y2);
}

void RasterImage::setRegion(const Qv::Ptr<iRegion>& r)
{
    if (!r) {
        region = tela_buildRegionFromImage(getBitmap());
        return;
    }
    const Qv::Box<int> box = Tela::getExtentsQV(tela_rootcanvas(), r);
    region = region_copy(r);
    if (region)
        region->translateInPlace(-box.x1, -box.y1);
}

void RasterImage::makeShapeRegion(Canvas* canvas, int, int)
{
    if (!canvas || !canvas->shape() || canvas->lightweight || !region)
        return;
    Qv::Box<int> box;
    canvas->shape()->getBox(box);
    const Qv::Ptr<iRegion> placed = region_copy(region);
    if (!placed)
        return;
    placed->translateInPlace(box.x1, box.y1);
    canvas->shape(placed);
}

// [SECTION] The cache's own calls

int RasterImage::preloadCache()
{
    const Qv::Vector<String> names = UserConfig().getMultipleValues("Configuration\\FrequentlyUsedBitmaps");
    for (const String& name : names) {
        murl_printf("Preloading bitmap image '%s'...\n", name.c_str());
        const CriticalSection::Guard guard(cache().lock);
        lookup(fromUTF8(name));
    }
    return static_cast<int>(names.size());
}

void RasterImage::dumpCacheStats()
{
    const CriticalSection::Guard guard(cache().lock);
    murl_printf("Name                 Hits     Refs\n-------------------- -------- --------\n");
    for (std::size_t index = 0; index < cache().entries.size(); ++index) {
        const RasterImageCacheRec* entry = entry_at(index);
        if (!entry)
            continue;
        GrowString name;
        entry->toString(name);
        murl_printf("%-20.20s %8d %8d\n", name.c_str(), entry->hits, entry->refCount);
    }
}

int RasterImage::releaseUnusedCacheEntries()
{
    const CriticalSection::Guard guard(cache().lock);
    int released = 0;
    for (std::size_t index = cache().entries.size(); index-- > 0;) {
        const RasterImageCacheRec* entry = entry_at(index);
        if (entry && entry->m_holders <= 0) {
            cache().entries.remove(index);
            ++released;
        }
    }
    return released;
}

std::size_t RasterImage::cacheEntryCount()
{
    const CriticalSection::Guard guard(cache().lock);
    return cache().entries.size();
}
