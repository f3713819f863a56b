// Compressed Degas: a file whose rows are packed as literal runs gives the
// bitmap of the plain file at every resolution. How a compressed file that
// ends early reads on is tested with the other decoders in test_staging.
#include "support.h"

using vtest::Bytes;

namespace {

// The compression word, the palette, then every plane of every row as one
// literal run of its bytes. A plane's bytes lie in pairs, one pair in each
// group of 16 pixels of the screen.
Bytes packedFile(const Bytes& palette, const Bytes& screen, int planes) {
    const int rowBytes = planes == 1 ? 80 : 160, planeBytes = rowBytes / planes;
    Bytes out = {0x80, 0};
    out.insert(out.end(), palette.begin(), palette.end());
    for (int y = 0; y < 32000 / rowBytes; ++y)
        for (int p = 0; p < planes; ++p) {
            out.push_back(std::uint8_t(planeBytes - 1));
            for (int i = 0; i < planeBytes; ++i)
                out.push_back(screen[y * rowBytes + i / 2 * 2 * planes + 2 * p + i % 2]);
        }
    return out;
}

TEST(Degas, CompressedLiteralRunsEqualThePlainFile) {
    for (const auto& [pi, pc, planes] : {std::tuple{"PI1", "PC1", 4}, {"PI2", "PC2", 2}, {"PI3", "PC3", 1}}) {
        const Bytes palette = vtest::randomBytes(32, 4), screen = vtest::randomBytes(32000, 5);
        Bytes plain = {0, 0};
        plain.insert(plain.end(), palette.begin(), palette.end());
        plain.insert(plain.end(), screen.begin(), screen.end());
        EXPECT_EQ(vtest::decodeFresh(packedFile(palette, screen, planes), pc), vtest::decodeFresh(plain, pi)) << pc;
    }
}

}  // namespace
