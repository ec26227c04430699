#pragma once
// One picture decoder from memory, fuzzed: any bytes must give an image or a
// message, never a crash, a leak or an unbounded allocation.

#include "headless/ImageDecoding.h"
#include "tela/core/Log.h"

#include <cstddef>
#include <cstdint>

using PictureDecoder = Qv::Ptr<Headless::HostImage> (*)(const std::uint8_t*, std::size_t, const char*);

inline int fuzz_decoder(PictureDecoder decode, const std::uint8_t* data, std::size_t size)
{
    // Messages are expected for almost every input; printing them would only
    // slow the run down.
    static const Qv::LogSinkRecord quiet = Qv::setLogSink({ [](const char*, void*) {}, nullptr });
    (void)quiet;
    const Qv::Ptr<Headless::HostImage> image = decode(data, size, "fuzz");
    if (image) {
        // Read the far corner: the pixels must all be there.
        XY<int> image_size;
        image->getSize(image_size);
        (void)image->pixelAt(image_size.x - 1, image_size.y - 1);
    }
    return 0;
}
