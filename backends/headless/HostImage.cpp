#include "headless/HostImage.h"

#include "headless/SoftwareRenderer.h"
#include "tela/core/Log.h"

#include <cstring>
#include <limits>

namespace Headless {

class HostPixelGuard final : public iPixelGuard {
public:
    explicit HostPixelGuard(HostImage& image)
        : m_image(Qv::Ptr<HostImage>::fromParts(image.refCountKey(), &image))
    {
        image.m_lock_count.fetch_add(1);
        image.m_locks_taken.fetch_add(1);
    }
    ~HostPixelGuard() override { m_image->m_lock_count.fetch_sub(1); }

    std::uint8_t* pixels() const override { return m_image->data(); }
    int stride() const override { return m_image->stride(); }
    XY<int> size() const override { return m_image->m_size; }

private:
    Qv::Ptr<HostImage> m_image;
};

} // namespace Headless

namespace {
// Far beyond any screen; keeps width * height * 4 well inside int and size_t.
constexpr int MAX_IMAGE_SIDE = 32768;
}

Qv::Ptr<Headless::HostImage> Headless::HostImage::create(const XY<int>& size, iImageBase::eLocation location)
{
    Qv::Ptr<HostImage> image = createUncleared(size, location);
    if (image)
        std::memset(image->m_pixels, 0, static_cast<std::size_t>(image->stride()) * static_cast<std::size_t>(size.y));
    return image;
}

Qv::Ptr<Headless::HostImage> Headless::HostImage::createUncleared(const XY<int>& size, iImageBase::eLocation location)
{
    if (size.x < 0 || size.y < 0 || size.x > MAX_IMAGE_SIDE || size.y > MAX_IMAGE_SIDE) {
        murl_printf("HostImage: refusing an image of %d x %d pixels\n", size.x, size.y);
        return nullptr;
    }
    const std::size_t bytes = static_cast<std::size_t>(size.x) * static_cast<std::size_t>(size.y) * 4;
    auto* pixels = static_cast<std::uint8_t*>(Qv::allocate(bytes ? bytes : 4));
    if (!pixels)
        return nullptr;
    return Qv::Ptr<HostImage>(new HostImage(size, location, pixels));
}

Headless::HostImage::HostImage(const XY<int>& size, iImageBase::eLocation location, std::uint8_t* pixels)
    : m_size(size)
    , m_location(location)
    , m_pixels(pixels)
{
}

Headless::HostImage::~HostImage()
{
    Qv::release(m_pixels);
}

bool Headless::HostImage::getRenderer(Qv::Ptr<iGraphicPrimitivesRenderer>& out, int)
{
    out = SoftwareRenderer::create(Qv::Ptr<HostImage>::fromParts(refCountKey(), this));
    return static_cast<bool>(out);
}

Qv::Ptr<iPixelGuard> Headless::HostImage::lock()
{
    return Qv::make<HostPixelGuard>(*this);
}

bool Headless::HostImage::createOffscreenImage(Qv::Ptr<iImage>& out, const XY<int>& size)
{
    out = create(size, m_location);
    return static_cast<bool>(out);
}

std::uint32_t Headless::HostImage::pixelAt(int x, int y) const
{
    if (x < 0 || y < 0 || x >= m_size.x || y >= m_size.y)
        return 0;
    std::uint32_t pixel = 0;
    std::memcpy(&pixel, m_pixels + static_cast<std::size_t>(y) * stride() + static_cast<std::size_t>(x) * 4, 4);
    return pixel;   // BGRA bytes read little-endian are 0xAARRGGBB
}

void Headless::HostImage::fill(std::uint32_t argb)
{
    const std::size_t count = static_cast<std::size_t>(m_size.x) * static_cast<std::size_t>(m_size.y);
    for (std::size_t index = 0; index < count; ++index)
        std::memcpy(m_pixels + index * 4, &argb, 4);
}

Qv::Ptr<Headless::HostImage> Headless::HostImage::copy(iImageBase::eLocation location) const
{
    Qv::Ptr<HostImage> result = create(m_size, location);
    if (result)
        std::memcpy(result->m_pixels, m_pixels, static_cast<std::size_t>(stride()) * static_cast<std::size_t>(m_size.y));
    return result;
}
