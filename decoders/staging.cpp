#include "decoders/staging.h"

#include <algorithm>
#include <cstring>

namespace velmoric {
namespace {

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

Staging::Staging() {
    std::size_t size = 0;
    // Lays out every array at a 64-byte boundary; the second pass binds them.
    auto layout = [&](auto& array) {
        using T = std::remove_pointer_t<decltype(array.a)>;
        array.a = block_ ? reinterpret_cast<T*>(block_.get() + size) : nullptr;
        size += (array.bytes + 63) / 64 * 64;
    };
    auto all = [&] {
        size = 0;
        layout(srcwords), layout(lowbmp), layout(medbmp), layout(monobmp), layout(truebmp), layout(macbmp);
        layout(srcbytes), layout(pixbytes), layout(specindex), layout(planebits), layout(stlevel), layout(out);
    };
    all();
    block_.reset(static_cast<std::byte*>(std::calloc(size, 1)));
    if (!block_) throw std::bad_alloc();
    all();
}

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

// Source rows of 80 words, a group of 16 pixels every `planeCount` words,
// from the bottom row up; each group becomes four bitmap words.
template <int planeCount, std::size_t N>
void mergeRows(const Staging& s, FixedArray<std::uint16_t, N>& bitmap, std::size_t topRow, std::size_t bottomRow) {
    const std::size_t groups = 80 / std::size_t(planeCount);
    std::size_t at = kColourPixelWord;
    for (std::size_t r = 0; r < rowCount(topRow, bottomRow, 80, 200); ++r) {
        const std::size_t row = bottomRow - 80 * r;
        for (std::size_t g = 0; g < groups; ++g) {
            std::uint16_t planeWords[planeCount];
            for (int p = 0; p < planeCount; ++p)
                planeWords[p] = s.srcwords.get(row + g * std::size_t(planeCount) + std::size_t(p));
            std::uint16_t words[4];
            s.groupWords(planeWords, words);
            for (const std::uint16_t w : words) bitmap.put(at++, w);
        }
    }
}

}  // namespace

void Staging::mergeLow(std::size_t topRow, std::size_t bottomRow) { mergeRows<4>(*this, lowbmp, topRow, bottomRow); }

void Staging::mergeMedium(std::size_t topRow, std::size_t bottomRow) {
    mergeRows<2>(*this, medbmp, topRow, bottomRow);
}

// Mono rows go over word for word: the bytes keep the file's order.
void Staging::copyMono(std::size_t topRow, std::size_t bottomRow) {
    std::size_t at = kMonoPixelWord;
    for (std::size_t r = 0; r < rowCount(topRow, bottomRow, 40, 400); ++r) {
        const std::size_t row = bottomRow - 40 * r;
        for (std::size_t i = 0; i < 40; ++i) monobmp.put(at++, srcwords.get(row + i));
    }
}

// The word arrays already hold the bitmap's byte image.
std::span<const std::uint8_t> Staging::emitWords(const std::uint16_t* words, std::size_t count) {
    return {reinterpret_cast<const std::uint8_t*>(words), 2 * count};
}

std::span<const std::uint8_t> Staging::emitLow() { return emitWords(lowbmp.data(), kLowBmpWords); }
std::span<const std::uint8_t> Staging::emitMedium() { return emitWords(medbmp.data(), kMedBmpWords); }
std::span<const std::uint8_t> Staging::emitMono() { return emitWords(monobmp.data(), kMonoBmpWords); }

void Staging::resetToFresh() {
    std::memset(srcwords.data(), 0, srcwords.bytes);
    std::memset(srcbytes.data(), 0, srcbytes.bytes);
    std::memset(pixbytes.data(), 0, pixbytes.bytes);
    std::memset(lowbmp.data() + kColourPixelWord, 0, lowbmp.bytes - 2 * kColourPixelWord);
    std::memset(medbmp.data() + kColourPixelWord, 0, medbmp.bytes - 2 * kColourPixelWord);
    const std::uint16_t monoPalette[4] = {0xFFFF, 0xFFFF, 0, 0};
    std::memcpy(monobmp.data() + 27, monoPalette, sizeof monoPalette);
}

}  // namespace velmoric
