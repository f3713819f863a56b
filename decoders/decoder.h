#pragma once
// What every decoder takes and gives. A decoder turns the bytes of a source
// file into the exact bytes of a Windows bitmap file, working in the staging
// arrays; it reads nothing but its Source and touches no file.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

#include "decoders/staging.h"

namespace velmoric {

// The first bytes of a source file (at most the extent of srcbytes) and the
// length of the whole file. A read past the bytes yields 0.
struct Source {
    std::span<const std::uint8_t> bytes;
    std::uint64_t length = 0;

    std::uint8_t byte(std::size_t i) const { return i < bytes.size() ? bytes[i] : 0; }
    // A 2-byte read at byte offset i, as it lands in memory: the first file
    // byte in the low half. Atari words therefore arrive byte-swapped.
    std::uint16_t word(std::size_t i) const { return std::uint16_t(byte(i) | (byte(i + 1) << 8)); }
    // A big-endian number of two bytes, first byte high.
    std::uint16_t bigEndian16(std::size_t i) const { return std::uint16_t((byte(i) << 8) | byte(i + 1)); }
    std::uint32_t bigEndian32(std::size_t i) const {
        return (std::uint32_t(bigEndian16(i)) << 16) | bigEndian16(i + 2);
    }
};

// The result of one decode. A rejected source leaves no bitmap, caption or kind.
struct Decoded {
    bool rejected = false;
    std::span<const std::uint8_t> bitmap;
    std::string_view caption;  // begins with one blank
    std::int16_t kind = 0;
    // One past the last byte of the file the picture was built from: a file
    // shorter than this ends before its picture does. Bytes read only to
    // look ahead do not count.
    std::uint64_t sourceEnd = 0;
};

inline Decoded rejectedSource() { return Decoded{true, {}, {}, 0}; }

// Reads `count` 2-byte words from byte offset `at` of the source into
// srcwords from index `first` on. Words that lie wholly inside the source
// and the array go over as they lie (the array holds them low byte first,
// as the file does); only a read that runs past either end is checked word
// by word.
inline void readWords(Staging& s, const Source& src, std::size_t first, std::size_t at, std::size_t count) {
    if (first + count <= s.srcwords.extent && at + 2 * count <= src.bytes.size()) {
        std::memcpy(s.srcwords.data() + first, src.bytes.data() + at, 2 * count);
        return;
    }
    for (std::size_t i = 0; i < count; ++i) s.srcwords.put(first + i, src.word(at + 2 * i));
}

// ---- The decoders, one family a file --------------------------------------
// NEO and PI1: uncompressed 320 by 200, 16 colours.
Decoded degas1(Staging& s, const Source& src, int lastWord, int firstPaletteWord, int topRow, int bottomRow);
// PI2 and PI3.
Decoded degas2(Staging& s, const Source& src);
Decoded degas3(Staging& s, const Source& src);
// PC1 to PC3. Their sourceEnd lies behind the last run of the screen,
// where a block of colour cycles may follow.
Decoded degasc1(Staging& s, const Source& src);
Decoded degasc2(Staging& s, const Source& src);
Decoded degasc3(Staging& s, const Source& src);
// TNY, TN1 to TN3.
Decoded tiny(Staging& s, const Source& src);
// SPU, SPC, SPS.
Decoded spec(Staging& s, const Source& src);
Decoded specc(Staging& s, const Source& src);
Decoded specs(Staging& s, const Source& src);
// CA1 to CA3.
Decoded crack1(Staging& s, const Source& src);
Decoded crack2(Staging& s, const Source& src);
Decoded crack3(Staging& s, const Source& src);
// MAC.
Decoded hmac(Staging& s, const Source& src);

}  // namespace velmoric
