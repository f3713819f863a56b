// Neochrome and Degas, plain and compressed: one picture stored in
// different files gives one bitmap, and a compressed file that ends early
// still gives a picture.
#include "support.h"

using namespace velmoric;
using vtest::Bytes;

namespace {

Bytes concat(std::initializer_list<Bytes> parts) {
    Bytes out;
    for (const Bytes& p : parts) out.insert(out.end(), p.begin(), p.end());
    return out;
}

// Every plane of every row packed as one literal run of its bytes. A
// plane's bytes lie in pairs, one pair in each group of 16 pixels.
Bytes literalRuns(const Bytes& screen, int planes) {
    const int rowBytes = planes == 1 ? 80 : 160, planeBytes = rowBytes / planes;
    Bytes out;
    for (int y = 0; y < 32000 / rowBytes; ++y)
        for (int p = 0; p < planes; ++p) {
            out.push_back(std::uint8_t(planeBytes - 1));
            for (int i = 0; i < planeBytes; ++i)
                out.push_back(screen[y * rowBytes + i / 2 * 2 * planes + 2 * p + i % 2]);
        }
    return out;
}

TEST(Degas, NeoAndPi1OfOnePictureDifferOnlyInTheCaption) {
    const Bytes palette = vtest::randomBytes(32, 1), screen = vtest::randomBytes(32000, 2);
    const Bytes neo = concat({vtest::randomBytes(4, 3), palette, Bytes(92, 0x55), screen, Bytes(40, 9)});
    const Bytes pi1 = concat({{0, 2}, palette, screen});
    const auto s = vtest::freshStaging();
    const Decoded fromNeo = vtest::decodeAs(*s, neo, "NEO");
    const Bytes neoBitmap = vtest::bytesOf(fromNeo.bitmap);
    const Decoded fromPi1 = vtest::decodeAs(*s, pi1, "PI1");
    EXPECT_EQ(neoBitmap, vtest::bytesOf(fromPi1.bitmap));
    EXPECT_EQ(fromNeo.caption, " Neo 320*200 16 Colour");
    EXPECT_EQ(fromPi1.caption, " Degas 320*200 16 Colour");
}

TEST(Degas, CompressedLiteralRunsEqualThePlainFile) {
    for (const auto& [pi, pc, planes] : {std::tuple{"PI1", "PC1", 4}, {"PI2", "PC2", 2}, {"PI3", "PC3", 1}}) {
        const Bytes palette = vtest::randomBytes(32, 4), screen = vtest::randomBytes(32000, 5);
        const auto s = vtest::freshStaging();
        const Bytes plain = vtest::bytesOf(vtest::decodeAs(*s, concat({{0, 0}, palette, screen}), pi).bitmap);
        const Bytes packed = concat({{0x80, 0}, palette, literalRuns(screen, planes)});
        EXPECT_EQ(vtest::bytesOf(vtest::decodeAs(*s, packed, pc).bitmap), plain) << pc;
    }
}

// The bytes a short file lacks read as zeros, which unpack as runs of one
// zero byte, so the rows after the cut are cleared, whatever the picture
// before left in srcwords.
TEST(Degas, ShortCompressedFileFinishesWithZeros) {
    const Bytes palette = vtest::randomBytes(32, 6), screen = vtest::randomBytes(32000, 7);
    const Bytes whole = concat({{0x80, 0}, palette, literalRuns(screen, 4)});
    const auto s = vtest::freshStaging();
    for (const int rows : {0, 1, 120}) {
        const Bytes cut(whole.begin(), whole.begin() + 34 + rows * 4 * 41);
        Bytes kept = screen;
        std::fill(kept.begin() + rows * 160, kept.end(), 0);
        vtest::decodeAs(*s, whole, "PC1");
        const Bytes packed = vtest::bytesOf(vtest::decodeAs(*s, cut, "PC1").bitmap);
        EXPECT_EQ(packed, vtest::bytesOf(vtest::decodeAs(*s, concat({{0, 0}, palette, kept}), "PI1").bitmap)) << rows;
    }
}

}  // namespace
