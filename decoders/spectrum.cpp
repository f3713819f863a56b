// Spectrum 512 pictures: plain (SPU), compressed (SPC) and smooshed (SPS).
// All three unpack into srcbytes, the plane bytes each in an order of its
// own and the 597 palettes of lines 1 to 199 always in the same place, and
// share one write-out into the 24-bit bitmap. A Spectrum line has 48 colours:
// which of its three palettes a pixel takes depends on its colour number and
// its column (specindex).
#include "decoders/decoder.h"

#include <cassert>
#include <type_traits>
#if defined(__x86_64__)
#include <immintrin.h>
#endif

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

// ---- The write-out --------------------------------------------------------
// The plain rule for one pixel, through the three tables: colour number from
// the plane bits, palette slot from specindex, levels from stlevel. It is
// the whole write-out where no vector unit is at hand, and the check of the
// vector path in debug builds.
template <class Places>
void writeLineByTables(const Staging& s, std::size_t line, std::uint8_t* row) {
    const std::uint8_t* src = s.srcbytes.data();
    const std::size_t block = 96 * line + kPaletteBase;
    for (std::size_t b = 0; b < 40; ++b) {
        const std::uint8_t b0 = src[Places::at(line, b, 0)], b1 = src[Places::at(line, b, 1)];
        const std::uint8_t b2 = src[Places::at(line, b, 2)], b3 = src[Places::at(line, b, 3)];
        for (int k = 7; k >= 0; --k, row += 3) {
            const int x = int(8 * b) + 7 - k;
            const int c = s.planeBits(b0, k, 0) + s.planeBits(b1, k, 1) + s.planeBits(b2, k, 2) + s.planeBits(b3, k, 3);
            const std::size_t o = block + s.specIndex(x, c);
            row[0] = s.stLevel(src[o + 1], 0);
            row[1] = s.stLevel(src[o + 1], 1);
            row[2] = s.stLevel(src[o], 0);
        }
    }
}

// The eight plane bytes of a run of 16 pixels (g from 0 to 19) in screen
// order: bytes 2p and 2p + 1 are plane p's bytes 2g and 2g + 1. On an Atari
// screen they already lie so.
template <class Places>
std::uint64_t sixteenPixels(const std::uint8_t* src, std::size_t line, std::size_t g) {
    std::uint64_t v = 0;
    if constexpr (std::is_same_v<Places, PlainPlaces>) {
        std::memcpy(&v, src + Places::at(line, 2 * g, 0), 8);
    } else {
        for (std::size_t p = 0; p < 4; ++p)
            v |= std::uint64_t(src[Places::at(line, 2 * g, p)]) << (16 * p) |
                 std::uint64_t(src[Places::at(line, 2 * g + 1, p)]) << (16 * p + 8);
    }
    return v;
}

#if defined(__x86_64__)
#define VELMORIC_SPECTRUM_VECTOR 1

// The column rule of specindex per run of 16 columns: in run g, colour c
// takes its second palette from lane first[g][c] on and its third from lane
// second[g][c] on (16: not in this run).
struct PaletteLanes {
    std::uint8_t first[20][16], second[20][16];
};
constexpr PaletteLanes kPaletteLanes = [] {
    PaletteLanes t{};
    auto lane = [](int column, int g) { return std::uint8_t(std::clamp(column - 16 * g, 0, 16)); };
    for (int g = 0; g < 20; ++g)
        for (int c = 0; c < 16; ++c) {
            const int x1 = c % 2 == 0 ? 10 * c + 1 : 10 * c - 5;
            t.first[g][c] = lane(x1, g);
            t.second[g][c] = lane(x1 + 160, g);
        }
    return t;
}();

// Byte shuffles that interleave 16 blues, greens and reds into 48 bytes.
struct Interleave {
    std::uint8_t pick[3][3][16];  // [block of 16 output bytes][component][byte]
};
constexpr Interleave kInterleave = [] {
    Interleave t{};
    for (int k = 0; k < 3; ++k)
        for (int j = 0; j < 16; ++j)
            for (int comp = 0; comp < 3; ++comp)
                t.pick[k][comp][j] = (16 * k + j) % 3 == comp ? std::uint8_t((16 * k + j) / 3) : 0x80;
    return t;
}();

// The vector path works on 32 pixels, two runs of 16, one in each 128-bit
// half. Byte shuffles look up in 16 entries within a half, so the palettes
// and the shuffles are loaded into both halves alike; the lane table of each
// half is that of its own run.
#define VELMORIC_AVX2 __attribute__((target("avx2")))

VELMORIC_AVX2 inline __m256i both(const std::uint8_t* sixteen) {
    return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(sixteen)));
}

// The levels of one component of a line's three palettes, by colour number.
struct LineLevels {
    __m256i blue[3], green[3], red[3];
};

VELMORIC_AVX2 inline LineLevels lineLevels(const Staging& s, std::size_t line) {
    const std::uint8_t* block = s.srcbytes.data() + 96 * line + kPaletteBase;
    const __m128i levels = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(s.stlevel.data()));  // v * 36, v < 8
    const __m128i low3 = _mm_set1_epi8(7), lowByte = _mm_set1_epi16(0xFF);
    LineLevels l;
    for (int q = 0; q < 3; ++q) {
        const __m128i w0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(block + 32 * q));
        const __m128i w1 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(block + 32 * q + 16));
        const __m128i first = _mm_packus_epi16(_mm_and_si128(w0, lowByte), _mm_and_si128(w1, lowByte));
        const __m128i second = _mm_packus_epi16(_mm_srli_epi16(w0, 8), _mm_srli_epi16(w1, 8));
        const __m128i red = _mm_shuffle_epi8(levels, _mm_and_si128(first, low3));
        const __m128i green = _mm_shuffle_epi8(levels, _mm_and_si128(_mm_srli_epi16(second, 4), low3));
        const __m128i blue = _mm_shuffle_epi8(levels, _mm_and_si128(second, low3));
        l.red[q] = _mm256_broadcastsi128_si256(red);
        l.green[q] = _mm256_broadcastsi128_si256(green);
        l.blue[q] = _mm256_broadcastsi128_si256(blue);
    }
    return l;
}

// Colour numbers of 32 pixels from their plane bytes (two runs of 16).
VELMORIC_AVX2 inline __m256i colourNumbers(std::uint64_t left, std::uint64_t right) {
    const __m256i planes = _mm256_set_epi64x(0, static_cast<long long>(right), 0, static_cast<long long>(left));
    const __m256i bits = _mm256_set1_epi64x(0x0102040810204080LL);
    __m256i c = _mm256_setzero_si256();
    for (int p = 0; p < 4; ++p) {
        const long long lo = 0x0101010101010101LL * (2 * p), hi = 0x0101010101010101LL * (2 * p + 1);
        const __m256i spread = _mm256_shuffle_epi8(planes, _mm256_set_epi64x(hi, lo, hi, lo));
        const __m256i set = _mm256_cmpeq_epi8(_mm256_and_si256(spread, bits), bits);
        c = _mm256_or_si256(c, _mm256_and_si256(set, _mm256_set1_epi8(char(1 << p))));
    }
    return c;
}

// One component: each pixel looks up in the one palette its column and
// colour number choose; a shuffle index with bit 7 set gives 0.
VELMORIC_AVX2 inline __m256i component(const __m256i* palettes, const __m256i* index) {
    return _mm256_or_si256(_mm256_or_si256(_mm256_shuffle_epi8(palettes[0], index[0]),
                                           _mm256_shuffle_epi8(palettes[1], index[1])),
                           _mm256_shuffle_epi8(palettes[2], index[2]));
}

template <class Places>
VELMORIC_AVX2 void writeLineVector(const Staging& s, std::size_t line, std::uint8_t* row) {
    const std::uint8_t* src = s.srcbytes.data();
    const LineLevels l = lineLevels(s, line);
    const __m256i laneAfter = _mm256_setr_epi8(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16,  //
                                               1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16);
    const __m256i none = _mm256_set1_epi8(char(0x80));
    for (std::size_t h = 0; h < 10; ++h, row += 96) {
        const __m256i c = colourNumbers(sixteenPixels<Places>(src, line, 2 * h),  //
                                        sixteenPixels<Places>(src, line, 2 * h + 1));
        const __m256i firstLane = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(kPaletteLanes.first[2 * h]));
        const __m256i secondLane = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(kPaletteLanes.second[2 * h]));
        const __m256i second = _mm256_cmpgt_epi8(laneAfter, _mm256_shuffle_epi8(firstLane, c));
        const __m256i third = _mm256_cmpgt_epi8(laneAfter, _mm256_shuffle_epi8(secondLane, c));
        const __m256i index[3] = {
            _mm256_or_si256(c, _mm256_and_si256(second, none)),
            _mm256_or_si256(c, _mm256_or_si256(_mm256_andnot_si256(second, none), _mm256_and_si256(third, none))),
            _mm256_or_si256(c, _mm256_andnot_si256(third, none)),
        };
        const __m256i comps[3] = {component(l.blue, index), component(l.green, index), component(l.red, index)};
        __m256i out[3];
        for (int k = 0; k < 3; ++k)
            out[k] = _mm256_or_si256(_mm256_or_si256(_mm256_shuffle_epi8(comps[0], both(kInterleave.pick[k][0])),
                                                     _mm256_shuffle_epi8(comps[1], both(kInterleave.pick[k][1]))),
                                     _mm256_shuffle_epi8(comps[2], both(kInterleave.pick[k][2])));
        // Each half made 48 bytes: the first half's go to bytes 0 to 47.
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(row), _mm256_permute2x128_si256(out[0], out[1], 0x20));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(row + 32), _mm256_permute2x128_si256(out[2], out[0], 0x30));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(row + 64), _mm256_permute2x128_si256(out[1], out[2], 0x31));
    }
}
#undef VELMORIC_AVX2

bool haveVectorUnit() {
    static const bool have = __builtin_cpu_supports("avx2");
    return have;
}
#endif

template <class Places>
void writeLine(const Staging& s, std::size_t line, std::uint8_t* row) {
#ifdef VELMORIC_SPECTRUM_VECTOR
    if (haveVectorUnit()) {
        writeLineVector<Places>(s, line, row);
#ifndef NDEBUG
        std::uint8_t check[kRowBytes];
        writeLineByTables<Places>(s, line, check);
        assert(std::memcmp(check, row, kRowBytes) == 0);
#endif
        return;
    }
#endif
    writeLineByTables<Places>(s, line, row);
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
// Bytes from a position that may be moved; past the end of the source, or
// past the part of it that fits srcbytes, a read yields 0.
class Reader {
public:
    explicit Reader(const Source& src)
        : data_(src.bytes.data()), size_(std::min<std::size_t>(src.bytes.size(), kSrcBytesExtent)) {}
    std::uint8_t next() {
        const std::uint8_t b = pos_ < size_ ? data_[pos_] : 0;
        ++pos_;
        return b;
    }
    void copy(std::uint8_t* to, std::size_t n) {
        const std::size_t have = pos_ < size_ ? std::min<std::size_t>(n, size_ - std::size_t(pos_)) : 0;
        if (have > 0) std::memcpy(to, data_ + pos_, have);
        std::memset(to + have, 0, n - have);
        pos_ += n;
    }
    void seek(std::uint64_t pos) { pos_ = pos; }

private:
    const std::uint8_t* data_;
    std::size_t size_;
    std::uint64_t pos_ = 0;
};

// Values of up to 16 bits from a stream read most significant bit first,
// byte after byte, never aligned between values. Reading bytes ahead of the
// bits taken changes no value, so a wide buffer serves.
class BitReader {
public:
    explicit BitReader(Reader& in) : in_(in) {}
    unsigned bits(int n) {
        while (count_ < n) {
            buffer_ |= std::uint64_t(in_.next()) << (56 - count_);
            count_ += 8;
        }
        const unsigned v = unsigned(buffer_ >> (64 - n));
        buffer_ <<= n;
        count_ -= n;
        return v;
    }

private:
    Reader& in_;
    std::uint64_t buffer_ = 0;  // the next bits, from bit 63 down
    int count_ = 0;
};

// The 12-byte header of SPC and SPS; only the length of the packed pixel
// data counts. The bytes pass through the start of srcbytes, where the
// unpacked pixels overwrite them.
std::uint64_t readPackedHeader(Staging& s, Reader& in) {
    std::uint32_t pixelLength = 0;
    for (std::size_t i = 0; i < 12; ++i) {
        const std::uint8_t b = in.next();
        s.srcbytes[i] = b;
        if (i >= 4 && i < 8) pixelLength = pixelLength << 8 | b;
    }
    return pixelLength;
}

// Runs until at least 31840 bytes are out; the last run is written whole, so
// the output ends before index 31840 + 130. Every control byte yields at
// least one byte, so this ends on any input.
static_assert(kPackedPixels + 130 <= kPaletteStart, "the longest last run stays below the palettes");
void unpackRuns(Staging& s, Reader& in, bool smooshed) {
    std::uint8_t* out = s.srcbytes.data();
    std::size_t written = 0;
    while (written < kPackedPixels) {
        const unsigned n = in.next();
        const bool repeat = smooshed ? n < 128 : n >= 128;
        const unsigned count = smooshed ? (repeat ? n + 3 : n - 127) : (repeat ? 258 - n : n + 1);
        if (repeat) std::memset(out + written, in.next(), count);
        else in.copy(out + written, count);
        written += count;
    }
}

// SPC palettes: a 16-bit mask, then a colour word for each of its bits 1 to
// 14 that is set, from bit 1 up. Colours 0 and 15 are always black.
void unpackMaskedPalettes(Staging& s, Reader& in) {
    std::uint8_t* out = s.srcbytes.data() + kPaletteStart;
    for (int r = 0; r < kRecords; ++r, out += 32) {
        const unsigned high = in.next();
        const unsigned mask = (high << 8 | in.next()) & 0x7FFE;
        std::memset(out, 0, 32);
        for (unsigned m = mask; m != 0; m &= m - 1) {
            const int c = std::countr_zero(m);
            out[2 * c] = in.next();
            out[2 * c + 1] = in.next();
        }
    }
}

// SPS palettes: one bit stream of 14-bit masks, colour 1 in the top bit,
// each set bit followed by a colour of 3 bits red, 3 green, 3 blue.
void unpackBitPalettes(Staging& s, Reader& in) {
    BitReader bits(in);
    std::uint8_t* out = s.srcbytes.data() + kPaletteStart;
    for (int r = 0; r < kRecords; ++r, out += 32) {
        const unsigned mask = bits.bits(14);
        std::memset(out, 0, 32);
        for (unsigned m = mask; m != 0; m &= ~(1u << (31 - std::countl_zero(m)))) {
            const int c = 14 - (31 - std::countl_zero(m));
            out[2 * c] = std::uint8_t(bits.bits(3));
            const unsigned green = bits.bits(3);
            out[2 * c + 1] = std::uint8_t(green * 16 + bits.bits(3));
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
