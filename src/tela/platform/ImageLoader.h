// Image files, decoded by the platform's imaging service, in the two forms the
// library takes them in:
// - QvImage::Loader::loadImage: a host image (premultiplied BGRA), ready to
//   draw or keep; what the raster image cache holds.
// - QvImage::Loader::loadSurface: the decoded pixels alone, in a block of
//   their own, in the pixel order a DecodeFormat asks for; what a caller
//   copies into a buffer of its own.
// Both take a file name and give an empty result, after the imaging service's
// message, when the file is missing or cannot be decoded. Any thread.
// QvImage::Saver writes a picture to a PNG file, and createResizedIcon scales
// a small picture, a cursor's or an icon's, to another size.
#pragma once

#include "tela/core/LightweightString.h"
#include "tela/core/Ptr.h"
#include "tela/platform/Geometry.h"
#include "tela/platform/iImage.h"

#include <cstddef>
#include <cstdint>

namespace Qv::Image {

namespace Core {

// A block of pixels from the memory seam: `height` rows of `stride` bytes, 4
// bytes a pixel. Owns its block; moves, never copies.
class Data {
public:
    Data() = default;
    // Room for a picture of `size`; empty when the size is negative or the
    // block cannot be had.
    explicit Data(const XY<int>& size);
    ~Data();
    Data(Data&& other) noexcept;
    Data& operator=(Data&& other) noexcept;
    Data(const Data&) = delete;
    Data& operator=(const Data&) = delete;

    bool empty() const { return m_pixels == nullptr; }
    std::uint8_t* pixels() const { return m_pixels; }
    int width() const { return m_size.x; }
    int height() const { return m_size.y; }
    XY<int> size() const { return m_size; }
    int stride() const { return m_size.x * 4; }
    std::size_t byteCount() const { return static_cast<std::size_t>(stride()) * static_cast<std::size_t>(m_size.y); }

private:
    std::uint8_t* m_pixels = nullptr;
    XY<int> m_size;
};

} // namespace Core

// A decoded picture: its pixels, or nothing.
class Surface {
public:
    Surface() = default;
    explicit Surface(Core::Data&& data) : m_data(std::move(data)) {}

    bool hasPixels() const { return !m_data.empty(); }
    const Core::Data& getData() const { return m_data; }

private:
    Core::Data m_data;
};

} // namespace Qv::Image

namespace QvImage {

// How decoded pixels are laid out: 8 bits a channel, premultiplied alpha, in
// the byte order `pixelOrder` names ("BGRA" or "RGBA").
struct DecodeFormat {
    String pixelOrder = String("BGRA");
};

class Loader {
public:
    // The file decoded into a host image; null when it cannot be.
    static Qv::Ptr<iHostImage> loadImage(const WString& name);
    // The file decoded into a block of pixels in `format`; a surface without
    // pixels when it cannot be, or when the format's pixel order is not one
    // this loader writes (reported).
    static Qv::Image::Surface loadSurface(const WString& name, const DecodeFormat& format);
    // Encoded bytes (PNG or JPEG) in memory; `name` is what messages call them.
    static Qv::Ptr<iHostImage> decodeImage(const std::uint8_t* bytes, std::size_t size, const WString& name);
};

// How a picture is written. The one form written today is PNG at the codec's
// usual compression, which a default record asks for.
struct configb {
};

class Saver {
public:
    // Writes `image` to the file `name` through the imaging service, which
    // reports a failure; false then, or when there is no image.
    static bool saveImage(const Qv::Ptr<iImage>& image, const WString& name, const configb& config = configb());
};

// `image` scaled to `size`; null when either side of `size` is not positive
// or the image cannot be scaled (it is not 32-bit host pixels).
Qv::Ptr<iHostImage> createResizedIcon(const Qv::Ptr<iHostImage>& image, const XY<int>& size);

} // namespace QvImage
