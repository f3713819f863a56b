// The batch converter: fresh state per file, order-independent outputs,
// errors that name the file and the reason, exit codes.
#include <sstream>

#include "support.h"
#include "tools/convert.h"
#include "tools/png.h"

using namespace velmoric;

namespace {

struct ConvertTest : ::testing::Test {
    vtest::TempDir dir;
    std::ostringstream out, err;

    int run(std::vector<std::string> args) {
        out.str({});
        err.str({});
        return runConvert(args, out, err, false);
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
    const std::string errors = err.str();
    EXPECT_NE(errors.find(bad + ": no decoder for the extension 'Neo'\n"), std::string::npos) << errors;
    EXPECT_NE(errors.find(missing + ": cannot read: No such file or directory\n"), std::string::npos) << errors;

    EXPECT_EQ(run({"-j", "1", "-r", "-o", dir.file("ser"), dir.file("in"), bad, missing}), 1);
    EXPECT_EQ(err.str(), errors) << "errors come in the order of the inputs";

    for (const char* name : {"a.neo.bmp", "B.PI1.bmp", "short.pi1.bmp", "sub/c.neo.bmp"}) {
        const auto par = vtest::readFile(dir.file(std::string("par/") + name));
        EXPECT_FALSE(par.empty()) << name;
        EXPECT_EQ(par, vtest::readFile(dir.file(std::string("ser/") + name))) << name;
    }
    EXPECT_FALSE(std::filesystem::exists(dir.file("par/notes.txt.bmp")));
}

TEST_F(ConvertTest, EachFileStartsFromAFreshState) {
    makeMixedFolder();
    ASSERT_EQ(run({"-o", dir.file("all"), dir.file("in/a.neo"), dir.file("in/short.pi1")}), 0);
    ASSERT_EQ(run({"-o", dir.file("one"), dir.file("in/short.pi1")}), 0);
    EXPECT_EQ(vtest::readFile(dir.file("all/short.pi1.bmp")), vtest::readFile(dir.file("one/short.pi1.bmp")));
}

TEST_F(ConvertTest, BesideTheSourceByDefaultAndExactBitmapBytes) {
    makeMixedFolder();
    ASSERT_EQ(run({dir.file("in/B.PI1")}), 0);
    const FileDecode d = decodeFile(dir.file("in/B.PI1"));
    ASSERT_TRUE(d.ok);
    EXPECT_EQ(vtest::readFile(dir.file("in/B.PI1.bmp")), d.bitmap);
    EXPECT_EQ(d.bitmap.size(), 32118u);
}

TEST_F(ConvertTest, PngHoldsTheSamePixels) {
    makeMixedFolder();
    ASSERT_EQ(run({"-f", "png", "-o", dir.file("png"), dir.file("in/a.neo")}), 0);
    const auto png = vtest::readFile(dir.file("png/a.neo.png"));
    ASSERT_GT(png.size(), 33u);
    EXPECT_EQ(vtest::Bytes(png.begin(), png.begin() + 8), (vtest::Bytes{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'}));
    const FileDecode d = decodeFile(dir.file("in/a.neo"));
    EXPECT_EQ(png, encodePng(Picture::fromBitmapBytes(d.bitmap)));
    EXPECT_EQ(png[19], 64);   // width 320 = 0x140
    EXPECT_EQ(png[23], 200);  // height
}

TEST_F(ConvertTest, InfoPrintsOneLinePerFile) {
    makeMixedFolder();
    ASSERT_EQ(run({"--info", dir.file("in")}), 0);
    EXPECT_EQ(out.str(), dir.file("in/B.PI1") + "\tDegas 320*200 16 Colour\t1\t320x200\n" + dir.file("in/a.neo") +
                             "\tNeo 320*200 16 Colour\t1\t320x200\n" + dir.file("in/short.pi1") +
                             "\tDegas 320*200 16 Colour\t1\t320x200\n");
    EXPECT_FALSE(std::filesystem::exists(dir.file("in/a.neo.bmp")));
}

TEST_F(ConvertTest, BadUsageExitsTwo) {
    for (const auto& args : std::vector<std::vector<std::string>>{
             {}, {"-f", "gif", "x.neo"}, {"-j", "0", "x.neo"}, {"-j"}, {"--frobnicate", "x.neo"}}) {
        EXPECT_EQ(run(args), 2);
        EXPECT_FALSE(err.str().empty());
    }
}

}  // namespace
