// Images: iImage is any pixel store; iHostImage lives in host memory (32-bit BGRA,
// premultiplied), iGPUImage on a composited surface. iPixelGuard keeps an image locked
// for direct pixel access until it is released.
#pragma once

#include "tela/core/Ptr.h"
#include "tela/platform/Geometry.h"
#include "tela/platform/iGraphicPrimitivesRenderer.h"

#include <cstdint>

class iImageBase {
public:
    enum eLocation : std::int32_t { eHostMemory = 0, eGPU = 1 };
protected:
    ~iImageBase() = default;
};

class iPixelGuard : public iObject {
public:
    virtual std::uint8_t* pixels() const = 0;
    virtual void reserved1() {}
    virtual int stride() const = 0;                 // bytes from one row to the next
    virtual XY<int> size() const = 0;               // of the locked buffer, in pixels
};

class iImage : public iObject {
public:
    virtual iImageBase::eLocation location() const = 0;
    virtual void getSize(XY<int>& size) const = 0;
    virtual bool getRenderer(Qv::Ptr<iGraphicPrimitivesRenderer>& out, int flags) = 0;
    virtual Qv::Ptr<iPixelGuard> lock() = 0;        // null when the pixels cannot be reached
    // A new, cleared image of `size` of the same kind and location as this one;
    // false when it cannot be made.
    virtual bool createOffscreenImage(Qv::Ptr<iImage>& out, const XY<int>& size) = 0;
};

class iHostImage : public virtual iImage {
public:
    virtual std::uint8_t* data() const = 0;
    virtual int bitsPerPixel() const = 0;
};

class iGPUImage : public virtual iImage {
};
