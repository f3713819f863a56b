// Crack Art and MacPaint: what the tables of expected bitmaps cannot show.
// Both read on into the previous file's bytes behind a short file; pixbytes
// keeps an earlier picture where a new one writes nothing; a packed Crack
// Art stream lays the same screen as the unpacked form; MacPaint writes its
// rows complemented but leaves pixbytes as unpacked; and no file, cut short
// or garbled, keeps a decode from ending.
#include <array>
#include <tuple>

#include "support.h"

using namespace velmoric;
using vtest::Bytes;

namespace {

// Where the unpacked pixels (or the packing fields) begin, and the bitmap's pixels.
struct CrackRes {
    const char* ext;
    std::size_t pixelsAt, bitmapPixelsAt;
};
const CrackRes kCa1{"CA1", 36, 118}, kCa2{"CA2", 12, 118}, kCa3{"CA3", 4, 62};

// `head` followed by `times` copies of `tail`.
Bytes joined(Bytes head, const Bytes& tail, std::size_t times = 1) {
    for (std::size_t i = 0; i < times; ++i) head.insert(head.end(), tail.begin(), tail.end());
    return head;
}
Bytes macFile(const Bytes& packed) { return joined(Bytes(512, 0), packed); }

// "CA", the compression byte, a resolution byte, palette bytes, then `body`.
Bytes crackFile(const CrackRes& r, std::uint8_t compression, const Bytes& body) {
    Bytes head = {'C', 'A', compression, 0};
    head.resize(r.pixelsAt, 0x12);
    return joined(head, body);
}

Bytes decodeFresh(const Bytes& file, const char* ext) {
    return vtest::bytesOf(vtest::decodeAs(*vtest::freshStaging(), file, ext).bitmap);
}

constexpr std::uint8_t E = 0xE5, I = 0x3C;

TEST(Crack, PackedStreamsLayTheScreenOfTheUnpackedFile) {
    using Stored = std::array<std::size_t, 4>;  // first position, count, step, value; the rest keeps I
    // A name; escape, initial byte, offset and stream; the bytes stored.
    const std::tuple<const char*, Bytes, std::vector<Stored>> cases[] = {
        {"each command", {E, I, 0, 1, 5, E, E, E, 0, 2, 9, E, 1, 0, 1, 8, E, 3, 7, E, 2, 0},
         {{0, 1, 1, 5}, {1, 1, 1, E}, {2, 3, 1, 9}, {5, 2, 1, 8}, {7, 4, 1, 7}}},
        {"escape 0: 0,0 is a literal", {0, I, 0, 1, 0, 0, 0, 3, 4, 0, 2, 0}, {{0, 1, 1, 0}, {1, 4, 1, 4}}},
        {"a skip into the next pass", {E, I, 0, 160, E, 2, 1, 0, 5, E, 2, 0}, {{1 + 57 * 160, 1, 1, 5}}},
        {"top bit; run into next pass", {E, I, 0x80, 0xA0, E, 0, 200, 5, E, 2, 0}, {{0, 200, 160, 5}, {1, 1, 1, 5}}},
        {"the last pass ends a run", {E, I, 0, 2, E, 1, 0x7C, 0xFE, 7, E, 0, 4, 9},
         {{0, 16000, 2, 7}, {1, 15999, 2, 7}, {31999, 1, 1, 9}}},
        {"a skip ends the picture", {E, I, 0, 1, E, 1, 0x7C, 0xFE, 7, E, 2, 1, 0, 3, 3}, {{0, 31999, 1, 7}}},
        {"stride 32767: a byte a pass", {E, I, 0x7F, 0xFF, 1, 2, E, 2, 0}, {{0, 1, 1, 1}, {1, 1, 1, 2}}},
    };
    for (const auto& [name, fields, stored] : cases) {
        Bytes screen(32000, I);
        for (const auto& [first, count, step, value] : stored)
            for (std::size_t i = 0; i < count; ++i) screen[first + i * step] = std::uint8_t(value);
        for (const CrackRes& r : {kCa1, kCa2, kCa3}) {
            const Bytes plain = decodeFresh(crackFile(r, 0, screen), r.ext);
            const Bytes packed = decodeFresh(crackFile(r, 1, fields), r.ext);
            const std::ptrdiff_t at = std::ptrdiff_t(r.bitmapPixelsAt);
            EXPECT_TRUE(std::equal(plain.begin() + at, plain.end(), packed.begin() + at, packed.end()))
                << r.ext << ": " << name;
        }
    }
}

TEST(CrackMacPaint, AShortFileReadsOnInTheBytesOfTheFileBefore) {
    const struct {
        const char* ext;
        Bytes longFile, shortFile;
        std::vector<std::size_t> cutAt;
    } cases[] = {
        {"CA1", crackFile(kCa1, 0, vtest::randomBytes(32000, 31)), crackFile(kCa1, 1, {E, I, 0, 1}), {3, 38, 40}},
        {"MAC", macFile(vtest::randomBytes(40000, 5)), macFile(Bytes(100, 0x7F)), {0, 2, 600}},
    };
    for (const auto& c : cases) {
        for (std::size_t length : c.cutAt) {
            const auto cut = std::ptrdiff_t(length);
            const Bytes cutFile(c.shortFile.begin(), c.shortFile.begin() + cut);
            const Bytes combined = joined(cutFile, Bytes(c.longFile.begin() + cut, c.longFile.end()));
            auto s = vtest::freshStaging();
            vtest::decodeAs(*s, c.longFile, c.ext);
            const Bytes got = vtest::bytesOf(vtest::decodeAs(*s, cutFile, c.ext).bitmap);
            EXPECT_EQ(got, decodeFresh(combined, c.ext)) << c.ext << " cut at " << length;
            EXPECT_NE(got, decodeFresh(cutFile, c.ext)) << c.ext << " cut at " << length;
        }
    }
}

TEST(CrackMacPaint, PixbytesKeepsTheEarlierPictureWhereTheNewOneWritesNothing) {
    // 127 bytes and 405 runs of 128 reach 127 bytes behind the picture; 405 runs end on it.
    auto s = vtest::freshStaging();
    vtest::decodeAs(*s, macFile(joined({0x82, 0x22}, {0x81, 0x22}, 405)), "MAC");
    vtest::decodeAs(*s, macFile(joined({}, {0x81, 0x11}, 405)), "MAC");
    const std::pair<std::size_t, std::uint8_t> afterMac[] = {{51839, 0x11}, {51840, 0x22}, {51966, 0x22}, {51967, 0}};
    for (auto [at, value] : afterMac) EXPECT_EQ(s->pixbytes[at], value) << at;
    // A Crack Art screen covers only the first 32000 bytes.
    vtest::decodeAs(*s, crackFile(kCa3, 1, {E, I, 0, 0}), "CA3");
    EXPECT_EQ(s->pixbytes[31999], I);
    EXPECT_EQ(s->pixbytes[32000], 0x11);
}

TEST(MacPaint, RowsGoOutBottomFirstComplementedWhilePixbytesKeepsThePicture) {
    Bytes packed, picture;
    for (std::size_t i = 0; i < 51840; ++i) {
        if (i % 72 == 0) packed.push_back(71);  // each row one literal run
        picture.push_back(std::uint8_t(i / 72 * 7 + i));
        packed.push_back(picture.back());
    }
    auto s = vtest::freshStaging();
    const Bytes bmp = vtest::bytesOf(vtest::decodeAs(*s, macFile(packed), "MAC").bitmap);
    ASSERT_EQ(bmp.size(), 62u + 51840u);
    EXPECT_EQ(Bytes(s->pixbytes.data(), s->pixbytes.data() + 51840), picture);
    for (std::size_t i = 0; i < 51840; ++i)
        ASSERT_EQ(bmp[62 + (719 - i / 72) * 72 + i % 72], std::uint8_t(~picture[i])) << "row " << i / 72;
}

TEST(CrackMacPaint, CutAndGarbledFilesEnd) {
    std::vector<Bytes> files = {crackFile(kCa1, 1, {}), crackFile(kCa3, 1, joined({}, {0x99, 2, 0xFF, 0xFF}, 10000)),
                                macFile(Bytes(65000, 0x80))};
    for (std::size_t length : {0, 1, 3, 40, 700, 32040, 65533, 70000}) {
        files.push_back(vtest::randomBytes(length, std::uint32_t(length)));
        if (length > 2) files.back()[2] = 1;
    }
    for (const auto& [ext, size] : {std::pair{"CA1", 32118u}, {"CA2", 64118u}, {"CA3", 32062u}, {"MAC", 51902u}})
        for (const Bytes& file : files)
            EXPECT_EQ(vtest::decodeAs(*vtest::freshStaging(), file, ext).bitmap.size(), size)
                << ext << " of " << file.size() << " bytes";
}

}  // namespace
