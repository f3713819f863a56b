// Spectrum 512: one picture as SPU, and packed as SPC and SPS, gives one
// bitmap. The length test of SPU is tested on opening a file, and files
// that end early with the other decoders in test_staging.
#include "support.h"

using vtest::Bytes;
using vtest::decodeFresh;

namespace {

// Planes packed as literal copies of up to 128 bytes behind a header whose
// D (the offset of the colours) is 31840 plus the 249 control bytes.
Bytes packed(const Bytes& planes, std::uint8_t copy128, const Bytes& colours) {
    Bytes f = {0, 0, 0, 0, 0, 0, 0x7D, 0x59, 0, 0, 0, 0};
    for (std::size_t i = 0; i < planes.size(); i += 128) {
        const std::size_t n = std::min<std::size_t>(128, planes.size() - i);
        f.push_back(std::uint8_t(copy128 - 128 + n));
        f.insert(f.end(), planes.begin() + long(i), planes.begin() + long(i + n));
    }
    f.insert(f.end(), colours.begin(), colours.end());
    return f;
}

// The SPU's colour words keep random bits that do not count; the SPC masks
// also set bits 0 and 15, which are not looked at. Colours 0 and 15 of every
// group are black in the packed forms, so they are in the SPU too.
TEST(Spectrum, OnePictureThreeWaysGivesOneBitmap) {
    Bytes spu = vtest::randomBytes(51104, 6), rows(31840), columns(31840), spcColours, spsColours;
    for (std::size_t line = 1; line < 200; ++line)
        for (std::size_t p = 0; p < 4; ++p)
            for (std::size_t b = 0; b < 40; ++b)
                rows[7960 * p + 40 * (line - 1) + b] = columns[7960 * p + 199 * b + line - 1] =
                    spu[160 * line + 8 * (b / 2) + 2 * p + (b & 1)];
    std::size_t bits = 0;  // written to spsColours, first bit high
    auto putBits = [&](unsigned v, int n) {
        for (int i = n - 1; i >= 0; --i, ++bits) {
            if (bits % 8 == 0) spsColours.push_back(0);
            if (v >> i & 1) spsColours.back() |= std::uint8_t(0x80 >> bits % 8);
        }
    };
    for (std::size_t slot = 0; slot < 597 * 16; ++slot) {
        std::uint8_t* colour = &spu[32000 + 2 * slot];
        if (slot % 16 == 0) {
            spcColours.insert(spcColours.end(), {0xFF, 0xFF});
            putBits(0x3FFF, 14);
        }
        if (slot % 16 == 0 || slot % 16 == 15) {
            colour[0] = colour[1] = 0;
        } else {
            spcColours.insert(spcColours.end(), {colour[0], colour[1]});
            putBits(unsigned(colour[0] & 7) << 6 | unsigned(colour[1] >> 4 & 7) << 3 | (colour[1] & 7u), 9);
        }
    }
    const Bytes expected = decodeFresh(spu, "SPU");
    EXPECT_EQ(decodeFresh(packed(rows, 0x7F, spcColours), "SPC"), expected);
    EXPECT_EQ(decodeFresh(packed(columns, 0xFF, spsColours), "SPS"), expected);
}

}  // namespace
