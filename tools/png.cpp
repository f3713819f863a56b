#include "tools/png.h"

#include <zlib.h>

#include <stdexcept>
#include <string>

namespace velmoric {
namespace {

void put32(std::vector<std::uint8_t>& out, std::uint32_t v) {
    for (int shift = 24; shift >= 0; shift -= 8) out.push_back(std::uint8_t(v >> shift));
}

void chunk(std::vector<std::uint8_t>& out, const char* type, const std::vector<std::uint8_t>& data) {
    put32(out, std::uint32_t(data.size()));
    const std::size_t start = out.size();
    out.insert(out.end(), type, type + 4);
    out.insert(out.end(), data.begin(), data.end());
    put32(out, std::uint32_t(crc32(0, out.data() + start, uInt(out.size() - start))));
}

}  // namespace

std::vector<std::uint8_t> encodePng(const Picture& picture) {
    const int w = picture.width(), h = picture.height();
    std::vector<std::uint8_t> raw;
    raw.reserve(std::size_t(h) * (1 + 3 * std::size_t(w)));
    for (int y = 0; y < h; ++y) {
        raw.push_back(0);  // no filter
        for (int x = 0; x < w; ++x) {
            const std::uint32_t c = picture.rgb(x, y);
            raw.push_back(std::uint8_t(c >> 16));
            raw.push_back(std::uint8_t(c >> 8));
            raw.push_back(std::uint8_t(c));
        }
    }
    uLongf packedSize = compressBound(uLong(raw.size()));
    std::vector<std::uint8_t> packed(packedSize);
    if (compress2(packed.data(), &packedSize, raw.data(), uLong(raw.size()), 9) != Z_OK)
        throw std::runtime_error("cannot compress the picture");
    packed.resize(packedSize);

    std::vector<std::uint8_t> out = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    std::vector<std::uint8_t> header;
    put32(header, std::uint32_t(w));
    put32(header, std::uint32_t(h));
    header.insert(header.end(), {8, 2, 0, 0, 0});  // 8 bits, RGB, deflate, no filter, no interlace
    chunk(out, "IHDR", header);
    chunk(out, "IDAT", packed);
    chunk(out, "IEND", {});
    return out;
}

}  // namespace velmoric
