// The batch converter: fresh state per file, order-independent outputs,
// errors that name the file and the reason, exit codes.
#include <spng.h>

#include <memory>

#include "support.h"
#include "convert/convert.h"
#include "convert/png.h"

using namespace velmoric;

namespace {

struct ConvertTest : ::testing::Test {
    vtest::TempDir dir;
    StringConsole console;
    const std::string& err = console.errText;
    const std::string& out = console.outText;

    int run(std::vector<std::string> args) {
        console = {};
        return runConvert(args, console);
    }

    void makeMixedFolder() {
        std::filesystem::create_directories(dir.path() / "in" / "sub");
        vtest::writeFile(dir.file("in/a.neo"), vtest::randomBytes(32128, 1));
        vtest::writeFile(dir.file("in/B.PI1"), vtest::randomBytes(32034, 2));
        vtest::writeFile(dir.file("in/short.pi1"), vtest::randomBytes(100, 3));
        vtest::writeFile(dir.file("in/notes.txt"), vtest::randomBytes(10, 4));
        vtest::writeFile(dir.file("in/sub/c.neo"), vtest::randomBytes(32128, 5));
    }
};

TEST_F(ConvertTest, ParallelAndSerialRunsWriteTheSameFiles) {
    makeMixedFolder();
    const std::string bad = dir.file("in/odd.Neo");
    vtest::writeFile(bad, vtest::randomBytes(32128, 6));
    const std::string missing = dir.file("in/gone.pi1");

    EXPECT_EQ(run({"-j", "2", "-r", "-o", dir.file("par"), dir.file("in"), bad, missing}), 1);
    const std::string errors = err;
    EXPECT_NE(errors.find(bad + ": no decoder for the extension 'Neo'\n"), std::string::npos) << errors;
    EXPECT_NE(errors.find(missing + ": cannot read: No such file or directory\n"), std::string::npos) << errors;

    EXPECT_EQ(run({"-j", "1", "-r", "-o", dir.file("ser"), dir.file("in"), bad, missing}), 1);
    EXPECT_EQ(err, errors) << "errors come in the order of the inputs";

    for (const char* name : {"a.neo.bmp", "B.PI1.bmp", "short.pi1.bmp", "sub/c.neo.bmp"}) {
        const auto par = vtest::readFile(dir.file(std::string("par/") + name));
        EXPECT_FALSE(par.empty()) << name;
        EXPECT_EQ(par, vtest::readFile(dir.file(std::string("ser/") + name))) << name;
    }
    EXPECT_FALSE(std::filesystem::exists(dir.file("par/notes.txt.bmp")));
}

// Each kind of bitmap as a PNG: the smallest fitting form, and every pixel
// read back by libspng exactly as the bitmap has it.
TEST_F(ConvertTest, PngHoldsExactlyTheBitmapsPixels) {
    struct Case {
        std::string name;
        vtest::Bytes file;
        int bitDepth, colourType;  // 3 indexed, 2 RGB
    };
    const std::vector<Case> cases = {
        {"a.neo", vtest::randomBytes(32128, 1), 4, 3},
        {"b.pi3", vtest::randomBytes(32034, 2), 1, 3},
        {"c.mac", vtest::randomBytes(52000, 3), 1, 3},
        {"d.spu", vtest::randomBytes(51104, 4), 8, 2},
        {"e.spu", vtest::Bytes(51104, 0), 4, 3},  // one colour
    };
    for (const Case& c : cases) {
        vtest::writeFile(dir.file(c.name), c.file);
        ASSERT_EQ(run({"-f", "png", dir.file(c.name)}), 0) << err;
        const vtest::Bytes png = vtest::readFile(dir.file(c.name + ".png"));
        const Picture bitmap = Picture::fromBitmapBytes(decodeFile(dir.file(c.name)).bitmap);

        std::unique_ptr<spng_ctx, void (*)(spng_ctx*)> ctx(spng_ctx_new(0), spng_ctx_free);
        spng_set_png_buffer(ctx.get(), png.data(), png.size());
        spng_ihdr ihdr{};
        ASSERT_EQ(spng_get_ihdr(ctx.get(), &ihdr), 0) << c.name;
        EXPECT_EQ(ihdr.bit_depth, c.bitDepth) << c.name;
        EXPECT_EQ(ihdr.color_type, c.colourType) << c.name;
        ASSERT_EQ(int(ihdr.width), bitmap.width());
        ASSERT_EQ(int(ihdr.height), bitmap.height());
        vtest::Bytes rgb(3 * ihdr.width * ihdr.height);
        ASSERT_EQ(spng_decode_image(ctx.get(), rgb.data(), rgb.size(), SPNG_FMT_RGB8, 0), 0) << c.name;
        int differing = 0;
        for (int y = 0; y < bitmap.height(); ++y)
            for (int x = 0; x < bitmap.width(); ++x) {
                const std::size_t at = 3 * (std::size_t(y) * ihdr.width + std::size_t(x));
                differing += ((rgb[at] << 16) | (rgb[at + 1] << 8) | rgb[at + 2]) != int(bitmap.rgb(x, y));
            }
        EXPECT_EQ(differing, 0) << c.name;
    }
}

TEST_F(ConvertTest, InfoPrintsOneLinePerFile) {
    makeMixedFolder();
    ASSERT_EQ(run({"--info", dir.file("in")}), 0);
    EXPECT_EQ(out, dir.file("in/B.PI1") + "\tDegas 320*200 16 Colour\t1\t320x200\n" + dir.file("in/a.neo") +
                             "\tNeo 320*200 16 Colour\t1\t320x200\n" + dir.file("in/short.pi1") +
                             "\tDegas 320*200 16 Colour\t1\t320x200\n");
    EXPECT_FALSE(std::filesystem::exists(dir.file("in/a.neo.bmp")));
}

TEST_F(ConvertTest, BadUsageExitsTwo) {
    for (const auto& args : std::vector<std::vector<std::string>>{
             {}, {"-f", "gif", "x.neo"}, {"-j", "0", "x.neo"}, {"-j"}, {"--frobnicate", "x.neo"}}) {
        EXPECT_EQ(run(args), 2);
        EXPECT_FALSE(err.empty());
    }
}

}  // namespace
