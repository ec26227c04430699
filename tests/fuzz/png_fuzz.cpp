// Fuzzes the PNG decoder from memory: any bytes must give an image or a
// message, never a crash, a leak or an unbounded allocation.

#include "headless/ImageDecoding.h"
#include "tela/core/Log.h"

#include <cstddef>
#include <cstdint>

namespace {

// Messages are expected for almost every input; printing them would only slow
// the run down.
void discard(const char*, void*) {}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const Qv::LogSinkRecord quiet = Qv::setLogSink({ discard, nullptr });
    (void)quiet;
    const Qv::Ptr<Headless::HostImage> image = Headless::decodePngImage(data, size, "fuzz");
    if (image) {
        // Read the far corner: the pixels must all be there.
        XY<int> image_size;
        image->getSize(image_size);
        (void)image->pixelAt(image_size.x - 1, image_size.y - 1);
    }
    return 0;
}
