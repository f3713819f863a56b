// The road from a name to a picture on show, with the headless platform.
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "viewer_fixture.h"

using namespace velmoric;

namespace {

vtest::Bytes neoFile(std::uint32_t seed) {
    vtest::Bytes f = vtest::randomBytes(32128, seed);
    return f;
}

struct OpenTest : vtest::ViewerTest {
    std::string temporary() { return ui.temporaryBitmapPath(); }

    // Opens `name` as a drop or hand-over would: mode 2.
    void openNamed(const std::string& name) {
        ui.setFileName(name);
        v.openmode = 2;
        v.openpic();
        v.openmode = 0;
    }

    struct Snapshot {
        Picture picture;
        std::string caption;
        std::int16_t kind, saved, nopicture;
        bool operator==(const Snapshot&) const = default;
    };
    Snapshot snapshot() { return {ui.image, ui.label, v.kind, v.saved, v.nopicture}; }
};

TEST_F(OpenTest, OpensFromTheSelectorAndComposesTheCaption) {
    const std::string path = dir.file("pic.neo");
    vtest::writeFile(path, neoFile(1));
    ui.selectorAnswers.push_back(path);
    v.openpic();

    ASSERT_EQ(ui.selectorRuns.size(), 1u);
    EXPECT_EQ(ui.selectorRuns[0].flags, 6148);
    EXPECT_EQ(ui.selectorRuns[0].title, "Select Picture File.");
    EXPECT_EQ(ui.selectorRuns[0].filterIndex, 1);
    EXPECT_EQ(ui.label, "PIC.NEO  Neo 320*200 16 Colour");
    EXPECT_EQ(v.kind, 1);
    EXPECT_EQ(v.saved, kFalse);
    EXPECT_EQ(v.nopicture, kFalse);
    EXPECT_EQ(ui.image.width(), 320);
    EXPECT_EQ(ui.image.height(), 200);
    EXPECT_TRUE(ui.messages.empty());
    EXPECT_TRUE(ui.allCommandsEnabled());
    EXPECT_FALSE(std::filesystem::exists(temporary())) << "the temporary bitmap is deleted after the load";
    EXPECT_EQ(ui.yields, 2);
    EXPECT_EQ(ui.repaints, 1);
}

TEST_F(OpenTest, CancelledSelectorChangesNothing) {
    const auto before = snapshot();
    v.openpic();
    EXPECT_EQ(snapshot(), before);
    EXPECT_TRUE(ui.messages.empty());
    EXPECT_EQ(ui.repaints, 0);
}

// Names that reach no decoder or that fail: a box, the commands back on and
// the previous picture, caption, kind and flags untouched.
TEST_F(OpenTest, FailuresKeepThePreviousPicture) {
    const std::string good = dir.file("first.pi1");
    vtest::writeFile(good, vtest::randomBytes(32034, 4));
    openNamed(good);
    ASSERT_EQ(ui.label, "FIRST.PI1  Degas 320*200 16 Colour");
    v.saved = kTrue;  // as after a save

    vtest::writeFile(dir.file("mixed.Neo"), neoFile(5));
    std::filesystem::create_directories(dir.path() / "folder.neo");
    // Files their decoders turn down: a Tiny resolution byte out of range and
    // Spectrum files one byte short or long.
    vtest::Bytes tiny = vtest::randomBytes(2000, 6);
    tiny[0] = 6;
    vtest::writeFile(dir.file("bad.tn1"), tiny);
    vtest::writeFile(dir.file("short.spu"), vtest::randomBytes(51103, 7));
    vtest::writeFile(dir.file("long.spu"), vtest::randomBytes(51105, 8));
    struct Case {
        std::string name, expectedText;
    };
    const std::string fileError = "#Sorry a file error has occured.\nProbably an incorrect file type or invalid picture file.";
    const std::string systemError = "Sorry an error has occured.\nThe system reports the following.\n";
    std::vector<Case> cases = {
        {dir.file("mixed.Neo"), "Neo#" + fileError},
        {dir.file("notes.txt"), "txt#" + fileError},
        {"ab", "ab#" + fileError},
        {dir.file("bad.tn1"), "tn1#" + fileError},
        {dir.file("short.spu"), "spu#" + fileError},
        {dir.file("long.spu"), "spu#" + fileError},
        {dir.file("missing.neo"), systemError + dir.file("missing.neo") + ": cannot read: No such file or directory"},
        {dir.file("folder.neo"), systemError + dir.file("folder.neo") + ": is a folder, not a picture file"},
        {dir.file("x.pi1"), systemError + dir.file("x.pi1") + ": is a FIFO, not a picture file"},
        {dir.file("x.neo"), systemError + dir.file("x.neo") + ": is a character device, not a picture file"},
    };
    ASSERT_EQ(::mkfifo(dir.file("x.pi1").c_str(), 0600), 0);
    std::filesystem::create_symlink("/dev/null", dir.file("x.neo"));
    if (::geteuid() != 0) {  // root reads a file of mode 000 all the same
        vtest::writeFile(dir.file("locked.pi1"), vtest::randomBytes(32034, 9));
        std::filesystem::permissions(dir.file("locked.pi1"), std::filesystem::perms::none);
        cases.push_back({dir.file("locked.pi1"), systemError + dir.file("locked.pi1") + ": cannot read: Permission denied"});
    }
    for (const Case& c : cases) {
        const auto before = snapshot();
        ui.messages.clear();
        openNamed(c.name);
        ASSERT_EQ(ui.messages.size(), 1u) << c.name;
        EXPECT_EQ(ui.messages[0].text, c.expectedText);
        EXPECT_EQ(ui.messages[0].title, "Error.");
        EXPECT_EQ(ui.messages[0].icon, Icon::Exclamation);
        EXPECT_EQ(ui.messages[0].buttons, Buttons::Ok);
        EXPECT_EQ(snapshot(), before) << c.name;
        EXPECT_EQ(ui.fileNameText, c.name) << "the rejected name stays";
        EXPECT_TRUE(ui.allCommandsEnabled());
        EXPECT_FALSE(std::filesystem::exists(temporary()));
    }
    EXPECT_FALSE(std::filesystem::exists(dir.file("missing.neo"))) << "a missing source is never created";
}

TEST_F(OpenTest, FailureTextNamesTheCommandLine) {
    ui.commandLineText = "/pics/a.xyz";
    openNamed(dir.file("b.xyz"));
    ASSERT_EQ(ui.messages.size(), 1u);
    EXPECT_EQ(ui.messages[0].text.substr(0, 16), "xyz#/pics/a.xyz#");
}

TEST_F(OpenTest, CommandsAreOffWhileTheDecoderRuns) {
    const std::string path = dir.file("a.neo");
    vtest::writeFile(path, neoFile(6));
    bool offDuringYield = false;
    ui.onYield = [&] { offDuringYield = offDuringYield || ui.allCommandsDisabled(); };
    openNamed(path);
    EXPECT_TRUE(offDuringYield);
    EXPECT_TRUE(ui.allCommandsEnabled());
}

TEST_F(OpenTest, AnUnloadableTemporaryBitmapKeepsThePreviousState) {
    // A temporary path that cannot take the file: a folder stands there.
    std::filesystem::create_directories(temporary());
    const std::string path = dir.file("a.neo");
    vtest::writeFile(path, neoFile(7));
    const auto before = snapshot();
    openNamed(path);
    ASSERT_EQ(ui.messages.size(), 1u);
    EXPECT_EQ(ui.messages[0].title, "Error.");
    EXPECT_NE(ui.messages[0].text.find("tmp~~~$$.BMP"), std::string::npos) << ui.messages[0].text;
    EXPECT_EQ(snapshot(), before);
    EXPECT_TRUE(ui.allCommandsEnabled());
}

TEST(CommandLine, NameRule) {
    struct Case { std::string cmd, name; };
    const std::vector<Case> cases = {
        {"C:\\ABCDE.NEO", ""},                      // dot at position 9
        {"C:\\A.NEO", "C:\\A.NEO"},                 // shorter than 9: taken whole
        {"C:\\PICS\\A.NEO /X", "C:\\PICS\\A.NEO"},  // text behind the extension is cut
        {"ABCDEFGHIJKLMN", "ABCDEFGHIJK"},          // no dot from position 9 on: 11 characters
        {"ABCDEFGHIJ", "ABCDEFGHIJ"},               // ...or all when shorter
        {"", ""},
        {"/home/u/pics/x.pi1", "/home/u/pics/x.pi1"},
        {"/home/u/my.pics/x", "/home/u/my.pic"},    // a folder's dot counts when it is the last
    };
    for (const Case& c : cases) EXPECT_EQ(commandLineName(c.cmd), c.name) << c.cmd;
}

TEST_F(OpenTest, CommandLineModeOpensTheRuleName) {
    const std::string path = dir.file("A.NEO");
    vtest::writeFile(path, neoFile(8));
    ui.commandLineText = path + " /X";
    v.Timer1_Timer();
    EXPECT_TRUE(ui.shown);
    EXPECT_FALSE(ui.timerEnabled);
    EXPECT_EQ(v.openmode, 0);
    EXPECT_EQ(ui.label, "A.NEO  Neo 320*200 16 Colour");
}

}  // namespace
