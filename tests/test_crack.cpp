// Crack Art: the packed stream's commands, strides and pass boundaries,
// packed against unpacked pictures, the state left by the previous file, the
// corpus, and hostile files, all checked against a plain reference decode.
#include <functional>

#include "decoders/decoder.h"
#include "shell/formats.h"
#include "support.h"

using namespace velmoric;
using vtest::Bytes;

namespace {

struct Res {
    const char* ext;
    std::size_t pixelsAt;  // uncompressed pixels; the escape byte when packed
    int planes;
    const char* caption;
    int kind;
};
const Res kCa1{"CA1", 36, 4, " Crack Art 320*200 16 Colour", 1};
const Res kCa2{"CA2", 12, 2, " Crack Art 640*200 4 Colour", 2};
const Res kCa3{"CA3", 4, 1, " Crack Art 640*400 Mono", 3};
const Res* const kAll[] = {&kCa1, &kCa2, &kCa3};

std::unique_ptr<Staging> freshStaging() {
    auto s = std::make_unique<Staging>();
    s->buildTables();
    return s;
}

Bytes bytesOf(std::span<const std::uint8_t> b) { return {b.begin(), b.end()}; }

Decoded decode(Staging& s, const Bytes& file, const Res& r) {
    const Format* f = findFormat(r.ext);
    EXPECT_NE(f, nullptr);
    return decodeWith(*f, s, Source{file, file.size()});
}

Bytes decodeFresh(const Bytes& file, const Res& r) { return bytesOf(decode(*freshStaging(), file, r).bitmap); }

// "CA", the compression byte, a resolution byte, then random palette bytes
// up to where the pixels or the packing fields begin.
Bytes fileHead(const Res& r, std::uint8_t compression, std::uint32_t seed) {
    Bytes f = {'C', 'A', compression, 0};
    const Bytes palette = vtest::randomBytes(r.pixelsAt - 4, seed);
    f.insert(f.end(), palette.begin(), palette.end());
    return f;
}

Bytes plainFile(const Res& r, const Bytes& screen, std::uint32_t seed = 1) {
    Bytes f = fileHead(r, 0, seed);
    f.insert(f.end(), screen.begin(), screen.end());
    return f;
}

Bytes packedFile(const Res& r, std::uint8_t escape, std::uint8_t initial, std::uint16_t offset, const Bytes& stream,
                 std::uint32_t seed = 1) {
    Bytes f = fileHead(r, 1, seed);
    f.insert(f.end(), {escape, initial, std::uint8_t(offset >> 8), std::uint8_t(offset)});
    f.insert(f.end(), stream.begin(), stream.end());
    return f;
}

// srcbytes after reading `file` into a fresh state.
Bytes srcbytesOf(const Bytes& file) {
    Bytes b(kSrcBytesExtent, 0);
    std::copy_n(file.begin(), std::min(file.size(), b.size()), b.begin());
    return b;
}

// ---- A plain reference decode ------------------------------------------
// The stream is first expanded into one event per position (a byte, or -1
// for a skipped position), then laid over the order in which the stride
// visits the screen: pass p takes p, p + S, p + 2S... inside the screen, and
// a pass that starts behind the screen still takes its one event.
std::vector<std::size_t> strideOrder(std::size_t stride) {
    std::vector<std::size_t> order;
    for (std::size_t p = 0; p < stride; ++p) {
        order.push_back(p);
        for (std::size_t q = p + stride; q < 32000; q += stride) order.push_back(q);
    }
    return order;
}

// The whole of pixbytes after decoding `file` over `before`: the screen,
// and behind it what the passes of a stride above 32000 store there.
Bytes referencePixbytes(const Bytes& file, const Res& r, Bytes before) {
    const Bytes src = srcbytesOf(file);
    auto at = [&](std::size_t i) -> int { return i < src.size() ? src[i] : 0; };
    const std::size_t base = r.pixelsAt;
    Bytes& screen = before;
    if (at(2) == 0) {
        for (std::size_t i = 0; i < 32000; ++i) screen[i] = std::uint8_t(at(base + i));
        return screen;
    }
    const int escape = at(base), initial = at(base + 1);
    const std::size_t stride = std::size_t((at(base + 2) << 8 | at(base + 3)) & 0x7FFF);
    std::fill(screen.begin(), screen.begin() + 32000, std::uint8_t(initial));
    const std::vector<std::size_t> order = strideOrder(stride);

    std::vector<int> events;
    std::size_t i = base + 4;
    while (events.size() < order.size()) {
        const int b = at(i++);
        if (b != escape) {
            events.push_back(b);
            continue;
        }
        const int k = at(i++);
        if (k == escape) {
            events.push_back(escape);
        } else if (k == 0) {
            const int n = at(i), d = at(i + 1);
            i += 2;
            events.insert(events.end(), std::size_t(n) + 1, d);
        } else if (k == 1) {
            const int n = at(i) * 256 + at(i + 1), d = at(i + 2);
            i += 3;
            events.insert(events.end(), std::size_t(n) + 1, d);
        } else if (k == 2) {
            if (at(i) == 0) break;
            const int n = at(i) * 256 + at(i + 1);
            i += 2;
            events.insert(events.end(), std::size_t(n) + 1, -1);
        } else {
            events.insert(events.end(), std::size_t(k) + 1, at(i++));
        }
    }
    for (std::size_t e = 0; e < std::min(events.size(), order.size()); ++e)
        if (events[e] >= 0) screen[order[e]] = std::uint8_t(events[e]);
    return screen;
}

Bytes referenceScreen(const Bytes& file, const Res& r) {
    Bytes pix = referencePixbytes(file, r, Bytes(kPixBytesExtent, 0));
    pix.resize(32000);
    return pix;
}

// The palette bytes the decoder takes: 32 from byte 4, whatever they hold.
Bytes paletteBytes(const Bytes& file) {
    const Bytes src = srcbytesOf(file);
    return Bytes(src.begin() + 4, src.begin() + 36);
}

Bytes referenceBitmap(const Bytes& file, const Res& r) {
    return vtest::referenceScreenBitmap(referenceScreen(file, r), paletteBytes(file), r.planes);
}

// ---- A simple packer for the round trip --------------------------------
// Runs of the initial byte from 257 on become skips, other runs of 4 or more
// become E,k,d, E,0,n,d (when k would equal E) or E,1,h,l,d, the rest
// literals with the escape doubled; a trailing run of the initial byte
// becomes the end command. An escape of 1 or 2 cannot start the command
// of its own value, since the doubled escape is a literal: then runs stay
// short, or there are no skips and the last pass ends the picture.
// Positions behind the screen take the initial byte.
Bytes pack(const Bytes& screen, std::uint8_t escape, std::uint8_t initial, std::size_t stride) {
    std::vector<std::uint8_t> seq;
    for (std::size_t pos : strideOrder(stride)) seq.push_back(pos < 32000 ? screen[pos] : initial);
    const std::size_t longest = escape == 1 ? 256 : 65536;
    Bytes out;
    for (std::size_t i = 0; i < seq.size();) {
        const std::uint8_t v = seq[i];
        std::size_t run = 1;
        while (i + run < seq.size() && seq[i + run] == v && run < longest) ++run;
        const std::size_t n = run - 1;
        if (v == initial && i + run == seq.size() && escape != 2) {
            out.insert(out.end(), {escape, 2, 0});
        } else if (v == initial && run >= 257 && escape != 2) {
            out.insert(out.end(), {escape, 2, std::uint8_t(n >> 8), std::uint8_t(n)});
        } else if (run >= 4 && n <= 255 && n != escape) {
            out.insert(out.end(), {escape, std::uint8_t(n), v});
        } else if (run >= 4 && n <= 255) {
            out.insert(out.end(), {escape, 0, std::uint8_t(n), v});
        } else if (run >= 4) {
            out.insert(out.end(), {escape, 1, std::uint8_t(n >> 8), std::uint8_t(n), v});
        } else {
            for (std::size_t j = 0; j < run; ++j) {
                if (v == escape) out.push_back(escape);
                out.push_back(v);
            }
        }
        i += run;
    }
    return out;
}

// A screen of blocks of random length, some of them the initial byte.
Bytes blockyScreen(std::uint32_t seed, std::uint8_t initial) {
    std::mt19937 rng(seed);
    Bytes screen;
    while (screen.size() < 32000) {
        const std::size_t len = 1 + rng() % 700;
        const std::uint8_t v = rng() % 3 == 0 ? initial : std::uint8_t(rng() % 8);
        screen.insert(screen.end(), len, v);
    }
    screen.resize(32000);
    return screen;
}

// ---- Tests --------------------------------------------------------------

TEST(Crack, UncompressedPicturesOfEachResolution) {
    // CA2 converts 16 words from byte 4 although its file has 4 colours, so
    // its upper palette entries come from the first pixel bytes. CA3 fills
    // all 400 rows: source row 399 is the bitmap's first row.
    for (const Res* r : kAll) {
        const Bytes screen = vtest::randomBytes(32000, 11);
        const Bytes file = plainFile(*r, screen, 12);
        auto s = freshStaging();
        const Decoded d = decode(*s, file, *r);
        EXPECT_EQ(d.caption, r->caption);
        EXPECT_EQ(d.kind, r->kind);
        EXPECT_EQ(bytesOf(d.bitmap), vtest::referenceScreenBitmap(screen, paletteBytes(file), r->planes)) << r->ext;
    }
}

struct CommandCase {
    const char* name;
    std::uint8_t escape;
    Bytes stream;
    std::vector<std::pair<std::uint8_t, std::size_t>> expected;  // runs from position 0; the rest keeps I
};

TEST(Crack, StreamCommands) {
    constexpr std::uint8_t I = 0x11, E = 0xAB;
    const CommandCase cases[] = {
        {"literals", E, {1, 2, 3, E, 2, 0}, {{1, 1}, {2, 1}, {3, 1}}},
        {"doubled escape", E, {E, E, 7, E, 2, 0}, {{E, 1}, {7, 1}}},
        {"escape 0: 0,0 is a literal, not a run", 0, {0, 0, 0, 0, 5, 0, 2, 0}, {{0, 2}, {5, 1}}},
        {"escape 1 doubled, then a short run", 1, {1, 1, 1, 0, 2, 9, 1, 2, 0}, {{1, 1}, {9, 3}}},
        // With E = 2 the end command reads as a literal: the zeros behind
        // the file are literals up to the end of the pass.
        {"escape 2 doubled: no end command", 2, {2, 2, 5, 2, 2, 0}, {{2, 1}, {5, 1}, {2, 1}, {0, 31997}}},
        {"E,0,n,d", E, {E, 0, 0, 9, E, 0, 3, 8, E, 2, 0}, {{9, 1}, {8, 4}}},
        {"E,1,h,l,d", E, {E, 1, 0, 0, 7, E, 1, 1, 2, 6, E, 2, 0}, {{7, 1}, {6, 259}}},
        {"E,k,d", E, {E, 3, 5, E, 255, 4, E, 2, 0}, {{5, 4}, {4, 256}}},
        {"skip keeps I", E, {1, E, 2, 1, 0, 2, E, 2, 0}, {{1, 1}, {I, 257}, {2, 1}}},
        {"end: what follows is not read", E, {5, E, 2, 0, 6, 7}, {{5, 1}}},
    };
    for (const CommandCase& c : cases) {
        Bytes screen;
        for (auto [v, n] : c.expected) screen.insert(screen.end(), n, v);
        screen.resize(32000, I);
        const Bytes file = packedFile(kCa3, c.escape, I, 1, c.stream);
        auto s = freshStaging();
        const Decoded d = decode(*s, file, kCa3);
        EXPECT_EQ(Bytes(s->pixbytes.data(), s->pixbytes.data() + 32000), screen) << c.name;
        EXPECT_EQ(bytesOf(d.bitmap), vtest::referenceScreenBitmap(screen, {}, 1)) << c.name;
    }
}

struct StrideCase {
    const char* name;
    std::uint16_t offset;
    Bytes stream;
    std::function<std::uint8_t(std::size_t)> expected;  // the byte at a screen position
};

// Literals 0, 1, ... 250, 0, 1...: the escape 0xFF and the initial 0xFE never occur.
Bytes countingStream(std::size_t n) {
    Bytes b(n);
    for (std::size_t j = 0; j < n; ++j) b[j] = std::uint8_t(j % 251);
    return b;
}
std::uint8_t counted(std::size_t j) { return std::uint8_t(j % 251); }

TEST(Crack, StridesAndPasses) {
    constexpr std::uint8_t I = 0xFE, E = 0xFF;
    const Bytes counting = countingStream(33000);
    auto column160 = [](std::size_t pos) { return counted((pos % 160) * 200 + pos / 160); };
    const StrideCase cases[] = {
        {"stride 0: all I", 0x0000, counting, [](std::size_t) { return I; }},
        {"stride 0 with the top bit", 0x8000, counting, [](std::size_t) { return I; }},
        {"stride 1: reading order, ends at the 32000th byte", 1, counting, counted},
        {"stride 160: 160 passes of 200", 160, counting, column160},
        {"top bit of the offset ignored", 0x80A0, counting, column160},
        {"stride 16000: 0, 16000, 1, 16001...", 16000, counting,
         [](std::size_t pos) { return counted(pos < 16000 ? 2 * pos : 2 * (pos - 16000) + 1); }},
        {"stride 32000: one byte a pass", 32000, counting, counted},
        {"stride 32767: passes behind the screen", 32767, counting, counted},
        // 31999 sevens and five nines at stride 2: the second pass ends
        // after the first nine and the run stops there, in mid-command.
        {"a run stops when the last pass ends", 2, {E, 1, 0x7C, 0xFE, 7, E, 0, 4, 9},
         [](std::size_t pos) -> std::uint8_t { return pos == 31999 ? 9 : 7; }},
        {"a skip ends the last pass and the picture", 1, {E, 1, 0x7C, 0xFE, 7, E, 2, 1, 0, 3, 3, 3},
         [](std::size_t pos) -> std::uint8_t { return pos == 31999 ? I : 7; }},
        // A skip of 257 at stride 160 covers pass 0 and 57 positions of pass 1.
        {"a skip runs over into the next pass", 160, {E, 2, 1, 0, 5, E, 2, 0},
         [](std::size_t pos) -> std::uint8_t { return pos == 1 + 57 * 160 ? 5 : I; }},
        {"a run runs over into the next pass", 160, {E, 0, 200, 5, E, 2, 0},
         [](std::size_t pos) -> std::uint8_t { return pos % 160 == 0 || pos == 1 ? 5 : I; }},
    };
    for (const StrideCase& c : cases) {
        Bytes screen(32000);
        for (std::size_t pos = 0; pos < 32000; ++pos) screen[pos] = c.expected(pos);
        const Bytes file = packedFile(kCa1, E, I, c.offset, c.stream, 21);
        auto s = freshStaging();
        const Decoded d = decode(*s, file, kCa1);
        const Bytes got(s->pixbytes.data(), s->pixbytes.data() + 32000);
        const auto diff = std::mismatch(got.begin(), got.end(), screen.begin());
        EXPECT_EQ(diff.first, got.end()) << c.name << ": first difference at " << (diff.first - got.begin());
        // The palette comes from the file also when nothing is unpacked.
        EXPECT_EQ(bytesOf(d.bitmap), vtest::referenceScreenBitmap(screen, paletteBytes(file), 4)) << c.name;
    }
}

TEST(Crack, PackedAndUnpackedPicturesGiveTheSameBitmap) {
    struct Packing {
        std::uint8_t escape, initial;
        std::size_t stride;
    };
    const Packing packings[] = {{0xAB, 0, 1}, {0, 3, 7}, {1, 1, 160}, {2, 0, 16000}, {5, 2, 32000}, {0xFF, 4, 32767},
                                {3, 7, 80}};
    std::uint32_t seed = 100;
    for (const Res* r : kAll) {
        for (const Packing& p : packings) {
            for (bool blocky : {true, false}) {
                const Bytes screen = blocky ? blockyScreen(seed, p.initial) : vtest::randomBytes(32000, seed);
                ++seed;
                const Bytes plain = plainFile(*r, screen, seed);
                const Bytes packed = packedFile(*r, p.escape, p.initial, std::uint16_t(p.stride),
                                                pack(screen, p.escape, p.initial, p.stride), seed);
                ASSERT_LE(packed.size(), kSrcBytesExtent);
                const Bytes fromPlain = decodeFresh(plain, *r), fromPacked = decodeFresh(packed, *r);
                const std::string what = std::string(r->ext) + " stride " + std::to_string(p.stride);
                EXPECT_EQ(fromPlain, vtest::referenceScreenBitmap(screen, paletteBytes(plain), r->planes)) << what;
                EXPECT_EQ(fromPacked, vtest::referenceScreenBitmap(screen, paletteBytes(packed), r->planes)) << what;
            }
        }
    }
}

TEST(Crack, AShortFileSeesTheBytesOfTheFileBefore) {
    // A long unpacked file, then a short packed one whose fields or stream
    // lie behind its end: it decodes as if the long file's bytes followed it.
    const Bytes longFile = plainFile(kCa1, vtest::randomBytes(32000, 31), 32);
    for (std::size_t shortLength : {3, 36, 40}) {
        Bytes shortFile = packedFile(kCa1, 0xFF, 0x22, 1, {}, 33);
        shortFile.resize(shortLength);
        Bytes combined = shortFile;
        combined.insert(combined.end(), longFile.begin() + std::ptrdiff_t(shortLength), longFile.end());

        auto s = freshStaging();
        decode(*s, longFile, kCa1);
        const Bytes got = bytesOf(decode(*s, shortFile, kCa1).bitmap);
        EXPECT_EQ(got, decodeFresh(combined, kCa1)) << shortLength;
        EXPECT_EQ(got, referenceBitmap(combined, kCa1)) << shortLength;
        EXPECT_NE(got, decodeFresh(shortFile, kCa1)) << shortLength;
    }
}

TEST(Crack, CorpusFilesMatchTheReference) {
    SKIP_WITHOUT_CORPUS("ca1");
    int checked = 0;
    for (const auto& path : vtest::corpusFiles("ca1")) {
        const Bytes file = vtest::readFile(path.string());
        auto s = freshStaging();
        const Decoded d = decode(*s, file, kCa1);
        EXPECT_EQ(d.caption, kCa1.caption);
        EXPECT_EQ(bytesOf(d.bitmap), referenceBitmap(file, kCa1)) << path;
        ++checked;
    }
    EXPECT_GE(checked, 1);
}

// Random streams drawn mostly from the escape and the command bytes, with
// random strides, against the reference; and files built to take longest
// (the fuzz replay keeps an eye on their time).
TEST(Crack, HostileFilesEndAndMatchTheReference) {
    std::vector<std::pair<const Res*, Bytes>> files;
    std::mt19937 rng(7);
    for (const Res* r : kAll) {
        for (std::size_t length : {0, 1, 3, 8, 16, 40, 1000, 32040, 65533, 70000}) {
            Bytes f = vtest::randomBytes(length, std::uint32_t(rng()));
            files.push_back({r, f});
            if (f.size() > 2) f[2] = 1;
            files.push_back({r, f});
        }
        for (std::uint16_t stride : {1, 3, 160, 7001, 32000, 32767}) {
            for (int n = 0; n < 4; ++n) {
                const std::uint8_t escape = std::uint8_t(rng() % 4 == 0 ? rng() % 3 : rng());
                const std::uint8_t alphabet[] = {escape, escape, 0, 1, 2, 3, 0xFF, std::uint8_t(rng())};
                Bytes stream(20000);
                for (auto& b : stream) b = alphabet[rng() % 8];
                files.push_back({r, packedFile(*r, escape, 0x5A, stride, stream, std::uint32_t(rng()))});
            }
        }
        // The longest runs at the largest stride, and nothing but skips.
        Bytes runs, skips;
        for (int n = 0; n < 10000; ++n) runs.insert(runs.end(), {0x99, 1, 0xFF, 0xFF, 0x42});
        for (int n = 0; n < 10000; ++n) skips.insert(skips.end(), {0x99, 2, 0xFF, 0xFF});
        files.push_back({r, packedFile(*r, 0x99, 0, 0xFFFF, runs)});
        files.push_back({r, packedFile(*r, 0x99, 0, 0x7FFF, skips)});
        files.push_back({r, packedFile(*r, 0x99, 0, 1, {})});  // a stream of zeros behind the file
    }
    for (const auto& [r, file] : files) {
        auto s = freshStaging();
        const Decoded d = decode(*s, file, *r);
        EXPECT_EQ(bytesOf(d.bitmap), referenceBitmap(file, *r)) << r->ext << " of " << file.size() << " bytes";
    }
}


// The screen is unpacked in pass order and then laid over the screen in
// tiles, whose shape depends on how many passes there are and how long
// they are: strides around each change of shape, runs and skips that cross
// passes, streams that read past srcbytes. Everything the decoder leaves
// behind is compared: all of pixbytes, with the bytes behind the screen
// from an earlier picture, and srcwords behind the 16000 words it takes.
TEST(Crack, EveryStrideLeavesTheStateOfTheReference) {
    const std::uint16_t strides[] = {1,    2,    3,    4,    5,     6,     7,     8,     9,     13,    31,
                                     32,   33,   80,   160,  999,   1000,  1001,  1600,  3999,  4000,  4001,
                                     4572, 5333, 7001, 10667, 15999, 16000, 16001, 31999, 32000, 32001, 32767};
    std::mt19937 rng(17);
    const Bytes pixBefore = vtest::randomBytes(kPixBytesExtent, 18);
    const Bytes wordsBefore = vtest::randomBytes(2 * kSrcWordsExtent, 19);
    for (std::uint16_t stride : strides) {
        std::vector<Bytes> streams;
        // Literals with now and then a doubled escape, a run, a skip.
        for (int n = 0; n < 2; ++n) {
            Bytes stream;
            while (stream.size() < 40000) {
                const unsigned pick = rng() % 16;
                const auto b = [&](unsigned m) { return std::uint8_t(rng() % m); };
                if (pick == 0) {
                    stream.insert(stream.end(), {0x99, 0x99});
                } else if (pick == 1) {
                    stream.insert(stream.end(), {0x99, std::uint8_t(3 + b(253)), b(256)});
                } else if (pick == 2) {
                    stream.insert(stream.end(), {0x99, 1, b(3), b(256), 0x42});
                } else if (pick == 3 && n) {
                    stream.insert(stream.end(), {0x99, 2, std::uint8_t(1 + b(2)), b(256)});
                } else {
                    for (unsigned k = rng() % 70; k-- > 0;) stream.push_back(b(0x99));
                }
            }
            streams.push_back(stream);
        }
        // Runs of one up to the end of srcbytes, a few literals there, then
        // the zeros behind it.
        Bytes ones;
        while (ones.size() < kSrcBytesExtent - 40 - 7) ones.insert(ones.end(), {0x99, 0, 0, std::uint8_t(rng())});
        ones.resize(kSrcBytesExtent - 40 - 3);
        ones.insert(ones.end(), {1, 2, 3});
        streams.push_back(ones);
        // Stopped by the end command in the middle of a pass.
        streams.push_back(Bytes{5, 6, 0x99, 3, 7, 8, 0x99, 2, 0});

        for (const Bytes& stream : streams) {
            const Bytes file = packedFile(kCa1, 0x99, 0x5A, stride, stream, std::uint32_t(rng()));
            auto s = freshStaging();
            std::copy(pixBefore.begin(), pixBefore.end(), s->pixbytes.data());
            std::memcpy(s->srcwords.data(), wordsBefore.data(), wordsBefore.size());
            const Decoded d = decode(*s, file, kCa1);
            const Bytes pix(s->pixbytes.data(), s->pixbytes.data() + kPixBytesExtent);
            const Bytes expected = referencePixbytes(file, kCa1, pixBefore);
            const auto diff = std::mismatch(pix.begin(), pix.end(), expected.begin());
            EXPECT_EQ(diff.first, pix.end()) << "stride " << stride << ", stream of " << stream.size()
                                             << ": first difference at " << (diff.first - pix.begin());
            const auto* words = reinterpret_cast<const std::uint8_t*>(s->srcwords.data());
            EXPECT_TRUE(std::equal(words, words + 32000, expected.begin())) << "stride " << stride;
            EXPECT_TRUE(std::equal(words + 32000, words + wordsBefore.size(), wordsBefore.begin() + 32000))
                << "stride " << stride;
            EXPECT_EQ(bytesOf(d.bitmap), referenceBitmap(file, kCa1)) << "stride " << stride;
        }
    }
}

}  // namespace
