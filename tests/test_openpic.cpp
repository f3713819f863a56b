// The road from a name to a picture on show, with the headless platform.
#include <sys/stat.h>
#include <unistd.h>

#include "viewer_fixture.h"

using namespace velmoric;
namespace fs = std::filesystem;

namespace {

using OpenTest = vtest::ViewerTest;

// The outcomes of an open: a cancelled selector changes nothing; a picture
// is decoded with the commands off, loaded, captioned and its temporary
// bitmap deleted; a name that reaches no decoder or fails, or a temporary
// bitmap that cannot be written (a folder stands at its name), gives a box,
// turns the commands back on and leaves the previous picture, caption, kind
// and flags untouched.
TEST_F(OpenTest, NoNameChangesNothingAPictureShowsAndAFailureKeepsThePreviousPicture) {
    const auto start = snapshot();
    v.openpic();
    EXPECT_TRUE(snapshot() == start) << ui.label;
    EXPECT_EQ(ui.repaints, 0);

    const std::string good = dir.file("first.pi1");
    vtest::writeFile(good, vtest::randomBytes(32034, 4));
    ui.selectorAnswers.push_back(good);
    bool offDuringYield = false;
    ui.onYield = [&] { offDuringYield = offDuringYield || ui.allCommandsDisabled(); };
    v.openpic();
    ASSERT_EQ(ui.selectorRuns.size(), 2u);
    const FileSelector& selector = ui.selectorRuns[1];
    EXPECT_EQ(std::tie(selector.flags, selector.filterIndex, selector.title),
              std::make_tuple(6148, 1, std::string("Select Picture File.")));
    EXPECT_TRUE(offDuringYield);
    EXPECT_EQ(ui.label, "FIRST.PI1  Degas 320*200 16 Colour");
    EXPECT_EQ(std::tie(v.kind, v.saved, v.nopicture), std::make_tuple(1, kFalse, kFalse));
    EXPECT_TRUE(ui.messages.empty());
    EXPECT_TRUE(ui.allCommandsEnabled());
    EXPECT_FALSE(fs::exists(ui.temporaryBitmapPath()));
    EXPECT_EQ(ui.repaints, 1);
    v.saved = kTrue;  // as after a save

    vtest::writeFile(dir.file("mixed.Neo"), vtest::randomBytes(32128, 5));
    fs::create_directories(dir.path() / "folder.neo");
    // Files their decoders turn down: a Tiny resolution byte out of range and
    // Spectrum files one byte short or long.
    vtest::writeFile(dir.file("bad.tn1"), {6, 0, 0, 0});
    vtest::writeFile(dir.file("short.spu"), vtest::randomBytes(51103, 7));
    vtest::writeFile(dir.file("long.spu"), vtest::randomBytes(51105, 8));
    ASSERT_EQ(::mkfifo(dir.file("x.pi1").c_str(), 0600), 0);
    fs::create_symlink("/dev/null", dir.file("x.neo"));
    fs::create_directories(ui.temporaryBitmapPath());
    struct Case {
        std::string name, expectedText, commandLine = "";
    };
    const std::string fileError = "#Sorry a file error has occured.\nProbably an incorrect file type or invalid picture file.";
    const auto systemError = [&](const std::string& name, const std::string& reason) {
        return "Sorry an error has occured.\nThe system reports the following.\n" + dir.file(name) + ": " + reason;
    };
    std::vector<Case> cases = {
        {dir.file("mixed.Neo"), "Neo#" + fileError},
        {dir.file("notes.txt"), "txt#" + fileError},
        {"ab", "ab#" + fileError},
        {dir.file("b.xyz"), "xyz#/pics/a.xyz" + fileError, "/pics/a.xyz"},
        {dir.file("bad.tn1"), "tn1#" + fileError},
        {dir.file("short.spu"), "spu#" + fileError},
        {dir.file("long.spu"), "spu#" + fileError},
        {dir.file("missing.neo"), systemError("missing.neo", "cannot read: No such file or directory")},
        {dir.file("folder.neo"), systemError("folder.neo", "is a folder, not a picture file")},
        {dir.file("x.pi1"), systemError("x.pi1", "is a FIFO, not a picture file")},
        {dir.file("x.neo"), systemError("x.neo", "is a character device, not a picture file")},
        {good, "Sorry an error has occured.\nThe system reports the following.\n" + ui.temporaryBitmapPath() +
                   ": cannot replace: Is a directory"},
    };
    if (::geteuid() != 0) {  // root reads a file of mode 000 all the same
        vtest::writeFile(dir.file("locked.pi1"), vtest::randomBytes(32034, 9));
        fs::permissions(dir.file("locked.pi1"), fs::perms::none);
        cases.push_back({dir.file("locked.pi1"), systemError("locked.pi1", "cannot read: Permission denied")});
    }
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const auto before = snapshot();
        ui.messages.clear();
        ui.commandLineText = c.commandLine;
        openNamed(c.name);
        ASSERT_EQ(ui.messages.size(), 1u);
        EXPECT_EQ(ui.messages[0].text, c.expectedText);
        EXPECT_EQ(std::tie(ui.messages[0].title, ui.messages[0].icon, ui.messages[0].buttons),
                  std::make_tuple(std::string("Error."), Icon::Exclamation, Buttons::Ok));
        EXPECT_TRUE(snapshot() == before) << ui.label;
        EXPECT_EQ(ui.fileNameText, c.name) << "the rejected name stays";
        EXPECT_TRUE(ui.allCommandsEnabled());
        EXPECT_FALSE(fs::is_regular_file(ui.temporaryBitmapPath()));
    }
    EXPECT_FALSE(fs::exists(dir.file("missing.neo"))) << "a missing source is never created";
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

}  // namespace
