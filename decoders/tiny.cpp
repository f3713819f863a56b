// Tiny pictures in all three resolutions. The file packs a 32000-byte
// screen by columns in two streams, control bytes and data words; the words
// are unpacked into srcwords after the palette, column by column, and turned
// back into rows on their way into the bitmap.
#include "decoders/decoder.h"

namespace velmoric {
namespace {

constexpr std::int64_t kFirstDataWord = 16;  // indices 0 to 15 hold the palette

// The column-ordered screen: word 4m + j of line y lies in set j, column m.
constexpr std::size_t screenWord(std::size_t set, std::size_t column, std::size_t line) {
    return std::size_t(kFirstDataWord) + 4000 * set + 200 * column + line;
}

// A signed count, first byte high.
std::int64_t countAt(const Source& src, std::int64_t at) { return std::int16_t(src.bigEndian16(std::size_t(at))); }

// Positions are plain integers. A data position below 0 (after a negative
// control length) reads 0 like any read outside the file. Words for output
// indices behind srcwords are not stored, but the positions move on as if
// they were, so the streams are followed to their end whatever they ask
// for, and the loop of each run stops at the extent. Gives the offset
// behind the last control byte or stored data word, whichever is further.
std::int64_t unpackStreams(Staging& s, const Source& src, std::int64_t control, std::int64_t controlLength) {
    const std::int64_t controlEnd = control + controlLength;
    const std::int64_t extent = std::int64_t(kSrcWordsExtent);
    std::int64_t data = controlEnd, out = kFirstDataWord, dataEnd = 0;
    auto copy = [&](std::int64_t count) {
        if (count <= 0) return;
        std::int64_t i = 0;
        for (; i < count && out + i < extent; ++i)
            s.srcwords.put(std::size_t(out + i), src.word(std::size_t(data + 2 * i)));
        if (i > 0) dataEnd = std::max(dataEnd, data + 2 * i);
        out += count;
        data += 2 * count;
    };
    // The data word is passed once, after the run, even when no copy is made.
    auto repeat = [&](std::int64_t count) {
        const std::uint16_t word = src.word(std::size_t(data));
        if (count > 0 && out < extent) dataEnd = std::max(dataEnd, data + 2);
        for (std::int64_t i = 0; i < count && out + i < extent; ++i) s.srcwords.put(std::size_t(out + i), word);
        if (count > 0) out += count;
        data += 2;
    };
    // One pass at least; the end test compares the positions after each
    // control byte has been dealt with in full.
    do {
        const int x = src.byte(std::size_t(control++));
        if (x >= 128) {
            copy(256 - x);
        } else if (x >= 2) {
            repeat(x);
        } else {
            const std::int64_t m = countAt(src, control);
            control += 2;
            if (x == 1) {
                copy(m);
            } else {
                repeat(m);
            }
        }
    } while (control < controlEnd);
    return std::max(control, dataEnd);
}

// Group m of a low line is column m of the four sets, one set a plane.
void mergeLowColumns(Staging& s) {
    for (std::size_t y = 0; y < 200; ++y) {
        const std::size_t row = kColourPixelWord + 80 * (199 - y);
        for (std::size_t m = 0; m < 20; ++m) {
            std::uint16_t planes[4];
            for (std::size_t j = 0; j < 4; ++j) planes[j] = s.srcwords.get(screenWord(j, m, y));
            std::uint16_t words[4];
            s.groupWords(planes, words);
            for (std::size_t q = 0; q < 4; ++q) s.lowbmp.put(row + 4 * m + q, words[q]);
        }
    }
}

// Group k of a medium line is the screen words 2k and 2k + 1: sets 0 and 1
// of column k / 2 for even k, sets 2 and 3 for odd k.
void mergeMediumColumns(Staging& s) {
    for (std::size_t y = 0; y < 200; ++y) {
        const std::size_t row = kColourPixelWord + 160 * (199 - y);
        for (std::size_t k = 0; k < 40; ++k) {
            const std::size_t set = 2 * (k % 2), column = k / 2;
            const std::uint16_t planes[2] = {s.srcwords.get(screenWord(set, column, y)),
                                             s.srcwords.get(screenWord(set + 1, column, y))};
            std::uint16_t words[4];
            s.groupWords(planes, words);
            for (std::size_t q = 0; q < 4; ++q) s.medbmp.put(row + 4 * k + q, words[q]);
        }
    }
}

// A screen line of 80 words is two mono lines: columns 0 to 9 make line 2y,
// columns 10 to 19 line 2y + 1. The words go unchanged.
void copyMonoColumns(Staging& s) {
    for (std::size_t n = 0; n < 400; ++n) {
        const std::size_t row = kMonoPixelWord + 40 * (399 - n);
        const std::size_t y = n / 2, firstColumn = 10 * (n % 2);
        for (std::size_t g = 0; g < 10; ++g)
            for (std::size_t j = 0; j < 4; ++j)
                s.monobmp.put(row + 4 * g + j, s.srcwords.get(screenWord(j, firstColumn + g, y)));
    }
}

}  // namespace

Decoded tiny(Staging& s, const Source& src) {
    const int n = src.byte(0);
    const std::int64_t t = n >= 3 ? 4 : 0;
    const std::int64_t controlLength = countAt(src, 33 + t);
    readWords(s, src, 0, std::size_t(1 + t), 16);
    const auto end = std::uint64_t(unpackStreams(s, src, 37 + t, controlLength));
    s.convertPaletteFromSrcwords(0, s.lowbmp.data());
    s.convertPaletteFromSrcwords(0, s.medbmp.data());

    // The resolution byte is tested only now: a bad one leaves the new
    // words and palettes in place but stages nothing.
    switch (n) {
        case 0:
        case 3:
            mergeLowColumns(s);
            return {false, s.emitLow(), " Tiny 320*200 16 Colour", 1, end};
        case 1:
        case 4:
            mergeMediumColumns(s);
            return {false, s.emitMedium(), " Tiny 640*200 4 Colour", 2, end};
        case 2:
        case 5:
            copyMonoColumns(s);
            return {false, s.emitMono(), " Tiny 640*400 Mono", 3, end};
        default:
            return rejectedSource();
    }
}

}  // namespace velmoric
