#pragma once
// The body of every fuzz target: the first input byte picks one extension of
// the family (and, for SPU, whether the source claims the one accepted
// length); the rest is the file. An input takes one of two checks, by
// whether its length is even, so that it is checked the same way however it
// is replayed:
// - as in the viewer: decoded in staging arrays that live on between inputs,
//   holding the leftovers of the inputs before it;
// - as in the converter: decoded twice in a second block brought back to its
//   fresh state each time, which must give the same bytes although the block
//   held another input's leftovers before the first and this one's before
//   the second.
// Either way an accepted decode must give a well-formed bitmap. One decode
// or two an input, not three, and no block built per input: the targets run
// over a thousand inputs a second.
#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "formats/formats.h"

namespace velmoric::fuzz {

inline std::unique_ptr<Staging> freshStaging() {
    auto s = std::make_unique<Staging>();
    s->buildTables();
    return s;
}

// The file size each kind's bitmap has; kind 1 is a 4-bit or, from the
// Spectrum decoders, a 24-bit bitmap.
inline bool sizeFitsKind(const Decoded& d) {
    const std::size_t n = d.bitmap.size();
    return (d.kind == 1 && (n == 2 * kLowBmpWords || n == kTrueBmpSize)) || (d.kind == 2 && n == 2 * kMedBmpWords) ||
           (d.kind == 3 && n == 2 * kMonoBmpWords) || (d.kind == 4 && n == kMacBmpSize);
}

// An accepted decode gives a whole bitmap file of its kind's size, whose
// header states that size, and a caption that begins with a blank.
inline void checkBitmap(const Decoded& d) {
    if (d.rejected) return;
    if (!sizeFitsKind(d) || d.bitmap[0] != 'B' || d.bitmap[1] != 'M') std::abort();
    const std::size_t stated = d.bitmap[2] | (d.bitmap[3] << 8) | (d.bitmap[4] << 16) | (std::size_t(d.bitmap[5]) << 24);
    if (stated != d.bitmap.size() || d.caption.empty() || d.caption[0] != ' ') std::abort();
}

inline int decodeOne(const std::uint8_t* data, std::size_t size, std::initializer_list<std::string_view> family) {
    if (size == 0) return 0;
    const std::string_view extension = family.begin()[data[0] % family.size()];
    const Format* format = findFormat(extension);
    if (!format) return 0;
    const std::span<const std::uint8_t> file(data + 1, std::min<std::size_t>(size - 1, kSourceLimit));
    const std::uint64_t length = (extension == "SPU" && (data[0] & 0x80)) ? 51104 : size - 1;
    const Source source{file, length};

    static std::unique_ptr<Staging> viewer = freshStaging(), reused = freshStaging();
    if (size % 2 == 0) {
        checkBitmap(decodeWith(*format, *viewer, source));
        return 0;
    }

    // The bitmap is a view of the block: the first one is kept as a copy.
    static std::vector<std::uint8_t> firstBitmap;
    reused->resetToFresh();
    const Decoded a = decodeWith(*format, *reused, source);
    checkBitmap(a);
    firstBitmap.assign(a.bitmap.begin(), a.bitmap.end());
    const std::string firstCaption(a.caption);
    reused->resetToFresh();
    const Decoded b = decodeWith(*format, *reused, source);
    if (a.rejected != b.rejected || a.kind != b.kind || firstCaption != b.caption ||
        !std::equal(firstBitmap.begin(), firstBitmap.end(), b.bitmap.begin(), b.bitmap.end()))
        std::abort();
    return 0;
}

}  // namespace velmoric::fuzz

#define VELMORIC_FUZZ_TARGET(...)                                                      \
    extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) { \
        return velmoric::fuzz::decodeOne(data, size, {__VA_ARGS__});                   \
    }
