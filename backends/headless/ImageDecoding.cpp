// ImageDecoding.cpp: the two decoders and the file reader.
//
// Every call into libpng or libjpeg happens below a function of the form
//
//     int run_step(Job* job) { if (setjmp(...)) return 0; do_step(job); return 1; }
//
// where neither run_step nor do_step holds an object with a destructor. The
// libraries' error handlers longjmp back into run_step, so the only frames a
// jump leaves are C frames and plain ones of ours. The C++ callers own the
// library state (the scopes below) and the host image, and clean up after a
// failed step as after any other failure.
//
// Messages are built in fixed buffers inside the jobs, so a failing step
// needs no memory to say why.

#include "headless/ImageDecoding.h"

#include "headless/MemoryBlock.h"
#include "tela/core/Log.h"
#include "tela/core/Memory.h"

#include <algorithm>
#include <cerrno>
#include <csetjmp>
#include <cstddef>
#include <cstdio>
#include <cstring>

// After the standard headers: jpeglib.h uses size_t and FILE without including them.
#include <jpeglib.h>
#include <png.h>

namespace {

constexpr std::size_t MESSAGE_BYTES = 200;
// Far beyond any picture file we are given; keeps a wrong path (a disk image,
// a video) from being read whole.
constexpr long MAX_FILE_BYTES = 256L << 20;

// [SECTION] Shared

// True, with a message, when a picture of this size must not be decoded.
bool refuse_size(const char* name, std::uint64_t width, std::uint64_t height)
{
    if (width == 0 || height == 0) {
        murl_printf("Image %s has no pixels (%llu x %llu)\n", name, static_cast<unsigned long long>(width),
                    static_cast<unsigned long long>(height));
        return true;
    }
    if (width > Headless::MAX_IMAGE_SIDE || height > Headless::MAX_IMAGE_SIDE
        || width * height > static_cast<std::uint64_t>(Headless::MAX_IMAGE_PIXELS)) {
        murl_printf("Image %s is %llu x %llu pixels, too large to load (at most %d a side, %lld in all)\n", name,
                    static_cast<unsigned long long>(width), static_cast<unsigned long long>(height),
                    Headless::MAX_IMAGE_SIDE, static_cast<long long>(Headless::MAX_IMAGE_PIXELS));
        return true;
    }
    return false;
}

// Straight BGRA to premultiplied, rounding to nearest: (t + t / 256) / 256 with
// t = c * a + 128 is c * a / 255 rounded, without a division. Blue and red
// share one multiply in two 16-bit lanes (t stays below 65536).
void premultiply_pixel(std::uint8_t* bytes)
{
    std::uint32_t pixel;
    std::memcpy(&pixel, bytes, 4);
    const std::uint32_t alpha = pixel >> 24;
    std::uint32_t blue_red = (pixel & 0x00ff00ffu) * alpha + 0x00800080u;
    blue_red = ((blue_red + ((blue_red >> 8) & 0x00ff00ffu)) >> 8) & 0x00ff00ffu;
    std::uint32_t green = ((pixel >> 8) & 0xffu) * alpha + 0x80u;
    green = ((green + (green >> 8)) >> 8) & 0xffu;
    pixel = (alpha << 24) | (green << 8) | blue_red;
    std::memcpy(bytes, &pixel, 4);
}

// Opaque pixels, the usual case, are passed over four at a time.
void premultiply_row(std::uint8_t* row, std::uint32_t width)
{
    constexpr std::uint64_t OPAQUE_PAIR = 0xff000000ff000000ull;
    std::uint32_t index = 0;
    while (index < width) {
        if (width - index >= 4) {
            std::uint64_t first, second;
            std::memcpy(&first, row + index * 4, 8);
            std::memcpy(&second, row + index * 4 + 8, 8);
            if ((first & second & OPAQUE_PAIR) == OPAQUE_PAIR) {
                index += 4;
                continue;
            }
        }
        premultiply_pixel(row + index * 4);
        ++index;
    }
}

// [SECTION] PNG

struct PngJob {
    // The encoded bytes; read by the read callback.
    const std::uint8_t* bytes = nullptr;
    std::size_t size = 0;
    std::size_t offset = 0;
    // The header, once read.
    png_uint_32 width = 0;
    png_uint_32 height = 0;
    // The pixels: `height` rows of `stride` bytes, written by the last step.
    std::uint8_t* pixels = nullptr;
    std::size_t stride = 0;
    char message[MESSAGE_BYTES] = {};
};

void on_png_error(png_structp png, png_const_charp message)
{
    auto* job = static_cast<PngJob*>(png_get_error_ptr(png));
    std::snprintf(job->message, sizeof job->message, "%s", message);
    png_longjmp(png, 1);
}

// Warnings (an odd colour profile, a bad ancillary chunk) change nothing we show.
void on_png_warning(png_structp, png_const_charp) {}

void read_png_bytes(png_structp png, png_bytep out, png_size_t count)
{
    auto* job = static_cast<PngJob*>(png_get_io_ptr(png));
    if (count > job->size - job->offset)
        png_error(png, "the data ends early");
    std::memcpy(out, job->bytes + job->offset, count);
    job->offset += count;
}

png_voidp allocate_for_png(png_structp, png_alloc_size_t bytes)
{
    return Qv::allocate(bytes);
}

void release_for_png(png_structp, png_voidp block)
{
    Qv::release(block);
}

// Owns libpng's reading state.
class PngReadScope {
public:
    explicit PngReadScope(PngJob& job)
        : m_png(png_create_read_struct_2(PNG_LIBPNG_VER_STRING, &job, on_png_error, on_png_warning,
                                         nullptr, allocate_for_png, release_for_png))
        , m_info(m_png ? png_create_info_struct(m_png) : nullptr)
    {
    }
    ~PngReadScope() { png_destroy_read_struct(&m_png, &m_info, nullptr); }
    PngReadScope(const PngReadScope&) = delete;
    PngReadScope& operator=(const PngReadScope&) = delete;

    bool ready() const { return m_png && m_info; }
    png_structp png() const { return m_png; }
    png_infop info() const { return m_info; }

private:
    png_structp m_png;
    png_infop m_info;
};

[[gnu::noinline]] void read_png_header_step(png_structp png, png_infop info, PngJob* job)
{
    png_set_read_fn(png, job, read_png_bytes);
    // Sizes are judged by refuse_size, with our message; libpng's own limit
    // stays far above it.
    png_set_user_limits(png, 0x7fffffff, 0x7fffffff);
    // Only the pixels, the palette and the transparency are used: every other
    // chunk is skipped unread. libpng only warns about an ancillary chunk
    // whose length is absurd and then allocates for it anyway, so a few
    // damaged bytes could ask for gigabytes; skipped chunks are never held.
    static const png_byte unused[] = "bKGD\0cHRM\0eXIf\0gAMA\0hIST\0iCCP\0iTXt\0oFFs\0pCAL\0pHYs\0sBIT\0"
                                     "sCAL\0sPLT\0sRGB\0tEXt\0tIME\0zTXt";
    png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_NEVER, unused, 17);
    png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_NEVER, nullptr, 0);
    png_set_chunk_malloc_max(png, std::max<png_alloc_size_t>(job->size, 1));
    png_read_info(png, info);
    job->width = png_get_image_width(png, info);
    job->height = png_get_image_height(png, info);
}

int run_png_header(png_structp png, png_infop info, PngJob* job)
{
    if (setjmp(png_jmpbuf(png)))
        return 0;
    read_png_header_step(png, info, job);
    return 1;
}

// Asks libpng for 8-bit BGRA whatever the file holds; true when the result
// carries an alpha channel that needs premultiplying.
bool choose_png_transforms(png_structp png, png_infop info)
{
    const png_byte colour_type = png_get_color_type(png, info);
    const png_byte bit_depth = png_get_bit_depth(png, info);
    bool alpha = (colour_type & PNG_COLOR_MASK_ALPHA) != 0;
    if (colour_type == PNG_COLOR_TYPE_PALETTE)
        png_set_palette_to_rgb(png);
    if (colour_type == PNG_COLOR_TYPE_GRAY && bit_depth < 8)
        png_set_expand_gray_1_2_4_to_8(png);
    if (png_get_valid(png, info, PNG_INFO_tRNS)) {
        png_set_tRNS_to_alpha(png);
        alpha = true;
    }
    if (bit_depth == 16)
        png_set_scale_16(png);
    if ((colour_type & PNG_COLOR_MASK_COLOR) == 0)
        png_set_gray_to_rgb(png);
    if (!alpha)
        png_set_filler(png, 0xff, PNG_FILLER_AFTER);
    png_set_bgr(png);
    return alpha;
}

[[gnu::noinline]] void read_png_pixels_step(png_structp png, png_infop info, PngJob* job)
{
    const bool alpha = choose_png_transforms(png, info);
    const int passes = png_set_interlace_handling(png);
    png_read_update_info(png, info);
    if (png_get_rowbytes(png, info) != static_cast<png_size_t>(job->width) * 4)
        png_error(png, "unexpected row layout after conversion");
    // An interlaced picture fills each row over several passes, so it can be
    // premultiplied only at the end; a plain one row by row, while the row is
    // still in the cache.
    for (int pass = 0; pass < passes; ++pass) {
        for (png_uint_32 row = 0; row < job->height; ++row) {
            std::uint8_t* const pixels = job->pixels + row * job->stride;
            png_read_row(png, pixels, nullptr);
            if (alpha && passes == 1)
                premultiply_row(pixels, job->width);
        }
    }
    if (alpha && passes > 1) {
        for (png_uint_32 row = 0; row < job->height; ++row)
            premultiply_row(job->pixels + row * job->stride, job->width);
    }
}

int run_png_pixels(png_structp png, png_infop info, PngJob* job)
{
    if (setjmp(png_jmpbuf(png)))
        return 0;
    read_png_pixels_step(png, info, job);
    return 1;
}

// [SECTION] JPEG

struct JpegJob {
    jpeg_error_mgr errors;   // first, so that the library's pointer to it is one to the job
    std::jmp_buf jump;
    jpeg_decompress_struct decompress;
    bool created = false;
    std::uint8_t* pixels = nullptr;
    std::size_t stride = 0;
    char message[MESSAGE_BYTES] = {};
    char warning[MESSAGE_BYTES] = {};   // the first warning, when there was one
};

void on_jpeg_error(j_common_ptr info)
{
    auto* job = reinterpret_cast<JpegJob*>(info->err);
    (*info->err->format_message)(info, job->message);
    std::longjmp(job->jump, 1);
}

// Warnings are kept, not printed: the caller reports the first one.
void on_jpeg_message(j_common_ptr info)
{
    auto* job = reinterpret_cast<JpegJob*>(info->err);
    if (job->warning[0] == '\0') {
        char text[JMSG_LENGTH_MAX];
        (*info->err->format_message)(info, text);
        std::snprintf(job->warning, sizeof job->warning, "%s", text);
    }
}

// Owns libjpeg's decompression state.
class JpegReadScope {
public:
    explicit JpegReadScope(JpegJob& job) : m_job(job) {}
    ~JpegReadScope()
    {
        if (m_job.created)
            jpeg_destroy_decompress(&m_job.decompress);
    }
    JpegReadScope(const JpegReadScope&) = delete;
    JpegReadScope& operator=(const JpegReadScope&) = delete;

private:
    JpegJob& m_job;
};

[[gnu::noinline]] void read_jpeg_header_step(JpegJob* job, const std::uint8_t* bytes, std::size_t size)
{
    jpeg_create_decompress(&job->decompress);
    job->created = true;
    // Progressive pictures keep every coefficient; this bounds what a
    // picture within the size limits may take beyond its pixels.
    job->decompress.mem->max_memory_to_use = 512L << 20;
    jpeg_mem_src(&job->decompress, bytes, static_cast<unsigned long>(size));
    jpeg_read_header(&job->decompress, TRUE);
}

int run_jpeg_header(JpegJob* job, const std::uint8_t* bytes, std::size_t size)
{
    if (setjmp(job->jump))
        return 0;
    read_jpeg_header_step(job, bytes, size);
    return 1;
}

[[gnu::noinline]] void read_jpeg_pixels_step(JpegJob* job)
{
    jpeg_decompress_struct& decompress = job->decompress;
    decompress.out_color_space = JCS_EXT_BGRA;
    jpeg_start_decompress(&decompress);
    if (decompress.output_components != 4) {
        std::snprintf(job->message, sizeof job->message, "unexpected pixel layout after conversion");
        std::longjmp(job->jump, 1);
    }
    constexpr int BATCH = 16;
    JSAMPROW rows[BATCH];
    while (decompress.output_scanline < decompress.output_height) {
        const JDIMENSION first = decompress.output_scanline;
        const JDIMENSION count = std::min<JDIMENSION>(BATCH, decompress.output_height - first);
        for (JDIMENSION index = 0; index < count; ++index)
            rows[index] = job->pixels + (first + index) * job->stride;
        jpeg_read_scanlines(&decompress, rows, count);
    }
}

int run_jpeg_pixels(JpegJob* job)
{
    if (setjmp(job->jump))
        return 0;
    read_jpeg_pixels_step(job);
    return 1;
}

// [SECTION] Files

class FileScope {
public:
    explicit FileScope(const char* path) : m_file(std::fopen(path, "rb")) {}
    ~FileScope()
    {
        if (m_file)
            std::fclose(m_file);
    }
    FileScope(const FileScope&) = delete;
    FileScope& operator=(const FileScope&) = delete;

    std::FILE* get() const { return m_file; }

private:
    std::FILE* m_file;
};

} // namespace

Qv::Ptr<Headless::HostImage> Headless::decodePngImage(const std::uint8_t* bytes, std::size_t size, const char* name)
{
    PngJob job;
    job.bytes = bytes;
    job.size = bytes ? size : 0;
    const PngReadScope scope(job);
    if (!scope.ready()) {
        murl_printf("Image %s cannot be decoded: out of memory\n", name);
        return nullptr;
    }
    if (!run_png_header(scope.png(), scope.info(), &job)) {
        murl_printf("Image %s cannot be decoded: %s\n", name, job.message);
        return nullptr;
    }
    if (refuse_size(name, job.width, job.height))
        return nullptr;
    Qv::Ptr<HostImage> image =
        HostImage::createUncleared({ static_cast<int>(job.width), static_cast<int>(job.height) });
    if (!image)
        return nullptr;
    job.pixels = image->data();
    job.stride = static_cast<std::size_t>(image->stride());
    if (!run_png_pixels(scope.png(), scope.info(), &job)) {
        murl_printf("Image %s cannot be decoded: %s\n", name, job.message);
        return nullptr;
    }
    return image;
}

Qv::Ptr<Headless::HostImage> Headless::decodeJpegImage(const std::uint8_t* bytes, std::size_t size, const char* name)
{
    JpegJob job;
    job.decompress.err = jpeg_std_error(&job.errors);
    job.errors.error_exit = on_jpeg_error;
    job.errors.output_message = on_jpeg_message;
    const JpegReadScope scope(job);
    if (!bytes || size == 0) {
        murl_printf("Image %s cannot be decoded: it is empty\n", name);
        return nullptr;
    }
    if (!run_jpeg_header(&job, bytes, size)) {
        murl_printf("Image %s cannot be decoded: %s\n", name, job.message);
        return nullptr;
    }
    const J_COLOR_SPACE colours = job.decompress.jpeg_color_space;
    if (colours != JCS_GRAYSCALE && colours != JCS_YCbCr && colours != JCS_RGB) {
        murl_printf("Image %s cannot be decoded: its colour space (%d) is not grey or RGB\n", name,
                    static_cast<int>(colours));
        return nullptr;
    }
    if (refuse_size(name, job.decompress.image_width, job.decompress.image_height))
        return nullptr;
    Qv::Ptr<HostImage> image = HostImage::createUncleared(
        { static_cast<int>(job.decompress.image_width), static_cast<int>(job.decompress.image_height) });
    if (!image)
        return nullptr;
    job.pixels = image->data();
    job.stride = static_cast<std::size_t>(image->stride());
    if (!run_jpeg_pixels(&job)) {
        murl_printf("Image %s cannot be decoded: %s\n", name, job.message);
        return nullptr;
    }
    if (job.warning[0] != '\0')
        murl_printf("Image %s is damaged (%s); shown as far as it goes\n", name, job.warning);
    return image;
}

Qv::Ptr<Headless::HostImage> Headless::decodeImage(const std::uint8_t* bytes, std::size_t size, const char* name)
{
    static constexpr std::uint8_t PNG_SIGNATURE[8] = { 0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n' };
    if (bytes && size >= sizeof PNG_SIGNATURE && std::memcmp(bytes, PNG_SIGNATURE, sizeof PNG_SIGNATURE) == 0)
        return decodePngImage(bytes, size, name);
    if (bytes && size >= 3 && bytes[0] == 0xff && bytes[1] == 0xd8 && bytes[2] == 0xff)
        return decodeJpegImage(bytes, size, name);
    murl_printf("Image %s cannot be decoded: it is neither PNG nor JPEG\n", name);
    return nullptr;
}

Qv::Ptr<Headless::HostImage> Headless::loadImageFile(const char* path)
{
    const FileScope file(path);
    if (!file.get()) {
        murl_printf("Image file %s cannot be opened: %s\n", path, std::strerror(errno));
        return nullptr;
    }
    long size = -1;
    if (std::fseek(file.get(), 0, SEEK_END) == 0)
        size = std::ftell(file.get());
    if (size < 0 || std::fseek(file.get(), 0, SEEK_SET) != 0) {
        murl_printf("Image file %s cannot be read: %s\n", path, std::strerror(errno));
        return nullptr;
    }
    if (size > MAX_FILE_BYTES) {
        murl_printf("Image file %s is %ld bytes, too large to load\n", path, size);
        return nullptr;
    }
    const Headless::MemoryBlock bytes(static_cast<std::size_t>(size));
    if (!bytes.get())
        return nullptr;
    if (std::fread(bytes.get(), 1, static_cast<std::size_t>(size), file.get()) != static_cast<std::size_t>(size)) {
        murl_printf("Image file %s cannot be read: %s\n", path, std::strerror(errno));
        return nullptr;
    }
    return decodeImage(bytes.get(), static_cast<std::size_t>(size), path);
}
