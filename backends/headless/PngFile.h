// PngFile: host images to and from PNG files, through libpng's simplified interface
// (which reports errors by return value, so no longjmp crosses our frames).
//
// - Files hold straight (not premultiplied) 8-bit RGBA; images hold premultiplied
//   BGRA. Both directions convert, rounding to nearest, so writing a premultiplied
//   image and reading it back gives the same bytes.
// - Writing is atomic: a temporary beside the target, then a rename. A failed write
//   leaves any earlier file as it was.
// - Bad files are run-time trouble, not misuse: one message and a null result.
#pragma once

#include "headless/HostImage.h"

namespace Headless {

// False, with a message, when the image has no pixels or the file cannot be written.
[[nodiscard]] bool savePng(iImage& image, const char* path);

// A new host-memory image, or null with a message when the file is missing or corrupt.
Qv::Ptr<HostImage> loadPng(const char* path);

} // namespace Headless
