// Neochrome and Degas low resolution: synthetic files and the corpus, each
// against the literal reference of the layout.
#include "decoders/decoder.h"
#include "shell/formats.h"
#include "support.h"

using namespace velmoric;

namespace {

struct Layout {
    const char* ext;
    std::size_t paletteAt, pixelsAt;
    const char* caption;
};
const Layout kNeo{"NEO", 4, 128, " Neo 320*200 16 Colour"};
const Layout kPi1{"PI1", 2, 34, " Degas 320*200 16 Colour"};

// Expected bitmap of a NEO or PI1 file: what lies past its end counts as 0.
vtest::Bytes expectedBitmap(const vtest::Bytes& file, const Layout& l) {
    vtest::Bytes palette(32, 0), screen(32000, 0);
    for (std::size_t i = 0; i < 32; ++i) palette[i] = l.paletteAt + i < file.size() ? file[l.paletteAt + i] : 0;
    for (std::size_t i = 0; i < 32000; ++i) screen[i] = l.pixelsAt + i < file.size() ? file[l.pixelsAt + i] : 0;
    return vtest::referenceScreenBitmap(screen, palette, 4);
}

Decoded decode(Staging& s, const vtest::Bytes& file, const char* ext) {
    const Format* f = findFormat(ext);
    EXPECT_NE(f, nullptr);
    return decodeWith(*f, s, Source{file, file.size()});
}

vtest::Bytes bytesOf(std::span<const std::uint8_t> b) { return {b.begin(), b.end()}; }

TEST(Degas1, SyntheticFilesOfEveryLength) {
    // Whole files, files with a tail, and files cut short (odd lengths included).
    for (const Layout* l : {&kNeo, &kPi1}) {
        const std::size_t whole = l->pixelsAt + 32000;
        for (std::size_t length : {whole, whole + 1000, whole - 1, std::size_t(5000), std::size_t(33), std::size_t(0)}) {
            auto s = std::make_unique<Staging>();
            s->buildTables();
            const vtest::Bytes file = vtest::randomBytes(length, std::uint32_t(length));
            const Decoded d = decode(*s, file, l->ext);
            ASSERT_FALSE(d.rejected);
            EXPECT_EQ(d.caption, l->caption);
            EXPECT_EQ(d.kind, 1);
            EXPECT_EQ(bytesOf(d.bitmap), expectedBitmap(file, *l)) << l->ext << " of " << length << " bytes";
        }
    }
}

TEST(Degas1, NeoAndPi1OfTheSamePictureGiveTheSameBitmap) {
    const vtest::Bytes palette = vtest::randomBytes(32, 7), screen = vtest::randomBytes(32000, 8);
    vtest::Bytes neo = vtest::randomBytes(4, 9);  // any header words
    neo.insert(neo.end(), palette.begin(), palette.end());
    neo.resize(128, 0x55);
    neo.insert(neo.end(), screen.begin(), screen.end());
    vtest::Bytes pi1 = {0x00, 0x02};  // a resolution word that says medium changes nothing
    pi1.insert(pi1.end(), palette.begin(), palette.end());
    pi1.insert(pi1.end(), screen.begin(), screen.end());

    auto s = std::make_unique<Staging>();
    s->buildTables();
    const vtest::Bytes fromNeo = bytesOf(decode(*s, neo, "neo").bitmap);
    const vtest::Bytes fromPi1 = bytesOf(decode(*s, pi1, "pi1").bitmap);
    EXPECT_EQ(fromNeo, fromPi1);
    // The bottom row of the screen is the first pixel row of the bitmap.
    EXPECT_EQ(fromNeo[118], std::uint8_t(vtest::referenceScreenBitmap(screen, palette, 4)[118]));
}

TEST(Degas1, CorpusFilesMatchTheReference) {
    SKIP_WITHOUT_CORPUS("neo");
    int checked = 0;
    for (const auto& [folder, layout] : {std::pair{"neo", &kNeo}, std::pair{"pi1", &kPi1}}) {
        for (const auto& path : vtest::corpusFiles(folder)) {
            const vtest::Bytes file = vtest::readFile(path.string());
            auto s = std::make_unique<Staging>();
            s->buildTables();
            const Decoded d = decode(*s, file, layout->ext);
            EXPECT_EQ(bytesOf(d.bitmap), expectedBitmap(file, *layout)) << path;
            ++checked;
        }
    }
    EXPECT_GE(checked, 30);
}

}  // namespace
