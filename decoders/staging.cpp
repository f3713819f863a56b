#include "decoders/staging.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace velmoric {
namespace {

// spread[v] places the eight pixels of one plane byte (bit 7 leftmost) into
// four bitmap bytes of two 4-bit pixels each, left pixel in the high nibble,
// at bit 0 of its nibble. A plane p is then spread[v] << p. Used by both
// merges: the medium layout puts plane 1 and 0 at bits 5,4 and 1,0, which is
// the low layout with only two planes.
constexpr std::array<std::uint32_t, 256> makeSpread() {
    std::array<std::uint32_t, 256> t{};
    for (unsigned v = 0; v < 256; ++v) {
        std::uint32_t s = 0;
        for (unsigned i = 0; i < 8; ++i)
            if (v & (0x80u >> i)) s |= 1u << (8 * (i / 2) + ((i & 1) ? 0 : 4));
        t[v] = s;
    }
    return t;
}
constexpr auto kSpread = makeSpread();

struct HeaderFields {
    std::uint32_t fileSize, pixelOffset, width, height;
    std::uint16_t bitsPerPixel;
    std::uint32_t imageSize, pixelsPerMetre, colours;
};

void writeHeader(std::uint8_t* b, const HeaderFields& h) {
    auto put16 = [b](std::size_t at, std::uint16_t v) {
        b[at] = std::uint8_t(v);
        b[at + 1] = std::uint8_t(v >> 8);
    };
    auto put32 = [b](std::size_t at, std::uint32_t v) {
        for (int i = 0; i < 4; ++i) b[at + i] = std::uint8_t(v >> (8 * i));
    };
    std::memset(b, 0, 54);
    b[0] = 'B';
    b[1] = 'M';
    put32(2, h.fileSize);
    put32(10, h.pixelOffset);
    put32(14, 40);
    put32(18, h.width);
    put32(22, h.height);
    put16(26, 1);
    put16(28, h.bitsPerPixel);
    put32(34, h.imageSize);
    put32(38, h.pixelsPerMetre);
    put32(42, h.pixelsPerMetre);
    put32(46, h.colours);
    put32(50, h.colours);
}

// Byte images are little-endian word by word: the low byte of each word is
// the first byte in the file.
void bytesToWords(const std::uint8_t* bytes, std::size_t count, std::uint16_t* words) {
    for (std::size_t i = 0; i < count; i += 2) words[i / 2] = std::uint16_t(bytes[i] | (bytes[i + 1] << 8));
}

}  // namespace

Staging::Staging() : out(kTrueBmpSize, 0) {}

void Staging::buildTables() {
    // 1. Headers, and the fixed palettes of monobmp and macbmp.
    std::uint8_t h[62];
    writeHeader(h, {32118, 118, 320, 200, 4, 32000, 0, 16});
    bytesToWords(h, 54, lowbmp.data());
    writeHeader(h, {64118, 118, 640, 200, 4, 64000, 0, 16});
    bytesToWords(h, 54, medbmp.data());
    writeHeader(h, {32062, 62, 640, 400, 1, 32000, 0, 2});
    const std::uint8_t monoPalette[8] = {0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0};
    std::memcpy(h + 54, monoPalette, 8);
    bytesToWords(h, 62, monobmp.data());
    writeHeader(h, {192054, 54, 320, 200, 24, 192000, 0, 0});
    std::memcpy(truebmp.data(), h, 54);
    writeHeader(h, {51902, 62, 576, 720, 1, 51840, 2834, 2});
    const std::uint8_t macPalette[8] = {0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0};
    std::memcpy(h + 54, macPalette, 8);
    std::memcpy(macbmp.data(), h, 62);

    // 2. specindex: the byte offset of colour c's word at column x in a
    // Spectrum line's 96-byte palette block.
    for (int c = 0; c < 16; ++c) {
        const int x1 = (c % 2 == 0) ? 10 * c + 1 : 10 * c - 5;
        for (int x = 0; x < 320; ++x) {
            const int slot = x < x1 ? c : (x < x1 + 160 ? c + 16 : c + 32);
            specindex[std::size_t(c) * 320 + std::size_t(x)] = std::uint16_t(2 * slot);
        }
    }
    // 3. planebits
    for (int p = 0; p < 4; ++p)
        for (int k = 0; k < 8; ++k)
            for (int v = 0; v < 256; ++v)
                planebits[std::size_t(v) + 257 * std::size_t(k) + 2313 * std::size_t(p)] =
                    (v >> k) & 1 ? std::uint8_t(1 << p) : 0;
    // 4. stlevel
    for (int v = 0; v < 256; ++v) {
        stlevel[std::size_t(v)] = std::uint8_t((v & 7) * 36);
        stlevel[std::size_t(v) + 257] = std::uint8_t(((v & 0x70) / 16) * 36);
    }
}

void Staging::convertPalette(const std::uint16_t* words, std::uint16_t* bitmap) {
    for (std::size_t i = 0; i < 16; ++i) {
        const unsigned w = words[i];
        const unsigned blue = ((w & 0x0700) / 256) * 36;
        const unsigned green = ((w & 0x7000) / 4096) * 36;
        const unsigned red = (w & 0x0007) * 36;
        bitmap[kPaletteWord + 2 * i] = std::uint16_t(green * 256 + blue);
        bitmap[kPaletteWord + 2 * i + 1] = std::uint16_t(red);
    }
}

void Staging::convertPaletteFromSrcwords(std::size_t firstWord, std::uint16_t* bitmap) {
    std::uint16_t words[16];
    for (std::size_t i = 0; i < 16; ++i) words[i] = srcwords.get(firstWord + i);
    convertPalette(words, bitmap);
}

namespace {
// How many rows lie from the bottom row up to the top row at `step` words a
// row, capped at what the bitmap holds.
std::size_t rowCount(std::size_t topRow, std::size_t bottomRow, std::size_t step, std::size_t maxRows) {
    if (bottomRow < topRow) return 0;
    return std::min((bottomRow - topRow) / step + 1, maxRows);
}
}  // namespace

void Staging::mergeLow(std::size_t topRow, std::size_t bottomRow) {
    std::uint16_t* dst = lowbmp.data() + kColourPixelWord;
    const std::size_t rows = rowCount(topRow, bottomRow, 80, 200);
    for (std::size_t r = 0; r < rows; ++r, dst += 80) {
        const std::size_t row = bottomRow - 80 * r;
        for (std::size_t g = 0; g < 20; ++g) {
            const std::size_t s = row + 4 * g;
            std::uint32_t first = 0, second = 0;
            for (unsigned p = 0; p < 4; ++p) {
                const unsigned w = srcwords.get(s + p);
                first |= kSpread[w & 0xFF] << p;
                second |= kSpread[w >> 8] << p;
            }
            std::uint16_t* d = dst + 4 * g;
            d[0] = std::uint16_t(first);
            d[1] = std::uint16_t(first >> 16);
            d[2] = std::uint16_t(second);
            d[3] = std::uint16_t(second >> 16);
        }
    }
}

void Staging::mergeMedium(std::size_t topRow, std::size_t bottomRow) {
    std::uint16_t* dst = medbmp.data() + kColourPixelWord;
    const std::size_t rows = rowCount(topRow, bottomRow, 80, 200);
    for (std::size_t r = 0; r < rows; ++r, dst += 160) {
        const std::size_t row = bottomRow - 80 * r;
        for (std::size_t k = 0; k < 40; ++k) {
            const unsigned w0 = srcwords.get(row + 2 * k);
            const unsigned w1 = srcwords.get(row + 2 * k + 1);
            const std::uint32_t first = kSpread[w0 & 0xFF] | (kSpread[w1 & 0xFF] << 1);
            const std::uint32_t second = kSpread[w0 >> 8] | (kSpread[w1 >> 8] << 1);
            std::uint16_t* d = dst + 4 * k;
            d[0] = std::uint16_t(first);
            d[1] = std::uint16_t(first >> 16);
            d[2] = std::uint16_t(second);
            d[3] = std::uint16_t(second >> 16);
        }
    }
}

void Staging::copyMono(std::size_t topRow, std::size_t bottomRow) {
    std::uint16_t* dst = monobmp.data() + kMonoPixelWord;
    const std::size_t rows = rowCount(topRow, bottomRow, 40, 400);
    for (std::size_t r = 0; r < rows; ++r, dst += 40) {
        const std::size_t row = bottomRow - 40 * r;
        if (row + 40 <= kSrcWordsExtent) {
            std::memcpy(dst, srcwords.data() + row, 40 * sizeof(std::uint16_t));
        } else {
            for (std::size_t i = 0; i < 40; ++i) dst[i] = srcwords.get(row + i);
        }
    }
}

std::span<const std::uint8_t> Staging::emitWords(const std::uint16_t* words, std::size_t count) {
    if constexpr (std::endian::native == std::endian::little) {
        std::memcpy(out.data(), words, 2 * count);
    } else {
        for (std::size_t i = 0; i < count; ++i) {
            out[2 * i] = std::uint8_t(words[i]);
            out[2 * i + 1] = std::uint8_t(words[i] >> 8);
        }
    }
    return {out.data(), 2 * count};
}

std::span<const std::uint8_t> Staging::emitLow() { return emitWords(lowbmp.data(), kLowBmpWords); }
std::span<const std::uint8_t> Staging::emitMedium() { return emitWords(medbmp.data(), kMedBmpWords); }
std::span<const std::uint8_t> Staging::emitMono() { return emitWords(monobmp.data(), kMonoBmpWords); }

}  // namespace velmoric
