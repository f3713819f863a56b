// Spectrum 512 plain, compressed and smooshed: the length test of SPU,
// truncated packed files, and one picture packed three ways.
#include <random>

#include "support.h"

using vtest::Bytes;

namespace {

TEST(Spectrum, SpuOfAnotherLengthIsRejected) {
    auto s = vtest::freshStaging();
    const Bytes before = vtest::bytesOf(vtest::decodeAs(*s, vtest::randomBytes(51104, 1), "SPU").bitmap);
    for (const std::size_t length : {51103, 51105, 0, 102208}) {
        const velmoric::Decoded d = vtest::decodeAs(*s, vtest::randomBytes(length, 2), "SPU");
        EXPECT_TRUE(d.rejected && d.bitmap.empty() && d.caption.empty() && d.kind == 0) << length;
        EXPECT_EQ(vtest::Bytes(s->out.data(), s->out.data() + velmoric::kTrueBmpSize), before) << "a rejected file leaves the last bitmap, " << length;
    }
}

// Files that end early still make a picture: reads past the end give 0.
// Colour data that lie past the end are all 0, so the picture is black.
TEST(Spectrum, TruncatedFilesGiveAPicture) {
    Bytes farColours = vtest::randomBytes(3000, 3);
    std::fill_n(farColours.begin() + 4, 4, 0xFF);  // D: the colour data begin beyond any file
    auto s = vtest::freshStaging();
    for (const char* ext : {"SPC", "SPS"})
        for (const Bytes& file : {Bytes{}, Bytes(12, 0), farColours}) {
            const velmoric::Decoded d = vtest::decodeAs(*s, file, ext);
            ASSERT_FALSE(d.rejected) << ext;
            EXPECT_EQ(d.kind, 1);
            const Bytes b = vtest::bytesOf(d.bitmap);
            ASSERT_EQ(b.size(), 192054u) << ext;
            EXPECT_EQ(std::count(b.begin() + 54, b.end(), 0), 192000) << ext << " of " << file.size() << " bytes";
        }
    // An SPU whose bytes run out before its stated length reads zeros past them.
    Bytes part = vtest::randomBytes(40000, 4);
    const Bytes cut = vtest::bytesOf(velmoric::spec(*s, velmoric::Source{part, 51104}).bitmap);
    part.resize(51104, 0);
    EXPECT_EQ(cut, vtest::bytesOf(vtest::decodeAs(*s, part, "SPU").bitmap));
}

// A random picture as SPU and as SPC and SPS packed with literal copies only.
// SPU and SPC also carry noise in the colour bits that do not count, and the
// SPC masks set bits 0 and 15, which are not looked at.
TEST(Spectrum, OnePictureThreeWaysGivesOneBitmap) {
    std::mt19937 rng(5);
    Bytes spu = vtest::randomBytes(51104, 6), rows(31840), columns(31840), spcColours, spsColours;
    for (std::size_t line = 1; line < 200; ++line)
        for (std::size_t p = 0; p < 4; ++p)
            for (std::size_t b = 0; b < 40; ++b)
                rows[7960 * p + 40 * (line - 1) + b] = columns[7960 * p + 199 * b + line - 1] =
                    spu[160 * line + 8 * (b / 2) + 2 * p + (b & 1)];
    int used = 8;  // bits of the last byte of spsColours taken
    auto putBits = [&](unsigned v, int n) {
        for (int i = n - 1; i >= 0; --i, ++used) {
            if (used == 8) spsColours.push_back(0), used = 0;
            if (v >> i & 1) spsColours.back() |= std::uint8_t(0x80 >> used);
        }
    };
    for (std::size_t slot = 0; slot < 597 * 16; ++slot) {
        const std::size_t c = slot % 16, at = 32000 + 2 * slot;
        if (c == 0) spcColours.insert(spcColours.end(), {0xFF, 0xFF}), putBits(0x3FFF, 14);
        const bool edge = c == 0 || c == 15;
        const unsigned red = rng() % 8, green = rng() % 8, blue = rng() % 8;
        spu[at] = edge ? 0 : std::uint8_t(red | (rng() & 0xF8));
        spu[at + 1] = edge ? 0 : std::uint8_t((green * 16 + blue) | (rng() & 0x88));
        if (!edge) spcColours.insert(spcColours.end(), {spu[at], spu[at + 1]}), putBits(red << 6 | green << 3 | blue, 9);
    }
    auto packed = [&](const Bytes& planes, std::uint8_t copy128) {
        Bytes f = {0, 0, 0, 0, 0, 0, 0x7D, 0x59, 0, 0, 0, 0};  // D = 31840 + 249 control bytes
        for (std::size_t i = 0; i < planes.size(); i += 128) {
            const std::size_t n = std::min<std::size_t>(128, planes.size() - i);
            f.push_back(std::uint8_t(copy128 - 128 + n));
            f.insert(f.end(), planes.begin() + long(i), planes.begin() + long(i + n));
        }
        return f;
    };
    Bytes spc = packed(rows, 0x7F), sps = packed(columns, 0xFF);
    spc.insert(spc.end(), spcColours.begin(), spcColours.end());
    sps.insert(sps.end(), spsColours.begin(), spsColours.end());
    auto s = vtest::freshStaging();
    const Bytes expected = vtest::bytesOf(vtest::decodeAs(*s, spu, "SPU").bitmap);
    EXPECT_EQ(vtest::bytesOf(vtest::decodeAs(*s, spc, "SPC").bitmap), expected);
    EXPECT_EQ(vtest::bytesOf(vtest::decodeAs(*s, sps, "SPS").bitmap), expected);
}

}  // namespace
