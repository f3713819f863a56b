// Design state, start-up order, the first-run question, the options store
// and quitting, with the real window.
#include "window_fixture.h"

using namespace vqt;

namespace {

const char* const kQuestion =
    "Welcome to the Velmoric picture viewer.\rDo you wish to register the Atari picture files to this program.";

std::string readText(const std::string& path) {
    const vtest::Bytes b = vtest::readFile(path);
    return std::string(b.begin(), b.end());
}

void writeSettings(const std::string& text) {
    std::filesystem::create_directories(std::filesystem::path(settingsFile()).parent_path());
    vtest::writeFile(settingsFile(), vtest::Bytes(text.begin(), text.end()));
}

TEST_F(WindowTest, DesignState) {
    EXPECT_EQ(form->windowTitle(), "Velmoric Picture Viewer.");
    EXPECT_FALSE(form->isVisible());
    EXPECT_EQ(form->palette().color(QPalette::Window).rgb() & 0xFFFFFF, 0xC0C0C0u);
    EXPECT_EQ(platform->clientWidth() * 15, 6600);
    EXPECT_EQ(platform->clientHeight() * 15, 5205);
    EXPECT_EQ(form->label1()->geometry(), QRect(1, 32, 439, 20));
    EXPECT_TRUE(form->label1()->text().isEmpty());
    EXPECT_EQ(form->label1()->alignment(), Qt::AlignCenter);
    EXPECT_EQ(form->label2()->text(), "Label2");
    EXPECT_TRUE(form->label2()->isHidden());
    EXPECT_EQ(form->image1()->geometry(), QRect(0, 56, 440, 272));
    EXPECT_EQ(form->timer1()->interval(), 100);
    EXPECT_TRUE(form->timer1()->isActive());
}

TEST_F(WindowTest, FirstStartAsksWithTheTimerOffAndYesRegisters) {
    bool timerDuringQuestion = true;
    platform->onMessage = [&](const ScriptedPlatform::Message&) { timerDuringQuestion = form->timer1()->isActive(); };
    platform->answers.push_back(Answer::Yes);
    form->load();

    ASSERT_EQ(platform->messages.size(), 1u);
    const auto& m = platform->messages[0];
    EXPECT_EQ(m.title, "Register Files");
    EXPECT_EQ(m.text, kQuestion);
    EXPECT_EQ(m.buttons, Buttons::YesNo);
    EXPECT_EQ(m.icon, Icon::None);
    EXPECT_FALSE(timerDuringQuestion);
    EXPECT_TRUE(std::filesystem::exists(data.path() / "mime/packages/velmoric.xml"));
    EXPECT_TRUE(std::filesystem::exists(data.path() / "applications/org.velmoric.Velmoric.desktop"));
    EXPECT_TRUE(std::filesystem::exists(std::string(std::getenv("XDG_CONFIG_HOME")) + "/mimeapps.list"));

    // The order of start-up: timer off, question, timer on, the seven options.
    const std::vector<std::string> expected = {
        "timer off",         "box Register Files", "timer on",           "read options/delay",
        "read options/save", "read options/size",  "read options/repeat", "read options/orientation",
        "read options/printscale", "read options/single"};
    EXPECT_EQ(platform->log, expected);
    EXPECT_EQ(viewer().saved, kTrue);
    EXPECT_EQ(viewer().nopicture, kTrue);
    EXPECT_EQ(viewer().stop, kTrue);
    EXPECT_EQ(viewer().kind, 1);
    EXPECT_EQ(viewer().badfile, 0);
    EXPECT_EQ(viewer().openmode, 0);
    EXPECT_FALSE(form->isVisible()) << "the window waits for the first tick";
    EXPECT_TRUE(form->timer1()->isActive());
}

TEST_F(WindowTest, NoWritesNothingAndTheNextStartAsksAgain) {
    platform->answers.push_back(Answer::No);
    form->load();
    ASSERT_EQ(platform->messages.size(), 1u);
    EXPECT_TRUE(std::filesystem::is_empty(data.path()));
    EXPECT_TRUE(std::filesystem::is_empty(std::getenv("XDG_CONFIG_HOME")));

    make();
    form->load();
    ASSERT_EQ(platform->messages.size(), 1u);
    EXPECT_EQ(platform->messages[0].title, "Register Files");
}

TEST_F(WindowTest, AKnownSpuGlobFromAnyProgramMeansNoQuestion) {
    knowSpuGlob();
    form->load();
    EXPECT_TRUE(platform->messages.empty());
    EXPECT_TRUE(std::filesystem::is_empty(data.path()));
}

TEST_F(WindowTest, OptionsAreReadFromTheStoreAndUnreadableValuesDefault) {
    writeSettings("[options]\ndelay=15\nsave=1\nsize=1\nrepeat=0\norientation=abc\nprintscale=70000\nsingle=-3\n");
    knowSpuGlob();
    form->load();
    const Options& o = viewer().options;
    EXPECT_EQ(o.delay, 15);
    EXPECT_EQ(o.save, 1);
    EXPECT_EQ(o.size, 1);
    EXPECT_EQ(o.repeat, 0);
    EXPECT_EQ(o.orientation, 1);
    EXPECT_EQ(o.printscale, 100);
    EXPECT_EQ(o.single, -3);
}

TEST_F(WindowTest, QuitWritesTheOptionsAsDecimalTextInOrder) {
    loadAndShow();
    viewer().options.printscale = 55;
    platform->log.clear();
    EXPECT_TRUE(form->close());
    const std::vector<std::string> expected = {
        "write options/delay=2",       "write options/save=0",          "write options/size=0",
        "write options/repeat=1",      "write options/orientation=1",   "write options/printscale=55",
        "write options/single=0"};
    EXPECT_EQ(platform->log, expected);
    const std::string text = readText(settingsFile());
    EXPECT_NE(text.find("[options]"), std::string::npos) << text;
    EXPECT_NE(text.find("printscale=55"), std::string::npos) << text;
    EXPECT_FALSE(form->isVisible());
}

struct QuitCase {
    int save;
    std::int16_t savedFlag;
    Answer answer;
    bool warned, closes;
};

class QuitWarning : public WindowTest, public ::testing::WithParamInterface<QuitCase> {};

TEST_P(QuitWarning, OnlyForAnUnsavedPictureWhenSaveIsExactlyOne) {
    const QuitCase c = GetParam();
    loadAndShow();
    viewer().options.save = std::int16_t(c.save);
    viewer().saved = c.savedFlag;
    platform->answers.push_back(c.answer);
    const bool closed = form->close();
    EXPECT_EQ(closed, c.closes);
    EXPECT_EQ(form->isVisible(), !c.closes);
    ASSERT_EQ(platform->messages.size(), c.warned ? 1u : 0u);
    if (c.warned) {
        EXPECT_EQ(platform->messages[0].text, "Picture has not been saved do you wish to quit?");
        EXPECT_EQ(platform->messages[0].title, "Warning.");
        EXPECT_EQ(platform->messages[0].buttons, Buttons::YesNo);
        EXPECT_EQ(platform->messages[0].icon, Icon::Question);
    }
    EXPECT_TRUE(std::filesystem::exists(settingsFile())) << "written whether the quit goes on or not";
}

INSTANTIATE_TEST_SUITE_P(Cases, QuitWarning,
                         ::testing::Values(QuitCase{1, kFalse, Answer::No, true, false},
                                           QuitCase{1, kFalse, Answer::Yes, true, true},
                                           QuitCase{0, kFalse, Answer::No, false, true},
                                           QuitCase{1, kTrue, Answer::No, false, true},
                                           QuitCase{2, kFalse, Answer::No, false, true},
                                           QuitCase{-1, kFalse, Answer::No, false, true}),
                         [](const ::testing::TestParamInfo<QuitCase>& info) {
                             const QuitCase& c = info.param;
                             return "save" + std::string(c.save < 0 ? "Minus" : "") + std::to_string(std::abs(c.save)) +
                                    (c.savedFlag ? "Saved" : "Unsaved") + (c.answer == Answer::Yes ? "Yes" : "No");
                         });

}  // namespace
