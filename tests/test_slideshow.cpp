// The slide show with the headless platform, whose waits sleep to their end
// at once; and the listing of the current folder that the show walks
// through: which files it holds, and that it follows every change of the
// folder although it is kept from one call to the next.
#include <sys/stat.h>

#include "viewer_fixture.h"

using namespace velmoric;
namespace fs = std::filesystem;

TEST(Listing, HoldsTheNormalFilesInNameOrderAndFollowsEveryChange) {
    vtest::TempDir dir, other;
    const fs::path before = fs::current_path();
    fs::current_path(dir.path());
    HeadlessPlatform ui;
    for (const char* name : {"b", "a", "A", ".hidden", "Z.neo"}) vtest::writeFile(name, {1});
    fs::create_directory("folder.neo");
    ASSERT_EQ(::mkfifo("fifo.neo", 0600), 0);
    fs::create_symlink("a", "link.neo");
    fs::create_symlink("gone", "dangling.neo");
    fs::create_symlink("folder.neo", "folderlink.neo");
    EXPECT_EQ(*ui.listFolder(), (std::vector<std::string>{"A", "Z.neo", "a", "b", "link.neo"}));

    for (const char* link : {"link.neo", "dangling.neo", "folderlink.neo"}) fs::remove(link);  // now kept
    vtest::writeFile(other.file("x"), {1});
    const std::function<void()> changes[] = {
        [] { vtest::writeFile("new", {1}); }, [] { fs::rename("new", "renamed"); },
        [] { fs::rename("renamed", ".hidden2"); }, [] { fs::remove("b"); },
        [] { fs::remove_all("folder.neo"), vtest::writeFile("folder.neo", {1}); },
        [&] { fs::rename(other.file("x"), "moved-in"); },
        [] { fs::remove("fifo.neo"), vtest::writeFile("fifo.neo", {1}); },
        [&] { fs::current_path(other.path()); }, [&] { fs::current_path(dir.path()); }};
    for (std::size_t i = 0; i < std::size(changes); ++i) {
        ui.listFolder();
        changes[i]();
        EXPECT_EQ(*ui.listFolder(), files::normalFiles(".")) << "change " << i;
    }
    fs::current_path(before);
}

using SlideShow = vtest::ViewerTest;

TEST_F(SlideShow, OneYieldForEachOtherFileAndOneWaitForEachPictureUntilAClick) {
    const fs::path before = fs::current_path();
    for (const char* name : {"a.neo", "b.txt", "c", "d.PI1"}) dir.random(name, 32128, 1);
    std::vector<std::string> yielded;
    ui.onYield = [&] {
        yielded.push_back(ui.fileName());
        EXPECT_TRUE(ui.allCommandsDisabled());
        if (yielded.size() == 7) v.Image1_Click();  // in the second pass
    };
    ui.slideFolders.push_back(dir.path().string());
    v.toolbarClick("slide");  // `delay` 2 and `repeat` 1 after start-up
    fs::current_path(before);
    EXPECT_EQ(yielded, (std::vector<std::string>{"a.neo", "a.neo", "b.txt", "c", "d.PI1", "d.PI1", "a.neo", "a.neo"}));
    EXPECT_EQ(ui.deadlines, (std::vector<double>{2, 4, 6}));
    EXPECT_EQ(std::tie(ui.windowCaption, v.stop), std::make_tuple(std::string("Velmoric Picture Viewer."), kTrue));
    EXPECT_TRUE(ui.allCommandsEnabled());
}
