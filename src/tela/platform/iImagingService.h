// iImagingService: moves images between host memory and the composited surface.
#pragma once

#include "tela/core/LightweightString.h"
#include "tela/core/Ptr.h"
#include "tela/platform/iImage.h"
#include "tela/platform/iShaderEffect.h"

#include <cstddef>
#include <cstdint>

class iImagingService {
public:
    virtual bool toHostImage(Qv::Ptr<iHostImage>& out, const Qv::Ptr<iGPUImage>& image) = 0;
    virtual bool toGPUImage(Qv::Ptr<iGPUImage>& out, const Qv::Ptr<iHostImage>& image) = 0;
    virtual bool createTargetImage(Qv::Ptr<iImage>& out, const XY<int>& size, int location) = 0;
    virtual void releaseGPUResources() = 0;
    // An image file (PNG or JPEG) read into host memory; false, with a message,
    // when it cannot be read or decoded.
    virtual bool loadImage(Qv::Ptr<iHostImage>& out, const WString& path) = 0;
    // An encoded image (PNG or JPEG) in memory, decoded into host memory; false,
    // with a message naming `name`, when it cannot be decoded.
    virtual bool decodeImage(Qv::Ptr<iHostImage>& out, const std::uint8_t* bytes, std::size_t size,
                             const WString& name) = 0;
    // A smoothly scaled copy at another size.
    virtual bool resizeImage(Qv::Ptr<iHostImage>& out, const Qv::Ptr<iHostImage>& image, const XY<int>& size) = 0;
    // The image written to a PNG file, atomically; false, with a message, when
    // the image has no pixels or the file cannot be written.
    virtual bool saveImage(const Qv::Ptr<iImage>& image, const WString& path) = 0;
    // The pixel program of that name ("InFront", "ShadowLR", ...); null when unknown.
    virtual Qv::Ptr<iShaderEffect> findShader(const String& name) = 0;
protected:
    ~iImagingService() = default;
};
