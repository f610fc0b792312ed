#include "pdf/ImageCodec.h"

#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <jpeglib.h>

namespace velmora {

namespace {

struct JpegErrorManager
{
    jpeg_error_mgr base;
    std::jmp_buf jump;
};

// libjpeg's own handler ends the process; this one returns to the encoder instead.
[[noreturn]] void jpegErrorExit(j_common_ptr info)
{
    auto* manager = reinterpret_cast<JpegErrorManager*>(info->err);
    std::longjmp(manager->jump, 1);
}

// Kept free of C++ objects with destructors, since an error leaves it through longjmp.
bool encodeJpegRaw(const uint8_t* rgb, int width, int height, int stride, int quality,
                   unsigned char** out, unsigned long* outSize)
{
    jpeg_compress_struct info{};
    JpegErrorManager errors{};
    info.err = jpeg_std_error(&errors.base);
    errors.base.error_exit = jpegErrorExit;
    if (setjmp(errors.jump)) {
        jpeg_destroy_compress(&info);
        return false;
    }
    jpeg_create_compress(&info);
    jpeg_mem_dest(&info, out, outSize);
    info.image_width = static_cast<JDIMENSION>(width);
    info.image_height = static_cast<JDIMENSION>(height);
    info.input_components = 3;
    info.in_color_space = JCS_RGB;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, quality, TRUE);
    jpeg_start_compress(&info, TRUE);
    while (info.next_scanline < info.image_height) {
        auto* row =
            const_cast<JSAMPROW>(rgb + static_cast<std::ptrdiff_t>(info.next_scanline) * stride);
        jpeg_write_scanlines(&info, &row, 1);
    }
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    return true;
}

void putLe16(std::vector<uint8_t>& out, uint32_t value)
{
    out.push_back(static_cast<uint8_t>(value & 0xff));
    out.push_back(static_cast<uint8_t>((value >> 8) & 0xff));
}

void putLe32(std::vector<uint8_t>& out, uint32_t value)
{
    putLe16(out, value & 0xffff);
    putLe16(out, value >> 16);
}

std::size_t dibRowSize(int width)
{
    return (static_cast<std::size_t>(width) * 3 + 3) & ~std::size_t{3};
}

void appendDib(std::vector<uint8_t>& out, const uint8_t* rgb, int width, int height, int stride)
{
    const std::size_t rowSize = dibRowSize(width);
    putLe32(out, 40);
    putLe32(out, static_cast<uint32_t>(width));
    putLe32(out, static_cast<uint32_t>(height));  // positive: rows go bottom-up
    putLe16(out, 1);
    putLe16(out, 24);
    putLe32(out, 0);  // uncompressed
    putLe32(out, static_cast<uint32_t>(rowSize * static_cast<std::size_t>(height)));
    putLe32(out, 3780);  // 96 dpi in pixels per metre
    putLe32(out, 3780);
    putLe32(out, 0);
    putLe32(out, 0);
    const std::size_t start = out.size();
    out.resize(start + rowSize * static_cast<std::size_t>(height), 0);
    for (int y = 0; y < height; ++y) {
        const uint8_t* src = rgb + static_cast<std::ptrdiff_t>(height - 1 - y) * stride;
        uint8_t* dst = out.data() + start + rowSize * static_cast<std::size_t>(y);
        for (std::size_t x = 0; x < static_cast<std::size_t>(width); ++x) {
            dst[3 * x] = src[3 * x + 2];
            dst[3 * x + 1] = src[3 * x + 1];
            dst[3 * x + 2] = src[3 * x];
        }
    }
}

}  // namespace

std::optional<std::vector<uint8_t>> EncodeJpeg(const uint8_t* rgb, int width, int height,
                                               int stride, int quality)
{
    if (width <= 0 || height <= 0)
        return std::nullopt;
    unsigned char* buffer = nullptr;
    unsigned long size = 0;
    const bool ok =
        encodeJpegRaw(rgb, width, height, stride, std::clamp(quality, 1, 100), &buffer, &size);
    std::optional<std::vector<uint8_t>> result;
    if (ok && buffer)
        result.emplace(buffer, buffer + size);
    std::free(buffer);
    return result;
}

std::vector<uint8_t> EncodeDib(const uint8_t* rgb, int width, int height, int stride)
{
    std::vector<uint8_t> out;
    out.reserve(40 + dibRowSize(width) * static_cast<std::size_t>(height));
    appendDib(out, rgb, width, height, stride);
    return out;
}

std::vector<uint8_t> EncodeBmpFile(const uint8_t* rgb, int width, int height, int stride)
{
    const std::size_t pixels = dibRowSize(width) * static_cast<std::size_t>(height);
    std::vector<uint8_t> out;
    out.reserve(54 + pixels);
    out.push_back('B');
    out.push_back('M');
    putLe32(out, static_cast<uint32_t>(54 + pixels));
    putLe32(out, 0);
    putLe32(out, 54);
    appendDib(out, rgb, width, height, stride);
    return out;
}

}  // namespace velmora
