// Degas medium and high resolution, plain and run-length compressed:
// synthetic files and the corpus against the literal reference of the
// layouts, and compressed against plain files of the same picture.
#include <algorithm>
#include <cctype>
#include <memory>
#include <random>

#include "decoders/decoder.h"
#include "shell/formats.h"
#include "support.h"

using namespace velmoric;
using vtest::Bytes;

namespace {

// One resolution: its planes (4, 2, or 1 for mono), the bytes a row of one
// plane holds, its rows, and what each extension shows.
struct Resolution {
    int planes;
    int rows;
    int planeBytes;
    const char *pi, *pc;
    const char *piCaption, *pcCaption;
    std::int16_t kind;
};
const Resolution kLow{4, 200, 40, "PI1", "PC1", " Degas 320*200 16 Colour", " Degas Comp 320*200 16 Colour", 1};
const Resolution kMedium{2, 200, 80, "PI2", "PC2", " Degas 640*200 4 Colour", " Degas Comp 640*200 4 Colour", 2};
const Resolution kHigh{1, 400, 80, "PI3", "PC3", " Degas 640*400 Mono", " Degas Comp 640*400 Mono", 3};
const Resolution* const kResolutions[] = {&kLow, &kMedium, &kHigh};

std::unique_ptr<Staging> freshStaging() {
    auto s = std::make_unique<Staging>();
    s->buildTables();
    return s;
}

Decoded decode(Staging& s, const Bytes& file, const char* ext) {
    const Format* f = findFormat(ext);
    EXPECT_NE(f, nullptr) << ext;
    return decodeWith(*f, s, Source{file, file.size()});
}

Bytes bytesOf(std::span<const std::uint8_t> b) { return {b.begin(), b.end()}; }

// Screen byte offset of the i-th byte of plane p in row y: groups of 16
// pixels hold one word per plane, each word two bytes.
int planeByteOffset(const Resolution& r, int y, int p, int i) {
    const int rowBytes = r.planes == 1 ? 80 : 160;
    return y * rowBytes + (i / 2) * 2 * r.planes + 2 * p + i % 2;
}

Bytes piFile(const Bytes& resolutionWord, const Bytes& palette, const Bytes& screen) {
    Bytes f = resolutionWord;
    f.insert(f.end(), palette.begin(), palette.end());
    f.insert(f.end(), screen.begin(), screen.end());
    return f;
}

// The palette and the screen a PI file holds, what lies past its end as 0.
Bytes filePart(const Bytes& file, std::size_t at, std::size_t n) {
    Bytes out(n, 0);
    for (std::size_t i = 0; i < n && at + i < file.size(); ++i) out[i] = file[at + i];
    return out;
}

Bytes expectedFromPi(const Bytes& file, const Resolution& r) {
    return vtest::referenceScreenBitmap(filePart(file, 34, 32000), filePart(file, 2, 32), r.planes);
}

// A screen with long runs beside noise, so that packing uses both kinds of run.
Bytes screenWithRuns(std::uint32_t seed) {
    Bytes screen = vtest::randomBytes(32000, seed);
    for (std::size_t i = 0; i < screen.size(); ++i)
        if ((i / 300) % 3 != 0) screen[i] = std::uint8_t(i / 900);
    return screen;
}

// Packs each plane of each row into runs of every length: literal runs
// (control 0 to 127), repeats (129 to 255) where bytes repeat, and stray
// no-op control bytes 128.
Bytes packPlanes(const Bytes& screen, const Resolution& r, std::uint32_t seed) {
    std::mt19937 rng(seed);
    Bytes out;
    for (int y = 0; y < r.rows; ++y)
        for (int p = 0; p < r.planes; ++p) {
            Bytes plane;
            for (int i = 0; i < r.planeBytes; ++i) plane.push_back(screen[planeByteOffset(r, y, p, i)]);
            std::size_t i = 0;
            while (i < plane.size()) {
                if (rng() % 7 == 0) out.push_back(128);
                std::size_t same = 1;
                while (i + same < plane.size() && same < 128 && plane[i + same] == plane[i]) ++same;
                if (same >= 2) {
                    const std::size_t n = 2 + rng() % (same - 1);
                    out.push_back(std::uint8_t(257 - n));
                    out.push_back(plane[i]);
                    i += n;
                } else {
                    const std::size_t n = std::min<std::size_t>(1 + rng() % 128, plane.size() - i);
                    out.push_back(std::uint8_t(n - 1));
                    out.insert(out.end(), plane.begin() + std::ptrdiff_t(i), plane.begin() + std::ptrdiff_t(i + n));
                    i += n;
                }
            }
        }
    return out;
}

Bytes pcFile(const Resolution& r, const Bytes& palette, const Bytes& packed) {
    Bytes f = {0x80, std::uint8_t(r.kind - 1)};
    f.insert(f.end(), palette.begin(), palette.end());
    f.insert(f.end(), packed.begin(), packed.end());
    return f;
}

// A literal unpacker for the reference: each plane takes the bytes of its
// runs until it is full; what a run holds beyond that is dropped, because
// the next row's plane overwrites it anyway.
Bytes unpackForReference(const Bytes& file, const Resolution& r) {
    std::size_t at = 34;
    auto next = [&] { return at < file.size() ? file[at++] : (++at, std::uint8_t(0)); };
    Bytes screen(32000, 0);
    for (int y = 0; y < r.rows; ++y)
        for (int p = 0; p < r.planes; ++p) {
            Bytes plane;
            while (plane.size() < std::size_t(r.planeBytes)) {
                const int n = next();
                if (n < 128) {
                    for (int i = 0; i <= n; ++i) plane.push_back(next());
                } else if (n > 128) {
                    const std::uint8_t v = next();
                    for (int i = 0; i < 257 - n; ++i) plane.push_back(v);
                }
            }
            for (int i = 0; i < r.planeBytes; ++i) screen[planeByteOffset(r, y, p, i)] = plane[i];
        }
    return screen;
}

// ---- Uncompressed ---------------------------------------------------------

TEST(Degas23, PlainFilesOfEveryLength) {
    for (const Resolution* r : {&kMedium, &kHigh}) {
        for (std::size_t length : {std::size_t(32034), std::size_t(32066), std::size_t(40000), std::size_t(32033),
                                   std::size_t(15360), std::size_t(35), std::size_t(0)}) {
            auto s = freshStaging();
            const Bytes file = vtest::randomBytes(length, std::uint32_t(length) + r->kind);
            const Decoded d = decode(*s, file, r->pi);
            ASSERT_FALSE(d.rejected);
            EXPECT_EQ(d.caption, r->piCaption);
            EXPECT_EQ(d.kind, r->kind);
            EXPECT_EQ(bytesOf(d.bitmap), expectedFromPi(file, *r)) << r->pi << " of " << length << " bytes";
        }
    }
}

TEST(Degas23, MediumUsesOnlyTheFirstFourColours) {
    Bytes palette = vtest::randomBytes(32, 3);
    std::fill(palette.begin(), palette.begin() + 8, 0);  // colours 0 to 3 black
    auto s = freshStaging();
    const Bytes bitmap = bytesOf(decode(*s, piFile({0, 1}, palette, vtest::randomBytes(32000, 4)), "pi2").bitmap);
    ASSERT_EQ(bitmap.size(), 64118u);
    for (std::size_t i = 54; i < 54 + 16; ++i) EXPECT_EQ(bitmap[i], 0) << "palette byte " << i;
    for (std::size_t i = 118; i < bitmap.size(); ++i) ASSERT_EQ(bitmap[i] & 0xCC, 0) << "pixel byte " << i;
}

TEST(Degas23, MonoIgnoresTheFilePalette) {
    Bytes screen(32000, 0);
    screen[0] = 0x80;  // leftmost pixel of the top row
    auto s = freshStaging();
    const Bytes a = bytesOf(decode(*s, piFile({0, 2}, vtest::randomBytes(32, 5), screen), "pi3").bitmap);
    const Bytes b = bytesOf(decode(*s, piFile({0xFF, 0xFF}, Bytes(32, 0), screen), "pi3").bitmap);
    EXPECT_EQ(a, b);
    EXPECT_EQ(a[62 + 399 * 80], 0x80);  // top row is the last stored
    EXPECT_EQ(a[62 - 4], 0);            // entry 1, a set bit, is black
}

// ---- Compressed -----------------------------------------------------------

TEST(Degas23, CompressedMatchesPlainOfTheSamePicture) {
    for (const Resolution* r : kResolutions) {
        const Bytes palette = vtest::randomBytes(32, 20 + r->kind), screen = screenWithRuns(30 + r->kind);
        auto s = freshStaging();
        const Decoded plain = decode(*s, piFile({0, std::uint8_t(r->kind - 1)}, palette, screen), r->pi);
        const Bytes fromPlain = bytesOf(plain.bitmap);
        const Decoded packed = decode(*s, pcFile(*r, palette, packPlanes(screen, *r, 40 + r->kind)), r->pc);
        EXPECT_EQ(packed.caption, r->pcCaption);
        EXPECT_EQ(packed.kind, r->kind);
        EXPECT_EQ(bytesOf(packed.bitmap), fromPlain) << r->pc;
        EXPECT_EQ(fromPlain, vtest::referenceScreenBitmap(screen, palette, r->planes)) << r->pi;
    }
}

TEST(Degas23, CompressedTailAndShortFiles) {
    for (const Resolution* r : kResolutions) {
        const Bytes palette = vtest::randomBytes(32, 50), screen = screenWithRuns(51);
        const Bytes whole = pcFile(*r, palette, packPlanes(screen, *r, 52));
        Bytes tailed = whole;
        for (std::uint8_t b : vtest::randomBytes(500, 53)) tailed.push_back(b);
        auto s = freshStaging();
        EXPECT_EQ(bytesOf(decode(*s, tailed, r->pc).bitmap), vtest::referenceScreenBitmap(screen, palette, r->planes));
        // Cut inside the rows: the missing bytes read as 0, a control byte
        // that copies one byte of 0, so the picture is finished with zeros.
        const Bytes cut(whole.begin(), whole.begin() + std::ptrdiff_t(whole.size() / 2));
        const Decoded d = decode(*s, cut, r->pc);
        ASSERT_FALSE(d.rejected);
        EXPECT_EQ(bytesOf(d.bitmap), vtest::referenceScreenBitmap(unpackForReference(cut, *r), palette, r->planes));
        EXPECT_EQ(bytesOf(decode(*s, Bytes{0x80}, r->pc).bitmap),
                  vtest::referenceScreenBitmap(Bytes(32000, 0), Bytes(32, 0), r->planes));
    }
}

// Runs of one plane of row 0, the rest of the picture filled by repeats of
// 0. `values` are the bytes the plane gets, in plane order.
struct RunCase {
    const char* what;
    const Resolution* r;
    int plane;
    Bytes stream;
    Bytes values;
};

Bytes repeated(std::size_t n, std::uint8_t v) { return Bytes(n, v); }
Bytes concat(std::initializer_list<Bytes> parts) {
    Bytes out;
    for (const Bytes& p : parts) out.insert(out.end(), p.begin(), p.end());
    return out;
}

TEST(Degas23, CompressedRunsTable) {
    const Bytes ramp128 = [] {
        Bytes b;
        for (int i = 0; i < 128; ++i) b.push_back(std::uint8_t(i + 1));
        return b;
    }();
    const std::vector<RunCase> cases = {
        {"0 copies one byte, 128 takes nothing", &kLow, 0, {0x00, 0xAA, 0x80, 0x80, 218, 0x55},
         concat({{0xAA}, repeated(39, 0x55)})},
        {"127 copies 128 bytes past the plane's end", &kLow, 0, concat({{0x7F}, ramp128}),
         Bytes(ramp128.begin(), ramp128.begin() + 40)},
        {"129 repeats 128 times", &kHigh, 0, {129, 0x3C}, repeated(80, 0x3C)},
        {"255 repeats twice", &kLow, 3, {255, 0x12, 219, 0x34}, concat({{0x12, 0x12}, repeated(38, 0x34)})},
        {"plane 1 of medium", &kMedium, 1, concat({{0x7F}, ramp128}), Bytes(ramp128.begin(), ramp128.begin() + 80)},
        {"a repeat past the end of plane 0 of medium", &kMedium, 0, {129, 0x81}, repeated(80, 0x81)},
    };
    for (const RunCase& c : cases) {
        Bytes packed, screen(32000, 0);
        for (int y = 0; y < c.r->rows; ++y)
            for (int p = 0; p < c.r->planes; ++p) {
                if (y == 0 && p == c.plane) {
                    packed.insert(packed.end(), c.stream.begin(), c.stream.end());
                } else {
                    packed.insert(packed.end(), {std::uint8_t(257 - c.r->planeBytes), 0});
                }
            }
        for (std::size_t i = 0; i < c.values.size(); ++i) screen[planeByteOffset(*c.r, 0, c.plane, int(i))] = c.values[i];
        const Bytes palette = vtest::randomBytes(32, 60);
        auto s = freshStaging();
        EXPECT_EQ(bytesOf(decode(*s, pcFile(*c.r, palette, packed), c.r->pc).bitmap),
                  vtest::referenceScreenBitmap(screen, palette, c.r->planes))
            << c.what;
    }
}

// Every plane as one literal run of its bytes, except the last plane of
// one of the last rows: a run of 128 that goes on into the following rows
// and from some rows on behind the image, where what it leaves stays.
TEST(Degas23, RunPastTheLastRowLeavesThePictureAlone) {
    for (const Resolution* r : kResolutions) {
        const Bytes palette = vtest::randomBytes(32, 70), screen = screenWithRuns(71);
        const int lastPlane = r->planes - 1;
        for (int longRow = r->rows - 5; longRow < r->rows; ++longRow) {
            Bytes packed;
            for (int y = 0; y < r->rows; ++y)
                for (int p = 0; p < r->planes; ++p) {
                    const bool isLong = y == longRow && p == lastPlane;
                    packed.push_back(std::uint8_t(isLong ? 127 : r->planeBytes - 1));
                    for (int i = 0; i < r->planeBytes; ++i) packed.push_back(screen[planeByteOffset(*r, y, p, i)]);
                    if (isLong) packed.insert(packed.end(), std::size_t(128 - r->planeBytes), 0xEE);
                }
            // The run's bytes past its plane go on through the same plane of
            // the following rows; those behind the last row stay.
            int behind = 0;
            for (int k = r->planeBytes; k < 128; ++k)
                behind += longRow + k / r->planeBytes >= r->rows;
            auto s = freshStaging();
            EXPECT_EQ(bytesOf(decode(*s, pcFile(*r, palette, packed), r->pc).bitmap),
                      vtest::referenceScreenBitmap(screen, palette, r->planes))
                << r->pc << " row " << longRow;
            const std::uint8_t* image = reinterpret_cast<const std::uint8_t*>(s->srcwords.data()) + 34;
            EXPECT_EQ(std::count(image + 32000, image + 33000, 0xEE), behind) << r->pc << " row " << longRow;
            if (behind > 0) {
                const int k = r->planeBytes + (r->rows - 1 - longRow) * r->planeBytes;  // first byte behind
                EXPECT_EQ(image[planeByteOffset(*r, longRow, lastPlane, k)], 0xEE) << r->pc << " row " << longRow;
            }
        }
    }
}

// The rule itself on the byte image of srcwords: each plane of each row
// from its start offset, every byte at the next position the layout gives,
// until a run reaches or passes the plane's end.
void referenceUnpackInto(Bytes& image, const Bytes& file, const Resolution& r) {
    std::size_t at = 34;
    auto next = [&] { return at < file.size() ? file[at++] : (++at, std::uint8_t(0)); };
    const int rowBytes = r.planes == 1 ? 80 : 160, oddStep = 2 * r.planes - 1;
    for (std::size_t i = 0; i < 34; ++i) image[i] = i < file.size() ? file[i] : 0;
    for (int y = 0; y < r.rows; ++y)
        for (int p = 0; p < r.planes; ++p) {
            int b = y * rowBytes + 2 * p;
            const int end = b + rowBytes;
            auto store = [&](std::uint8_t v) {
                image.at(34 + std::size_t(b)) = v;
                b += b % 2 ? oddStep : 1;
            };
            do {
                const int n = next();
                if (n < 128) {
                    for (int i = 0; i <= n; ++i) store(next());
                } else if (n > 128) {
                    const std::uint8_t v = next();
                    for (int i = 0; i < 257 - n; ++i) store(v);
                }
            } while (b < end);
        }
}

// Random streams of every kind of run, some long, some 128, some cut short,
// decoded one after the other into the same srcwords: every byte of it,
// inside the image and behind it, is what the rule leaves.
TEST(Degas23, RandomStreamsLeaveSrcwordsAsTheRuleDoes) {
    std::mt19937 rng(95);
    for (const Resolution* r : kResolutions) {
        auto s = freshStaging();
        Bytes image(2 * kSrcWordsExtent, 0);
        for (int round = 0; round < 12; ++round) {
            Bytes file = vtest::randomBytes(34, std::uint32_t(round));
            while (file.size() < 40000) {
                const unsigned kind = rng() % 16;
                if (kind < 6) {
                    const unsigned n = rng() % (kind == 0 ? 128 : 12);
                    file.push_back(std::uint8_t(n));
                    for (unsigned i = 0; i <= n; ++i) file.push_back(std::uint8_t(rng()));
                } else if (kind < 15) {
                    file.push_back(std::uint8_t(kind == 6 ? 129 + rng() % 127 : 245 + rng() % 11));
                    file.push_back(std::uint8_t(rng()));
                } else {
                    file.push_back(128);
                }
            }
            // Some files end inside the picture, at any byte.
            if (round % 3 == 1) file.resize(34 + rng() % 12000);
            referenceUnpackInto(image, file, *r);
            const Decoded d = decode(*s, file, r->pc);
            const auto* words = reinterpret_cast<const std::uint8_t*>(s->srcwords.data());
            ASSERT_TRUE(std::equal(image.begin(), image.end(), words)) << r->pc << " round " << round;
            EXPECT_EQ(bytesOf(d.bitmap),
                      vtest::referenceScreenBitmap(Bytes(image.begin() + 34, image.begin() + 32034), filePart(file, 2, 32),
                                                   r->planes))
                << r->pc << " round " << round;
        }
    }
}

// Mono bitmaps keep whatever palette the bitmap holds: an inverted one
// stays inverted for the next picture.
TEST(Degas23, MonoKeepsASwappedPalette) {
    Bytes screen(32000, 0);
    screen[0] = 0x80;
    for (const char* ext : {"pi3", "pc3"}) {
        auto s = freshStaging();
        std::swap_ranges(s->monobmp.data() + 27, s->monobmp.data() + 29, s->monobmp.data() + 29);
        const Bytes file = std::string(ext) == "pi3" ? piFile({0, 2}, Bytes(32, 0), screen)
                                                     : pcFile(kHigh, Bytes(32, 0), packPlanes(screen, kHigh, 80));
        const Bytes bitmap = bytesOf(decode(*s, file, ext).bitmap);
        const Bytes swapped = {0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF};
        EXPECT_EQ(Bytes(bitmap.begin() + 54, bitmap.begin() + 62), swapped) << ext;
        EXPECT_EQ(bitmap[62 + 399 * 80], 0x80) << ext;
    }
}

// ---- Corpus ---------------------------------------------------------------

TEST(Degas23, CorpusPlainFilesMatchTheReference) {
    SKIP_WITHOUT_CORPUS("pi3");
    int checked = 0;
    for (const Resolution* r : {&kMedium, &kHigh}) {
        std::string folder = r->pi;
        for (char& c : folder) c = char(std::tolower(c));
        for (const auto& path : vtest::corpusFiles(folder)) {
            const Bytes file = vtest::readFile(path.string());
            auto s = freshStaging();
            EXPECT_EQ(bytesOf(decode(*s, file, r->pi).bitmap), expectedFromPi(file, *r)) << path;
            ++checked;
        }
    }
    EXPECT_GE(checked, 8);
}

TEST(Degas23, CorpusCompressedFilesMatchTheReference) {
    SKIP_WITHOUT_CORPUS("pc1");
    int checked = 0;
    for (const Resolution* r : kResolutions) {
        std::string folder = r->pc;
        for (char& c : folder) c = char(std::tolower(c));
        for (const auto& path : vtest::corpusFiles(folder)) {
            const Bytes file = vtest::readFile(path.string());
            auto s = freshStaging();
            const Bytes screen = unpackForReference(file, *r);
            EXPECT_EQ(bytesOf(decode(*s, file, r->pc).bitmap),
                      vtest::referenceScreenBitmap(screen, filePart(file, 2, 32), r->planes))
                << path;
            // The same picture stored plain gives the same bytes.
            EXPECT_EQ(bytesOf(decode(*s, piFile({0, 0}, filePart(file, 2, 32), screen), r->pi).bitmap),
                      bytesOf(decode(*s, file, r->pc).bitmap))
                << path;
            ++checked;
        }
    }
    EXPECT_GE(checked, 20);
}

}  // namespace
