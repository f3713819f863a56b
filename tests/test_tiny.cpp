// Tiny: counts that are negative or missing, the end of srcwords, and the
// words a short stream leaves from the files before, among them a rejected
// one. Files that end early read zeros, as test_staging shows for every
// decoder; the rejection itself is tested on opening a file.
#include <optional>

#include "support.h"

using namespace velmoric;
using vtest::Bytes;

namespace {

// Four animation bytes come only with a resolution byte of 3 or more; the
// control length is the stream's own unless given.
Bytes tinyFile(std::uint8_t n, const Bytes& control, const Bytes& data, std::optional<int> controlLength = {}) {
    Bytes f(1, n);
    f.reserve(41 + control.size() + data.size());
    if (n >= 3) f.insert(f.end(), {1, 2, 3, 4});
    for (int i = 0; i < 32; ++i) f.push_back(std::uint8_t(37 * i));  // the palette
    const int c = controlLength.value_or(int(control.size()));
    f.insert(f.end(), {std::uint8_t(c >> 8), std::uint8_t(c), 0, 0});
    f.insert(f.end(), control.begin(), control.end());
    f.insert(f.end(), data.begin(), data.end());
    return f;
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
        {"a negative control length runs once, data inside the header", {0x02, 0xFF}, -5, {0, 0}}};
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

// What a stream does not unpack keeps the words of the files before, even
// those of a file rejected for its resolution byte, which is tested after
// unpacking: a whole picture, twenty words of a rejected file, then ten
// words, give the picture with its first twenty words new.
TEST(Tiny, AShortStreamKeepsTheWordsOfTheFilesBefore) {
    const Bytes picture = vtest::randomBytes(32000, 4), twenty = vtest::randomBytes(40, 5);
    const Bytes ten = vtest::randomBytes(20, 6);
    Bytes mixed = picture;
    std::copy(twenty.begin(), twenty.end(), mixed.begin());
    std::copy(ten.begin(), ten.end(), mixed.begin());
    for (const std::uint8_t n : {0, 1, 2}) {
        const auto s = vtest::freshStaging();
        vtest::decodeAs(*s, tinyFile(n, {0x01, 0x3E, 0x80}, picture), "TNY");  // copies 16000 words
        EXPECT_TRUE(vtest::decodeAs(*s, tinyFile(6, {0xEC}, twenty), "TNY").rejected);
        const Bytes after = vtest::bytesOf(vtest::decodeAs(*s, tinyFile(n, {0xF6}, ten), "TNY").bitmap);
        const auto alone = vtest::freshStaging();
        const Decoded whole = vtest::decodeAs(*alone, tinyFile(n, {0x01, 0x3E, 0x80}, mixed), "TNY");
        EXPECT_EQ(after, vtest::bytesOf(whole.bitmap)) << int(n);
    }
}

}  // namespace
