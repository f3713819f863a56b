// Tiny: the resolution byte tested after unpacking, counts that are
// negative or missing, the end of srcwords, short files, and the words a
// short file leaves from the picture before.
#include <optional>

#include "support.h"

using namespace velmoric;
using vtest::Bytes;

namespace {

// Four animation bytes come only with a resolution byte of 3 or more; the
// control length is the stream's own unless given.
Bytes tinyFile(std::uint8_t n, const Bytes& control, const Bytes& data, std::optional<int> controlLength = {}) {
    Bytes f = {n};
    if (n >= 3) f.insert(f.end(), {1, 2, 3, 4});
    for (int i = 0; i < 32; ++i) f.push_back(std::uint8_t(37 * i));  // the palette
    const int c = controlLength.value_or(int(control.size()));
    f.insert(f.end(), {std::uint8_t(c >> 8), std::uint8_t(c), 0, 0});
    f.insert(f.end(), control.begin(), control.end());
    f.insert(f.end(), data.begin(), data.end());
    return f;
}

// The resolution byte is tested after the streams and the palette: a bad
// one leaves the new words and both palettes but stages no pixel.
TEST(Tiny, BadResolutionByteIsRejectedAfterUnpacking) {
    const Bytes data = vtest::randomBytes(20, 2);
    const auto good = vtest::freshStaging();
    vtest::decodeAs(*good, tinyFile(3, {0xF6}, data), "TNY");
    for (const std::uint8_t n : {6, 7, 0xFF}) {
        const auto s = vtest::freshStaging();
        const Decoded d = vtest::decodeAs(*s, tinyFile(n, {0xF6}, data), "TNY");
        EXPECT_TRUE(d.rejected && d.bitmap.empty()) << int(n);
        EXPECT_TRUE(std::equal(s->srcwords.data(), s->srcwords.data() + 26, good->srcwords.data())) << int(n);
        for (const std::uint16_t* bitmap : {s->lowbmp.data(), s->medbmp.data()})
            EXPECT_TRUE(std::equal(bitmap + 27, bitmap + 59, good->lowbmp.data() + 27)) << int(n);
        EXPECT_EQ(s->lowbmp[59 + 199 * 80], 0);
    }
}

// Each case: a control stream, maybe a control length of its own, and the
// data byte offsets of the words written from index 16 on; nothing else is
// written. The data stream starts at 37 plus the control length.
TEST(Tiny, CountsThatAreNegativeZeroOrMissing) {
    struct Case { const char* what; Bytes control; std::optional<int> length; std::vector<int> words; };
    const Case cases[] = {
        {"0 with a negative count writes nothing and passes a word", {0x00, 0xFF, 0xFF, 0xFF}, {}, {2}},
        {"1 with a negative count passes none", {0x01, 0x80, 0x00, 0xFF}, {}, {0}},
        {"a control length of 0 runs once, on the data's first byte", {}, {}, {0, 2}},
        {"a negative control length runs once, data inside the header", {0x02, 0xFF}, -5, {0, 0}},
    };
    for (const Case& c : cases) {
        Bytes data = vtest::randomBytes(100, 3);
        data[0] = 0xFE;  // a control byte that copies two words
        const Bytes file = tinyFile(0, c.control, data, c.length);
        const auto s = vtest::freshStaging();
        std::fill_n(s->srcwords.data(), kSrcWordsExtent, 0xBEEF);
        ASSERT_FALSE(vtest::decodeAs(*s, file, "TNY").rejected) << c.what;
        const Source src{file, file.size()};
        const std::size_t dataAt = std::size_t(37 + c.length.value_or(int(c.control.size())));
        for (std::size_t i = 0; i < c.words.size(); ++i)
            EXPECT_EQ(s->srcwords[16 + i], src.word(dataAt + std::size_t(c.words[i]))) << c.what << ", word " << i;
        EXPECT_EQ(s->srcwords[16 + c.words.size()], 0xBEEF) << c.what;
    }
}

// Repeats of 32000 and 32767 words ask for more than srcwords holds: it is
// filled to its end and the stream is followed to its last control byte.
TEST(Tiny, WordsBehindTheArrayAreDropped) {
    const Bytes file = tinyFile(0, {0x00, 0x7D, 0x00, 0x00, 0x7F, 0xFF, 0xFF}, {0x12, 0x34, 0x56, 0x78, 0x9A});
    const auto s = vtest::freshStaging();
    ASSERT_FALSE(vtest::decodeAs(*s, file, "TNY").rejected);
    EXPECT_EQ(s->srcwords[16 + 31999], 0x3412);
    EXPECT_EQ(s->srcwords[kSrcWordsExtent - 1], 0x7856);
}

// A short file's missing bytes read as zeros; what it does not unpack
// keeps the words of the picture before.
TEST(Tiny, ShortFiles) {
    const Bytes picture = vtest::randomBytes(32000, 4);
    const Bytes full = tinyFile(0, {0x01, 0x3E, 0x80}, picture);  // copies 16000 words
    const Bytes cut(full.begin(), full.begin() + 20000);
    Bytes padded = cut;
    padded.resize(full.size(), 0);
    const auto s = vtest::freshStaging();
    const Bytes fromPadded = vtest::bytesOf(vtest::decodeAs(*s, padded, "TNY").bitmap);
    EXPECT_EQ(vtest::bytesOf(vtest::decodeAs(*s, cut, "TNY").bitmap), fromPadded);
    for (const std::uint8_t n : {0, 1, 2}) {
        const Bytes ten = vtest::randomBytes(20, 5);
        Bytes mixed = picture;
        std::copy(ten.begin(), ten.end(), mixed.begin());
        vtest::decodeAs(*s, tinyFile(n, {0x01, 0x3E, 0x80}, picture), "TNY");
        const Bytes afterFull = vtest::bytesOf(vtest::decodeAs(*s, tinyFile(n, {0xF6}, ten), "TNY").bitmap);
        const auto fresh = vtest::freshStaging();
        const Decoded alone = vtest::decodeAs(*fresh, tinyFile(n, {0x01, 0x3E, 0x80}, mixed), "TNY");
        EXPECT_EQ(afterFull, vtest::bytesOf(alone.bitmap)) << int(n);
    }
}

}  // namespace
