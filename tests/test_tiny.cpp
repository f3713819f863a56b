// Tiny: the resolution byte, the control and data streams, the columns
// turned back into rows, and the words a short file leaves from the last
// picture; synthetic files and the corpus against a literal reference.
#include <climits>
#include <memory>
#include <optional>

#include "decoders/decoder.h"
#include "shell/formats.h"
#include "support.h"

using namespace velmoric;
using vtest::Bytes;

namespace {

std::unique_ptr<Staging> freshStaging() {
    auto s = std::make_unique<Staging>();
    s->buildTables();
    return s;
}

Decoded decode(Staging& s, const Bytes& file, const char* ext = "TNY") {
    const Format* f = findFormat(ext);
    EXPECT_NE(f, nullptr) << ext;
    return decodeWith(*f, s, Source{file, file.size()});
}

Bytes bytesOf(std::span<const std::uint8_t> b) { return {b.begin(), b.end()}; }

void putBig16(Bytes& b, int v) {
    b.push_back(std::uint8_t(unsigned(v) >> 8));
    b.push_back(std::uint8_t(v));
}

struct TinyFile {
    std::uint8_t n = 0;
    Bytes animation = {1, 2, 3, 4};  // only written for n of 3 or more
    Bytes palette = Bytes(32, 0);
    std::optional<int> controlLength;  // the length of `control` unless given
    Bytes dataCount = {0, 0};          // never read
    Bytes control;
    Bytes data;

    Bytes bytes() const {
        Bytes f = {n};
        if (n >= 3) f.insert(f.end(), animation.begin(), animation.end());
        f.insert(f.end(), palette.begin(), palette.end());
        putBig16(f, controlLength.value_or(int(control.size())));
        f.insert(f.end(), dataCount.begin(), dataCount.end());
        f.insert(f.end(), control.begin(), control.end());
        f.insert(f.end(), data.begin(), data.end());
        return f;
    }
};

// ---- A literal reference --------------------------------------------------

std::uint8_t byteAt(const Bytes& f, std::int64_t at) {
    return at >= 0 && at < std::int64_t(f.size()) ? f[std::size_t(at)] : 0;
}
std::uint16_t asRead(const Bytes& f, std::int64_t at) { return std::uint16_t(byteAt(f, at) | byteAt(f, at + 1) << 8); }
int signedBig16(const Bytes& f, std::int64_t at) { return std::int16_t(byteAt(f, at) << 8 | byteAt(f, at + 1)); }

// srcwords as the rules leave it after one file, word by word.
void referenceUnpack(std::vector<std::uint16_t>& words, const Bytes& f) {
    const std::int64_t t = byteAt(f, 0) >= 3 ? 4 : 0;
    for (int i = 0; i < 16; ++i) words[i] = asRead(f, 1 + t + 2 * i);
    std::int64_t control = 37 + t, data = control + signedBig16(f, 33 + t), out = 16;
    const std::int64_t end = data;
    auto put = [&](std::uint16_t w) {
        if (out < std::int64_t(words.size())) words[std::size_t(out)] = w;
        ++out;
    };
    auto copy = [&](int count) {
        for (int i = 0; i < count; ++i, data += 2) put(asRead(f, data));
    };
    auto repeat = [&](int count) {
        for (int i = 0; i < count; ++i) put(asRead(f, data));
        data += 2;
    };
    do {
        const int x = byteAt(f, control++);
        if (x >= 128) {
            copy(256 - x);
        } else if (x >= 2) {
            repeat(x);
        } else {
            const int m = signedBig16(f, control);
            control += 2;
            x == 1 ? copy(m) : repeat(m);
        }
    } while (control < end);
}

// Word i of the unpacked data is word 4m + j of screen line y, for set j,
// column m.
Bytes screenFromColumns(const std::vector<std::uint16_t>& words) {
    Bytes screen(32000);
    for (int i = 0; i < 16000; ++i) {
        const int j = i / 4000, m = i % 4000 / 200, y = i % 200;
        const int at = y * 160 + (4 * m + j) * 2;
        screen[at] = std::uint8_t(words[16 + i]);
        screen[at + 1] = std::uint8_t(words[16 + i] >> 8);
    }
    return screen;
}

int planesOf(int n) { return n % 3 == 0 ? 4 : n % 3 == 1 ? 2 : 1; }

Bytes palettePart(const Bytes& f) {
    Bytes p(32);
    const std::int64_t t = byteAt(f, 0) >= 3 ? 4 : 0;
    for (int i = 0; i < 32; ++i) p[i] = byteAt(f, 1 + t + i);
    return p;
}

// The columns packed with every kind of control byte: short copies and
// repeats, and the long forms with a count of their own.
void pack(const std::vector<std::uint16_t>& columns, TinyFile& f, std::uint32_t seed) {
    std::mt19937 rng(seed);
    auto word = [&](std::size_t i) {  // as-read: first file byte low
        f.data.push_back(std::uint8_t(columns[i]));
        f.data.push_back(std::uint8_t(columns[i] >> 8));
    };
    std::size_t i = 0;
    while (i < columns.size()) {
        std::size_t same = 1;
        while (i + same < columns.size() && columns[i + same] == columns[i]) ++same;
        const std::size_t left = columns.size() - i;
        if (same >= 2) {
            const std::size_t n = same > 127 && rng() % 2 ? same : std::min<std::size_t>(same, 2 + rng() % 126);
            if (n <= 127) {
                f.control.push_back(std::uint8_t(n));
            } else {
                f.control.push_back(0);
                putBig16(f.control, int(n));
            }
            word(i);
            i += n;
        } else if (rng() % 4 == 0) {
            const std::size_t n = std::min<std::size_t>(left, 1 + rng() % 400);
            f.control.push_back(1);
            putBig16(f.control, int(n));
            for (std::size_t k = 0; k < n; ++k) word(i + k);
            i += n;
        } else {
            const std::size_t n = std::min<std::size_t>(left, 1 + rng() % 128);
            f.control.push_back(std::uint8_t(256 - n));
            for (std::size_t k = 0; k < n; ++k) word(i + k);
            i += n;
        }
    }
}

std::vector<std::uint16_t> columnsWithRuns(std::uint32_t seed) {
    std::mt19937 rng(seed);
    std::vector<std::uint16_t> w(16000);
    for (std::size_t i = 0; i < w.size(); ++i) w[i] = (i / 500) % 2 ? std::uint16_t(i / 700) : std::uint16_t(rng());
    return w;
}

Bytes expectedBitmap(const std::vector<std::uint16_t>& words, const Bytes& file) {
    return vtest::referenceScreenBitmap(screenFromColumns(words), palettePart(file), planesOf(file[0]));
}

// ---- Resolutions ----------------------------------------------------------

TEST(Tiny, ResolutionByteDecidesTheLayout) {
    struct Case {
        std::uint8_t n;
        const char* ext;
        const char* caption;
        std::int16_t kind;
        std::size_t size;
    };
    const Case cases[] = {
        {0, "TNY", " Tiny 320*200 16 Colour", 1, 32118}, {1, "tn2", " Tiny 640*200 4 Colour", 2, 64118},
        {2, "TN1", " Tiny 640*400 Mono", 3, 32062},      {3, "tn1", " Tiny 320*200 16 Colour", 1, 32118},
        {4, "TN2", " Tiny 640*200 4 Colour", 2, 64118},  {5, "tny", " Tiny 640*400 Mono", 3, 32062},
        {0, "TN3", " Tiny 320*200 16 Colour", 1, 32118},
    };
    for (const Case& c : cases) {
        const std::vector<std::uint16_t> columns = columnsWithRuns(c.n + 10);
        TinyFile f;
        f.n = c.n;
        f.palette = vtest::randomBytes(32, c.n + 20);
        pack(columns, f, c.n + 30);
        const Bytes file = f.bytes();
        std::vector<std::uint16_t> words(kSrcWordsExtent, 0);
        referenceUnpack(words, file);
        ASSERT_TRUE(std::equal(columns.begin(), columns.end(), words.begin() + 16)) << "the packer";
        auto s = freshStaging();
        const Decoded d = decode(*s, file, c.ext);
        ASSERT_FALSE(d.rejected);
        EXPECT_EQ(d.caption, c.caption) << int(c.n) << c.ext;
        EXPECT_EQ(d.kind, c.kind);
        EXPECT_EQ(d.bitmap.size(), c.size);
        EXPECT_EQ(bytesOf(d.bitmap), expectedBitmap(words, file)) << int(c.n);
    }
}

TEST(Tiny, AnimationBytesAndDataCountChangeNothing) {
    const std::vector<std::uint16_t> columns = columnsWithRuns(40);
    for (std::uint8_t n : {0, 1, 2}) {
        TinyFile plain;
        plain.n = n;
        plain.palette = vtest::randomBytes(32, 41);
        pack(columns, plain, 42);
        TinyFile animated = plain;
        animated.n = std::uint8_t(n + 3);
        animated.animation = vtest::randomBytes(4, 43);
        animated.dataCount = {0xFF, 0x7F};
        auto s = freshStaging();
        const Bytes a = bytesOf(decode(*s, plain.bytes()).bitmap);
        EXPECT_EQ(bytesOf(decode(*s, animated.bytes()).bitmap), a) << int(n);
    }
}

TEST(Tiny, BadResolutionByteIsRejectedAfterUnpacking) {
    for (std::uint8_t n : {6, 7, 0x80, 0xFF}) {
        auto s = freshStaging();
        TinyFile good;
        good.palette = vtest::randomBytes(32, 50);
        pack(columnsWithRuns(51), good, 52);
        const Bytes before = bytesOf(decode(*s, good.bytes()).bitmap);

        TinyFile bad;
        bad.n = n;
        bad.palette = vtest::randomBytes(32, 53);
        pack(columnsWithRuns(54), bad, 55);
        const Bytes file = bad.bytes();
        const Decoded d = decode(*s, file);
        EXPECT_TRUE(d.rejected) << int(n);
        EXPECT_TRUE(d.bitmap.empty());
        // The words and both palettes are the new file's; no pixels changed.
        std::vector<std::uint16_t> words(kSrcWordsExtent, 0);
        referenceUnpack(words, file);
        EXPECT_TRUE(std::equal(words.begin(), words.end(), s->srcwords.data())) << int(n);
        const Bytes newPalette = vtest::referenceScreenBitmap(Bytes(32000, 0), palettePart(file), 4);
        for (const std::uint16_t* bmp : {s->lowbmp.data(), s->medbmp.data()}) {
            const auto* b = reinterpret_cast<const std::uint8_t*>(bmp);
            EXPECT_TRUE(std::equal(b + 54, b + 118, newPalette.begin() + 54)) << int(n);
        }
        const auto* low = reinterpret_cast<const std::uint8_t*>(s->lowbmp.data());
        EXPECT_TRUE(std::equal(low + 118, low + 32118, before.begin() + 118)) << int(n);
    }
}

// ---- Streams --------------------------------------------------------------

// Data word k of the standard data stream; its bytes are 0xA0 + k / 256 and
// k % 256.
Bytes standardData(int words) {
    Bytes d;
    for (int k = 0; k < words; ++k) d.insert(d.end(), {std::uint8_t(0xA0 + k / 256), std::uint8_t(k)});
    return d;
}

std::vector<int> run(int first, int count) {  // data offsets of words first...
    std::vector<int> v;
    for (int k = 0; k < count; ++k) v.push_back(2 * (first + k));
    return v;
}
std::vector<int> same(int word, int count) { return std::vector<int>(std::size_t(count), 2 * word); }
std::vector<int> operator+(std::vector<int> a, const std::vector<int>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// Each case: the control stream, maybe a control length of its own, bytes
// in front of the standard data, and the data offsets of the words written
// from index 16 on; nothing is written behind them.
struct StreamCase {
    const char* what;
    Bytes control;
    std::optional<int> controlLength;
    Bytes dataPrefix;
    std::vector<int> written;
};

TEST(Tiny, ControlBytesTable) {
    const std::vector<StreamCase> cases = {
        {"0x80 copies 128", {0x80, 0xFF}, {}, {}, run(0, 128) + run(128, 1)},
        {"0xFF copies one", {0xFF, 0xFF}, {}, {}, run(0, 2)},
        {"2 repeats twice, then passes the word", {0x02, 0xFF}, {}, {}, same(0, 2) + run(1, 1)},
        {"127 repeats 127 times", {0x7F, 0xFF}, {}, {}, same(0, 127) + run(1, 1)},
        {"1 with 300 copies 300", {0x01, 0x01, 0x2C, 0xFF}, {}, {}, run(0, 300) + run(300, 1)},
        {"0 with 300 repeats 300", {0x00, 0x01, 0x2C, 0xFF}, {}, {}, same(0, 300) + run(1, 1)},
        {"0 with 0 writes nothing, passes a word", {0x00, 0x00, 0x00, 0xFF}, {}, {}, run(1, 1)},
        {"1 with 0 writes nothing, passes none", {0x01, 0x00, 0x00, 0xFF}, {}, {}, run(0, 1)},
        {"0 with a negative count passes a word", {0x00, 0xFF, 0xFF, 0xFF}, {}, {}, run(1, 1)},
        {"1 with a negative count passes none", {0x01, 0x80, 0x00, 0xFF}, {}, {}, run(0, 1)},
        {"a control length of 0 runs once, on the data's first byte", {}, {}, {}, run(0, 96)},
        {"a negative control length runs once", {0x02, 0xFF}, -5, {}, same(0, 2)},
        {"a count taken from the data ends the stream", {0x01}, {}, {0x00, 0x03}, run(0, 3)},
        {"a short control length ends early", {0xFE, 0xFF}, 1, {}, run(0, 2)},
    };
    for (const StreamCase& c : cases) {
        auto s = freshStaging();
        std::fill_n(s->srcwords.data(), kSrcWordsExtent, 0xBEEF);
        TinyFile f;
        f.control = c.control;
        f.controlLength = c.controlLength;
        f.data = c.dataPrefix;
        const Bytes standard = standardData(400);
        f.data.insert(f.data.end(), standard.begin(), standard.end());
        const Bytes file = f.bytes();
        ASSERT_FALSE(decode(*s, file).rejected);
        // The data stream starts behind the control stream, by its stated
        // length: for a negative length that lies inside the header.
        const std::int64_t dataAt = 37 + f.controlLength.value_or(int(f.control.size()));
        for (std::size_t i = 0; i < c.written.size(); ++i)
            ASSERT_EQ(s->srcwords[16 + i], asRead(file, dataAt + c.written[i])) << c.what << ", word " << i;
        EXPECT_EQ(s->srcwords[16 + c.written.size()], 0xBEEF) << c.what;
    }
}

// Streams that ask for more words than srcwords holds: the words behind
// its extent are dropped and the stream is still followed to its end.
TEST(Tiny, StreamsLongerThanTheArrayEnd) {
    struct Case {
        const char* what;
        Bytes triple;
    };
    for (const Case& c : {Case{"copies", {0x01, 0x7F, 0xFF}}, Case{"repeats", {0x00, 0x7F, 0xFF}}}) {
        TinyFile f;
        for (int i = 0; i < 10922; ++i) f.control.insert(f.control.end(), c.triple.begin(), c.triple.end());
        f.control.push_back(0xFF);
        f.data = vtest::randomBytes(30000, 60);
        auto s = freshStaging();
        const Bytes file = f.bytes();
        ASSERT_FALSE(decode(*s, file).rejected);
        const std::int64_t dataAt = 37 + std::int64_t(f.control.size());
        const bool copies = c.triple[0] == 1;
        for (std::size_t i = 16; i < kSrcWordsExtent; ++i)
            ASSERT_EQ(s->srcwords[i], asRead(file, copies ? dataAt + 2 * std::int64_t(i - 16) : dataAt)) << i;
    }
}

TEST(Tiny, RandomStreamsMatchTheReferenceAcrossPictures) {
    auto s = freshStaging();
    std::vector<std::uint16_t> words(kSrcWordsExtent, 0);
    std::mt19937 rng(70);
    for (int round = 0; round < 40; ++round) {
        TinyFile f;
        f.n = std::uint8_t(round % 7);
        f.palette = vtest::randomBytes(32, std::uint32_t(round));
        for (int i = rng() % 48; i > 0; --i) {
            const std::uint8_t x = std::uint8_t(rng());
            f.control.push_back(x);
            if (x < 2) putBig16(f.control, rng() % 5 == 0 ? int(rng() % 65536) : int(rng() % 600));
        }
        if (round % 5 == 1) f.controlLength = int(rng() % 80) - 20;
        f.data = vtest::randomBytes(rng() % 40000, std::uint32_t(100 + round));
        const Bytes file = f.bytes();
        referenceUnpack(words, file);
        const Decoded d = decode(*s, file);
        ASSERT_TRUE(std::equal(words.begin(), words.end(), s->srcwords.data())) << "round " << round;
        if (f.n > 5) {
            EXPECT_TRUE(d.rejected);
            continue;
        }
        EXPECT_EQ(bytesOf(d.bitmap), expectedBitmap(words, file)) << "round " << round;
    }
}

// Runs are stored in blocks that may overlap inside the run but never
// pass its end: after a picture that filled srcwords, every length of copy
// and repeat, alone and as the second of two runs, leaves the words behind
// it as they were. The last cases run up to the end of srcwords.
TEST(Tiny, EveryRunLengthLeavesTheWordsBehindIt) {
    auto s = freshStaging();
    std::vector<std::uint16_t> words(kSrcWordsExtent, 0);
    TinyFile filler;
    filler.control = {1, 0x7F, 0xEF};  // copy 32751 words
    filler.data = vtest::randomBytes(2 * 32751, 90);
    referenceUnpack(words, filler.bytes());
    ASSERT_FALSE(decode(*s, filler.bytes()).rejected);
    for (int length = 1; length <= 70; ++length)
        for (const bool copies : {true, false})
            for (const int before : {0, 3, 32751 - length, 32751 - 3 - length}) {
                TinyFile f;
                if (before > 0) f.control = {1, std::uint8_t(before >> 8), std::uint8_t(before)};
                if (length <= 128 && (copies || length >= 2)) {
                    f.control.push_back(std::uint8_t(copies ? 256 - length : length));
                } else {
                    f.control.insert(f.control.end(), {std::uint8_t(copies ? 1 : 0), 0, std::uint8_t(length)});
                }
                f.data = vtest::randomBytes(2 * std::size_t(before + length), std::uint32_t(length * 8 + before));
                const Bytes file = f.bytes();
                referenceUnpack(words, file);
                ASSERT_FALSE(decode(*s, file).rejected);
                ASSERT_TRUE(std::equal(words.begin(), words.end(), s->srcwords.data()))
                    << (copies ? "copy of " : "repeat of ") << length << " after " << before;
            }
}

// The data stream ends inside a copy: the words from its end on read 0,
// whichever block of the copy the end falls in.
TEST(Tiny, CopyRunningOffTheDataEnd) {
    auto s = freshStaging();
    std::vector<std::uint16_t> words(kSrcWordsExtent, 0);
    for (int length : {1, 5, 17, 40, 128})
        for (int missing = 0; missing <= 2 * length + 1; ++missing) {
            TinyFile f;
            f.control = {std::uint8_t(256 - length)};
            f.data = vtest::randomBytes(2 * std::size_t(length), std::uint32_t(length));
            f.data.resize(f.data.size() - std::min<std::size_t>(f.data.size(), std::size_t(missing)));
            const Bytes file = f.bytes();
            referenceUnpack(words, file);
            ASSERT_FALSE(decode(*s, file).rejected);
            ASSERT_TRUE(std::equal(words.begin(), words.end(), s->srcwords.data()))
                << length << " words, " << missing << " bytes missing";
        }
}

// ---- Pixels ---------------------------------------------------------------

TEST(Tiny, ShortFileKeepsTheLastPicturesWords) {
    for (std::uint8_t n : {0, 1, 2}) {
        auto s = freshStaging();
        TinyFile full;
        full.n = n;
        const std::vector<std::uint16_t> columns = columnsWithRuns(80);
        pack(columns, full, 81);
        decode(*s, full.bytes());
        TinyFile little;
        little.n = n;
        little.control = {0xF6};  // ten words
        little.data = vtest::randomBytes(20, 82);
        std::vector<std::uint16_t> words(kSrcWordsExtent, 0);
        std::copy(columns.begin(), columns.end(), words.begin() + 16);
        for (int i = 0; i < 10; ++i) words[16 + i] = asRead(little.data, 2 * i);
        EXPECT_EQ(bytesOf(decode(*s, little.bytes()).bitmap), expectedBitmap(words, little.bytes())) << int(n);
    }
}

TEST(Tiny, DataRunsDownTheColumns) {
    TinyFile f;
    f.control = {0xFE};
    f.data = {0x80, 0x00, 0x80, 0x00};
    auto s = freshStaging();
    const Bytes bitmap = bytesOf(decode(*s, f.bytes()).bitmap);
    EXPECT_EQ(bitmap[118 + 199 * 160], 0x10);  // line 0, leftmost pixel
    EXPECT_EQ(bitmap[118 + 198 * 160], 0x10);  // line 1, not the next group
    EXPECT_EQ(bitmap[118 + 199 * 160 + 8], 0x00);
}

TEST(Tiny, MonoKeepsTheBitmapPalette) {
    TinyFile f;
    f.n = 2;
    f.control = {0xFF};
    f.data = {0x80, 0x00};
    auto s = freshStaging();
    const Bytes a = bytesOf(decode(*s, f.bytes()).bitmap);
    f.palette = vtest::randomBytes(32, 90);
    EXPECT_EQ(bytesOf(decode(*s, f.bytes()).bitmap), a);
    EXPECT_EQ(a[62 + 399 * 80], 0x80);
    std::swap_ranges(s->monobmp.data() + 27, s->monobmp.data() + 29, s->monobmp.data() + 29);
    const Bytes inverted = bytesOf(decode(*s, f.bytes()).bitmap);
    EXPECT_EQ(Bytes(inverted.begin() + 54, inverted.begin() + 62), (Bytes{0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF}));
}

// ---- Corpus ---------------------------------------------------------------

TEST(Tiny, CorpusFilesMatchTheReference) {
    int checked = 0;
    for (const char* folder : {"tny", "tn1", "tn2", "tn3"}) {
        for (const auto& path : vtest::corpusFiles(folder)) {
            const Bytes file = vtest::readFile(path.string());
            std::vector<std::uint16_t> words(kSrcWordsExtent, 0);
            referenceUnpack(words, file);
            auto s = freshStaging();
            const Decoded d = decode(*s, file, "TNY");
            ASSERT_FALSE(d.rejected) << path;
            EXPECT_EQ(bytesOf(d.bitmap), expectedBitmap(words, file)) << path;
            ++checked;
        }
    }
    if (checked == 0) GTEST_SKIP() << "no corpus for tiny";
}

}  // namespace
