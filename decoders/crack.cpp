// Crack Art pictures (CA1 to CA3). The packed form fills the 32000-byte
// Atari screen not in reading order but column by column at a stride; once
// unpacked, the screen goes through the same merges as a Degas picture.
#include <optional>

#include "decoders/decoder.h"
#include "decoders/vector_clones.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace velmoric {
namespace {

constexpr std::size_t kScreenBytes = 32000;

// The whole source, byte for byte, into srcbytes from index 0. What lies
// behind a short file is left as the previous picture had it.
void readSourceBytes(Staging& s, const Source& src) {
    const std::size_t n = std::min(src.bytes.size(), kSrcBytesExtent);
    if (n) std::memcpy(s.srcbytes.data(), src.bytes.data(), n);
}

// The stream is unpacked in two steps. First into one line in the order in
// which the stride visits the screen: pass 0 takes 0, S, 2S... below 32000,
// pass 1 takes 1, 1 + S..., and a pass that starts behind the screen (a
// stride above 32000) still takes its one position. That gives
// max(32000, S) positions, and the picture ends at the last of them, even in
// the middle of a command. Then the line is laid over the screen pass by
// pass, which is a transpose of a matrix of bytes.

// The number of positions the stride visits, one for each store or skip.
std::size_t visitedPositions(std::size_t stride) { return std::max(kScreenBytes, stride); }

// How many bytes from `at` on differ from `escape`, up to the end of
// srcbytes. Most spans are short, so they are looked at 16 bytes at a time
// before the library search takes over.
std::size_t plainSpan(const std::uint8_t* bytes, std::size_t at, std::uint8_t escape) {
    std::size_t n = 0;
#if defined(__SSE2__)
    const __m128i e = _mm_set1_epi8(char(escape));
    for (int block = 0; block < 4 && at + n + 16 <= kSrcBytesExtent; ++block, n += 16) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + at + n));
        if (const unsigned hits = unsigned(_mm_movemask_epi8(_mm_cmpeq_epi8(v, e))))
            return n + unsigned(std::countr_zero(hits));
    }
#endif
    const void* found = std::memchr(bytes + at + n, escape, kSrcBytesExtent - at - n);
    return found ? std::size_t(static_cast<const std::uint8_t*>(found) - (bytes + at)) : kSrcBytesExtent - at;
}

// GCC's vector shuffles and clones carry the transposes; other compilers
// (clang builds the fuzz targets) take plain loops with the same results.
#if defined(__GNUC__) && !defined(__clang__)
#define VELMORIC_VECTOR_SHUFFLES 1
#endif

// Without the shuffles the plain loops gain nothing from clones.
#if defined(VELMORIC_VECTOR_SHUFFLES)
#define CRACK_VECTOR_CLONES VELMORIC_VECTOR_CLONES
#else
#define CRACK_VECTOR_CLONES
#endif

using Bytes16 = std::uint8_t __attribute__((vector_size(16)));
using Bytes32 = std::uint8_t __attribute__((vector_size(32)));

// Exact copies and fills of the spans that commands give, with two
// overlapping stores of the widest size that fits and nothing written
// outside [dst, dst + count). Long copies go to the library.
template <class Word>
[[gnu::always_inline]] inline void copyEnds(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    Word head, tail;
    std::memcpy(&head, src, sizeof head);
    std::memcpy(&tail, src + count - sizeof tail, sizeof tail);
    std::memcpy(dst, &head, sizeof head);
    std::memcpy(dst + count - sizeof tail, &tail, sizeof tail);
}

[[gnu::always_inline]] inline void copySpan(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    if (count > 32) {
        std::memcpy(dst, src, count);
    } else if (count >= 16) {
        copyEnds<Bytes16>(dst, src, count);
    } else if (count >= 8) {
        copyEnds<std::uint64_t>(dst, src, count);
    } else if (count >= 4) {
        copyEnds<std::uint32_t>(dst, src, count);
    } else if (count) {
        // 1 to 3 bytes: the first, the middle and the last.
        dst[0] = src[0];
        dst[count / 2] = src[count / 2];
        dst[count - 1] = src[count - 1];
    }
}

// Runs are at most 65536 long and mostly far shorter: below a kilobyte,
// plain vector stores beat the start-up of the library's string instruction.
[[gnu::always_inline]] inline void fillSpan(std::uint8_t* dst, std::uint8_t value, std::size_t count) {
    if (count > 1024) {
        std::memset(dst, value, count);
        return;
    }
    if (count > 32) {
        Bytes32 v;
        std::memset(&v, value, sizeof v);
        for (std::size_t i = 0; i + sizeof v < count; i += sizeof v) std::memcpy(dst + i, &v, sizeof v);
        std::memcpy(dst + count - sizeof v, &v, sizeof v);
        return;
    }
    std::uint8_t pattern[32];
    std::memset(pattern, value, sizeof pattern);
    copySpan(dst, pattern, count);
}

// Reads the packed stream from srcbytes at `r` into `line` from position 0
// until `total` positions are done or the end command comes, and gives the
// number of positions done. A skip stores `skipped` when given, else only
// moves on, so the skipped bytes keep what `line` held. Each command covers
// at least one position, so the loop ends.
//
// When skips store, the caller fills the positions from the returned count
// up to `total`, so every position below `total` is written in order: a
// short span may then be written as a whole block of 32 bytes, whose bytes
// behind the span are written again later. That spares the branches on the
// length of each span.
CRACK_VECTOR_CLONES
std::size_t unpackLine(const FixedArray<std::uint8_t, kSrcBytesExtent>& in, std::size_t r, std::uint8_t escape,
                       std::uint8_t* line, std::size_t total, std::optional<std::uint8_t> skipped) {
    const std::uint8_t* bytes = in.data();
    std::size_t t = 0;
    auto next = [&] { return in.get(r++); };
    const bool blocks = skipped.has_value();
    auto store = [&](std::uint8_t value, std::size_t count) {
        count = std::min(count, total - t);
        if (blocks && t + sizeof(Bytes32) <= total) {
            Bytes32 v;
            std::memset(&v, value, sizeof v);
            std::memcpy(line + t, &v, sizeof v);
            if (count > sizeof v) fillSpan(line + t + sizeof v, value, count - sizeof v);
        } else {
            fillSpan(line + t, value, count);
        }
        t += count;
    };
    while (t < total) {
        // Behind srcbytes every read gives 0, and a 0 is stored once whether
        // it is a plain byte or, with an escape of 0, a doubled escape.
        if (r >= kSrcBytesExtent) {
            store(0, total - t);
            break;
        }
        if (bytes[r] != escape) {
            // Plain bytes up to the next escape go in as they are.
            const std::size_t count = std::min(plainSpan(bytes, r, escape), total - t);
            if (blocks && t + sizeof(Bytes32) <= total && r + sizeof(Bytes32) <= kSrcBytesExtent) {
                std::memcpy(line + t, bytes + r, sizeof(Bytes32));
                if (count > sizeof(Bytes32))
                    copySpan(line + t + sizeof(Bytes32), bytes + r + sizeof(Bytes32), count - sizeof(Bytes32));
            } else {
                copySpan(line + t, bytes + r, count);
            }
            t += count;
            r += count;
            continue;
        }
        ++r;
        // A doubled escape is a literal before anything else, whatever the
        // escape's value, so an escape of 0, 1 or 2 can still be stored.
        const std::uint8_t k = next();
        if (k == escape) {
            store(escape, 1);
        } else if (k == 0) {
            const std::size_t n = next();
            store(next(), n + 1);
        } else if (k == 1) {
            const std::size_t h = next();
            const std::size_t l = next();
            store(next(), h * 256 + l + 1);
        } else if (k == 2) {
            const std::size_t h = next();
            if (h == 0) break;  // end of the picture
            const std::size_t l = next();
            const std::size_t count = h * 256 + l + 1;
            if (skipped) {
                store(*skipped, count);
            } else {
                t += std::min(count, total - t);
            }
        } else {
            store(next(), std::size_t(k) + 1);
        }
    }
    return t;
}

// Eight rows of 32 bytes, from rows[i] + j, into 32 columns of 8 bytes,
// rows `to` apart: dst[k * to + i] = rows[i][j + k]. In the vectors of the
// widest instructions there are: byte, pair and quad interleaves within each
// 16-byte half, after which vector m holds, as 8-byte columns, the
// positions 2m, 2m + 1, 16 + 2m and 17 + 2m.
using Pairs32 = std::uint16_t __attribute__((vector_size(32)));
using Quads32 = std::uint32_t __attribute__((vector_size(32)));
using Columns32 = std::uint64_t __attribute__((vector_size(32)));

#if !defined(VELMORIC_VECTOR_SHUFFLES)
inline void transposeWideTile(const std::uint8_t* const* rows, std::size_t j, std::uint8_t* dst, std::size_t to) {
    for (std::size_t k = 0; k < 32; ++k)
        for (std::size_t i = 0; i < 8; ++i) dst[k * to + i] = rows[i][j + k];
}
#else
[[gnu::always_inline]] inline void transposeWideTile(const std::uint8_t* const* rows, std::size_t j, std::uint8_t* dst,
                                                     std::size_t to) {
    const Bytes32 lo8 = {0, 32, 1, 33, 2, 34, 3, 35, 4, 36, 5, 37, 6, 38, 7, 39,
                         16, 48, 17, 49, 18, 50, 19, 51, 20, 52, 21, 53, 22, 54, 23, 55};
    const Bytes32 hi8 = lo8 + 8;
    const Pairs32 lo16 = {0, 16, 1, 17, 2, 18, 3, 19, 8, 24, 9, 25, 10, 26, 11, 27};
    const Pairs32 hi16 = lo16 + 4;
    const Quads32 lo32 = {0, 8, 1, 9, 4, 12, 5, 13};
    const Quads32 hi32 = lo32 + 2;

    Bytes32 r[8];
    for (std::size_t i = 0; i < 8; ++i) std::memcpy(&r[i], rows[i] + j, sizeof r[i]);
    Pairs32 a[8];  // rows 2p and 2p + 1 interleaved: positions 0-7 in a[2p], 8-15 in a[2p + 1]
    for (std::size_t p = 0; p < 4; ++p) {
        a[2 * p] = Pairs32(__builtin_shuffle(r[2 * p], r[2 * p + 1], lo8));
        a[2 * p + 1] = Pairs32(__builtin_shuffle(r[2 * p], r[2 * p + 1], hi8));
    }
    Quads32 b[8];  // rows 0-3 in b[0..3], rows 4-7 in b[4..7], four positions each
    for (std::size_t h = 0; h < 8; h += 4) {
        b[h] = Quads32(__builtin_shuffle(a[h], a[h + 2], lo16));
        b[h + 1] = Quads32(__builtin_shuffle(a[h], a[h + 2], hi16));
        b[h + 2] = Quads32(__builtin_shuffle(a[h + 1], a[h + 3], lo16));
        b[h + 3] = Quads32(__builtin_shuffle(a[h + 1], a[h + 3], hi16));
    }
    for (std::size_t q = 0; q < 4; ++q) {
        const Columns32 c[2] = {Columns32(__builtin_shuffle(b[q], b[q + 4], lo32)),
                                Columns32(__builtin_shuffle(b[q], b[q + 4], hi32))};
        if (to == 8) {
            // The columns lie end to end: positions 4q to 4q + 3, then 16
            // on from there, four columns at a time.
            const Columns32 low = __builtin_shuffle(c[0], c[1], Columns32{0, 1, 4, 5});
            const Columns32 high = __builtin_shuffle(c[0], c[1], Columns32{2, 3, 6, 7});
            std::memcpy(dst + 8 * 4 * q, &low, sizeof low);
            std::memcpy(dst + 8 * (16 + 4 * q), &high, sizeof high);
            continue;
        }
        for (std::size_t h = 0; h < 2; ++h) {
            const std::size_t m = 2 * q + h;
            const std::size_t position[4] = {2 * m, 2 * m + 1, 16 + 2 * m, 17 + 2 * m};
            for (std::size_t e = 0; e < 4; ++e) {
                const std::uint64_t column = c[h][e];
                std::memcpy(dst + position[e] * to, &column, sizeof column);
            }
        }
    }
}
#endif

// Where pass p starts in the line: the first `longer` = 32000 mod S passes
// hold one position more than the others.
struct PassStarts {
    const std::uint8_t* line;
    std::size_t len, longer;
    const std::uint8_t* operator()(std::size_t p) const { return line + p * len + std::min(p, longer); }
};

// Sixteen rows of 32 bytes, from rows[i] + j, into 32 columns of 16 bytes,
// rows `to` apart: dst[k * to + i] = rows[i][j + k]. Four rounds of
// interleaving bytes, pairs, quads and eights within each 16-byte half
// leave vector k holding the positions k and 16 + k of all rows, in order
// when the rows are taken in bit-reversed order.
#if defined(VELMORIC_VECTOR_SHUFFLES)
template <class Lanes, class Mask>
[[gnu::always_inline]] inline void interleaveRound(Bytes32* v, const Mask& lo, const Mask& hi) {
    Bytes32 next[16];
    for (std::size_t i = 0; i < 8; ++i) {
        next[2 * i] = Bytes32(__builtin_shuffle(Lanes(v[i]), Lanes(v[i + 8]), lo));
        next[2 * i + 1] = Bytes32(__builtin_shuffle(Lanes(v[i]), Lanes(v[i + 8]), hi));
    }
    std::memcpy(v, next, sizeof next);
}

// The four rounds over sixteen vectors whose rows were taken in the order
// kBitReversed: afterwards vector k holds position k of every row, in order,
// in each 16-byte half.
constexpr std::uint8_t kBitReversed[16] = {0, 8, 4, 12, 2, 10, 6, 14, 1, 9, 5, 13, 3, 11, 7, 15};

[[gnu::always_inline]] inline void interleaveRounds(Bytes32* v) {
    const Bytes32 lo8 = {0, 32, 1, 33, 2, 34, 3, 35, 4, 36, 5, 37, 6, 38, 7, 39,
                         16, 48, 17, 49, 18, 50, 19, 51, 20, 52, 21, 53, 22, 54, 23, 55};
    const Pairs32 lo16 = {0, 16, 1, 17, 2, 18, 3, 19, 8, 24, 9, 25, 10, 26, 11, 27};
    const Quads32 lo32 = {0, 8, 1, 9, 4, 12, 5, 13};
    const Columns32 lo64 = {0, 4, 2, 6};
    interleaveRound<Bytes32>(v, lo8, lo8 + 8);
    interleaveRound<Pairs32>(v, lo16, lo16 + 4);
    interleaveRound<Quads32>(v, lo32, lo32 + 2);
    interleaveRound<Columns32>(v, lo64, lo64 + 1);
}

[[gnu::always_inline]] inline void transposeTallTile(const std::uint8_t* const* rows, std::size_t j, std::uint8_t* dst,
                                                     std::size_t to) {
    Bytes32 v[16];
    for (std::size_t i = 0; i < 16; ++i) std::memcpy(&v[i], rows[kBitReversed[i]] + j, sizeof v[i]);
    interleaveRounds(v);
    for (std::size_t k = 0; k < 16; ++k) {
        const auto* column = reinterpret_cast<const std::uint8_t*>(&v[k]);
        std::memcpy(dst + k * to, column, 16);
        std::memcpy(dst + (16 + k) * to, column + 16, 16);
    }
}
#else
inline void transposeTallTile(const std::uint8_t* const* rows, std::size_t j, std::uint8_t* dst, std::size_t to) {
    for (std::size_t k = 0; k < 32; ++k)
        for (std::size_t i = 0; i < 16; ++i) dst[k * to + i] = rows[i][j + k];
}
#endif

// Consecutive passes of `len` positions each, 5 to 32, from `line` onto the
// screen from the first pass's position on: screen[a + j * stride] =
// line[a * len + j]. Thirty-two passes by 16 positions at a time: 16 bytes
// of pass i in one half of a vector and of pass 16 + i in the other, so that
// after the rounds vector k holds position j + k of the 32 passes end to
// end. The last tile of a row or column steps back to fit. A pass shorter
// than 16 is read 16 bytes long, which stays inside the line's buffer
// (srcwords, twice the screen), and only its positions are written.
CRACK_VECTOR_CLONES
void layShortPassTiles(const std::uint8_t* line, std::uint8_t* screen, std::size_t passes, std::size_t len,
                       std::size_t stride) {
#if defined(VELMORIC_VECTOR_SHUFFLES)
    const bool plain = passes < 32;
#else
    const bool plain = true;
#endif
    if (plain) {
        for (std::size_t a = 0; a < passes; ++a)
            for (std::size_t j = 0; j < len; ++j) screen[a + j * stride] = line[a * len + j];
        return;
    }
#if defined(VELMORIC_VECTOR_SHUFFLES)
    for (std::size_t a0 = 0; a0 < passes; a0 += 32) {
        const std::size_t a = std::min(a0, passes - 32);
        for (std::size_t j0 = 0; j0 < len; j0 += 16) {
            const std::size_t j = len < 16 ? 0 : std::min(j0, len - 16);
            Bytes32 v[16];
            for (std::size_t i = 0; i < 16; ++i) {
                const std::size_t row = a + kBitReversed[i];
                std::uint8_t both[32];
                std::memcpy(both, line + row * len + j, 16);
                std::memcpy(both + 16, line + (row + 16) * len + j, 16);
                std::memcpy(&v[i], both, sizeof both);
            }
            interleaveRounds(v);
            for (std::size_t k = 0; k < std::min<std::size_t>(len, 16); ++k)
                std::memcpy(screen + (j + k) * stride + a, &v[k], sizeof v[k]);
        }
    }
#endif
}

// Strides below 8: all passes at once, a screen row of S bytes for each
// position; with S known at compile time the loop runs in vectors.
template <std::size_t S>
CRACK_VECTOR_CLONES void interleavePasses(PassStarts starts, std::uint8_t* screen) {
    const std::uint8_t* r[S];
    for (std::size_t p = 0; p < S; ++p) r[p] = starts(p);
    for (std::size_t j = 0; j < starts.len; ++j)
        for (std::size_t p = 0; p < S; ++p) screen[j * S + p] = r[p][j];
}

// Tiles of `Passes` passes by 32 positions: screen[p + j * stride] =
// line[start of p + j] for the first `len` positions (at least 32) of every
// pass. The last tile of a row or column steps back to fit, writing some
// bytes twice, alike.
using TileTranspose = void (*)(const std::uint8_t* const*, std::size_t, std::uint8_t*, std::size_t);

template <std::size_t Passes, TileTranspose transpose>
[[gnu::always_inline]] inline void layTiles(PassStarts starts, std::uint8_t* screen, std::size_t stride) {
    for (std::size_t a0 = 0; a0 < stride; a0 += Passes) {
        const std::size_t a = std::min(a0, stride - Passes);
        const std::uint8_t* rows[Passes];
        for (std::size_t i = 0; i < Passes; ++i) rows[i] = starts(a + i);
        for (std::size_t j0 = 0; j0 < starts.len; j0 += 32) {
            const std::size_t j = std::min(j0, starts.len - 32);
            transpose(rows, j, screen + j * stride + a, stride);
        }
    }
}

// Every pass of a stride of at least 8, sixteen passes at a time where
// there are that many: half as many stores, each of 16 bytes.
CRACK_VECTOR_CLONES
void layRectangle(PassStarts starts, std::uint8_t* screen, std::size_t stride) {
    if (stride >= 16) {
        layTiles<16, transposeTallTile>(starts, screen, stride);
    } else {
        layTiles<8, transposeWideTile>(starts, screen, stride);
    }
}

// Passes of at most 32 positions each (strides above 1000), in two groups
// of equal length. For the shortest, with the length known at compile time
// the loop runs over the passes in vectors: screen[a + j * stride] =
// line[a * Len + j].
template <std::size_t Len>
CRACK_VECTOR_CLONES void layShortPasses(const std::uint8_t* line, std::uint8_t* screen, std::size_t passes,
                                           std::size_t stride) {
    for (std::size_t a = 0; a < passes; ++a)
        for (std::size_t j = 0; j < Len; ++j) screen[a + j * stride] = line[a * Len + j];
}

void layShortPassGroup(const std::uint8_t* line, std::uint8_t* screen, std::size_t passes, std::size_t len,
                       std::size_t stride) {
    switch (len) {
        case 1: std::memcpy(screen, line, passes); break;
        case 2: layShortPasses<2>(line, screen, passes, stride); break;
        case 3: layShortPasses<3>(line, screen, passes, stride); break;
        case 4: layShortPasses<4>(line, screen, passes, stride); break;
        default: layShortPassTiles(line, screen, passes, len, stride); break;
    }
}

// The line of a stride from 2 to 31999 onto the screen.
void layLine(const std::uint8_t* line, std::uint8_t* screen, std::size_t stride) {
    const PassStarts starts{line, kScreenBytes / stride, kScreenBytes % stride};
    if (starts.len < 32) {
        // The longer passes first, then the others.
        layShortPassGroup(line, screen, starts.longer, starts.len + 1, stride);
        layShortPassGroup(starts(starts.longer), screen + starts.longer, stride - starts.longer, starts.len, stride);
        return;
    }
    // The first len positions of every pass, then the one more of the
    // longer passes.
    switch (stride) {
        case 2: interleavePasses<2>(starts, screen); break;
        case 3: interleavePasses<3>(starts, screen); break;
        case 4: interleavePasses<4>(starts, screen); break;
        case 5: interleavePasses<5>(starts, screen); break;
        case 6: interleavePasses<6>(starts, screen); break;
        case 7: interleavePasses<7>(starts, screen); break;
        default: layRectangle(starts, screen, stride); break;
    }
    for (std::size_t p = 0; p < starts.longer; ++p) screen[starts.len * stride + p] = starts(p)[starts.len];
}

// Reads the packed fields and stream from srcbytes at `at` into the first
// 32000 bytes of pixbytes (and, for a stride above 32000, the positions
// behind them that its passes visit). `scratch` holds 32000 bytes that
// nothing else needs meanwhile.
void unpackStream(Staging& s, std::size_t at, std::uint8_t* scratch) {
    const auto& in = s.srcbytes;
    std::uint8_t* pix = s.pixbytes.data();
    const std::uint8_t escape = in.get(at);
    const std::uint8_t initial = in.get(at + 1);
    const std::size_t stride = std::size_t(((in.get(at + 2) & 0x7F) << 8) | in.get(at + 3));
    if (stride == 0 || stride >= kScreenBytes) {
        // No pass, or one store a pass: the line is the screen itself, and
        // behind it skipped positions keep what pixbytes held there.
        std::memset(pix, initial, kScreenBytes);
        static_assert(32767 <= kPixBytesExtent);
        if (stride) unpackLine(in, at + 4, escape, pix, visitedPositions(stride), std::nullopt);
        return;
    }
    // Skipped positions and those behind the end of the picture keep the
    // initial byte. With one pass the line is the screen itself.
    std::uint8_t* line = stride == 1 ? pix : scratch;
    const std::size_t done = unpackLine(in, at + 4, escape, line, kScreenBytes, initial);
    std::memset(line + done, initial, kScreenBytes - done);
    if (stride > 1) layLine(scratch, pix, stride);
}

// The three resolutions differ in where the pixels start (behind a palette
// of 16, 4 or no colours) and in what the screen is merged into.
enum class Resolution { Low, Medium, High };

Decoded crack(Staging& s, const Source& src, Resolution res) {
    readSourceBytes(s, src);
    const std::size_t pixelsAt = res == Resolution::Low ? 36 : res == Resolution::Medium ? 12 : 4;

    static_assert(36 + kScreenBytes <= kSrcBytesExtent);
    if (s.srcbytes.get(2) == 0) {
        std::memcpy(s.pixbytes.data(), s.srcbytes.data() + pixelsAt, kScreenBytes);
    } else {
        // The first 32000 bytes of srcwords serve as the line: the screen
        // is copied over them below.
        unpackStream(s, pixelsAt, reinterpret_cast<std::uint8_t*>(s.srcwords.data()));
    }

    // Medium resolution also converts 16 words from byte 4, though its file
    // holds only four colours: the other entries are never referred to.
    std::uint16_t palette[16];
    for (std::size_t i = 0; i < 16; ++i)
        palette[i] = std::uint16_t(s.srcbytes.get(4 + 2 * i) | (s.srcbytes.get(5 + 2 * i) << 8));

    // The same byte image, word by word with the first byte low.
    std::memcpy(s.srcwords.data(), s.pixbytes.data(), kScreenBytes);

    switch (res) {
        case Resolution::Low:
            Staging::convertPalette(palette, s.lowbmp.data());
            s.mergeLow(0, 15920);
            return {false, s.emitLow(), " Crack Art 320*200 16 Colour", 1};
        case Resolution::Medium:
            Staging::convertPalette(palette, s.medbmp.data());
            s.mergeMedium(0, 15920);
            return {false, s.emitMedium(), " Crack Art 640*200 4 Colour", 2};
        case Resolution::High:
            break;
    }
    s.copyMono(0, 15960);
    return {false, s.emitMono(), " Crack Art 640*400 Mono", 3};
}

}  // namespace

Decoded crack1(Staging& s, const Source& src) { return crack(s, src, Resolution::Low); }
Decoded crack2(Staging& s, const Source& src) { return crack(s, src, Resolution::Medium); }
Decoded crack3(Staging& s, const Source& src) { return crack(s, src, Resolution::High); }

}  // namespace velmoric
