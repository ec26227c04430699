// PictureFiles: small PNG and JPEG files written with libpng and libjpeg, so
// the decoder tests need no binaries in the tree. Header-only: the image tests,
// the benchmark and the fuzzers' seed writer share it.
#pragma once

// jpeglib.h uses size_t and FILE without including their headers.
#include <csetjmp>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <jpeglib.h>
#include <png.h>

namespace PictureFiles {

using Bytes = std::vector<std::uint8_t>;

struct PngSpec {
    int width = 1;
    int height = 1;
    int bitDepth = 8;
    int colourType = PNG_COLOR_TYPE_RGBA;
    bool interlaced = false;
    Bytes rows;           // height rows, packed as the colour type and depth say (16-bit big-endian)
    Bytes palette;        // RGB triples, for a palette picture
    Bytes transparency;   // tRNS: alphas for a palette, or a 16-bit grey/RGB key, as raw chunk bytes
};

namespace detail {

inline void append_bytes(png_structp png, png_bytep data, png_size_t size)
{
    auto* out = static_cast<Bytes*>(png_get_io_ptr(png));
    out->insert(out->end(), data, data + size);
}

inline void flush_nothing(png_structp) {}

// Plain frame for libpng's longjmp: nothing here has a destructor.
inline bool write_png(png_structp png, png_infop info, const PngSpec* spec, Bytes* out)
{
    if (setjmp(png_jmpbuf(png)))
        return false;
    png_set_write_fn(png, out, append_bytes, flush_nothing);
    png_set_IHDR(png, info, static_cast<png_uint_32>(spec->width), static_cast<png_uint_32>(spec->height),
                 spec->bitDepth, spec->colourType, spec->interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_color colours[256];
    const int colour_count = static_cast<int>(spec->palette.size() / 3);
    for (int index = 0; index < colour_count && index < 256; ++index)
        colours[index] = { spec->palette[index * 3], spec->palette[index * 3 + 1], spec->palette[index * 3 + 2] };
    if (spec->colourType == PNG_COLOR_TYPE_PALETTE)
        png_set_PLTE(png, info, colours, colour_count);
    if (!spec->transparency.empty()) {
        if (spec->colourType == PNG_COLOR_TYPE_PALETTE) {
            png_set_tRNS(png, info, spec->transparency.data(), static_cast<int>(spec->transparency.size()), nullptr);
        } else {
            png_color_16 key {};
            key.gray = static_cast<png_uint_16>(spec->transparency[0] << 8 | spec->transparency[1]);
            png_set_tRNS(png, info, nullptr, 0, &key);
        }
    }
    png_write_info(png, info);
    const std::size_t row_bytes = spec->rows.size() / static_cast<std::size_t>(spec->height);
    const int passes = png_set_interlace_handling(png);
    for (int pass = 0; pass < passes; ++pass)
        for (int row = 0; row < spec->height; ++row)
            png_write_row(png, spec->rows.data() + static_cast<std::size_t>(row) * row_bytes);
    png_write_end(png, info);
    return true;
}

struct JpegErrors {
    jpeg_error_mgr manager;
    std::jmp_buf jump;
};

inline void jpeg_failed(j_common_ptr info)
{
    std::longjmp(reinterpret_cast<JpegErrors*>(info->err)->jump, 1);
}

// Plain frame for libjpeg's longjmp; the caller owns and destroys `compress`.
inline bool write_jpeg(jpeg_compress_struct* compress, JpegErrors* errors, int width, int height, int components,
                       const std::uint8_t* pixels, int quality, bool progressive, unsigned char** buffer,
                       unsigned long* size)
{
    if (setjmp(errors->jump))
        return false;
    jpeg_create_compress(compress);
    jpeg_mem_dest(compress, buffer, size);
    compress->image_width = static_cast<JDIMENSION>(width);
    compress->image_height = static_cast<JDIMENSION>(height);
    compress->input_components = components;
    compress->in_color_space = components == 1 ? JCS_GRAYSCALE : JCS_RGB;
    jpeg_set_defaults(compress);
    jpeg_set_quality(compress, quality, TRUE);
    if (progressive)
        jpeg_simple_progression(compress);
    jpeg_start_compress(compress, TRUE);
    while (compress->next_scanline < compress->image_height) {
        JSAMPROW row = const_cast<JSAMPROW>(pixels + compress->next_scanline * static_cast<std::size_t>(width * components));
        jpeg_write_scanlines(compress, &row, 1);
    }
    jpeg_finish_compress(compress);
    return true;
}

} // namespace detail

// The encoded file; empty if libpng refused the description.
inline Bytes encodePng(const PngSpec& spec)
{
    Bytes out;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    const bool written = info && detail::write_png(png, info, &spec, &out);
    png_destroy_write_struct(&png, &info);
    return written ? out : Bytes();
}

// `components` 1 (grey) or 3 (RGB); `pixels` row after row, 8 bits a channel.
inline Bytes encodeJpeg(int width, int height, int components, const Bytes& pixels, int quality = 95,
                        bool progressive = false)
{
    jpeg_compress_struct compress {};
    detail::JpegErrors errors {};
    compress.err = jpeg_std_error(&errors.manager);
    errors.manager.error_exit = detail::jpeg_failed;
    unsigned char* buffer = nullptr;
    unsigned long size = 0;
    const bool written = detail::write_jpeg(&compress, &errors, width, height, components, pixels.data(), quality,
                                            progressive, &buffer, &size);
    jpeg_destroy_compress(&compress);
    Bytes out;
    if (written && buffer)
        out.assign(buffer, buffer + size);
    std::free(buffer);
    return out;
}

inline void writeFile(const std::string& path, const Bytes& bytes)
{
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()),
                                                static_cast<std::streamsize>(bytes.size()));
}

inline Bytes readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), {});
}

// The CRC of PNG chunks, to patch a header and keep the file otherwise valid.
inline std::uint32_t crc32(const std::uint8_t* bytes, std::size_t size)
{
    std::uint32_t crc = 0xffffffffu;
    for (std::size_t index = 0; index < size; ++index) {
        crc ^= bytes[index];
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1) ^ (0xedb88320u & (0u - (crc & 1u)));
    }
    return ~crc;
}

// The PNG with the width and height of its header replaced, its CRC updated.
inline Bytes withPngSize(Bytes png, std::uint32_t width, std::uint32_t height)
{
    // Signature (8), then the IHDR chunk: length (4), "IHDR" (4), width, height, ...
    auto put = [&](std::size_t at, std::uint32_t value) {
        for (int byte = 0; byte < 4; ++byte)
            png[at + static_cast<std::size_t>(byte)] = static_cast<std::uint8_t>(value >> (24 - 8 * byte));
    };
    put(16, width);
    put(20, height);
    put(29, crc32(png.data() + 12, 17));
    return png;
}

// The JPEG with the height and width of its frame header replaced.
inline Bytes withJpegSize(Bytes jpeg, std::uint16_t width, std::uint16_t height)
{
    for (std::size_t at = 2; at + 9 < jpeg.size(); ++at) {
        if (jpeg[at] == 0xff && (jpeg[at + 1] == 0xc0 || jpeg[at + 1] == 0xc2)) {
            jpeg[at + 5] = static_cast<std::uint8_t>(height >> 8);
            jpeg[at + 6] = static_cast<std::uint8_t>(height);
            jpeg[at + 7] = static_cast<std::uint8_t>(width >> 8);
            jpeg[at + 8] = static_cast<std::uint8_t>(width);
            break;
        }
    }
    return jpeg;
}

// Straight RGBA rows of a picture that is transparent except in the box
// [left, right) x [top, bottom), where it is opaque, its colours varying with x and y.
inline Bytes rgbaWithOpaqueBox(int width, int height, int left, int top, int right, int bottom)
{
    Bytes rows;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const bool inside = x >= left && x < right && y >= top && y < bottom;
            rows.push_back(static_cast<std::uint8_t>(inside ? 40 + x * 7 : 0));
            rows.push_back(static_cast<std::uint8_t>(inside ? 200 - y * 5 : 0));
            rows.push_back(inside ? 90 : 0);
            rows.push_back(inside ? 255 : 0);
        }
    }
    return rows;
}

} // namespace PictureFiles
