// Start-up order, the first-run question, the options store and quitting,
// with the real window.
#include <sys/stat.h>

#include "window_fixture.h"

using namespace vqt;

namespace {

std::tuple<int, int, int, int, int, int, int> optionsOf(const Options& o) {
    return {o.delay, o.save, o.size, o.repeat, o.orientation, o.printscale, o.single};
}

// No writes nothing and the next start asks again; Yes registers the types,
// with the timer off during the question. (A known glob means no question:
// every test after loadAndShow sees no message box.)
TEST_F(WindowTest, WithoutAKnownGlobTheQuestionComesAndOnlyYesRegisters) {
    form->load();
    ASSERT_EQ(platform->messages.size(), 1u);
    EXPECT_TRUE(std::filesystem::is_empty(data.path()));
    EXPECT_TRUE(std::filesystem::is_empty(std::getenv("XDG_CONFIG_HOME")));

    make();
    platform->answers.push_back(Answer::Yes);
    form->load();
    ASSERT_EQ(platform->messages.size(), 1u);
    const auto& m = platform->messages[0];
    EXPECT_EQ(std::tie(m.title, m.buttons, m.icon),
              std::make_tuple(std::string("Register Files"), Buttons::YesNo, Icon::None));
    EXPECT_FALSE(std::filesystem::is_empty(data.path()));
    EXPECT_TRUE(std::filesystem::exists(std::string(std::getenv("XDG_CONFIG_HOME")) + "/mimeapps.list"));
    EXPECT_EQ(platform->log, (std::vector<std::string>{"timer off", "box Register Files", "timer on"}));
    EXPECT_EQ(optionsOf(viewer().options), std::make_tuple(2, 0, 0, 1, 1, 100, 0)) << "the defaults of an empty store";
    EXPECT_FALSE(form->isVisible()) << "the window waits for the first tick";
    EXPECT_TRUE(form->timer1()->isActive());
}

// A missing or unreadable value takes its default; quitting writes all
// seven as decimal text in their order. The store here is a link to a file
// of the user's: it is read through the link and replaced by a file of its
// own, the user's file left as it was.
TEST_F(WindowTest, OptionsAreReadWithDefaultsAndWrittenAtQuitAsDecimalTextInOrder) {
    const std::string stored = "[options]\nsave=1\nsize=1\nrepeat=0\norientation=abc\nprintscale=70000\nsingle=-3\n";
    std::filesystem::create_directories(std::filesystem::path(settingsFile()).parent_path());
    vtest::writeFile(data.file("notes.txt"), vtest::Bytes(stored.begin(), stored.end()));
    std::filesystem::create_symlink(data.file("notes.txt"), settingsFile());
    loadAndShow();
    EXPECT_EQ(optionsOf(viewer().options), std::make_tuple(2, 1, 1, 0, 1, 100, -3));
    viewer().options.printscale = 55;
    platform->log.clear();
    EXPECT_TRUE(form->close());
    const std::vector<std::string> expected = {"write options/delay=2", "write options/save=1", "write options/size=1",
        "write options/repeat=0", "write options/orientation=1", "write options/printscale=55",
        "write options/single=-3"};
    EXPECT_EQ(platform->log, expected);
    EXPECT_EQ(vtest::readText(settingsFile()),
              "[options]\ndelay=2\norientation=1\nprintscale=55\nrepeat=0\nsave=1\nsingle=-3\nsize=1\n");
    EXPECT_EQ(vtest::readText(data.file("notes.txt")), stored);
    EXPECT_FALSE(std::filesystem::is_symlink(settingsFile()));
}

// A pipe at the store's name is no store: the defaults, and no wait for a writer.
TEST_F(WindowTest, APipeForAStoreGivesTheDefaults) {
    std::filesystem::create_directories(std::filesystem::path(settingsFile()).parent_path());
    ASSERT_EQ(::mkfifo(settingsFile().c_str(), 0600), 0);
    loadAndShow();
    EXPECT_EQ(optionsOf(viewer().options), std::make_tuple(2, 0, 0, 1, 1, 100, 0));
}

// The options are written whether the quit goes on or not.
TEST_F(WindowTest, QuitWarnsOnlyForAnUnsavedPictureWhenSaveIsExactlyOne) {
    const std::tuple<int, std::int16_t, Answer, bool, bool> rows[] = {  // save, saved, answer, warned, closes
        {1, kFalse, Answer::No, true, false}, {1, kFalse, Answer::Yes, true, true},
        {0, kFalse, Answer::No, false, true}, {1, kTrue, Answer::No, false, true},
        {2, kFalse, Answer::No, false, true}, {-1, kFalse, Answer::No, false, true}};
    for (const auto& [save, saved, answer, warned, closes] : rows) {
        SCOPED_TRACE(::testing::Message() << "save " << save << ", saved " << saved << ", answer " << int(answer));
        make();
        loadAndShow();
        std::filesystem::remove(settingsFile());
        viewer().options.save = std::int16_t(save);
        viewer().saved = saved;
        platform->answers.push_back(answer);
        EXPECT_EQ(form->close(), closes);
        EXPECT_EQ(form->isVisible(), !closes);
        ASSERT_EQ(platform->messages.size(), warned ? 1u : 0u);
        for (const auto& m : platform->messages)
            EXPECT_EQ(std::tie(m.text, m.title, m.buttons, m.icon),
                      std::make_tuple(std::string("Picture has not been saved do you wish to quit?"),
                                      std::string("Warning."), Buttons::YesNo, Icon::Question));
        EXPECT_TRUE(std::filesystem::exists(settingsFile()));
    }
}

}  // namespace
