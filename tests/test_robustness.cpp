// Sources that cannot be shown and a temporary bitmap that cannot be
// written: each ends in its box, turns the commands back on and leaves the
// previous picture, caption, kind and flags untouched. Random and cut files
// of every format are left to the fuzzers and the decoder tests.
#include <sys/stat.h>
#include <unistd.h>

#include "viewer_fixture.h"

using namespace velmoric;
namespace fs = std::filesystem;

namespace {

using Robustness = vtest::ViewerTest;

TEST_F(Robustness, FailuresKeepThePreviousPicture) {
    const std::string good = dir.random("first.pi1", 32034, 4);
    openNamed(good);
    v.saved = kTrue;  // as after a save

    fs::create_directories(dir.path() / "folder.neo");
    // Files their decoders turn down: a Tiny resolution byte out of range and
    // Spectrum files one byte short or long.
    vtest::writeFile(dir.file("bad.tn1"), {6, 0, 0, 0});
    dir.random("short.spu", 51103, 7);
    dir.random("long.spu", 51105, 8);
    ASSERT_EQ(::mkfifo(dir.file("x.pi1").c_str(), 0600), 0);
    fs::create_symlink("/dev/null", dir.file("x.neo"));
    fs::create_directories(ui.temporaryBitmapPath());
    struct Case { std::string name, expectedText, commandLine = ""; };
    const std::string fileError = "#Sorry a file error has occured.\nProbably an incorrect file type or invalid picture file.";
    const auto systemError = [&](const std::string& name, const std::string& reason) {
        return "Sorry an error has occured.\nThe system reports the following.\n" + dir.file(name) + ": " + reason;
    };
    std::vector<Case> cases = {
        {dir.file("mixed.Neo"), "Neo#" + fileError}, {dir.file("notes.txt"), "txt#" + fileError},
        {"ab", "ab#" + fileError}, {dir.file("b.xyz"), "xyz#/pics/a.xyz" + fileError, "/pics/a.xyz"},
        {dir.file("bad.tn1"), "tn1#" + fileError}, {dir.file("short.spu"), "spu#" + fileError},
        {dir.file("long.spu"), "spu#" + fileError},
        {dir.file("missing.neo"), systemError("missing.neo", "cannot read: No such file or directory")},
        {dir.file("folder.neo"), systemError("folder.neo", "is a folder, not a picture file")},
        {dir.file("x.pi1"), systemError("x.pi1", "is a FIFO, not a picture file")},
        {dir.file("x.neo"), systemError("x.neo", "is a character device, not a picture file")},
        {good, "Sorry an error has occured.\nThe system reports the following.\n" + ui.temporaryBitmapPath() +
                   ": cannot replace: Is a directory"}};
    if (::geteuid() != 0) {  // root reads a file of mode 000 all the same
        fs::permissions(dir.random("locked.pi1", 32034, 9), fs::perms::none);
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

}  // namespace
