// png_compare ACTUAL EXPECTED [TOLERANCE]: exits 0 when the two pictures have
// the same size and no channel differs by more than TOLERANCE (default 2).
#include "headless/PngFile.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

int main(int argc, char** argv)
{
    if (argc < 3) {
        std::fprintf(stderr, "usage: png_compare ACTUAL EXPECTED [TOLERANCE]\n");
        return 2;
    }
    const int tolerance = argc > 3 ? std::atoi(argv[3]) : 2;
    const auto actual = Headless::loadPng(argv[1]);
    const auto expected = Headless::loadPng(argv[2]);
    if (!actual || !expected)
        return 2;
    XY<int> size;
    XY<int> expected_size;
    actual->getSize(size);
    expected->getSize(expected_size);
    if (size != expected_size) {
        std::fprintf(stderr, "%s is %dx%d, %s is %dx%d\n", argv[1], size.x, size.y, argv[2], expected_size.x,
                     expected_size.y);
        return 1;
    }
    long differing = 0;
    for (int y = 0; y < size.y; ++y)
        for (int x = 0; x < size.x; ++x) {
            std::uint32_t a = 0;
            std::uint32_t b = 0;
            std::memcpy(&a, actual->data() + y * actual->stride() + x * 4, 4);
            std::memcpy(&b, expected->data() + y * expected->stride() + x * 4, 4);
            for (int shift = 0; shift < 32; shift += 8)
                if (std::abs(static_cast<int>((a >> shift) & 255) - static_cast<int>((b >> shift) & 255)) > tolerance) {
                    ++differing;
                    break;
                }
        }
    if (differing) {
        std::fprintf(stderr, "%ld pixels of %s differ from %s by more than %d\n", differing, argv[1], argv[2], tolerance);
        return 1;
    }
    std::printf("%s matches %s\n", argv[1], argv[2]);
    return 0;
}
