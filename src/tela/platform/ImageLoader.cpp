#include "tela/platform/ImageLoader.h"

#include "tela/core/Log.h"
#include "tela/platform/iImagingService.h"
#include "tela/platform/OS.h"

#include <cstring>
#include <utility>

Qv::Image::Core::Data::Data(const XY<int>& size)
{
    if (size.x < 0 || size.y < 0)
        return;
    const std::size_t bytes = static_cast<std::size_t>(size.x) * static_cast<std::size_t>(size.y) * 4;
    m_pixels = static_cast<std::uint8_t*>(Qv::allocate(bytes ? bytes : 4));
    if (m_pixels)
        m_size = size;
}

Qv::Image::Core::Data::~Data()
{
    Qv::release(m_pixels);
}

Qv::Image::Core::Data::Data(Data&& other) noexcept
    : m_pixels(std::exchange(other.m_pixels, nullptr))
    , m_size(std::exchange(other.m_size, XY<int>()))
{
}

Qv::Image::Core::Data& Qv::Image::Core::Data::operator=(Data&& other) noexcept
{
    if (this != &other) {
        Qv::release(m_pixels);
        m_pixels = std::exchange(other.m_pixels, nullptr);
        m_size = std::exchange(other.m_size, XY<int>());
    }
    return *this;
}

Qv::Ptr<iHostImage> QvImage::Loader::loadImage(const WString& name)
{
    Qv::Ptr<iHostImage> image;
    if (name.empty() || !OS()->imaging()->loadImage(image, name))
        return nullptr;
    return image;
}

Qv::Image::Surface QvImage::Loader::loadSurface(const WString& name, const DecodeFormat& format)
{
    const bool rgba = format.pixelOrder == "RGBA";
    if (!rgba && !(format.pixelOrder == "BGRA")) {
        murl_printf("QvImage::Loader::loadSurface: pixel order %s is not one it writes\n", format.pixelOrder.c_str());
        return {};
    }
    const Qv::Ptr<iHostImage> image = loadImage(name);
    const Qv::Ptr<iPixelGuard> guard = image ? image->lock() : nullptr;
    if (!guard || !guard->pixels())
        return {};
    Qv::Image::Core::Data data(guard->size());
    if (data.empty())
        return {};
    const std::size_t row_bytes = static_cast<std::size_t>(data.stride());
    for (int row = 0; row < data.height(); ++row) {
        const std::uint8_t* from = guard->pixels() + static_cast<std::ptrdiff_t>(row) * guard->stride();
        std::uint8_t* to = data.pixels() + static_cast<std::size_t>(row) * row_bytes;
        std::memcpy(to, from, row_bytes);
        if (!rgba)
            continue;
        for (std::size_t at = 0; at < row_bytes; at += 4)
            std::swap(to[at], to[at + 2]);
    }
    return Qv::Image::Surface(std::move(data));
}

Qv::Ptr<iHostImage> QvImage::Loader::decodeImage(const std::uint8_t* bytes, std::size_t size, const WString& name)
{
    Qv::Ptr<iHostImage> image;
    if (!OS()->imaging()->decodeImage(image, bytes, size, name))
        return nullptr;
    return image;
}

bool QvImage::Saver::saveImage(const Qv::Ptr<iImage>& image, const WString& name, const configb&)
{
    return image && !name.empty() && OS()->imaging()->saveImage(image, name);
}

Qv::Ptr<iHostImage> QvImage::createResizedIcon(const Qv::Ptr<iHostImage>& image, const XY<int>& size)
{
    Qv::Ptr<iHostImage> resized;
    if (!image || size.x <= 0 || size.y <= 0 || !OS()->imaging()->resizeImage(resized, image, size))
        return nullptr;
    return resized;
}
