// The lookup tables and the steps the planar decoders share: a few values
// the rules fix, the palette's dropped bits, and where a group's bits land.
#include "support.h"

using namespace velmoric;
using vtest::Bytes;

namespace {

TEST(Staging, TableSpotValues) {
    const auto s = vtest::freshStaging();
    struct Case { const char* table; int got, expected; };
    const Case cases[] = {
        {"specindex(1, 0)", s->specIndex(1, 0), 32},       {"specindex(161, 0)", s->specIndex(161, 0), 64},
        {"specindex(5, 1)", s->specIndex(5, 1), 34},       {"specindex(144, 15)", s->specIndex(144, 15), 30},
        {"specindex(319, 15)", s->specIndex(319, 15), 94}, {"planebits(0x80, 7, 3)", s->planeBits(0x80, 7, 3), 8},
        {"planebits(0x80, 6, 3)", s->planeBits(0x80, 6, 3), 0}, {"stlevel(0x77, 1)", s->stLevel(0x77, 1), 252},
        {"stlevel(0x08, 0)", s->stLevel(0x08, 0), 0},      {"stlevel(0x80, 1)", s->stLevel(0x80, 1), 0},
    };
    for (const Case& c : cases) EXPECT_EQ(c.got, c.expected) << c.table;
}

// Only three bits of each level count, and a level c becomes c * 36.
TEST(Staging, PaletteIgnoresTheFourthBits) {
    struct Case { std::uint8_t first, second, blue, green, red; };
    const Case cases[] = {{0x07, 0x77, 252, 252, 252}, {0x0F, 0xFF, 252, 252, 252}, {0x01, 0x23, 108, 72, 36}};
    for (const Case& c : cases) {
        const auto s = vtest::freshStaging();
        const std::uint16_t words[16] = {std::uint16_t(c.first | c.second << 8)};
        Staging::convertPalette(words, s->lowbmp.data());
        const auto low = s->emitLow();
        const Bytes entry(low.begin() + 54, low.begin() + 58);
        EXPECT_EQ(entry, (Bytes{c.blue, c.green, c.red, 0})) << int(c.first) << " " << int(c.second);
    }
}

// The first bytes of planes 0 and 1 of the top row's first group, as a
// PI1 and a PI2 file hold them, and the first two bytes of the bitmap's
// last row: two pixels a byte, the left one high.
TEST(Staging, GroupBitsLandInTheirPixels) {
    struct Case { std::uint8_t plane0, plane1, byte0, byte1; };
    const Case cases[] = {{0x80, 0x00, 0x10, 0x00}, {0xC0, 0xA0, 0x31, 0x20}};
    for (const Case& c : cases)
        for (const auto& [ext, rowBytes] : {std::pair{"PI1", 160}, std::pair{"PI2", 320}}) {
            Bytes file(32034, 0);
            file[34] = c.plane0;
            file[36] = c.plane1;
            const auto s = vtest::freshStaging();
            const Bytes bitmap = vtest::bytesOf(vtest::decodeAs(*s, file, ext).bitmap);
            const std::size_t topRow = 118 + 199 * std::size_t(rowBytes);
            EXPECT_EQ(Bytes(bitmap.begin() + topRow, bitmap.begin() + topRow + 2), (Bytes{c.byte0, c.byte1})) << ext;
        }
}

}  // namespace
