// HostImage: 32-bit BGRA pixels (premultiplied alpha) in a block from the memory seam.
// Rows are width * 4 bytes apart. A pixel guard keeps the image locked while it lives.
// It is also this backend's composited-surface image: "the GPU" is host memory here.
#pragma once

#include "tela/platform/iImage.h"

#include <atomic>

namespace Headless {

class HostImage final : public iHostImage, public iGPUImage {
public:
    // location is what the image reports: a composited window's buffers say eGPU,
    // although in this backend every pixel lives in host memory.
    static Qv::Ptr<HostImage> create(const XY<int>& size, iImageBase::eLocation location = iImageBase::eHostMemory);
    // The same with the pixels left as the allocator gives them, for callers
    // that write every pixel before the image is seen (decoders).
    static Qv::Ptr<HostImage> createUncleared(const XY<int>& size,
                                              iImageBase::eLocation location = iImageBase::eHostMemory);

    ~HostImage() override;

    iImageBase::eLocation location() const override { return m_location; }
    void getSize(XY<int>& size) const override { size = m_size; }
    bool getRenderer(Qv::Ptr<iGraphicPrimitivesRenderer>& out, int flags) override;
    Qv::Ptr<iPixelGuard> lock() override;
    bool createOffscreenImage(Qv::Ptr<iImage>& out, const XY<int>& size) override;
    std::uint8_t* data() const override { return m_pixels; }
    int bitsPerPixel() const override { return 32; }

    int stride() const { return m_size.x * 4; }
    bool isLocked() const { return m_lock_count.load() > 0; }
    // A guard has been taken at some time: with isLocked false, whoever drew
    // into the image through a renderer has finished.
    bool hasBeenLocked() const { return m_locks_taken.load() > 0; }
    std::uint32_t pixelAt(int x, int y) const;   // 0xAARRGGBB; 0 outside
    void fill(std::uint32_t argb);
    // The same pixels in a new image that reports `location`; null when out of memory.
    Qv::Ptr<HostImage> copy(iImageBase::eLocation location) const;

private:
    HostImage(const XY<int>& size, iImageBase::eLocation location, std::uint8_t* pixels);
    friend class HostPixelGuard;

    XY<int> m_size;
    iImageBase::eLocation m_location;
    std::uint8_t* m_pixels;
    std::atomic<int> m_lock_count { 0 };
    std::atomic<unsigned> m_locks_taken { 0 };
};

} // namespace Headless
