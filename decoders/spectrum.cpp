// Spectrum 512 pictures: plain (SPU), compressed (SPC) and smooshed (SPS).
// All three unpack into srcbytes, the plane bytes each in an order of its
// own and the 597 palettes of lines 1 to 199 always in the same place, and
// share one write-out into the 24-bit bitmap. A Spectrum line has 48 colours:
// which of its three palettes a pixel takes depends on its colour number and
// its column (specindex).
#include "decoders/decoder.h"

namespace velmoric {
namespace {

constexpr std::uint64_t kSpuLength = 51104;
constexpr std::size_t kPackedPixels = 31840;   // 4 planes of 199 lines of 40 bytes
constexpr std::size_t kPaletteStart = 32000;   // the palette block of line 1
constexpr std::size_t kPaletteBase = 31904;    // the block of line L begins at 96L + 31904
constexpr int kRecords = 597;                  // three palettes for each of the lines 1 to 199
constexpr std::size_t kRowBytes = 960;         // 320 pixels of blue, green, red

// ---- Where byte b (0 to 39) of plane p lies for line L (1 to 199) ---------
// Each is increasing in L, b and p, so its largest index is at (199, 39, 3).
struct PlainPlaces {  // an Atari screen: groups of one word per plane
    static constexpr std::size_t at(std::size_t L, std::size_t b, std::size_t p) {
        return 160 * L + 8 * (b / 2) + 2 * p + (b & 1);
    }
};
struct RowPlaces {  // plane after plane, line by line
    static constexpr std::size_t at(std::size_t L, std::size_t b, std::size_t p) {
        return 7960 * p + 40 * (L - 1) + b;
    }
};
struct ColumnPlaces {  // plane after plane, byte column by byte column
    static constexpr std::size_t at(std::size_t L, std::size_t b, std::size_t p) {
        return 7960 * p + 199 * b + (L - 1);
    }
};

template <class Places>
constexpr bool placesFit() {
    return Places::at(199, 39, 3) < kSrcBytesExtent && Places::at(1, 0, 0) < Places::at(199, 39, 3);
}
static_assert(placesFit<PlainPlaces>() && placesFit<RowPlaces>() && placesFit<ColumnPlaces>());
static_assert(96 * 199 + kPaletteBase + 95 < kSrcBytesExtent, "the last palette block fits srcbytes");
static_assert(kPaletteStart + 32 * kRecords == kSpuLength, "the records fill the blocks of lines 1 to 199");

// The eight pixels of one plane byte as the nibbles of a word: bit 7, the
// leftmost pixel, becomes bit 0 of nibble 0. Four planes shifted by their
// plane number and or-ed give the eight colour numbers at once.
constexpr std::array<std::uint32_t, 256> kSpread = [] {
    std::array<std::uint32_t, 256> t{};
    for (unsigned v = 0; v < 256; ++v)
        for (unsigned k = 0; k < 8; ++k)
            if (v >> k & 1) t[v] |= std::uint32_t(1) << (4 * (7 - k));
    return t;
}();

// The 48 colours of a line as blue, green, red in the low three bytes, kept
// at the byte offset of their colour word so that specindex indexes them
// directly (odd entries unused).
void lineColours(const Staging& s, std::size_t line, std::uint32_t* colourAt) {
    const std::uint8_t* block = s.srcbytes.data() + 96 * line + kPaletteBase;
    const std::uint8_t* level = s.stlevel.data();
    for (std::size_t o = 0; o < 96; o += 2) {
        const std::uint8_t f = block[o], second = block[o + 1];
        colourAt[o] = std::uint32_t(level[second]) | std::uint32_t(level[second + 257]) << 8 |
                      std::uint32_t(level[f]) << 16;
    }
}

// One line into its row of the bitmap. A pixel is stored as four bytes, the
// fourth a spill that the next pixel, the next row or the zero row after the
// last one overwrites; `row` therefore needs one byte beyond its 960.
template <class Places>
void writeLine(const Staging& s, std::size_t line, std::uint8_t* row) {
    std::uint32_t colourAt[96];
    lineColours(s, line, colourAt);
    const std::uint8_t* src = s.srcbytes.data();
    const std::uint16_t* slots = s.specindex.data();
    for (std::size_t b = 0; b < 40; ++b) {
        std::uint32_t colours = kSpread[src[Places::at(line, b, 0)]] | kSpread[src[Places::at(line, b, 1)]] << 1 |
                                kSpread[src[Places::at(line, b, 2)]] << 2 | kSpread[src[Places::at(line, b, 3)]] << 3;
        for (std::size_t x = 8 * b; x < 8 * b + 8; ++x, colours >>= 4, row += 3) {
            const std::uint32_t pixel = colourAt[slots[(colours & 15) * 320 + x]];
            std::memcpy(row, &pixel, 4);
        }
    }
}

// The 24-bit bitmap into s.out: the header, lines 199 up to 1, bottom line
// first, then a zero row in place of line 0.
template <class Places>
std::span<const std::uint8_t> writeOut(Staging& s) {
    if (s.out.size() < kTrueBmpSize) s.out.resize(kTrueBmpSize);
    std::uint8_t* out = s.out.data();
    std::memcpy(out, s.truebmp.data(), kTrueHeaderSize);
    std::uint8_t* row = out + kTrueHeaderSize;
    for (std::size_t line = 199; line >= 1; --line, row += kRowBytes) writeLine<Places>(s, line, row);
    std::memset(row, 0, kRowBytes);
    return {out, kTrueBmpSize};
}

// ---- Reading a source ----------------------------------------------------
// Byte by byte from a position that may be moved; past the end of the
// source, or past the part of it that fits srcbytes, a read yields 0.
class Reader {
public:
    explicit Reader(const Source& src) : src_(src) {}
    std::uint8_t next() {
        const std::uint8_t b = pos_ < kSrcBytesExtent ? src_.byte(std::size_t(pos_)) : 0;
        ++pos_;
        return b;
    }
    void seek(std::uint64_t pos) { pos_ = pos; }

private:
    const Source& src_;
    std::uint64_t pos_ = 0;
};

// Single bits, most significant first, with one byte of look-ahead: the
// next byte is read as soon as the last bit of the current one is taken.
class BitReader {
public:
    explicit BitReader(Reader& in) : in_(in), current_(in.next()) {}
    unsigned bits(int n) {
        unsigned v = 0;
        for (int i = 0; i < n; ++i) v = 2 * v + bit();
        return v;
    }

private:
    unsigned bit() {
        const unsigned b = (current_ & mask_) ? 1 : 0;
        mask_ >>= 1;
        if (mask_ == 0) {
            current_ = in_.next();
            mask_ = 0x80;
        }
        return b;
    }
    Reader& in_;
    std::uint8_t current_;
    std::uint8_t mask_ = 0x80;
};

// The 12-byte header of SPC and SPS; only the length of the packed pixel
// data counts. The bytes pass through the start of srcbytes, where the
// unpacked pixels overwrite them.
std::uint64_t readPackedHeader(Staging& s, Reader& in) {
    std::uint32_t pixelLength = 0;
    for (std::size_t i = 0; i < 12; ++i) {
        const std::uint8_t b = in.next();
        s.srcbytes.put(i, b);
        if (i >= 4 && i < 8) pixelLength = pixelLength << 8 | b;
    }
    return pixelLength;
}

// Runs until at least 31840 bytes are out; the last run is written whole.
// Every control byte yields at least one byte, so this ends on any input.
void unpackRuns(Staging& s, Reader& in, bool smooshed) {
    std::size_t out = 0;
    while (out < kPackedPixels) {
        const unsigned n = in.next();
        const bool repeat = smooshed ? n < 128 : n >= 128;
        const unsigned count = smooshed ? (repeat ? n + 3 : n - 127) : (repeat ? 258 - n : n + 1);
        if (repeat) {
            const std::uint8_t v = in.next();
            for (unsigned i = 0; i < count; ++i) s.srcbytes.put(out++, v);
        } else {
            for (unsigned i = 0; i < count; ++i) s.srcbytes.put(out++, in.next());
        }
    }
}

// SPC palettes: a 16-bit mask, then a colour word for each of its bits 1 to
// 14 that is set. Colours 0 and 15 are always black.
void unpackMaskedPalettes(Staging& s, Reader& in) {
    std::size_t out = kPaletteStart;
    for (int r = 0; r < kRecords; ++r) {
        const unsigned high = in.next();
        const unsigned mask = high << 8 | in.next();
        for (unsigned c = 0; c < 16; ++c, out += 2) {
            const bool present = c >= 1 && c <= 14 && (mask >> c & 1);
            const std::uint8_t f = present ? in.next() : 0;
            const std::uint8_t second = present ? in.next() : 0;
            s.srcbytes.put(out, f);
            s.srcbytes.put(out + 1, second);
        }
    }
}

// SPS palettes: one bit stream of 14-bit masks, colour 1 first, each set bit
// followed by a colour of 3 bits red, 3 green, 3 blue.
void unpackBitPalettes(Staging& s, Reader& in) {
    BitReader bits(in);
    std::size_t out = kPaletteStart;
    for (int r = 0; r < kRecords; ++r) {
        const unsigned mask = bits.bits(14);
        for (unsigned c = 0; c < 16; ++c, out += 2) {
            const bool present = c >= 1 && c <= 14 && (mask >> (14 - c) & 1);
            std::uint8_t f = 0, second = 0;
            if (present) {
                f = std::uint8_t(bits.bits(3));
                second = std::uint8_t(bits.bits(3) * 16);
                second = std::uint8_t(second + bits.bits(3));
            }
            s.srcbytes.put(out, f);
            s.srcbytes.put(out + 1, second);
        }
    }
}

// The shared frame of SPC and SPS: header, packed pixels, then the colour
// data from 12 + D whatever the pixels consumed.
void unpackPacked(Staging& s, const Source& src, bool smooshed) {
    Reader in(src);
    const std::uint64_t pixelLength = readPackedHeader(s, in);
    unpackRuns(s, in, smooshed);
    in.seek(12 + pixelLength);
    if (smooshed) unpackBitPalettes(s, in);
    else unpackMaskedPalettes(s, in);
}

}  // namespace

Decoded spec(Staging& s, const Source& src) {
    if (src.length != kSpuLength) return rejectedSource();
    const std::size_t have = std::min<std::size_t>(src.bytes.size(), kSpuLength);
    if (have > 0) std::memcpy(s.srcbytes.data(), src.bytes.data(), have);
    std::memset(s.srcbytes.data() + have, 0, kSpuLength - have);
    return {false, writeOut<PlainPlaces>(s), " Spectrum 320*200 512 Colour", 1};
}

Decoded specc(Staging& s, const Source& src) {
    unpackPacked(s, src, false);
    return {false, writeOut<RowPlaces>(s), " Spectrum Comp 320*200 512 Colour", 1};
}

Decoded specs(Staging& s, const Source& src) {
    unpackPacked(s, src, true);
    return {false, writeOut<ColumnPlaces>(s), " Spectrum Smooshed 320*200 512 Colour", 1};
}

}  // namespace velmoric
