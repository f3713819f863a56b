// Spectrum 512 plain, compressed and smooshed. A picture is built from its
// parts (plane bytes and 48 colour words a line), written in each of the
// three file forms by the encoders below, and every decode is compared with
// a pixel-by-pixel reference of the write-out.
#include "decoders/decoder.h"
#include "shell/formats.h"
#include "support.h"

using namespace velmoric;
using vtest::Bytes;

namespace {

// The lines 1 to 199 of a picture (index 0 unused): plane bytes [L][p][b]
// and colour words [L][2 * slot] = F, [L][2 * slot + 1] = S.
struct Picture {
    std::vector<std::array<std::array<std::uint8_t, 40>, 4>> planes{200};
    std::vector<std::array<std::uint8_t, 96>> colours{200};
};

// ---- The reference ---------------------------------------------------------
// Straight from the rules: colour number from the four plane bits, palette
// slot from the column ranges of that colour number, levels from the bits of
// the colour word; lines 199 up to 1, then a black row.
Bytes referenceBitmap(const Picture& pic) {
    Bytes out = vtest::referenceHeader(192054, 54, 320, 200, 24, 192000, 0, 0);
    for (int line = 199; line >= 1; --line) {
        for (int x = 0; x < 320; ++x) {
            int c = 0;
            for (int p = 0; p < 4; ++p)
                if (pic.planes[line][p][x / 8] & (0x80 >> (x % 8))) c += 1 << p;
            const int x1 = c % 2 == 0 ? 10 * c + 1 : 10 * c - 5;
            const int slot = x < x1 ? c : (x < x1 + 160 ? c + 16 : c + 32);
            const std::uint8_t f = pic.colours[line][2 * slot], s = pic.colours[line][2 * slot + 1];
            out.push_back(std::uint8_t((s & 7) * 36));
            out.push_back(std::uint8_t(((s >> 4) & 7) * 36));
            out.push_back(std::uint8_t((f & 7) * 36));
        }
    }
    out.resize(192054, 0);
    return out;
}

// ---- Pictures and their files ---------------------------------------------
std::size_t spuPlace(int line, int b, int p) { return 160 * line + 8 * (b / 2) + 2 * p + (b & 1); }
std::size_t paletteAt(int line) { return 96 * std::size_t(line) + 31904; }

// Plane bytes with runs in them, so that packing uses both kinds of run;
// colours 0 and 15 of every palette black, other colours black now and then,
// and only the bits that count set.
Picture randomPicture(std::uint32_t seed) {
    std::mt19937 rng(seed);
    Picture pic;
    std::uint8_t last = 0;
    for (int line = 1; line < 200; ++line) {
        for (auto& plane : pic.planes[line])
            for (auto& b : plane) b = last = rng() % 3 == 0 ? std::uint8_t(rng()) : last;
        for (int slot = 0; slot < 48; ++slot) {
            const bool black = slot % 16 == 0 || slot % 16 == 15 || rng() % 5 == 0;
            pic.colours[line][2 * slot] = black ? 0 : std::uint8_t(rng() & 0x07);
            pic.colours[line][2 * slot + 1] = black ? 0 : std::uint8_t(rng() & 0x77);
        }
    }
    return pic;
}

// The same picture with noise in the bits of the colour words that no
// decoder looks at.
Picture withIgnoredBits(Picture pic, std::uint32_t seed) {
    std::mt19937 rng(seed);
    for (auto& words : pic.colours)
        for (std::size_t i = 0; i < 96; i += 2) {
            words[i] |= std::uint8_t(rng() & 0xF8);
            words[i + 1] |= std::uint8_t(rng() & 0x88);
        }
    return pic;
}

Bytes spuFile(const Picture& pic, const Bytes& line0) {
    Bytes f(51104, 0);
    std::copy(line0.begin(), line0.begin() + 160, f.begin());
    for (int line = 1; line < 200; ++line) {
        for (int p = 0; p < 4; ++p)
            for (int b = 0; b < 40; ++b) f[spuPlace(line, b, p)] = pic.planes[line][p][b];
        std::copy(pic.colours[line].begin(), pic.colours[line].end(), f.begin() + long(paletteAt(line)));
    }
    return f;
}

Picture pictureOfSpu(const Bytes& f) {
    Picture pic;
    for (int line = 1; line < 200; ++line) {
        for (int p = 0; p < 4; ++p)
            for (int b = 0; b < 40; ++b) pic.planes[line][p][b] = f[spuPlace(line, b, p)];
        std::copy(f.begin() + long(paletteAt(line)), f.begin() + long(paletteAt(line)) + 96, pic.colours[line].begin());
    }
    return pic;
}

// The 31840 unpacked plane bytes: line by line (SPC) or column by column (SPS).
Bytes unpackedPlanes(const Picture& pic, bool byColumns) {
    Bytes out(31840);
    for (int p = 0; p < 4; ++p)
        for (int line = 1; line < 200; ++line)
            for (int b = 0; b < 40; ++b)
                out[7960 * p + (byColumns ? 199 * b + (line - 1) : 40 * (line - 1) + b)] = pic.planes[line][p][b];
    return out;
}

// Runs of 3 to 130 equal bytes, copies of 1 to 128 others.
Bytes packRuns(const Bytes& data, bool smooshed) {
    Bytes out;
    auto runAt = [&](std::size_t i) {
        std::size_t n = 1;
        while (i + n < data.size() && n < 130 && data[i + n] == data[i]) ++n;
        return n;
    };
    for (std::size_t i = 0; i < data.size();) {
        if (const std::size_t run = runAt(i); run >= 3) {
            out.push_back(std::uint8_t(smooshed ? run - 3 : 258 - run));
            out.push_back(data[i]);
            i += run;
            continue;
        }
        std::size_t n = 1;
        while (i + n < data.size() && n < 128 && runAt(i + n) < 3) ++n;
        out.push_back(std::uint8_t(smooshed ? n + 127 : n - 1));
        out.insert(out.end(), data.begin() + long(i), data.begin() + long(i + n));
        i += n;
    }
    return out;
}

void putBig32(Bytes& b, std::uint32_t v) {
    for (int i = 3; i >= 0; --i) b.push_back(std::uint8_t(v >> (8 * i)));
}

Bytes packedFile(const Bytes& pixels, const Bytes& colours, std::uint32_t statedLength) {
    Bytes f = {'S', 'P', 0, 0};
    putBig32(f, statedLength);
    putBig32(f, std::uint32_t(colours.size()));
    f.insert(f.end(), pixels.begin(), pixels.end());
    f.insert(f.end(), colours.begin(), colours.end());
    return f;
}

bool isBlack(const Picture& pic, int line, int slot) {
    return (pic.colours[line][2 * slot] & 7) == 0 && (pic.colours[line][2 * slot + 1] & 0x77) == 0;
}

// Masked records; a black colour sometimes has its word anyway, and the two
// bits that are not looked at are set at random.
Bytes spcColours(const Picture& pic, std::mt19937& rng) {
    Bytes out;
    for (int line = 1; line < 200; ++line)
        for (int q = 0; q < 3; ++q) {
            unsigned mask = rng() & 0x8001;
            for (int c = 1; c <= 14; ++c)
                if (!isBlack(pic, line, 16 * q + c) || rng() % 4 == 0) mask |= 1u << c;
            out.push_back(std::uint8_t(mask >> 8));
            out.push_back(std::uint8_t(mask));
            for (int c = 1; c <= 14; ++c)
                if (mask >> c & 1) {
                    out.push_back(pic.colours[line][2 * (16 * q + c)]);
                    out.push_back(pic.colours[line][2 * (16 * q + c) + 1]);
                }
        }
    return out;
}

// A bit stream, most significant bit first, the last byte padded with zeros.
struct BitWriter {
    Bytes bytes;
    int used = 8;
    void put(unsigned value, int bits) {
        for (int i = bits - 1; i >= 0; --i) {
            if (used == 8) bytes.push_back(0), used = 0;
            if (value >> i & 1) bytes.back() |= std::uint8_t(0x80 >> used);
            ++used;
        }
    }
    void put(const char* bitText) {
        for (; *bitText; ++bitText)
            if (*bitText != ' ') put(*bitText == '1', 1);
    }
};

Bytes spsColours(const Picture& pic, std::mt19937& rng) {
    BitWriter w;
    for (int line = 1; line < 200; ++line)
        for (int q = 0; q < 3; ++q) {
            unsigned mask = 0;
            for (int c = 1; c <= 14; ++c)
                if (!isBlack(pic, line, 16 * q + c) || rng() % 4 == 0) mask |= 1u << (14 - c);
            w.put(mask, 14);
            for (int c = 1; c <= 14; ++c)
                if (mask >> (14 - c) & 1) {
                    const std::uint8_t f = pic.colours[line][2 * (16 * q + c)];
                    const std::uint8_t s = pic.colours[line][2 * (16 * q + c) + 1];
                    w.put(f & 7, 3), w.put(s >> 4 & 7, 3), w.put(s & 7, 3);
                }
        }
    return w.bytes;
}

Bytes spcFile(const Picture& pic, std::uint32_t seed) {
    std::mt19937 rng(seed);
    const Bytes pixels = packRuns(unpackedPlanes(pic, false), false);
    return packedFile(pixels, spcColours(pic, rng), std::uint32_t(pixels.size()));
}

Bytes spsFile(const Picture& pic, std::uint32_t seed) {
    std::mt19937 rng(seed);
    const Bytes pixels = packRuns(unpackedPlanes(pic, true), true);
    return packedFile(pixels, spsColours(pic, rng), std::uint32_t(pixels.size()));
}

// An SPC file read back into a picture, for the corpus: plain loops over the
// format as stated, with no look at the decoder.
Picture pictureOfSpc(const Bytes& f) {
    auto at = [&](std::size_t i) -> std::uint8_t { return i < f.size() ? f[i] : 0; };
    Bytes planes;
    std::size_t pos = 12;
    while (planes.size() < 31840) {
        const unsigned n = at(pos++);
        if (n < 128) {
            for (unsigned i = 0; i <= n; ++i) planes.push_back(at(pos++));
        } else {
            planes.insert(planes.end(), 258 - n, at(pos++));
        }
    }
    Picture pic;
    for (int p = 0; p < 4; ++p)
        for (int line = 1; line < 200; ++line)
            for (int b = 0; b < 40; ++b) pic.planes[line][p][b] = planes[7960 * p + 40 * (line - 1) + b];
    pos = 12 + (std::size_t(at(4)) << 24 | std::size_t(at(5)) << 16 | std::size_t(at(6)) << 8 | at(7));
    for (int line = 1; line < 200; ++line)
        for (int q = 0; q < 3; ++q) {
            const unsigned mask = unsigned(at(pos)) << 8 | at(pos + 1);
            pos += 2;
            for (int c = 1; c <= 14; ++c)
                if (mask >> c & 1) {
                    pic.colours[line][2 * (16 * q + c)] = at(pos++);
                    pic.colours[line][2 * (16 * q + c) + 1] = at(pos++);
                }
        }
    return pic;
}

// ---- Running the decoders ----------------------------------------------------
struct SpectrumTest : ::testing::Test {
    std::unique_ptr<Staging> s = std::make_unique<Staging>();
    void SetUp() override { s->buildTables(); }

    Decoded decode(const Bytes& file, const char* ext, std::uint64_t length) {
        const Format* f = findFormat(ext);
        EXPECT_NE(f, nullptr) << ext;
        return f ? decodeWith(*f, *s, Source{file, length}) : rejectedSource();
    }
    Decoded decode(const Bytes& file, const char* ext) { return decode(file, ext, file.size()); }
    Bytes bitmap(const Bytes& file, const char* ext) {
        const Decoded d = decode(file, ext);
        return {d.bitmap.begin(), d.bitmap.end()};
    }
    Bytes srcbytes(std::size_t from, std::size_t to) const {
        return {s->srcbytes.data() + from, s->srcbytes.data() + to};
    }
};

// Where the three bytes of a pixel lie in the bitmap file.
std::size_t pixelAt(int line, int x) { return 54 + std::size_t(199 - line) * 960 + 3 * std::size_t(x); }

TEST_F(SpectrumTest, SpuFilesMatchTheReference) {
    for (std::uint32_t seed : {1u, 2u}) {
        const Picture pic = randomPicture(seed);
        const Decoded d = decode(spuFile(pic, vtest::randomBytes(160, seed)), "SPU");
        ASSERT_FALSE(d.rejected);
        EXPECT_EQ(d.caption, " Spectrum 320*200 512 Colour");
        EXPECT_EQ(d.kind, 1);
        EXPECT_EQ(Bytes(d.bitmap.begin(), d.bitmap.end()), referenceBitmap(pic)) << "seed " << seed;
    }
    // Any 51104 bytes make a picture, whatever colours 0 and 15 hold.
    const Bytes noise = vtest::randomBytes(51104, 3);
    EXPECT_EQ(bitmap(noise, "spu"), referenceBitmap(pictureOfSpu(noise)));
}

TEST_F(SpectrumTest, OnePictureAsSpuSpcAndSpsGivesOneBitmap) {
    for (std::uint32_t seed : {4u, 5u, 6u}) {
        const Picture pic = randomPicture(seed);
        const Picture noisy = withIgnoredBits(pic, seed);
        const Bytes expected = referenceBitmap(pic);
        EXPECT_EQ(bitmap(spuFile(noisy, vtest::randomBytes(160, seed)), "SPU"), expected);
        const Decoded c = decode(spcFile(noisy, seed), "SPC");
        EXPECT_EQ(c.caption, " Spectrum Comp 320*200 512 Colour");
        EXPECT_EQ(c.kind, 1);
        EXPECT_EQ(Bytes(c.bitmap.begin(), c.bitmap.end()), expected) << "SPC, seed " << seed;
        const Decoded m = decode(spsFile(pic, seed), "SPS");
        EXPECT_EQ(m.caption, " Spectrum Smooshed 320*200 512 Colour");
        EXPECT_EQ(m.kind, 1);
        EXPECT_EQ(Bytes(m.bitmap.begin(), m.bitmap.end()), expected) << "SPS, seed " << seed;
    }
}

TEST_F(SpectrumTest, SpuOfAnotherLengthIsRejected) {
    const Bytes before = bitmap(vtest::randomBytes(51104, 7), "SPU");
    struct Case { std::uint64_t length; bool rejected; };
    for (const Case& k : std::vector<Case>{{51103, true}, {51105, true}, {0, true}, {102208, true}, {51104, false}}) {
        const Bytes file = vtest::randomBytes(std::size_t(std::min<std::uint64_t>(k.length, 65533)), 8);
        const Decoded d = decode(file, "SPU", k.length);
        EXPECT_EQ(d.rejected, k.rejected) << k.length;
        if (!k.rejected) continue;
        EXPECT_TRUE(d.bitmap.empty());
        EXPECT_TRUE(d.caption.empty());
        EXPECT_EQ(d.kind, 0);
        EXPECT_EQ(Bytes(s->out.begin(), s->out.end()), before) << "a rejected file leaves the last bitmap";
    }
    // A file of the right length whose bytes run out reads zeros past them.
    Bytes shortRead = vtest::randomBytes(40000, 9);
    const Decoded d = decode(shortRead, "SPU", 51104);
    shortRead.resize(51104, 0);
    EXPECT_EQ(Bytes(d.bitmap.begin(), d.bitmap.end()), referenceBitmap(pictureOfSpu(shortRead)));
}

// Plane bytes all 0, so every pixel has colour number 0; one colour word set
// shows where each palette slot of colour 0 reaches, and which bits count.
TEST_F(SpectrumTest, SpuColourZeroTakesItsThreeSlots) {
    struct Case { std::size_t wordAt; std::uint8_t f, s; std::size_t first, last, pixels; };
    const std::vector<Case> cases = {
        {51008, 0x07, 0x77, 54, 56, 1},                                // line 199, column 0
        {51008, 0x0F, 0xFF, 54, 56, 1},                                // the fourth bits do not count
        {32000, 0x07, 0x77, pixelAt(1, 0), pixelAt(1, 0) + 2, 1},      // line 1: slot 0 at column 0
        {32032, 0x07, 0x77, pixelAt(1, 1), pixelAt(1, 160) + 2, 160},  // slot 16 from column 1
        {32064, 0x07, 0x77, pixelAt(1, 161), 191093, 159},             // slot 32 from column 161
    };
    for (const Case& k : cases) {
        Bytes file(51104, 0);
        file[k.wordAt] = k.f;
        file[k.wordAt + 1] = k.s;
        const Bytes b = bitmap(file, "SPU");
        ASSERT_EQ(b.size(), 192054u);
        std::vector<std::size_t> lit;
        for (std::size_t i = 54; i < b.size(); ++i)
            if (b[i] != 0) lit.push_back(i);
        for (std::size_t i : lit) ASSERT_EQ(b[i], 252) << i;
        ASSERT_EQ(lit.size(), 3 * k.pixels) << "word at " << k.wordAt;
        EXPECT_EQ(lit.front(), k.first) << "word at " << k.wordAt;
        EXPECT_EQ(lit.back(), k.last) << "word at " << k.wordAt;
    }
}

TEST_F(SpectrumTest, SpuIgnoresItsFirstLine) {
    Bytes a = vtest::randomBytes(51104, 10), b = a;
    std::fill(b.begin(), b.begin() + 160, 0xA5);
    EXPECT_EQ(bitmap(a, "SPU"), bitmap(b, "SPU"));
}

// Packed pixel data of 245 runs of 130 zeros, enough for all planes.
Bytes zeroRuns(bool smooshed) {
    Bytes pixels;
    for (int i = 0; i < 245; ++i) pixels.insert(pixels.end(), {std::uint8_t(smooshed ? 0x7F : 0x80), 0});
    return pixels;
}

// The packed formats: a run under test, then the zero runs.
Bytes runFile(const Bytes& runs, bool smooshed) {
    Bytes pixels = runs;
    const Bytes zeros = zeroRuns(smooshed);
    pixels.insert(pixels.end(), zeros.begin(), zeros.end());
    return packedFile(pixels, {}, std::uint32_t(pixels.size()));
}

// 16 colour words as 32 bytes, the listed ones set.
Bytes paletteWith(std::initializer_list<std::pair<int, std::uint16_t>> colours) {
    Bytes p(32, 0);
    for (auto [c, w] : colours) p[2 * c] = std::uint8_t(w >> 8), p[2 * c + 1] = std::uint8_t(w);
    return p;
}

TEST_F(SpectrumTest, ControlBytesOfBothPackings) {
    Bytes copy128 = {0x7F};
    for (int i = 0; i < 128; ++i) copy128.push_back(std::uint8_t(i + 1));
    Bytes smooshedCopy128 = copy128;
    smooshedCopy128[0] = 0xFF;
    const Bytes copied(copy128.begin() + 1, copy128.end());
    struct Case { const char* ext; Bytes runs, unpacked; };
    const std::vector<Case> cases = {
        {"SPC", {0x80, 0xAB}, Bytes(130, 0xAB)},
        {"SPC", {0xFF, 0xAB}, Bytes(3, 0xAB)},
        {"SPC", copy128, copied},
        {"SPC", {0x00, 0x11}, {0x11}},
        {"SPC", {0x01, 0x11, 0x22, 0xFE, 0x33}, {0x11, 0x22, 0x33, 0x33, 0x33, 0x33}},
        {"SPS", {0x00, 0xAB}, Bytes(3, 0xAB)},
        {"SPS", {0x7F, 0xAB}, Bytes(130, 0xAB)},
        {"SPS", {0x80, 0x11}, {0x11}},
        {"SPS", smooshedCopy128, copied},
        {"SPS", {0x81, 0x11, 0x22, 0x01, 0x33}, {0x11, 0x22, 0x33, 0x33, 0x33, 0x33}},
    };
    for (const Case& k : cases) {
        decode(runFile(k.runs, k.ext[2] == 'S'), k.ext);
        EXPECT_EQ(srcbytes(0, k.unpacked.size() + 1), [&] {
            Bytes e = k.unpacked;
            e.push_back(0);
            return e;
        }()) << k.ext << " control " << int(k.runs[0]);
    }
}

// The last run is written whole past byte 31839 and changes nothing.
TEST_F(SpectrumTest, LastRunMayOverrunThePlanes) {
    Picture pic = randomPicture(11);
    pic.planes[199][3].fill(0x5A);
    for (bool smooshed : {false, true}) {
        const char* ext = smooshed ? "SPS" : "SPC";
        std::mt19937 rng(12);
        const Bytes colours = smooshed ? spsColours(pic, rng) : spcColours(pic, rng);
        Bytes planes = unpackedPlanes(pic, smooshed);
        const Bytes exact = packRuns(planes, smooshed);
        planes.insert(planes.end(), 100, 0x5A);
        const Bytes overrun = packRuns(planes, smooshed);
        const Bytes expected = bitmap(packedFile(exact, colours, std::uint32_t(exact.size())), ext);
        std::fill(s->srcbytes.data() + 31840, s->srcbytes.data() + 32000, 0);
        EXPECT_EQ(bitmap(packedFile(overrun, colours, std::uint32_t(overrun.size())), ext), expected) << ext;
        EXPECT_EQ(srcbytes(31840, 31850), Bytes(10, 0x5A)) << ext << ": the last run went on past the planes";
    }
}

// The colour data begin at 12 + D, wherever the pixel data ended.
TEST_F(SpectrumTest, ColourDataBeginWhereTheHeaderSays) {
    const Picture pic = randomPicture(13);
    for (bool smooshed : {false, true}) {
        const char* ext = smooshed ? "SPS" : "SPC";
        std::mt19937 rng(14);
        const Bytes pixels = packRuns(unpackedPlanes(pic, smooshed), smooshed);
        const Bytes colours = smooshed ? spsColours(pic, rng) : spcColours(pic, rng);
        const Bytes exact = packedFile(pixels, colours, std::uint32_t(pixels.size()));

        Bytes gap = pixels;
        gap.insert(gap.end(), 5, 0xEE);
        EXPECT_EQ(bitmap(packedFile(gap, colours, std::uint32_t(gap.size())), ext), bitmap(exact, ext)) << ext;

        // D two short: the last two pixel-data bytes are read as colour data.
        Bytes early = colours;
        early.insert(early.begin(), pixels.end() - 2, pixels.end());
        EXPECT_EQ(bitmap(packedFile(pixels, colours, std::uint32_t(pixels.size() - 2)), ext),
                  bitmap(packedFile(pixels, early, std::uint32_t(pixels.size())), ext))
            << ext;

        // Colour data beyond the first 65533 bytes, or beyond the file, read as zeros.
        for (std::uint32_t stated : {70000u, 0xFFFFFFFFu}) {
            Bytes far = pixels;
            far.resize(70000, 0);
            decode(packedFile(far, colours, stated), ext);
            EXPECT_EQ(srcbytes(32000, 51104), Bytes(19104, 0)) << ext << " D " << stated;
        }
    }
}

// Two records: the one under test, then one with colour 1 = 01 23 that shows
// where the first ended.
TEST_F(SpectrumTest, MaskedRecords) {
    Bytes full = {0xFF, 0xFF}, fullPalette = {0, 0};
    for (std::uint8_t c = 1; c <= 14; ++c) {
        full.insert(full.end(), {c, std::uint8_t(0x10 | c)});
        fullPalette.insert(fullPalette.end(), {c, std::uint8_t(0x10 | c)});
    }
    fullPalette.insert(fullPalette.end(), {0, 0});
    struct Case { Bytes record, palette; };
    const std::vector<Case> cases = {
        {{0x00, 0x00}, Bytes(32, 0)},
        {{0x80, 0x01}, Bytes(32, 0)},  // bits 0 and 15 are not looked at
        {full, fullPalette},
        {{0x00, 0x06, 0xAB, 0xCD, 0x07, 0x77}, paletteWith({{1, 0xABCD}, {2, 0x0777}})},
        {{0x40, 0x00, 0x12, 0x34}, paletteWith({{14, 0x1234}})},
    };
    for (const Case& k : cases) {
        Bytes colours = k.record;
        colours.insert(colours.end(), {0x00, 0x02, 0x01, 0x23});
        const Bytes zeros = zeroRuns(false);
        decode(packedFile(zeros, colours, std::uint32_t(zeros.size())), "SPC");
        EXPECT_EQ(srcbytes(32000, 32032), k.palette) << "mask " << int(k.record[0]) << " " << int(k.record[1]);
        EXPECT_EQ(srcbytes(32032, 32036), (Bytes{0, 0, 0x01, 0x23})) << "record length";
    }
}

// Bit-stream records, followed by one with colour 1 = 101 011 110 (F 5, S 0x36).
TEST_F(SpectrumTest, BitStreamRecords) {
    Bytes allSet(32, 0);
    for (int c = 1; c <= 14; ++c) allSet[2 * c] = 7, allSet[2 * c + 1] = 0x70;
    struct Case { std::string bits; Bytes palette; };
    const std::vector<Case> cases = {
        {"00000000000000", Bytes(32, 0)},                           // 14 bits: the next record starts mid-byte
        {"00000000000001 111111111", paletteWith({{14, 0x0777}})},  // the last mask bit is colour 14
        {"01100000000000 001000000 000000001", paletteWith({{2, 0x0100}, {3, 0x0001}})},  // 32 bits
        {"11111111111111" + [] {
             std::string s;
             for (int c = 0; c < 14; ++c) s += " 111111000";
             return s;
         }(),
         allSet},  // 140 bits
    };
    const Bytes zeros = zeroRuns(true);
    for (const Case& k : cases) {
        BitWriter w;
        w.put(k.bits.c_str());
        w.put("10000000000000 101011110");
        decode(packedFile(zeros, w.bytes, std::uint32_t(zeros.size())), "SPS");
        EXPECT_EQ(srcbytes(32000, 32032), k.palette) << k.bits;
        EXPECT_EQ(srcbytes(32032, 32036), (Bytes{0, 0, 0x05, 0x36})) << k.bits;
    }
}

// Plane 0 all set: every pixel has colour number 1, which every palette
// sets to 101 011 110.
TEST_F(SpectrumTest, BitStreamColourLevels) {
    Bytes planes(31840, 0);
    std::fill(planes.begin(), planes.begin() + 7960, 0xFF);
    BitWriter w;
    for (int r = 0; r < 597; ++r) w.put("10000000000000 101011110");
    const Bytes pixels = packRuns(planes, true);
    const Bytes b = bitmap(packedFile(pixels, w.bytes, std::uint32_t(pixels.size())), "SPS");
    for (std::size_t i = 54; i < 54 + 199 * 960; i += 3) {
        ASSERT_EQ(b[i], 216) << i;
        ASSERT_EQ(b[i + 1], 108) << i;
        ASSERT_EQ(b[i + 2], 180) << i;
    }
    EXPECT_EQ(Bytes(b.begin() + 54 + 199 * 960, b.end()), Bytes(960, 0));
}

// Unpacked byte 199 of a smooshed file is byte 1 of plane 0 on line 1.
TEST_F(SpectrumTest, SmooshedPlanesRunByColumns) {
    Bytes planes(31840, 0);
    planes[199] = 0x80;
    BitWriter w;
    for (int r = 0; r < 597; ++r) w.put("10000000000000 111111111");
    const Bytes pixels = packRuns(planes, true);
    const Bytes b = bitmap(packedFile(pixels, w.bytes, std::uint32_t(pixels.size())), "SPS");
    EXPECT_EQ(Bytes(b.begin() + long(pixelAt(1, 8)), b.begin() + long(pixelAt(1, 8)) + 3), Bytes(3, 252));
    EXPECT_EQ(std::count(b.begin() + 54, b.end(), 0), 192000 - 3);
}

TEST_F(SpectrumTest, NothingCarriesOverBetweenPictures) {
    // Another decoder may have left anything in the output buffer.
    std::fill(s->out.begin(), s->out.end(), 0xEE);
    const Bytes b = bitmap(Bytes(51104, 0), "SPU");
    EXPECT_EQ(Bytes(b.begin() + 54, b.end()), Bytes(192000, 0));
    // srcbytes is not cleared: what lies between the planes and the
    // palettes stays from the last picture.
    const Bytes spu = vtest::randomBytes(51104, 15);
    decode(spu, "SPU");
    decode(spcFile(randomPicture(16), 16), "SPC");
    EXPECT_EQ(srcbytes(31840, 32000), Bytes(spu.begin() + 31840, spu.begin() + 32000));
}

TEST_F(SpectrumTest, CorpusFilesMatchTheReference) {
    SKIP_WITHOUT_CORPUS("spu");
    int checked = 0;
    for (const auto& path : vtest::corpusFiles("spu")) {
        const Bytes file = vtest::readFile(path.string());
        EXPECT_EQ(bitmap(file, "SPU"), referenceBitmap(pictureOfSpu(file))) << path;
        ++checked;
    }
    for (const auto& path : vtest::corpusFiles("spc")) {
        const Bytes file = vtest::readFile(path.string());
        EXPECT_EQ(bitmap(file, "SPC"), referenceBitmap(pictureOfSpc(file))) << path;
        ++checked;
    }
    EXPECT_GE(checked, 10);
}

// A compressed file and the plain file of the same picture agree once the
// plain one's colours 0 and 15, which the packing drops, are black.
TEST_F(SpectrumTest, CorpusSpcMatchesItsSpuTwin) {
    SKIP_WITHOUT_CORPUS("spc");
    int pairs = 0;
    for (const auto& path : vtest::corpusFiles("spc")) {
        const auto twin = vtest::corpusDir() / "spu" / path.filename().replace_extension(".SPU");
        if (!vtest::fs::exists(twin)) continue;
        Bytes spu = vtest::readFile(twin.string());
        for (int line = 1; line < 200; ++line)
            for (int slot : {0, 15, 16, 31, 32, 47})
                spu[paletteAt(line) + 2 * slot] = spu[paletteAt(line) + 2 * slot + 1] = 0;
        EXPECT_EQ(bitmap(vtest::readFile(path.string()), "SPC"), bitmap(spu, "SPU")) << path;
        ++pairs;
    }
    if (pairs == 0) GTEST_SKIP() << "no SPC with an SPU twin";
}

}  // namespace
