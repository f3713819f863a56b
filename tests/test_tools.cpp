// Save and mono invert on the headless platform: the bytes they leave, the
// quit warning they arm or disarm, and what a failure leaves.
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "viewer_fixture.h"

using namespace velmoric;
using vtest::Bytes;
namespace fs = std::filesystem;

namespace {

// Files as the decoders want them, with random pixels; MacPaint in literal
// runs of one row.
Bytes pictureFile(const std::string& ext, std::uint32_t seed) {
    if (ext == "SPU") return vtest::randomBytes(51104, seed);
    if (ext != "MAC") return vtest::randomBytes(32034, seed);
    Bytes mac(512, 0);
    for (int row = 0; row < 720; ++row) {
        mac.push_back(71);
        for (std::uint8_t b : vtest::randomBytes(72, seed + row)) mac.push_back(b);
    }
    return mac;
}

struct ToolsTest : vtest::ViewerTest {
    void SetUp() override {
        ViewerTest::SetUp();
        v.options.save = 1;
    }
    // Opens a picture from the selector; gives its bitmap from fresh staging.
    Bytes open(const std::string& ext, std::uint32_t seed = 1) {
        const std::string path = dir.file(std::to_string(seed) + "." + ext);
        vtest::writeFile(path, pictureFile(ext, seed));
        ui.selectorAnswers.push_back(path);
        v.fmenu_Click(0);
        return vtest::bytesOf(vtest::decodeAs(*vtest::freshStaging(), pictureFile(ext, seed), ext.c_str()).bitmap);
    }
    bool quitWarns() {
        ui.messages.clear();
        v.Form_QueryUnload();
        return !ui.messages.empty();
    }
};

TEST_F(ToolsTest, SaveWritesTheStagedBitmapAndOnlyASaveDisarmsTheQuitWarning) {
    v.fmenu_Click(1);
    EXPECT_EQ(ui.messages.at(0).text + ui.messages.at(0).title, "Need to load a picture before it can be saved.No picture.");
    EXPECT_TRUE(ui.saveRuns.empty()) << "no dialog before a picture was opened";
    for (const std::string ext : {"PI1", "SPU", "MAC", "PI3"}) {
        const Bytes bitmap = open(ext);
        v.fmenu_Click(1);  // cancelled
        EXPECT_TRUE(quitWarns());
        ui.saveAnswers.push_back(dir.file(ext + ".BMP"));
        v.toolbarClick("save");
        EXPECT_EQ(vtest::readFile(dir.file(ext + ".BMP")), bitmap) << ext;
        EXPECT_FALSE(quitWarns());
    }
    v.toolbarClick("invert");
    EXPECT_TRUE(quitWarns());
}

// Root writes anywhere: then the save runs in a child process as nobody.
TEST_F(ToolsTest, ASaveIntoAFolderThatCannotBeWrittenShowsTheErrorBoxAndLeavesNothing) {
    open("PI1");
    const bool root = geteuid() == 0;
    if (!root) fs::permissions(dir.path(), fs::perms::owner_read | fs::perms::owner_exec);
    const pid_t child = root ? fork() : 0;
    if (child == 0) {
        bool ok = !root || (setgid(65534) == 0 && setuid(65534) == 0);
        ui.saveAnswers.push_back(dir.file("new.BMP"));
        v.fmenu_Click(1);
        ok = ok && ui.messages.size() == 1 && ui.messages[0].text.starts_with(errorBoxText(dir.file("new.BMP") + ": ")) &&
             v.saved == kFalse && std::distance(fs::directory_iterator(dir.path()), {}) == 1;
        if (root) _exit(ok ? 0 : 1);
        fs::permissions(dir.path(), fs::perms::owner_all);
        EXPECT_TRUE(ok);
        return;
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
}

TEST_F(ToolsTest, MonoPicturesInvertByPaletteOrByPixelsAndOtherKindsGetTheAlert) {
    const auto swapped = [](Bytes b) {
        std::swap_ranges(b.begin() + 54, b.begin() + 58, b.begin() + 58);
        return b;
    };
    const auto state = [&] { return std::make_tuple(v.kind, ui.label, v.nopicture, v.saved, ui.outerW, ui.outerH); };
    auto before = state();
    v.toolbarClick("invert");  // the start-up picture, kind 1
    EXPECT_EQ(ui.messages.at(0).text + ui.messages.at(0).title, "Must be a Mono picture.Alert.");
    EXPECT_EQ(state(), before);

    const Bytes first = open("PI3");
    EXPECT_EQ(Bytes(first.begin() + 54, first.begin() + 62), (Bytes{255, 255, 255, 255, 0, 0, 0, 0}));
    for (const Bytes& expected : {swapped(first), first}) {
        v.saved = kTrue;
        before = state();
        v.medit_Click(4);
        EXPECT_EQ(ui.image.bytes(), expected);
        std::get<3>(before) = kFalse;
        EXPECT_EQ(state(), before) << "only the saved flag changes";
        EXPECT_TRUE(ui.allCommandsEnabled());
    }
    v.medit_Click(4);
    const Bytes next = open("PI3", 2);
    EXPECT_EQ(ui.image.bytes(), swapped(next)) << "the next mono picture opens inverted";

    Bytes mac = open("MAC");
    v.medit_Click(4);
    for (std::size_t i = 62; i < mac.size(); ++i) mac[i] = std::uint8_t(~mac[i]);
    EXPECT_EQ(ui.image.bytes(), mac) << "the negative";
    v.medit_Click(4);
    for (std::size_t i = 62; i < mac.size(); ++i) mac[i] = std::uint8_t(~mac[i]);
    EXPECT_EQ(ui.image.bytes(), mac) << "the bitmap of hmac";

    open("SPU");
    const Picture spectrum = ui.image;
    before = state();
    v.toolbarClick("invert");
    EXPECT_EQ(std::make_tuple(ui.messages.size(), ui.messages.back().title), std::make_tuple(std::size_t(2), "Alert."));
    EXPECT_EQ(state(), before);
    EXPECT_EQ(ui.image, spectrum);
}

}  // namespace
