// png_compare ACTUAL EXPECTED [TOLERANCE]: exits 0 when the two pictures have
// the same size and no channel differs by more than TOLERANCE (default 2).
#include "headless/PngFile.h"
#include "support/PixelCompare.h"

#include <cstdio>
#include <cstdlib>

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
    const int differing = differing_pixels(*actual, *expected, tolerance);
    if (differing) {
        std::fprintf(stderr, "%d pixels of %s differ from %s by more than %d\n", differing, argv[1], argv[2], tolerance);
        return 1;
    }
    std::printf("%s matches %s\n", argv[1], argv[2]);
    return 0;
}
