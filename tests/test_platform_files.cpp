// Files as the decoders and the temporary bitmap need them.
#include "platform/files.h"
#include "platform/headless.h"
#include "support.h"

using namespace velmoric;

namespace {

TEST(Files, ReadSourceStopsAtTheLimitButKnowsTheLength) {
    vtest::TempDir dir;
    const auto path = dir.file("big.ca1");
    vtest::writeFile(path, vtest::randomBytes(70000, 1));
    const SourceData d = files::readSource(path, 65533);
    EXPECT_EQ(d.bytes.size(), 65533u);
    EXPECT_EQ(d.length, 70000u);
    const SourceData small = files::readSource(path, 100000);
    EXPECT_EQ(small.bytes.size(), 70000u);
}

TEST(Files, WriteOverKeepsTheTailOfALongerFile) {
    vtest::TempDir dir;
    const auto path = dir.file("tmp~~~$$.BMP");
    vtest::writeFile(path, vtest::Bytes(10, 0xEE));
    const vtest::Bytes fresh = {1, 2, 3};
    files::writeOver(path, fresh);
    EXPECT_EQ(vtest::readFile(path), (vtest::Bytes{1, 2, 3, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE}));
    files::remove(path);
    files::writeOver(path, fresh);
    EXPECT_EQ(vtest::readFile(path), fresh);
}

TEST(Files, ErrorsNameTheFileAndTheReason) {
    vtest::TempDir dir;
    try {
        files::readSource(dir.file("none.pi1"), 10);
        FAIL();
    } catch (const PlatformError& e) {
        EXPECT_EQ(std::string(e.what()), dir.file("none.pi1") + ": cannot read: No such file or directory");
        EXPECT_EQ(e.reason(), "cannot read: No such file or directory");
    }
}

TEST(Files, TemporaryBitmapLivesBesideTheProgramOrInTheRuntimeFolder) {
    vtest::TempDir dir;
    HeadlessPlatform p;
    p.setProgramFolder(dir.path().string());
    EXPECT_EQ(p.temporaryBitmapPath(), dir.file("tmp~~~$$.BMP"));
    p.setProgramFolder(dir.file("not-there"));
    EXPECT_EQ(p.temporaryBitmapPath(), joinPath(files::runtimeFolder(), "tmp~~~$$.BMP"));
}

}  // namespace
