// The lookup tables, the constant headers and the shared conversion steps.
#include "decoders/staging.h"

#include <cstring>

#include "decoders/planar.h"

#include "support.h"

using namespace velmoric;

namespace {

struct StagingTest : ::testing::Test {
    std::unique_ptr<Staging> s = std::make_unique<Staging>();
    void SetUp() override { s->buildTables(); }
    vtest::Bytes bytesOf(std::span<const std::uint8_t> span) { return {span.begin(), span.end()}; }
};

TEST_F(StagingTest, SpecIndexSlots) {
    struct Case { int x, c, expected; };
    for (const Case& k : std::vector<Case>{{0, 0, 0}, {1, 0, 32}, {160, 0, 32}, {161, 0, 64}, {4, 1, 2},
                                           {5, 1, 34}, {164, 1, 34}, {165, 1, 66}, {319, 15, 94}, {144, 15, 30},
                                           {145, 15, 62}, {304, 15, 62}, {305, 15, 94}})
        EXPECT_EQ(s->specIndex(k.x, k.c), k.expected) << "x " << k.x << " c " << k.c;
}

TEST_F(StagingTest, PlaneBitsAndLevels) {
    EXPECT_EQ(s->planeBits(0x80, 7, 3), 8);
    EXPECT_EQ(s->planeBits(0x80, 6, 3), 0);
    EXPECT_EQ(s->planeBits(0xFF, 0, 0), 1);
    EXPECT_EQ(s->planeBits(0x05, 2, 1), 2);
    EXPECT_EQ(s->planebits[256], 0);  // unused corners stay 0
    EXPECT_EQ(s->planebits[2313 * 4 + 3], 0);
    EXPECT_EQ(s->stLevel(0x77, 0), 252);
    EXPECT_EQ(s->stLevel(0x77, 1), 252);
    EXPECT_EQ(s->stLevel(0x08, 0), 0);
    EXPECT_EQ(s->stLevel(0x80, 1), 0);
    EXPECT_EQ(s->stLevel(0x35, 1), 108);
    EXPECT_EQ(s->stlevel[256], 0);
}

TEST_F(StagingTest, HeadersMatchTheLayouts) {
    using vtest::referenceHeader;
    auto low = bytesOf(s->emitLow());
    EXPECT_EQ(vtest::Bytes(low.begin(), low.begin() + 54), referenceHeader(32118, 118, 320, 200, 4, 32000, 0, 16));
    EXPECT_EQ(low.size(), 32118u);
    auto med = bytesOf(s->emitMedium());
    EXPECT_EQ(vtest::Bytes(med.begin(), med.begin() + 54), referenceHeader(64118, 118, 640, 200, 4, 64000, 0, 16));
    EXPECT_EQ(med[2], 0x76);  // the low half of the file size is the word 0xFA76
    EXPECT_EQ(med[3], 0xFA);
    auto mono = bytesOf(s->emitMono());
    EXPECT_EQ(vtest::Bytes(mono.begin(), mono.begin() + 54), referenceHeader(32062, 62, 640, 400, 1, 32000, 0, 2));
    EXPECT_EQ(vtest::Bytes(mono.begin() + 54, mono.begin() + 62), (vtest::Bytes{255, 255, 255, 255, 0, 0, 0, 0}));
    EXPECT_EQ(vtest::Bytes(s->truebmp.data(), s->truebmp.data() + 54),
              referenceHeader(192054, 54, 320, 200, 24, 192000, 0, 0));
    auto mac = referenceHeader(51902, 62, 576, 720, 1, 51840, 2834, 2);
    mac.insert(mac.end(), {0, 0, 0, 0, 255, 255, 255, 0});
    EXPECT_EQ(vtest::Bytes(s->macbmp.data(), s->macbmp.data() + 62), mac);
}

TEST_F(StagingTest, PaletteConversion) {
    struct Case { std::uint8_t first, second; std::uint8_t blue, green, red; };
    const std::vector<Case> cases = {
        {0x07, 0x77, 252, 252, 252}, {0x0F, 0xFF, 252, 252, 252}, {0x01, 0x23, 108, 72, 36},
        {0x00, 0x00, 0, 0, 0},       {0xF8, 0x88, 0, 0, 0},       {0x04, 0x50, 0, 180, 144},
    };
    std::uint16_t words[16] = {};
    for (std::size_t i = 0; i < cases.size(); ++i) words[i] = std::uint16_t(cases[i].first | cases[i].second << 8);
    Staging::convertPalette(words, s->lowbmp.data());
    auto bmp = bytesOf(s->emitLow());
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const std::size_t at = 54 + 4 * i;
        EXPECT_EQ(bmp[at], cases[i].blue) << i;
        EXPECT_EQ(bmp[at + 1], cases[i].green) << i;
        EXPECT_EQ(bmp[at + 2], cases[i].red) << i;
        EXPECT_EQ(bmp[at + 3], 0) << i;
    }
}

// One group of 16 pixels in the top row, through both merges.
TEST_F(StagingTest, MergesPackPixelsLeftPixelHigh) {
    struct Case { std::uint8_t plane0, plane1; std::uint8_t byte0, byte1; };
    for (const Case& k : std::vector<Case>{{0x80, 0x00, 0x10, 0x00}, {0xC0, 0xA0, 0x31, 0x20}, {0x01, 0x01, 0x00, 0x00}}) {
        s->srcwords.a.fill(0);
        s->srcwords[17] = k.plane0;  // first byte of plane 0 of the top row (file byte order)
        s->srcwords[18] = k.plane1;
        s->mergeLow(17, 15937);
        auto low = bytesOf(s->emitLow());
        const std::size_t topRowAt = 118 + 199 * 160;
        EXPECT_EQ(low[topRowAt], k.byte0);
        EXPECT_EQ(low[topRowAt + 1], k.byte1);
        s->mergeMedium(17, 15937);
        auto med = bytesOf(s->emitMedium());
        const std::size_t medTopRowAt = 118 + 199 * 320;
        EXPECT_EQ(med[medTopRowAt], k.byte0);
        EXPECT_EQ(med[medTopRowAt + 1], k.byte1);
    }
}

TEST_F(StagingTest, MergesAgreeWithTheReferenceOnRandomScreens) {
    for (std::uint32_t seed = 1; seed <= 3; ++seed) {
        const vtest::Bytes screen = vtest::randomBytes(32000, seed);
        const vtest::Bytes palette = vtest::randomBytes(32, seed + 100);
        std::uint16_t words[16];
        for (int i = 0; i < 16; ++i) words[i] = std::uint16_t(palette[2 * i] | palette[2 * i + 1] << 8);
        for (std::size_t i = 0; i < 16000; ++i) s->srcwords[i] = std::uint16_t(screen[2 * i] | screen[2 * i + 1] << 8);

        Staging::convertPalette(words, s->lowbmp.data());
        s->mergeLow(0, 15920);
        EXPECT_EQ(bytesOf(s->emitLow()), vtest::referenceScreenBitmap(screen, palette, 4));

        Staging::convertPalette(words, s->medbmp.data());
        s->mergeMedium(0, 15920);
        auto med = bytesOf(s->emitMedium());
        EXPECT_EQ(med, vtest::referenceScreenBitmap(screen, palette, 2));
        for (std::size_t i = 118; i < med.size(); ++i) ASSERT_EQ(med[i] & 0xCC, 0) << i;

        s->copyMono(0, 15960);
        EXPECT_EQ(bytesOf(s->emitMono()), vtest::referenceScreenBitmap(screen, palette, 1));
    }
}

TEST_F(StagingTest, ZeroSourceIsBlackInColourAndWhiteInMono) {
    s->srcwords.a.fill(0);
    Staging::convertPalette(s->srcwords.data(), s->lowbmp.data());
    s->mergeLow(17, 15937);
    auto low = bytesOf(s->emitLow());
    EXPECT_TRUE(std::all_of(low.begin() + 54, low.end(), [](std::uint8_t b) { return b == 0; }));
    s->copyMono(17, 15977);
    auto mono = bytesOf(s->emitMono());
    EXPECT_TRUE(std::all_of(mono.begin() + 62, mono.end(), [](std::uint8_t b) { return b == 0; }));
    EXPECT_EQ(mono[54], 0xFF);  // entry 0, the colour of a clear bit, is white
}

// Turning planes into pixels: planesToNibbles against the bits themselves,
// and the conversions of many groups at a time against planesToNibbles, on
// group counts that do and do not fill the kernels' steps of eight. Run
// normally they take the bit-matrix kernels where the processor has them;
// the second run with VELMORIC_PORTABLE_MERGE takes the portable loops.
std::uint64_t nibblesBitByBit(const std::uint8_t group[8]) {
    std::uint8_t out[8] = {};
    for (int pixel = 0; pixel < 16; ++pixel)
        for (int p = 0; p < 4; ++p) {
            const int bit = (group[2 * p + pixel / 8] >> (7 - pixel % 8)) & 1;
            out[pixel / 2] |= std::uint8_t(bit << (p + (pixel % 2 == 0 ? 4 : 0)));
        }
    std::uint64_t v;
    std::memcpy(&v, out, 8);
    return v;
}

std::uint64_t load64(const std::uint8_t* p) {
    std::uint64_t v;
    std::memcpy(&v, p, 8);
    return v;
}

TEST(PlanarPixels, PortableConversionMovesEveryBitToItsPixel) {
    const vtest::Bytes groups = vtest::randomBytes(8 * 512, 7);
    for (std::size_t g = 0; g < 512; ++g)
        ASSERT_EQ(planar::planesToNibbles(load64(&groups[8 * g])), nibblesBitByBit(&groups[8 * g])) << g;
    for (int bit = 0; bit < 64; ++bit) {
        std::uint8_t one[8] = {};
        one[bit / 8] = std::uint8_t(1 << (bit % 8));
        EXPECT_EQ(planar::planesToNibbles(load64(one)), nibblesBitByBit(one)) << bit;
    }
}

TEST(PlanarPixels, ManyGroupsAtATimeGiveThePortableBytes) {
    for (std::size_t groups : {8u, 13u, 20u, 40u}) {
        const vtest::Bytes src = vtest::randomBytes(8 * groups, std::uint32_t(groups));
        std::vector<std::uint8_t> four(8 * groups, 0xEE), two(8 * groups, 0xEE);
        planar::fourPlaneGroups(src.data(), four.data(), groups);
        planar::twoPlaneGroups(src.data(), two.data(), groups);
        for (std::size_t g = 0; g < groups; ++g) {
            ASSERT_EQ(load64(&four[8 * g]), planar::planesToNibbles(load64(&src[8 * g]))) << groups << " " << g;
            std::uint32_t half;
            std::memcpy(&half, &src[4 * g], 4);
            ASSERT_EQ(load64(&two[8 * g]), planar::planesToNibbles(half)) << groups << " " << g;
        }
    }
    // A column: plane p of line y at planes[p][y], line y's group rowWords
    // words above the next line's.
    constexpr std::size_t lines = 16, rowWords = 12;
    const vtest::Bytes words = vtest::randomBytes(2 * 4 * lines, 99);
    std::uint16_t plane[4][lines];
    std::memcpy(plane, words.data(), sizeof plane);
    const std::uint16_t* const planes[4] = {plane[0], plane[1], plane[2], plane[3]};
    std::vector<std::uint16_t> rows(rowWords * lines, 0xEEEE);
    std::uint16_t* lastRow = rows.data() + rowWords * (lines - 1) + 3;
    planar::columnGroups(planes, lastRow, rowWords, lines);
    for (std::size_t y = 0; y < lines; ++y) {
        const std::uint64_t x = std::uint64_t(plane[0][y]) | std::uint64_t(plane[1][y]) << 16 |
                                std::uint64_t(plane[2][y]) << 32 | std::uint64_t(plane[3][y]) << 48;
        std::uint64_t got;
        std::memcpy(&got, lastRow - rowWords * y, 8);
        ASSERT_EQ(got, planar::planesToNibbles(x)) << y;
        EXPECT_EQ(lastRow[-std::ptrdiff_t(rowWords * y) - 1], 0xEEEE) << "word before line " << y;
        EXPECT_EQ(lastRow[-std::ptrdiff_t(rowWords * y) + 4], 0xEEEE) << "word after line " << y;
    }
}

TEST(FixedArray, ReadsBeyondTheExtentAreZeroAndStoresAreDropped) {
    FixedArray<std::uint16_t, 4> a;
    a.put(3, 7);
    a.put(4, 9);
    a.put(std::size_t(-1), 9);
    EXPECT_EQ(a.get(3), 7);
    EXPECT_EQ(a.get(4), 0);
    EXPECT_EQ(a.get(1000000), 0);
}

}  // namespace
