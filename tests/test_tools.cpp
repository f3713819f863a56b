// Save and mono invert on the headless platform: the bytes they leave, the
// quit warning they arm or disarm, and what a failure leaves.
#include <unistd.h>

#include "convert/convert.h"
#include "viewer_fixture.h"

using namespace velmoric;
using vtest::Bytes;
namespace fs = std::filesystem;

namespace {

struct ToolsTest : vtest::ViewerTest {
    // Opens a picture of random bytes; gives the bitmap a fresh decode of it writes.
    Bytes open(const std::string& ext, std::uint32_t seed = 1) {
        const std::string path =
            dir.random(std::to_string(seed) + "." + ext, ext == "SPU" ? 51104 : ext == "MAC" ? 52000 : 32034, seed);
        openNamed(path);
        return decodeFile(path).bitmap;
    }
};

// The headless message box answers No, so a quit warning refuses the quit.
TEST_F(ToolsTest, SaveWritesTheStagedBitmapAndOnlyASaveDisarmsTheQuitWarning) {
    v.options.save = 1;
    v.fmenu_Click(1);
    EXPECT_EQ(ui.messages.at(0).text + ui.messages.at(0).title, "Need to load a picture before it can be saved.No picture.");
    EXPECT_TRUE(ui.saveRuns.empty()) << "no dialog before a picture was opened";
    for (const std::string ext : {"PI1", "SPU", "MAC", "PI3"}) {
        const Bytes bitmap = open(ext);
        v.fmenu_Click(1);  // cancelled
        EXPECT_TRUE(v.Form_QueryUnload());
        ui.saveAnswers.push_back(dir.file(ext + ".BMP"));
        v.toolbarClick("save");
        EXPECT_EQ(vtest::readFile(dir.file(ext + ".BMP")), bitmap) << ext;
        EXPECT_FALSE(v.Form_QueryUnload());
    }
    v.toolbarClick("invert");
    EXPECT_TRUE(v.Form_QueryUnload());
}

TEST_F(ToolsTest, ASaveIntoAFolderThatCannotBeWrittenShowsTheErrorBoxAndLeavesNothing) {
    open("PI1");
    const auto writable = fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
    fs::permissions(dir.path(), writable, fs::perm_options::remove);
    // Root writes anywhere: it saves as nobody for the moment.
    const uid_t user = geteuid();
    ASSERT_TRUE(user != 0 || seteuid(65534) == 0);
    ui.saveAnswers.push_back(dir.file("new.BMP"));
    v.fmenu_Click(1);
    ASSERT_EQ(seteuid(user), 0);
    fs::permissions(dir.path(), fs::perms::owner_write, fs::perm_options::add);
    ASSERT_EQ(ui.messages.size(), 1u);
    EXPECT_TRUE(ui.messages[0].text.starts_with(errorBoxText(dir.file("new.BMP") + ": "))) << ui.messages[0].text;
    EXPECT_EQ(v.saved, kFalse);
    EXPECT_EQ(vtest::entryCount(dir.path()), 1) << "nothing but the picture opened";
}

TEST_F(ToolsTest, MonoPicturesInvertByPaletteOrByPixelsAndOtherKindsGetTheAlert) {
    const auto swapped = [](Bytes b) {
        std::swap_ranges(b.begin() + 54, b.begin() + 58, b.begin() + 58);
        return b;
    };
    const auto negative = [](Bytes b) {
        std::transform(b.begin() + 62, b.end(), b.begin() + 62, [](std::uint8_t x) { return std::uint8_t(~x); });
        return b;
    };
    // Kinds 1 and 2, the start-up picture and a Spectrum one: the alert alone.
    const auto alerts = [&] {
        const auto before = snapshot();
        ui.messages.clear();
        v.toolbarClick("invert");
        ASSERT_EQ(ui.messages.size(), 1u);
        EXPECT_EQ(ui.messages[0].text + ui.messages[0].title, "Must be a Mono picture.Alert.");
        EXPECT_TRUE(snapshot() == before);
    };
    const auto invertsTo = [&](const Bytes& expected) {
        v.saved = kTrue;
        auto before = state();
        std::get<2>(before) = kFalse;
        v.medit_Click(4);
        EXPECT_EQ(ui.image.bytes(), expected);
        EXPECT_EQ(state(), before) << "only the saved flag changes";
        EXPECT_TRUE(ui.allCommandsEnabled());
    };
    alerts();
    const Bytes first = open("PI3");
    EXPECT_EQ(Bytes(first.begin() + 54, first.begin() + 62), (Bytes{255, 255, 255, 255, 0, 0, 0, 0}));
    invertsTo(swapped(first));
    invertsTo(first);
    v.medit_Click(4);
    const Bytes next = open("PI3", 2);
    EXPECT_EQ(ui.image.bytes(), swapped(next)) << "the next mono picture opens inverted";
    const Bytes mac = open("MAC");
    invertsTo(negative(mac));
    invertsTo(mac);  // the bitmap of hmac
    open("SPU");
    alerts();
}

}  // namespace
