#include "headless/PngFile.h"

#include "headless/MemoryBlock.h"
#include "tela/core/AtomicFile.h"
#include "tela/core/Log.h"

#include <png.h>

#include <cstring>
#include <string>
#include <string_view>

namespace {

// Frees what libpng holds for an image on every road out, including early ones.
class PngImageScope {
public:
    explicit PngImageScope(png_image& image) : m_image(image) {}
    ~PngImageScope() { png_image_free(&m_image); }
    PngImageScope(const PngImageScope&) = delete;
    PngImageScope& operator=(const PngImageScope&) = delete;

private:
    png_image& m_image;
};

std::uint8_t unpremultiply(std::uint8_t channel, std::uint8_t alpha)
{
    const unsigned straight = (channel * 255u + alpha / 2u) / alpha;
    return static_cast<std::uint8_t>(straight > 255u ? 255u : straight);
}

std::uint8_t premultiply(std::uint8_t channel, std::uint8_t alpha)
{
    return static_cast<std::uint8_t>((channel * alpha + 127u) / 255u);
}

} // namespace

bool Headless::savePng(iImage& image, const char* path)
{
    const Qv::Ptr<iPixelGuard> lock = image.lock();
    if (!lock || !lock->pixels()) {
        murl_printf("PngFile: no pixels to write to %s\n", path);
        return false;
    }
    const XY<int> size = lock->size();
    if (size.x <= 0 || size.y <= 0) {
        murl_printf("PngFile: cannot write an image of %d x %d pixels to %s\n", size.x, size.y, path);
        return false;
    }

    const std::size_t row_bytes = static_cast<std::size_t>(size.x) * 4;
    Headless::MemoryBlock straight(row_bytes * static_cast<std::size_t>(size.y));
    if (!straight.get())
        return false;
    for (int row = 0; row < size.y; ++row) {
        const std::uint8_t* from = lock->pixels() + static_cast<std::size_t>(row) * lock->stride();
        std::uint8_t* to = straight.get() + static_cast<std::size_t>(row) * row_bytes;
        for (int column = 0; column < size.x; ++column, from += 4, to += 4) {
            const std::uint8_t alpha = from[3];
            if (alpha == 0) {
                std::memset(to, 0, 4);
                continue;
            }
            to[0] = unpremultiply(from[0], alpha);
            to[1] = unpremultiply(from[1], alpha);
            to[2] = unpremultiply(from[2], alpha);
            to[3] = alpha;
        }
    }

    png_image png {};
    png.version = PNG_IMAGE_VERSION;
    png.width = static_cast<png_uint_32>(size.x);
    png.height = static_cast<png_uint_32>(size.y);
    png.format = PNG_FORMAT_BGRA;
    const PngImageScope png_scope(png);
    png_alloc_size_t encoded_size = 0;
    // The first call measures, the second encodes into a block of that size.
    if (!png_image_write_to_memory(&png, nullptr, &encoded_size, 0, straight.get(), static_cast<png_int_32>(row_bytes),
                                   nullptr)) {
        murl_printf("PngFile: cannot encode %s: %s\n", path, png.message);
        return false;
    }
    Headless::MemoryBlock encoded(encoded_size);
    if (!encoded.get()
        || !png_image_write_to_memory(&png, encoded.get(), &encoded_size, 0, straight.get(),
                                      static_cast<png_int_32>(row_bytes), nullptr)) {
        murl_printf("PngFile: cannot encode %s: %s\n", path, png.message);
        return false;
    }

    std::string error;
    const std::string_view bytes(reinterpret_cast<const char*>(encoded.get()), encoded_size);
    if (!Qv::writeFileAtomically(path, bytes, &error)) {
        murl_printf("PngFile: cannot write %s: %s\n", path, error.c_str());
        return false;
    }
    return true;
}

Qv::Ptr<Headless::HostImage> Headless::loadPng(const char* path)
{
    png_image png {};
    png.version = PNG_IMAGE_VERSION;
    const PngImageScope png_scope(png);
    if (!png_image_begin_read_from_file(&png, path)) {
        murl_printf("PngFile: cannot read %s: %s\n", path, png.message);
        return nullptr;
    }
    png.format = PNG_FORMAT_BGRA;
    const XY<int> size { static_cast<int>(png.width), static_cast<int>(png.height) };
    Qv::Ptr<HostImage> image = HostImage::create(size);
    if (!image) {
        murl_printf("PngFile: cannot hold %s, of %u x %u pixels\n", path, png.width, png.height);
        return nullptr;
    }
    if (!png_image_finish_read(&png, nullptr, image->data(), image->stride(), nullptr)) {
        murl_printf("PngFile: cannot read %s: %s\n", path, png.message);
        return nullptr;
    }
    std::uint8_t* pixel = image->data();
    const std::size_t count = static_cast<std::size_t>(size.x) * static_cast<std::size_t>(size.y);
    for (std::size_t index = 0; index < count; ++index, pixel += 4) {
        for (int channel = 0; channel < 3; ++channel)
            pixel[channel] = premultiply(pixel[channel], pixel[3]);
    }
    return image;
}
