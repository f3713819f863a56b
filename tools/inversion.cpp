#include "tools/inversion.h"

#include <span>
#include <utility>

namespace velmoric::tools {
namespace {

constexpr std::size_t kMacRows = 720;
constexpr std::size_t kMacRowBytes = 72;

// The two palette entries of `monobmp`, bytes 54 to 57 and 58 to 61, are
// words 27 and 28 and words 29 and 30: swapped whole, reserved bytes too.
// No decoder writes them, so every later mono picture opens this way.
std::vector<std::uint8_t> invertMono(Staging& s) {
    std::swap(s.monobmp[27], s.monobmp[29]);
    std::swap(s.monobmp[28], s.monobmp[30]);
    const std::span<const std::uint8_t> bitmap = s.emitMono();
    return {bitmap.begin(), bitmap.end()};
}

// `pixbytes` goes out as it stands and is complemented on the way, so the
// array is always one inversion ahead of the picture on show: `hmac` wrote
// the complement, the first inversion writes the bytes themselves.
std::vector<std::uint8_t> invertMac(Staging& s) {
    std::vector<std::uint8_t> bitmap;
    bitmap.reserve(kMacBmpSize);
    for (std::size_t i = 0; i < kMacHeaderSize; ++i) bitmap.push_back(s.macbmp[i]);
    for (std::size_t r = kMacRows; r-- > 0;) {
        for (std::size_t j = 0; j < kMacRowBytes; ++j) {
            std::uint8_t& b = s.pixbytes[kMacRowBytes * r + j];
            bitmap.push_back(b);
            b = std::uint8_t(~b);
        }
    }
    return bitmap;
}

}  // namespace

std::vector<std::uint8_t> invertedBitmap(Staging& s, int kind) {
    return kind == 3 ? invertMono(s) : invertMac(s);
}

}  // namespace velmoric::tools
