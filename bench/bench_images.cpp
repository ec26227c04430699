// Loading a 1920 x 1080 PNG through the raster image cache, a miss every time,
// against libpng alone decoding the same file into BGRA in memory.
//
// The picture is made at start: gradients with some noise, translucent at one
// side, written by libpng at its default compression, so that inflating it
// costs what a real screenshot-sized picture costs.

#include "tela/core/LightweightString.h"
#include "tela/core/Log.h"
#include "tela/platform/ImageLoader.h"
#include "tela/render/RasterImage.h"

#include <benchmark/benchmark.h>
#include <unistd.h>
#include <png.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace {

constexpr int WIDTH = 1920;
constexpr int HEIGHT = 1080;

const std::string& picture_path()
{
    static const std::string path = [] {
        const std::string file =
            (std::filesystem::temp_directory_path() / ("tela-bench-images-" + std::to_string(::getpid()) + ".png"))
                .string();
        std::vector<std::uint8_t> rows(static_cast<std::size_t>(WIDTH) * HEIGHT * 4);
        std::uint32_t noise = 12345;
        for (int y = 0; y < HEIGHT; ++y) {
            for (int x = 0; x < WIDTH; ++x) {
                noise = noise * 1664525u + 1013904223u;
                const int grain = static_cast<int>(noise >> 29) - 4;   // -4 .. 3
                std::uint8_t* pixel = &rows[(static_cast<std::size_t>(y) * WIDTH + x) * 4];
                pixel[0] = static_cast<std::uint8_t>(std::clamp(x * 255 / WIDTH + grain, 0, 255));
                pixel[1] = static_cast<std::uint8_t>(std::clamp(y * 255 / HEIGHT + grain, 0, 255));
                pixel[2] = static_cast<std::uint8_t>(std::clamp((x + y) * 255 / (WIDTH + HEIGHT) + grain, 0, 255));
                pixel[3] = static_cast<std::uint8_t>(x < WIDTH - 256 ? 255 : 255 - (x - (WIDTH - 256)) / 2);
            }
        }
        png_image image {};
        image.version = PNG_IMAGE_VERSION;
        image.width = WIDTH;
        image.height = HEIGHT;
        image.format = PNG_FORMAT_RGBA;
        if (!png_image_write_to_file(&image, file.c_str(), 0, rows.data(), WIDTH * 4, nullptr)) {
            std::fprintf(stderr, "bench_images: cannot write %s: %s\n", file.c_str(), image.message);
            std::exit(1);
        }
        std::atexit([] { std::filesystem::remove(picture_path()); });
        return file;
    }();
    return path;
}

// Every benchmark here decodes once before it is timed: whichever runs first
// would otherwise pay alone for the process's first read of the file and for
// the allocator's first growth to picture size.
void BM_RasterImageCacheMiss(benchmark::State& state)
{
    const WString name = fromUTF8(picture_path().c_str());
    auto miss = [&name] {
        {
            const RasterImage image(name);
            benchmark::DoNotOptimize(image.getBitmap().get());
        }
        RasterImage::releaseUnusedCacheEntries();   // the next decodes afresh
    };
    miss();
    for (auto _ : state)
        miss();
    state.SetItemsProcessed(state.iterations() * WIDTH * HEIGHT);
}
BENCHMARK(BM_RasterImageCacheMiss)->Unit(benchmark::kMillisecond);

// The decoding part alone, without the shape region the first image of an
// entry builds.
void BM_LoaderDecode(benchmark::State& state)
{
    const WString name = fromUTF8(picture_path().c_str());
    benchmark::DoNotOptimize(QvImage::Loader::loadImage(name).get());
    for (auto _ : state) {
        const Qv::Ptr<iHostImage> image = QvImage::Loader::loadImage(name);
        benchmark::DoNotOptimize(image.get());
    }
    state.SetItemsProcessed(state.iterations() * WIDTH * HEIGHT);
}
BENCHMARK(BM_LoaderDecode)->Unit(benchmark::kMillisecond);

// libpng's own simplified reader into straight BGRA: no premultiplying and
// no shape, so less work than a loader that composites must do. With
// `fresh`, every picture gets a buffer of its own, as every loaded picture
// does; without, one buffer is decoded into again and again, already paged in.
void libpng_alone(benchmark::State& state, bool fresh)
{
    const std::string& path = picture_path();
    std::vector<std::uint8_t> reused(static_cast<std::size_t>(WIDTH) * HEIGHT * 4);
    // False, with the state's error set, when libpng fails.
    auto decode = [&]() {
        std::vector<std::uint8_t> own;
        if (fresh)
            own.resize(static_cast<std::size_t>(WIDTH) * HEIGHT * 4);
        std::vector<std::uint8_t>& pixels = fresh ? own : reused;
        png_image image {};
        image.version = PNG_IMAGE_VERSION;
        if (!png_image_begin_read_from_file(&image, path.c_str())) {
            state.SkipWithError(image.message);
            return false;
        }
        image.format = PNG_FORMAT_BGRA;
        if (!png_image_finish_read(&image, nullptr, pixels.data(), WIDTH * 4, nullptr)) {
            state.SkipWithError(image.message);
            return false;
        }
        benchmark::DoNotOptimize(pixels.data());
        return true;
    };
    if (!decode())
        return;
    for (auto _ : state)
        if (!decode())
            break;
    state.SetItemsProcessed(state.iterations() * WIDTH * HEIGHT);
}
void BM_LibpngAlone(benchmark::State& state)
{
    libpng_alone(state, false);
}
BENCHMARK(BM_LibpngAlone)->Unit(benchmark::kMillisecond);

void BM_LibpngAloneFreshBuffer(benchmark::State& state)
{
    libpng_alone(state, true);
}
BENCHMARK(BM_LibpngAloneFreshBuffer)->Unit(benchmark::kMillisecond);

} // namespace
