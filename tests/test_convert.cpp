// The batch converter: errors that name the file and the reason, exit codes,
// PNG pixels, and outputs that are never half written, shared or followed
// through a link. The mixed folder in parallel and alone is run on the
// program itself by convert_cli.sh.
#include <spng.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <map>
#include <memory>

#include "convert/convert.h"
#include "platform/picture.h"
#include "support.h"

using namespace velmoric;
namespace fs = std::filesystem;

namespace {

struct ConvertTest : ::testing::Test {
    vtest::TempDir dir;
    StringConsole console;
    const std::string& err = console.errText;

    int run(std::vector<std::string> args) {
        console = {};
        return runConvert(args, console);
    }
};

// Each kind of bitmap as a PNG: the smallest fitting form, and every pixel
// read back by libspng exactly as the bitmap has it.
TEST_F(ConvertTest, PngHoldsExactlyTheBitmapsPixels) {
    struct Case { std::string name; vtest::Bytes file; int bitDepth, colourType; };  // 3 indexed, 2 RGB
    const Case cases[] = {
        {"a.neo", vtest::randomBytes(32128, 1), 4, 3}, {"b.pi3", vtest::randomBytes(32034, 2), 1, 3},
        {"c.mac", vtest::randomBytes(52000, 3), 1, 3}, {"d.spu", vtest::randomBytes(51104, 4), 8, 2},
        {"e.spu", vtest::Bytes(51104, 0), 4, 3},  // one colour
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        vtest::writeFile(dir.file(c.name), c.file);
        ASSERT_EQ(run({"-f", "png", dir.file(c.name)}), 0) << err;
        const vtest::Bytes png = vtest::readFile(dir.file(c.name + ".png"));
        const Picture bitmap = Picture::fromBitmapBytes(decodeFile(dir.file(c.name)).bitmap);

        std::unique_ptr<spng_ctx, void (*)(spng_ctx*)> ctx(spng_ctx_new(0), spng_ctx_free);
        spng_set_png_buffer(ctx.get(), png.data(), png.size());
        spng_ihdr ihdr{};
        ASSERT_EQ(spng_get_ihdr(ctx.get(), &ihdr), 0);
        EXPECT_EQ(std::make_tuple(int(ihdr.bit_depth), int(ihdr.color_type), int(ihdr.width), int(ihdr.height)),
                  std::make_tuple(c.bitDepth, c.colourType, bitmap.width(), bitmap.height()));
        vtest::Bytes rgb(3 * ihdr.width * ihdr.height), expected;
        ASSERT_EQ(spng_decode_image(ctx.get(), rgb.data(), rgb.size(), SPNG_FMT_RGB8, 0), 0);
        for (int y = 0; y < bitmap.height(); ++y)
            for (int x = 0; x < bitmap.width(); ++x)
                for (int shift : {16, 8, 0}) expected.push_back(std::uint8_t(bitmap.rgb(x, y) >> shift));
        EXPECT_TRUE(rgb == expected);
    }
}

TEST_F(ConvertTest, InfoPrintsOneLinePerPictureOfTheFolder) {
    // The one in the sub-folder is not looked at without -r.
    for (const char* name : {"in/a.neo", "in/B.PI1", "in/notes.txt", "in/sub/c.neo"}) dir.random(name, 32128, 1);
    ASSERT_EQ(run({"--info", dir.file("in")}), 0);
    EXPECT_EQ(console.outText, dir.file("in/B.PI1") + "\tDegas 320*200 16 Colour\t1\t320x200\n" +
                                   dir.file("in/a.neo") + "\tNeo 320*200 16 Colour\t1\t320x200\n");
    EXPECT_FALSE(fs::exists(dir.file("in/a.neo.bmp")));
}

TEST_F(ConvertTest, BadUsageExitsTwo) {
    for (const auto& args : std::vector<std::vector<std::string>>{
             {}, {"-f", "jpeg", "x.neo"}, {"-j", "0", "x.neo"}, {"-j0", "x.neo"}, {"-j2x", "x.neo"}, {"-j"},
             {"--frobnicate", "x.neo"}}) {
        EXPECT_EQ(run(args), 2);
        EXPECT_FALSE(err.empty());
    }
}

TEST_F(ConvertTest, SpecialFilesAndAFolderWithoutPicturesGiveAnErrorLineAndCreateNothing) {
    ASSERT_EQ(::mkfifo(dir.file("x.pi1").c_str(), 0600), 0);
    fs::create_symlink("/dev/null", dir.file("x.neo"));
    fs::create_directories(dir.file("x.pc1"));
    fs::create_directories(dir.file("out"));
    EXPECT_EQ(run({"-o", dir.file("out"), dir.file("x.pi1"), dir.file("x.neo"), dir.file("x.pc1/")}), 1);
    EXPECT_EQ(err, dir.file("x.pc1/") + ": no picture files in this folder\n" + dir.file("x.pi1") +
                       ": is a FIFO, not a picture file\n" + dir.file("x.neo") +
                       ": is a character device, not a picture file\n");
    EXPECT_TRUE(fs::is_empty(dir.file("out")));
}

// Outputs that would share a file are refused before any work; named apart
// by their folders they are written, and a link standing at an output's
// name is replaced, not followed.
TEST_F(ConvertTest, InputsThatWouldWriteOneOutputAreRefusedAndLinksAtOutputsReplaced) {
    const std::string a = dir.random("a/X.PI1", 32034, 4), b = dir.random("b/X.PI1", 32034, 5);
    const std::string output = dir.file("D/X.PI1.bmp");
    EXPECT_EQ(run({"-o", dir.file("D"), dir.random("a/Y.PI1", 32034, 6), a, b}), 2);
    EXPECT_EQ(err, a + ": " + b + " would be written to the same file " + output + "\n" + b + ": " + a +
                       " would be written to the same file " + output + "\n");
    EXPECT_FALSE(fs::exists(dir.file("D")));
    // On a folder that ignores case the two would overwrite each other.
    EXPECT_EQ(run({"-o", dir.file("D"), a, dir.random("c/x.pi1", 32034, 6)}), 2);
    EXPECT_FALSE(fs::exists(dir.file("D")));
    fs::remove_all(dir.file("c"));

    fs::create_directories(dir.file("D/a"));
    fs::create_symlink(a, dir.file("D/a/X.PI1.bmp"));
    EXPECT_EQ(run({"-r", "-o", dir.file("D"), dir.path().string()}), 0) << err;
    EXPECT_FALSE(fs::is_symlink(dir.file("D/a/X.PI1.bmp")));
    EXPECT_EQ(vtest::readFile(dir.file("D/a/X.PI1.bmp")), decodeFile(a).bitmap);
    EXPECT_EQ(vtest::readFile(a), vtest::randomBytes(32034, 4));
    EXPECT_EQ(vtest::readFile(dir.file("D/b/X.PI1.bmp")), decodeFile(b).bitmap);
}

// A disk that fills up during the write, made by a file size limit in a
// child process: the converter reports it and leaves no file, whole or part;
// an output it was replacing stays as it was, and no temporary file is left.
TEST_F(ConvertTest, AFullDiskLeavesNoPartialFile) {
    const std::string neo = dir.random("p.neo", 32128, 7), spu = dir.random("q.spu", 51104, 8);
    for (const std::string& out : {dir.file("new"), dir.file("old")}) {
        fs::create_directories(out);
        std::map<std::string, vtest::Bytes> before, after;
        for (const char* name : {"p.neo.bmp", "q.spu.bmp", "p.neo.png", "q.spu.png"})
            if (out.ends_with("old")) vtest::writeFile(out + "/" + name, before[name] = vtest::randomBytes(100, 9));
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            std::signal(SIGXFSZ, SIG_IGN);
            const rlimit limit{20000, 20000};
            ::setrlimit(RLIMIT_FSIZE, &limit);
            StringConsole quiet;
            for (const char* format : {"bmp", "png"})
                if (runConvert({"-j", "1", "-f", format, "-o", out, neo, spu}, quiet) != 1) ::_exit(1);
            ::_exit(0);
        }
        int status = -1;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0) << "each format ends in exit 1";
        for (const auto& entry : fs::directory_iterator(out))
            after[entry.path().filename().string()] = vtest::readFile(entry.path().string());
        EXPECT_EQ(after, before) << out;
    }
}

}  // namespace
