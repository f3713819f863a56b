// The road from a name to a picture on show, with the headless platform.
#include "viewer_fixture.h"

using namespace velmoric;
namespace fs = std::filesystem;

namespace {

using OpenTest = vtest::ViewerTest;

// A cancelled selector changes nothing; its answer is decoded with the
// commands off, loaded, captioned and its temporary bitmap deleted. What
// fails is in the robustness tests.
TEST_F(OpenTest, NoNameChangesNothingAndAPictureShows) {
    const auto start = snapshot();
    v.openpic();
    EXPECT_TRUE(snapshot() == start) << ui.label;
    EXPECT_EQ(ui.repaints, 0);

    const std::string path = dir.random("first.pi1", 32034, 4);
    ui.selectorAnswers.push_back(path);
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
    EXPECT_TRUE(ui.allCommandsEnabled());
    EXPECT_FALSE(fs::exists(ui.temporaryBitmapPath()));
    EXPECT_EQ(ui.repaints, 1);
}

TEST(CommandLine, NameRule) {
    struct Case { std::string cmd, name; };
    const std::vector<Case> cases = {
        {"C:\\ABCDE.NEO", ""},                      // dot at position 9
        {"C:\\A.NEO", "C:\\A.NEO"},                 // shorter than 9: taken whole
        {"C:\\PICS\\A.NEO /X", "C:\\PICS\\A.NEO"},  // text behind the extension is cut
        {"ABCDEFGHIJKLMN", "ABCDEFGHIJK"},          // no dot from position 9 on: 11 characters
        {"ABCDEFGHIJ", "ABCDEFGHIJ"},               // ...or all when shorter
        {"C:\\AB.NEO", "C:\\AB.NEO"},               // 9 characters, no dot at 9: taken whole
        {"ABCDEFGH.", ""},                          // 9 characters, the dot at 9
        {"", ""}, {"/home/u/pics/x.pi1", "/home/u/pics/x.pi1"},
        {"/home/u/my.pics/x", "/home/u/my.pic"},    // a folder's dot counts when it is the last
    };
    for (const Case& c : cases) EXPECT_EQ(commandLineName(c.cmd), c.name) << c.cmd;
}

}  // namespace
