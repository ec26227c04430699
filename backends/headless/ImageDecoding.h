// ImageDecoding: PNG (libpng) and JPEG (libjpeg-turbo) files and memory decoded
// into host images of premultiplied BGRA.
//
// - Any PNG the format allows: palette, grey, grey with alpha, RGB, RGBA, 1 to
//   16 bits a channel, interlaced or not, transparency chunks. JPEG in grey,
//   YCbCr or RGB; CMYK pictures are refused.
// - Bad input is run-time trouble: one message naming the picture and a null
//   result. A picture wider or taller than MAX_IMAGE_SIDE, or of more than
//   MAX_IMAGE_PIXELS, is refused from its header, before any pixel memory is
//   taken, so a few bytes cannot ask for gigabytes. A JPEG whose data ends
//   early is shown as far as it goes (the decoder fills the rest), with a
//   message.
// - Both libraries report errors by longjmp. Each library call runs inside a
//   plain function that holds nothing with a destructor, so a jump never
//   crosses a C++ frame: objects with destructors live only in the callers.
// - Any thread: nothing here is shared.
#pragma once

#include "headless/HostImage.h"

#include <cstddef>
#include <cstdint>

namespace Headless {

constexpr int MAX_IMAGE_SIDE = 16384;
constexpr std::int64_t MAX_IMAGE_PIXELS = std::int64_t(1) << 26;   // 64 million: 256 MB of pixels

// `name` is what messages call the picture (a file name, or a caller's label).
Qv::Ptr<HostImage> decodePngImage(const std::uint8_t* bytes, std::size_t size, const char* name);
Qv::Ptr<HostImage> decodeJpegImage(const std::uint8_t* bytes, std::size_t size, const char* name);
// Either, told apart by their first bytes; anything else is reported.
Qv::Ptr<HostImage> decodeImage(const std::uint8_t* bytes, std::size_t size, const char* name);
// The file read and decoded; a missing or unreadable file is reported too.
Qv::Ptr<HostImage> loadImageFile(const char* path);

} // namespace Headless
