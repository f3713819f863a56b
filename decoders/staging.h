#pragma once
// The staging arrays, bitmap layouts and lookup tables that every decoder
// shares. Each array has a fixed extent and starts zero-filled; a read beyond
// an extent yields 0 and a store beyond it is dropped, so no input can reach
// memory outside them.
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <cstdlib>
#include <memory>
#include <new>
#include <type_traits>

namespace velmoric {

// Word arrays hold the bytes of the bitmap files in memory order, low byte
// first, which is the order of the file.
static_assert(std::endian::native == std::endian::little, "the staging arrays assume a little-endian machine");

inline constexpr std::size_t kSrcWordsExtent = 32767;
inline constexpr std::size_t kLowBmpExtent = 16385;
inline constexpr std::size_t kMedBmpExtent = 32767;
inline constexpr std::size_t kMonoBmpExtent = 16385;
inline constexpr std::size_t kTrueBmpExtent = 101;
inline constexpr std::size_t kMacBmpExtent = 101;
inline constexpr std::size_t kSrcBytesExtent = 65533;
inline constexpr std::size_t kPixBytesExtent = 65533;

// Bitmap file sizes, header included, and where their pixels begin.
inline constexpr std::size_t kLowBmpWords = 16059;   // 32118 bytes
inline constexpr std::size_t kMedBmpWords = 32059;   // 64118 bytes
inline constexpr std::size_t kMonoBmpWords = 16031;  // 32062 bytes
inline constexpr std::size_t kTrueBmpSize = 192054;
inline constexpr std::size_t kMacBmpSize = 51902;
inline constexpr std::size_t kTrueHeaderSize = 54;
inline constexpr std::size_t kMacHeaderSize = 62;
inline constexpr std::size_t kPaletteWord = 27;    // entry i at words 27 + 2i and 28 + 2i
inline constexpr std::size_t kColourPixelWord = 59;
inline constexpr std::size_t kMonoPixelWord = 31;

// A fixed array whose checked accessors make out-of-extent reads 0 and drop
// out-of-extent stores. It lives in the staging block of its Staging.
template <class T, std::size_t N>
struct FixedArray {
    static_assert(std::is_trivial_v<T>);
    static constexpr std::size_t extent = N;
    static constexpr std::size_t bytes = N * sizeof(T);

    T get(std::size_t i) const { return i < N ? a[i] : T(0); }
    void put(std::size_t i, T v) {
        if (i < N) a[i] = v;
    }
    T& operator[](std::size_t i) { return a[i]; }
    const T& operator[](std::size_t i) const { return a[i]; }
    T* data() { return a; }
    const T* data() const { return a; }

    T* a = nullptr;
};

struct Staging {
    Staging();
    Staging(const Staging&) = delete;
    Staging& operator=(const Staging&) = delete;

    FixedArray<std::uint16_t, kSrcWordsExtent> srcwords;
    FixedArray<std::uint16_t, kLowBmpExtent> lowbmp;
    FixedArray<std::uint16_t, kMedBmpExtent> medbmp;
    FixedArray<std::uint16_t, kMonoBmpExtent> monobmp;
    FixedArray<std::uint8_t, kTrueBmpExtent> truebmp;
    FixedArray<std::uint8_t, kMacBmpExtent> macbmp;
    FixedArray<std::uint8_t, kSrcBytesExtent> srcbytes;
    FixedArray<std::uint8_t, kPixBytesExtent> pixbytes;
    // specindex(x, c) at c * 320 + x; planebits(v, k, p) at v + 257k + 2313p;
    // stlevel(v, column) at v + 257 * column.
    FixedArray<std::uint16_t, 320 * 16> specindex;
    FixedArray<std::uint8_t, 257 * 9 * 5> planebits;
    FixedArray<std::uint8_t, 257 * 3> stlevel;

    // The finished bitmap file of the last decode of a 24-bit or MacPaint
    // picture. Sized once for the largest layout so that no decode allocates.
    FixedArray<std::uint8_t, kTrueBmpSize> out;

    // The constant headers and palettes, then specindex, planebits, stlevel.
    void buildTables();

    // Back to the state right after buildTables: clears what a decode can
    // leave behind for the next picture, and the one palette that only an
    // inversion changes. For a run of pictures that must each decode alone.
    void resetToFresh();

    std::uint16_t specIndex(int x, int c) const { return specindex[std::size_t(c) * 320 + std::size_t(x)]; }
    std::uint8_t planeBits(int v, int k, int p) const {
        return planebits[std::size_t(v) + 257 * std::size_t(k) + 2313 * std::size_t(p)];
    }
    std::uint8_t stLevel(int v, int column) const { return stlevel[std::size_t(v) + 257 * std::size_t(column)]; }

    // ---- Steps that several decoders share --------------------------------
    // 16 ST colour words, as read (first file byte low), into the 16 palette
    // entries of a 4-bit bitmap (lowbmp or medbmp).
    static void convertPalette(const std::uint16_t* words, std::uint16_t* bitmap);
    void convertPaletteFromSrcwords(std::size_t firstWord, std::uint16_t* bitmap);

    // One group of 16 pixels held in `planeCount` plane words as read
    // (plane 0 first) into four bitmap words. The first file byte of a plane
    // word, its low half, holds pixels 0 to 7 with bit 7 leftmost, the second
    // byte pixels 8 to 15. Bitmap byte j holds pixels 2j and 2j + 1, the
    // left one in the high nibble; the low byte of a word comes first.
    template <int planeCount>
    void groupWords(const std::uint16_t (&planeWords)[planeCount], std::uint16_t (&words)[4]) const {
        std::uint8_t bytes[8];
        for (int half = 0; half < 2; ++half) {
            // The colour numbers of the eight pixels of this half, leftmost first.
            std::uint8_t colour[8] = {};
            for (int p = 0; p < planeCount; ++p) {
                const int v = (planeWords[p] >> (8 * half)) & 0xFF;
                for (int k = 0; k < 8; ++k) colour[7 - k] = std::uint8_t(colour[7 - k] + planeBits(v, k, p));
            }
            for (int i = 0; i < 4; ++i) bytes[4 * half + i] = std::uint8_t(16 * colour[2 * i] + colour[2 * i + 1]);
        }
        for (int q = 0; q < 4; ++q) words[q] = std::uint16_t(bytes[2 * q] | bytes[2 * q + 1] << 8);
    }

    // Rows of four (low) or two (medium) interleaved planes of 80 words, or
    // mono rows of 40 words, from srcwords, given the word indices of the top
    // and the bottom row. The bottom row becomes the first pixel row of the
    // bitmap; at most the rows the bitmap holds are written.
    void mergeLow(std::size_t topRow, std::size_t bottomRow);
    void mergeMedium(std::size_t topRow, std::size_t bottomRow);
    void copyMono(std::size_t topRow, std::size_t bottomRow);

    // The staged bitmaps as file bytes, headers included: views of the arrays.
    std::span<const std::uint8_t> emitLow();
    std::span<const std::uint8_t> emitMedium();
    std::span<const std::uint8_t> emitMono();

private:
    // All arrays in one zero-filled block from calloc, which takes fresh
    // pages for a block this size and so need not clear them: a process
    // pays only for the pages its decodes touch, most of a one-picture
    // conversion's time otherwise.
    struct Free {
        void operator()(void* p) const { std::free(p); }
    };
    std::unique_ptr<std::byte[], Free> block_;

    std::span<const std::uint8_t> emitWords(const std::uint16_t* words, std::size_t count);
};

}  // namespace velmoric
