#pragma once
// The body of every fuzz target: the first input byte picks one extension of
// the family (and, for SPU, whether the source claims the one accepted
// length); the rest is the file. The staging arrays live on between inputs,
// as they do in the viewer.
#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <memory>
#include <string_view>
#include <vector>

#include "shell/formats.h"

namespace velmoric::fuzz {

inline Staging& sharedStaging() {
    static std::unique_ptr<Staging> s = [] {
        auto fresh = std::make_unique<Staging>();
        fresh->buildTables();
        return fresh;
    }();
    return *s;
}

// Every accepted decode must give a whole bitmap file whose header states
// its length.
inline void checkBitmap(const Decoded& d) {
    if (d.rejected) return;
    if (d.bitmap.size() < 54 || d.bitmap[0] != 'B' || d.bitmap[1] != 'M') std::abort();
    const std::size_t stated = d.bitmap[2] | (d.bitmap[3] << 8) | (d.bitmap[4] << 16) | (std::size_t(d.bitmap[5]) << 24);
    if (stated != d.bitmap.size() || d.kind < 1 || d.kind > 4 || d.caption.empty() || d.caption[0] != ' ') std::abort();
}

inline int decodeOne(const std::uint8_t* data, std::size_t size, std::initializer_list<std::string_view> family) {
    if (size == 0) return 0;
    const std::string_view extension = family.begin()[data[0] % family.size()];
    const Format* format = findFormat(extension);
    if (!format) return 0;  // not built yet
    const std::span<const std::uint8_t> file(data + 1, std::min<std::size_t>(size - 1, kSourceLimit));
    const std::uint64_t length = (extension == "SPU" && (data[0] & 0x80)) ? 51104 : size - 1;
    checkBitmap(decodeWith(*format, sharedStaging(), Source{file, length}));
    return 0;
}

}  // namespace velmoric::fuzz

#define VELMORIC_FUZZ_TARGET(...)                                                      \
    extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) { \
        return velmoric::fuzz::decodeOne(data, size, {__VA_ARGS__});                   \
    }
