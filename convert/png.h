#pragma once
#include <cstdint>
#include <vector>

#include "platform/picture.h"

namespace velmoric {

// The picture as a PNG file with exactly the bitmap's pixels, in the
// smallest fitting form: 1, 4 or 8 bits of the bitmap's own palette for a
// palette bitmap, a palette of the colours used for a 24-bit picture that has
// at most 256 of them, else 8-bit RGB. zlib's default level.
std::vector<std::uint8_t> encodePng(const Picture& picture);

enum class PngColour { Indexed, Rgb, Rgba };

// A PNG of rows already in the PNG's own form: `bits` a sample, rows packed
// to whole bytes; `palette` as 0xRRGGBB for indexed rows. zlib's default level.
std::vector<std::uint8_t> encodePngRows(int width, int height, int bits, PngColour colour,
                                        const std::vector<std::uint32_t>& palette,
                                        const std::vector<std::uint8_t>& rows);

}  // namespace velmoric
