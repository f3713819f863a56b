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
constexpr std::size_t kPlaneBytes = 31840;   // 4 planes of 199 lines of 40 bytes
constexpr std::size_t kPaletteStart = 32000;  // the palette block of line 1
constexpr std::size_t kPaletteBase = 31904;   // the block of line L begins at 96L + 31904
constexpr int kRecords = 597;                 // three palettes for each of the lines 1 to 199

// Where byte b (0 to 39) of plane p (0 to 3) lies for line L (1 to 199).
// Each grows with L, b and p, so its largest index is at (199, 39, 3).
using PlaneByteAt = std::size_t (*)(std::size_t line, std::size_t b, std::size_t p);

constexpr std::size_t screenPlace(std::size_t line, std::size_t b, std::size_t p) {
    return 160 * line + 8 * (b / 2) + 2 * p + (b & 1);  // an Atari screen, one word per plane in a group
}
constexpr std::size_t rowPlace(std::size_t line, std::size_t b, std::size_t p) {
    return 7960 * p + 40 * (line - 1) + b;  // plane after plane, line by line
}
constexpr std::size_t columnPlace(std::size_t line, std::size_t b, std::size_t p) {
    return 7960 * p + 199 * b + (line - 1);  // plane after plane, byte column by byte column
}
static_assert(screenPlace(199, 39, 3) < kSrcBytesExtent && rowPlace(199, 39, 3) < kSrcBytesExtent &&
              columnPlace(199, 39, 3) < kSrcBytesExtent);
static_assert(kPaletteStart + 32 * kRecords == kSpuLength, "the records fill the blocks of lines 1 to 199");
static_assert(kSpuLength <= kSrcBytesExtent);

// The 24-bit bitmap into s.out, which is sized for it: the header, then
// lines 199 up to 1, bottom line first, then a black row in place of line 0.
// Each pixel on its own: colour number from the four plane bytes, palette
// slot from the column and colour number, levels from its colour word. The
// colour number is the four bits planebits would give, taken by shifts: four
// look-ups a pixel were a third of a Spectrum decode.
std::span<const std::uint8_t> writeOut(Staging& s, PlaneByteAt at) {
    std::uint8_t* out = s.out.data();
    std::size_t o = 0;
    for (std::size_t i = 0; i < kTrueHeaderSize; ++i) out[o++] = s.truebmp[i];
    for (std::size_t line = 199; line >= 1; --line) {
        const std::size_t block = 96 * line + kPaletteBase;
        for (std::size_t b = 0; b < 40; ++b) {
            const unsigned b0 = s.srcbytes[at(line, b, 0)], b1 = s.srcbytes[at(line, b, 1)];
            const unsigned b2 = s.srcbytes[at(line, b, 2)], b3 = s.srcbytes[at(line, b, 3)];
            for (int k = 7; k >= 0; --k) {
                const int x = int(8 * b) + 7 - k;
                const int c = int((b0 >> k & 1) | (b1 >> k & 1) << 1 | (b2 >> k & 1) << 2 | (b3 >> k & 1) << 3);
                const std::size_t word = block + s.specIndex(x, c);
                const std::uint8_t first = s.srcbytes[word], second = s.srcbytes[word + 1];
                out[o++] = s.stLevel(second, 0);  // blue
                out[o++] = s.stLevel(second, 1);  // green
                out[o++] = s.stLevel(first, 0);   // red
            }
        }
    }
    while (o < kTrueBmpSize) out[o++] = 0;
    return {out, kTrueBmpSize};
}

// The bytes of a packed file from a position that may be moved. Past the
// end of the file, or past the part of it that fits srcbytes, a read is 0.
struct Reader {
    const Source& src;
    std::uint64_t pos;
    std::uint8_t next() {
        const std::uint64_t at = pos++;
        return at < kSrcBytesExtent ? src.byte(std::size_t(at)) : 0;
    }
};

// SPC and SPS pixel data: runs until at least 31840 bytes are out. The test
// comes after a whole run, so the last one may go on to 31840 + 129, still
// below the palettes. Every control byte writes at least one byte, so this
// ends on any input.
static_assert(kPlaneBytes + 130 <= kPaletteStart);
void unpackRuns(Staging& s, Reader& in, bool smooshed) {
    std::size_t written = 0;
    while (written < kPlaneBytes) {
        const unsigned n = in.next();
        // Compressed: a high bit marks a repeat. Smooshed: a high bit marks a copy.
        const bool repeat = smooshed ? n < 128 : n >= 128;
        const unsigned count = smooshed ? (repeat ? n + 3 : n - 127) : (repeat ? 258 - n : n + 1);
        if (repeat) {
            const std::uint8_t value = in.next();
            for (unsigned i = 0; i < count; ++i) s.srcbytes[written++] = value;
        } else {
            for (unsigned i = 0; i < count; ++i) s.srcbytes[written++] = in.next();
        }
    }
}

// SPC palettes: a big-endian mask, then a colour word for each of its bits
// 1 to 14 that is set, from bit 1 up. Colours 0 and 15 are always black.
// Gives the offset behind the last colour word.
std::uint64_t unpackMaskedPalettes(Staging& s, Reader& in) {
    std::size_t o = kPaletteStart;
    for (int r = 0; r < kRecords; ++r) {
        const unsigned high = in.next();
        const unsigned mask = high * 256 + in.next();
        s.srcbytes[o++] = 0, s.srcbytes[o++] = 0;
        for (unsigned bit = 2; bit <= 0x4000; bit *= 2) {
            const bool present = (mask & bit) != 0;
            s.srcbytes[o++] = present ? in.next() : 0;
            s.srcbytes[o++] = present ? in.next() : 0;
        }
        s.srcbytes[o++] = 0, s.srcbytes[o++] = 0;
    }
    return in.pos;
}

// The SPS colour stream, most significant bit first, with one byte of look
// ahead: the next byte is read as soon as the last bit of the current one
// has been taken.
struct BitReader {
    Reader& in;
    std::uint8_t current = in.next();
    unsigned mask = 0x80;
    std::uint64_t end = 0;  // behind the last byte a bit was taken from; the look-ahead does not count
    unsigned bits(int n) {
        unsigned v = 0;
        for (int i = 0; i < n; ++i) {
            v = v * 2 + ((current & mask) != 0 ? 1 : 0);
            end = in.pos;
            mask /= 2;
            if (mask == 0) current = in.next(), mask = 0x80;
        }
        return v;
    }
};

// SPS palettes: a 14-bit mask, colour 1 in its top bit, each set bit
// followed by 3 bits red, 3 green, 3 blue. Colours 0 and 15 are always black.
// Gives the offset behind the last byte a colour took bits from.
std::uint64_t unpackBitPalettes(Staging& s, Reader& in) {
    BitReader stream{in};
    std::size_t o = kPaletteStart;
    for (int r = 0; r < kRecords; ++r) {
        const unsigned mask = stream.bits(14);
        s.srcbytes[o++] = 0, s.srcbytes[o++] = 0;
        for (unsigned bit = 0x2000; bit != 0; bit /= 2) {
            if ((mask & bit) != 0) {
                s.srcbytes[o++] = std::uint8_t(stream.bits(3));
                const unsigned green = stream.bits(3);
                s.srcbytes[o++] = std::uint8_t(green * 16 + stream.bits(3));
            } else {
                s.srcbytes[o++] = 0, s.srcbytes[o++] = 0;
            }
        }
        s.srcbytes[o++] = 0, s.srcbytes[o++] = 0;
    }
    return stream.end;
}

// The frame of SPC and SPS: of the 12-byte header only D, the length of the
// pixel data, counts; the colour data begin at 12 + D, whatever the runs
// consumed. Gives the offset behind the runs or the colour data, whichever
// is further.
std::uint64_t unpackPacked(Staging& s, const Source& src, bool smooshed) {
    Reader in{src, 12};
    unpackRuns(s, in, smooshed);
    const std::uint64_t runsEnd = in.pos;
    in.pos = 12 + std::uint64_t(src.bigEndian32(4));
    return std::max(runsEnd, smooshed ? unpackBitPalettes(s, in) : unpackMaskedPalettes(s, in));
}

}  // namespace

Decoded spec(Staging& s, const Source& src) {
    if (src.length != kSpuLength) return rejectedSource();
    for (std::size_t i = 0; i < kSpuLength; ++i) s.srcbytes[i] = src.byte(i);
    return {false, writeOut(s, screenPlace), " Spectrum 320*200 512 Colour", 1, kSpuLength};
}

Decoded specc(Staging& s, const Source& src) {
    const std::uint64_t end = unpackPacked(s, src, false);
    return {false, writeOut(s, rowPlace), " Spectrum Comp 320*200 512 Colour", 1, end};
}

Decoded specs(Staging& s, const Source& src) {
    const std::uint64_t end = unpackPacked(s, src, true);
    return {false, writeOut(s, columnPlace), " Spectrum Smooshed 320*200 512 Colour", 1, end};
}

}  // namespace velmoric
