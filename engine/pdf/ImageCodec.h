#pragma once

// Pixel encoders for what the engine writes: JPEG at a chosen quality, device-independent
// bitmaps for the document, and Windows bitmap files for previews. Input rows are 8-bit RGB,
// top row first, tightly packed.

#include <cstdint>
#include <optional>
#include <vector>

namespace velmora {

std::optional<std::vector<uint8_t>> EncodeJpeg(const uint8_t* rgb, int width, int height,
                                               int stride, int quality);
// BITMAPINFOHEADER followed by bottom-up BGR rows padded to four bytes.
std::vector<uint8_t> EncodeDib(const uint8_t* rgb, int width, int height, int stride);
// A .bmp file: BITMAPFILEHEADER then the bitmap above.
std::vector<uint8_t> EncodeBmpFile(const uint8_t* rgb, int width, int height, int stride);

}  // namespace velmora
