// MacPaint: where the packed picture starts, the control bytes, the order
// and complement of the rows, the state left in pixbytes and srcbytes, the
// corpus and hostile files, against a plain reference decode.

#include "decoders/decoder.h"
#include "shell/formats.h"
#include "support.h"

using namespace velmoric;
using vtest::Bytes;

namespace {

constexpr std::size_t kPicture = 51840;

std::unique_ptr<Staging> freshStaging() {
    auto s = std::make_unique<Staging>();
    s->buildTables();
    return s;
}

Bytes bytesOf(std::span<const std::uint8_t> b) { return {b.begin(), b.end()}; }

Decoded decode(Staging& s, const Bytes& file) {
    const Format* f = findFormat("mac");
    EXPECT_NE(f, nullptr);
    return decodeWith(*f, s, Source{file, file.size()});
}

Bytes pixbytes(const Staging& s, std::size_t n = kPicture) { return Bytes(s.pixbytes.data(), s.pixbytes.data() + n); }

// A bare header of 512 bytes, version 2, then the packed picture.
Bytes macFile(const Bytes& packed, std::size_t headerSize = 512) {
    Bytes f(headerSize, 0);
    f[3] = 2;
    f.insert(f.end(), packed.begin(), packed.end());
    return f;
}

// The unpacked picture the way the format describes it: runs appended one
// after another until the picture is full, reading 0 behind srcbytes.
Bytes referencePicture(const Bytes& file) {
    auto at = [&](std::size_t i) -> int { return i < file.size() && i < kSrcBytesExtent ? file[i] : 0; };
    std::size_t r = (at(1) || at(2)) ? 640 : 512;
    Bytes pic;
    while (pic.size() < kPicture) {
        const int n = at(r++);
        if (n < 128) {
            for (int i = 0; i <= n; ++i) pic.push_back(std::uint8_t(at(r++)));
        } else if (n > 128) {
            pic.insert(pic.end(), std::size_t(257 - n), std::uint8_t(at(r++)));
        }
    }
    return pic;
}

// The bitmap of a picture: header, black then white, rows 719 to 0 complemented.
Bytes referenceBitmap(const Bytes& picture) {
    Bytes out = vtest::referenceHeader(51902, 62, 576, 720, 1, 51840, 2834, 2);
    out.insert(out.end(), {0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0});
    for (int row = 719; row >= 0; --row)
        for (int x = 0; x < 72; ++x) out.push_back(std::uint8_t(~picture[std::size_t(row) * 72 + std::size_t(x)]));
    return out;
}

TEST(MacPaint, HeaderOf512Or640ByBytes1And2) {
    // From 512 the 128 bytes up to 640 unpack to 8192 bytes of 0x55; from
    // 640 on everything is 0x33.
    Bytes packed;
    for (int i = 0; i < 64; ++i) packed.insert(packed.end(), {0x81, 0x55});
    for (int i = 0; i < 500; ++i) packed.insert(packed.end(), {0x81, 0x33});
    struct Case {
        std::uint8_t b0, b1, b2, b3;
        std::uint8_t first;
    };
    const Case cases[] = {
        {0, 0, 0, 2, 0x55},     // version 2
        {0, 0, 0, 0, 0x55},     // version 0
        {0xFF, 0, 0, 0xFF, 0x55},  // only bytes 1 and 2 count
        {0, 11, 'D', 'o', 0x33},   // MacBinary: name length and name
        {0, 0, 1, 0, 0x33},
        {0, 1, 0, 0, 0x33},
    };
    for (const Case& c : cases) {
        Bytes file = macFile(packed);
        file[0] = c.b0, file[1] = c.b1, file[2] = c.b2, file[3] = c.b3;
        auto s = freshStaging();
        const Decoded d = decode(*s, file);
        EXPECT_EQ(d.caption, " Mac Paint 576*720 Mono");
        EXPECT_EQ(d.kind, 4);
        EXPECT_EQ(s->pixbytes[0], c.first) << int(c.b1) << " " << int(c.b2);
        EXPECT_EQ(bytesOf(d.bitmap), referenceBitmap(referencePicture(file)));
    }
}

TEST(MacPaint, ControlBytes) {
    Bytes literal128(129, 0x7F), counting(128);
    for (std::size_t i = 0; i < 128; ++i) literal128[i + 1] = counting[i] = std::uint8_t(i + 1);
    Bytes run128(129, 5);
    run128[128] = 6;
    struct Case {
        const char* name;
        Bytes packed;
        Bytes expected;  // the first bytes of the picture
    };
    const Case cases[] = {
        {"128 writes nothing and takes no byte", {0x80, 0x00, 0x7E, 0x80, 0x80, 0x01, 4, 5}, {0x7E, 4, 5}},
        {"n below 128 copies n + 1", {0x02, 1, 2, 3, 0x00, 9}, {1, 2, 3, 9}},
        {"127 copies 128", literal128, counting},
        {"255 repeats twice", {0xFF, 4, 0x00, 6}, {4, 4, 6}},
        {"254 repeats three times", {0xFE, 9, 0x00, 6}, {9, 9, 9, 6}},
        {"129 repeats 128 times, across a row's end", {0x81, 5, 0x00, 6}, run128},
    };
    for (const Case& c : cases) {
        auto s = freshStaging();
        decode(*s, macFile(c.packed));
        EXPECT_EQ(pixbytes(*s, c.expected.size()), c.expected) << c.name;
    }
}

TEST(MacPaint, AllFfRunsGiveABlackPicture) {
    Bytes file = macFile(Bytes(60000, 0xFF));
    auto s = freshStaging();
    const Bytes bmp = bytesOf(decode(*s, file).bitmap);
    ASSERT_EQ(bmp.size(), 51902u);
    EXPECT_EQ(Bytes(bmp.begin() + 62, bmp.end()), Bytes(kPicture, 0x00));
    EXPECT_EQ(Bytes(bmp.begin(), bmp.begin() + 62), Bytes(s->macbmp.data(), s->macbmp.data() + 62));
}

TEST(MacPaint, RowsBottomFirstComplementedAndPixbytesLeftAsUnpacked) {
    // Each row a literal run of 72 bytes that name the row, so a wrong
    // order or a missing complement shows.
    Bytes packed, picture;
    for (int row = 0; row < 720; ++row) {
        packed.push_back(71);
        for (int x = 0; x < 72; ++x) {
            const std::uint8_t v = std::uint8_t(row * 7 + x);
            packed.push_back(v);
            picture.push_back(v);
        }
    }
    auto s = freshStaging();
    const Bytes bmp = bytesOf(decode(*s, macFile(packed)).bitmap);
    EXPECT_EQ(pixbytes(*s), picture);
    for (int x = 0; x < 72; ++x) EXPECT_EQ(bmp[62 + std::size_t(x)], std::uint8_t(~picture[719 * 72 + std::size_t(x)]));
    EXPECT_EQ(bmp, referenceBitmap(picture));
}

TEST(MacPaint, TheLastRunMayReachBehindThePicture) {
    // 51839 bytes, then a run of 128: the count is tested only between runs.
    Bytes packed;
    for (std::size_t n = 0; n < 51839 / 128; ++n) packed.insert(packed.end(), {0x81, 0x11});
    packed.insert(packed.end(), {std::uint8_t(257 - 51839 % 128), 0x11});
    packed.insert(packed.end(), {0x81, 0x22, 0x81, 0x33});
    auto s = freshStaging();
    const Bytes bmp = bytesOf(decode(*s, macFile(packed)).bitmap);
    EXPECT_EQ(s->pixbytes[51838], 0x11);
    EXPECT_EQ(Bytes(s->pixbytes.data() + 51839, s->pixbytes.data() + 51839 + 128), Bytes(128, 0x22));
    EXPECT_EQ(s->pixbytes[51839 + 128], 0);  // the next run is not read
    EXPECT_EQ(bmp.size(), 51902u);
    EXPECT_EQ(bmp[62 + 71], std::uint8_t(~0x22));  // end of row 719
}

TEST(MacPaint, ShortFiles) {
    // In a fresh state a header alone reads zeros: copies of 0, white.
    {
        auto s = freshStaging();
        const Bytes bmp = bytesOf(decode(*s, Bytes(512, 0)).bitmap);
        EXPECT_EQ(Bytes(bmp.begin() + 62, bmp.end()), Bytes(kPicture, 0xFF));
    }
    // After a longer file, the short one reads on in that file's bytes.
    const Bytes longFile = macFile(vtest::randomBytes(40000, 5));
    const Bytes shortWhole = macFile(Bytes(100, 0x7F));
    for (std::size_t shortLength : {0, 2, 600}) {
        const Bytes shortFile(shortWhole.begin(), shortWhole.begin() + std::ptrdiff_t(shortLength));
        Bytes combined = shortFile;
        combined.insert(combined.end(), longFile.begin() + std::ptrdiff_t(shortLength), longFile.end());
        auto s = freshStaging();
        decode(*s, longFile);
        const Bytes got = bytesOf(decode(*s, shortFile).bitmap);
        const Bytes picture = referencePicture(combined);
        EXPECT_EQ(got, referenceBitmap(picture)) << shortLength;
        EXPECT_EQ(pixbytes(*s), Bytes(picture.begin(), picture.begin() + kPicture)) << shortLength;
    }
}

TEST(MacPaint, CorpusFilesMatchTheReference) {
    SKIP_WITHOUT_CORPUS("mac");
    int checked = 0;
    for (const auto& path : vtest::corpusFiles("mac")) {
        const Bytes file = vtest::readFile(path.string());
        auto s = freshStaging();
        const Decoded d = decode(*s, file);
        const Bytes picture = referencePicture(file);
        EXPECT_EQ(bytesOf(d.bitmap), referenceBitmap(picture)) << path;
        EXPECT_EQ(pixbytes(*s), Bytes(picture.begin(), picture.begin() + kPicture)) << path;
        ++checked;
    }
    EXPECT_GE(checked, 6);
}

TEST(MacPaint, HostileFilesEndAndMatchTheReference) {
    std::vector<Bytes> files;
    std::uint32_t seed = 40;
    for (std::size_t length : {0, 1, 3, 511, 513, 641, 5000, 30000, 65533, 70000}) {
        files.push_back(vtest::randomBytes(length, seed++));
        files.push_back(Bytes(length, 0x80));  // nothing but empty controls
    }
    files.push_back(macFile(Bytes(65000, 0x80)));
    files.push_back(macFile(Bytes(65000, 0x00)));
    for (const Bytes& file : files) {
        auto s = freshStaging();
        const Decoded d = decode(*s, file);
        EXPECT_EQ(bytesOf(d.bitmap), referenceBitmap(referencePicture(file))) << file.size();
    }
}

// Runs that are written in whole blocks must still leave every byte behind
// the last run as the earlier pictures left it, and take the same bytes near
// the end of srcbytes, where reads give 0.
TEST(MacPaint, BytesBehindTheLastRunKeepTheEarlierPicture) {
    std::vector<Bytes> files;
    std::mt19937 rng(77);
    for (int n = 0; n < 24; ++n) {
        // Mostly short commands, as real pictures have, some of full length.
        Bytes packed;
        while (packed.size() < 60000) {
            const unsigned kind = rng() % 4;
            const std::uint8_t control = std::uint8_t(kind == 0 ? rng() : kind % 2 ? rng() % 40 : 250 + rng() % 6);
            packed.push_back(control);
            const Bytes data = vtest::randomBytes(control < 128 ? control + 1u : 1u, std::uint32_t(rng()));
            packed.insert(packed.end(), data.begin(), data.end());
        }
        files.push_back(macFile(packed));
    }
    // Empty controls up to the end of srcbytes, then commands that read past it.
    for (std::size_t tail : {1, 2, 64, 127, 128, 129, 130, 200, 300}) {
        Bytes file = macFile(Bytes(kSrcBytesExtent - 512 - tail, 0x80));
        const Bytes end = vtest::randomBytes(tail, std::uint32_t(tail));
        file.insert(file.end(), end.begin(), end.end());
        files.push_back(file);
    }
    for (const Bytes& file : files) {
        auto s = freshStaging();
        const Bytes before = vtest::randomBytes(kPixBytesExtent, 99);
        std::copy(before.begin(), before.end(), s->pixbytes.data());
        const Decoded d = decode(*s, file);
        const Bytes picture = referencePicture(file);
        Bytes expected = before;
        std::copy(picture.begin(), picture.end(), expected.begin());
        EXPECT_EQ(pixbytes(*s, kPixBytesExtent), expected) << file.size() << " bytes, picture of " << picture.size();
        EXPECT_EQ(bytesOf(d.bitmap), referenceBitmap(picture)) << file.size();
    }
}

}  // namespace
