// Tiny pictures in all three resolutions. The file packs a 32000-byte
// screen by columns in two streams, control bytes and data words; the words
// are unpacked into srcwords after the palette, column by column, and turned
// back into rows on their way into the bitmap.
#include "decoders/decoder.h"
#include "decoders/planar.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace velmoric {
namespace {

constexpr std::size_t kFirstDataWord = 16;  // indices 0 to 15 hold the palette

// The column-ordered screen: word 4m + j of line y lies in set j, column m.
constexpr std::size_t screenWord(std::size_t set, std::size_t column, std::size_t line) {
    return kFirstDataWord + 4000 * set + 200 * column + line;
}
static_assert(screenWord(3, 19, 199) < kSrcWordsExtent);

// Positions are plain integers: a negative data position (from a negative
// control length) or one past the end reads 0, as any read outside the file.
class TinySource {
public:
    explicit TinySource(const Source& src) : src_(src) {}
    bool inside(std::int64_t at, std::int64_t count) const {
        return at >= 0 && at + count <= std::int64_t(src_.bytes.size());
    }
    std::uint8_t byte(std::int64_t at) const { return inside(at, 1) ? src_.bytes[std::size_t(at)] : 0; }
    // A 2-byte read, as it lands in memory: first file byte low.
    std::uint16_t word(std::int64_t at) const { return std::uint16_t(byte(at) | (byte(at + 1) << 8)); }
    // A signed count, first byte high.
    std::int16_t count(std::int64_t at) const { return std::int16_t((byte(at) << 8) | byte(at + 1)); }
    const std::uint8_t* data() const { return src_.bytes.data(); }

private:
    const Source& src_;
};

// Runs are mostly a few words long, too short for the library's copy, and
// the words behind a run must keep what they hold: a short file leaves
// the earlier picture's words there. So a run is stored as two blocks of
// the largest size that fits, one from its start and one up to its end,
// overlapping in the middle, and a long run as 32-byte blocks.
template <class Block>
inline void storeBlocks(std::uint8_t* to, std::size_t bytes, Block block) {
    if (bytes >= 32) {
        for (std::size_t i = 0; i + 32 < bytes; i += 32) block(to + i, i, 32);
        block(to + bytes - 32, bytes - 32, 32);
    } else if (bytes >= 16) {
        block(to, 0, 16);
        block(to + bytes - 16, bytes - 16, 16);
    } else if (bytes >= 8) {
        block(to, 0, 8);
        block(to + bytes - 8, bytes - 8, 8);
    } else if (bytes >= 4) {
        block(to, 0, 4);
        block(to + bytes - 4, bytes - 4, 4);
    } else {
        block(to, 0, 2);
    }
}

// One block of a size that storeBlocks uses, with a copy the compiler
// makes a single load and store.
inline void copyBlock(std::uint8_t* to, const std::uint8_t* from, std::size_t size) {
    switch (size) {
        case 32: std::memcpy(to, from, 32); break;
        case 16: std::memcpy(to, from, 16); break;
        case 8: std::memcpy(to, from, 8); break;
        case 4: std::memcpy(to, from, 4); break;
        default: std::memcpy(to, from, 2); break;
    }
}

inline void copyWords(std::uint16_t* to, const std::uint8_t* from, std::size_t count) {
    storeBlocks(reinterpret_cast<std::uint8_t*>(to), 2 * count,
                [from](std::uint8_t* at, std::size_t offset, std::size_t size) { copyBlock(at, from + offset, size); });
}

// Every block of a repeated word is the same, taken from one register:
// a pattern built in memory would be read back by loads wider than the
// stores that wrote it, which cannot be forwarded and wait.
inline void fillWords(std::uint16_t* to, std::uint16_t word, std::size_t count) {
    using Pattern = std::uint16_t __attribute__((vector_size(16)));
    const Pattern pattern = Pattern{} + word;
    storeBlocks(reinterpret_cast<std::uint8_t*>(to), 2 * count, [pattern](std::uint8_t* at, std::size_t, std::size_t size) {
        if (size == 32) {
            std::memcpy(at, &pattern, 16);
            std::memcpy(at + 16, &pattern, 16);
        } else {
            copyBlock(at, reinterpret_cast<const std::uint8_t*>(&pattern), size);
        }
    });
}

// Unpacks the two streams into srcwords. Words for indices past the extent
// are not stored, but the positions move on as if they were, so the stream
// is followed to its end whatever it asks for.
class Unpacker {
public:
    Unpacker(Staging& s, const TinySource& in, std::int64_t dataAt) : s_(s), in_(in), data_(dataAt) {}

    void copy(std::int64_t count) {
        if (count <= 0) return;
        if (const std::int64_t stored = room(count); stored > 0) {
            std::uint16_t* dst = s_.srcwords.data() + out_;
            if (in_.inside(data_, 2 * stored)) {
                copyWords(dst, in_.data() + data_, std::size_t(stored));
            } else {
                for (std::int64_t i = 0; i < stored; ++i) dst[i] = in_.word(data_ + 2 * i);
            }
        }
        out_ += count;
        data_ += 2 * count;
    }

    // The data word is passed once, after the run, even when no copy is made.
    void repeat(std::int64_t count) {
        if (count > 0) {
            if (const std::int64_t stored = room(count); stored > 0)
                fillWords(s_.srcwords.data() + out_, in_.word(data_), std::size_t(stored));
            out_ += count;
        }
        data_ += 2;
    }

private:
    // How many of `count` words from the output index on still fit.
    std::int64_t room(std::int64_t count) const {
        return std::clamp<std::int64_t>(std::int64_t(kSrcWordsExtent) - out_, 0, count);
    }

    Staging& s_;
    const TinySource& in_;
    std::int64_t data_;
    std::int64_t out_ = kFirstDataWord;
};

// One pass at least; the end test compares the positions after each
// control byte has been dealt with in full.
void unpackStreams(Staging& s, const TinySource& in, std::int64_t controlAt, std::int64_t controlLength) {
    const std::int64_t controlEnd = controlAt + controlLength;
    Unpacker out(s, in, controlEnd);
    do {
        const int x = in.byte(controlAt++);
        if (x >= 128) {
            out.copy(256 - x);
        } else if (x >= 2) {
            out.repeat(x);
        } else {
            const std::int16_t m = in.count(controlAt);
            controlAt += 2;
            if (x == 1) {
                out.copy(m);
            } else {
                out.repeat(m);
            }
        }
    } while (controlAt < controlEnd);
}

// One column of groups, all 200 lines, from the words of up to four sets
// (absent planes are 0) into bitmap rows of `rowWords` words, line 0 the
// last row. The lines of a column lie side by side in each set.
void mergeColumn(const std::uint16_t* p0, const std::uint16_t* p1, const std::uint16_t* p2, const std::uint16_t* p3,
                 std::uint16_t* lastRow, std::size_t rowWords) {
    const std::uint16_t* const planes[4] = {p0, p1, p2, p3};
    planar::columnGroups(planes, lastRow, rowWords, 200);
}

// Group m of a low line is column m of the four sets.
void mergeLowColumns(Staging& s) {
    const std::uint16_t* w = s.srcwords.data();
    std::uint16_t* lastRow = s.lowbmp.data() + kColourPixelWord + 80 * 199;
    for (std::size_t m = 0; m < 20; ++m)
        mergeColumn(w + screenWord(0, m, 0), w + screenWord(1, m, 0), w + screenWord(2, m, 0), w + screenWord(3, m, 0),
                    lastRow + 4 * m, 80);
}

// Group k of a medium line is the screen words 2k and 2k + 1: sets 0 and 1
// of column k / 2 for even k, sets 2 and 3 for odd k.
void mergeMediumColumns(Staging& s) {
    static constexpr std::uint16_t kNoPlane[200] = {};
    const std::uint16_t* w = s.srcwords.data();
    std::uint16_t* lastRow = s.medbmp.data() + kColourPixelWord + 160 * 199;
    for (std::size_t k = 0; k < 40; ++k) {
        const std::size_t set = 2 * (k % 2), column = k / 2;
        mergeColumn(w + screenWord(set, column, 0), w + screenWord(set + 1, column, 0), kNoPlane, kNoPlane,
                    lastRow + 4 * k, 160);
    }
}

// A screen line of 80 words is two mono lines: columns 0 to 9 make line 2y,
// columns 10 to 19 line 2y + 1. The words go unchanged.
std::uint16_t* monoLine(Staging& s, std::size_t n) { return s.monobmp.data() + kMonoPixelWord + 40 * (399 - n); }

#if defined(__SSE2__)
// Eight lines of one column at a time: the four sets' words of a line lie
// side by side in the bitmap, so unpacking the 16-bit lanes of the four
// sets, then their pairs, gives each line's four words in one 64-bit lane.
void copyMonoColumns(Staging& s) {
    const std::uint16_t* w = s.srcwords.data();
    for (std::size_t m = 0; m < 20; ++m) {
        const std::size_t half = m / 10, word = 4 * (m % 10);
        for (std::size_t y = 0; y < 200; y += 8) {
            __m128i set[4];
            for (std::size_t j = 0; j < 4; ++j)
                set[j] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(w + screenWord(j, m, y)));
            const __m128i lo01 = _mm_unpacklo_epi16(set[0], set[1]), hi01 = _mm_unpackhi_epi16(set[0], set[1]);
            const __m128i lo23 = _mm_unpacklo_epi16(set[2], set[3]), hi23 = _mm_unpackhi_epi16(set[2], set[3]);
            const __m128i lines[4] = {_mm_unpacklo_epi32(lo01, lo23), _mm_unpackhi_epi32(lo01, lo23),
                                      _mm_unpacklo_epi32(hi01, hi23), _mm_unpackhi_epi32(hi01, hi23)};
            for (std::size_t t = 0; t < 4; ++t) {
                const std::size_t line = y + 2 * t;
                _mm_storel_epi64(reinterpret_cast<__m128i*>(monoLine(s, 2 * line + half) + word), lines[t]);
                _mm_storel_epi64(reinterpret_cast<__m128i*>(monoLine(s, 2 * line + 2 + half) + word),
                                 _mm_unpackhi_epi64(lines[t], lines[t]));
            }
        }
    }
}
#else
void copyMonoColumns(Staging& s) {
    const std::uint16_t* w = s.srcwords.data();
    for (std::size_t n = 0; n < 400; ++n) {
        std::uint16_t* row = monoLine(s, n);
        const std::size_t y = n / 2, firstColumn = 10 * (n % 2);
        for (std::size_t g = 0; g < 10; ++g)
            for (std::size_t j = 0; j < 4; ++j) row[4 * g + j] = w[screenWord(j, firstColumn + g, y)];
    }
}
#endif

}  // namespace

Decoded tiny(Staging& s, const Source& src) {
    const TinySource in(src);
    const int n = in.byte(0);
    const std::int64_t t = n >= 3 ? 4 : 0;
    const std::int16_t controlLength = in.count(33 + t);
    readWords(s, src, 0, std::size_t(1 + t), 16);
    unpackStreams(s, in, 37 + t, controlLength);
    s.convertPaletteFromSrcwords(0, s.lowbmp.data());
    s.convertPaletteFromSrcwords(0, s.medbmp.data());

    // The resolution byte is tested only now: a bad one leaves the new
    // words and palettes in place but stages nothing.
    switch (n) {
        case 0:
        case 3:
            mergeLowColumns(s);
            return {false, s.emitLow(), " Tiny 320*200 16 Colour", 1};
        case 1:
        case 4:
            mergeMediumColumns(s);
            return {false, s.emitMedium(), " Tiny 640*200 4 Colour", 2};
        case 2:
        case 5:
            copyMonoColumns(s);
            return {false, s.emitMono(), " Tiny 640*400 Mono", 3};
        default:
            return rejectedSource();
    }
}

}  // namespace velmoric
