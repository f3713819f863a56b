// The first tick of Timer1 between copies of the program and commands from a
// later copy, with headless copies on one bus. Real copies on a real bus,
// several at once, killed ones and drops are in the process and window tests.
#include "platform/headless.h"
#include "shell/viewer.h"
#include "support.h"

using namespace velmoric;

namespace {

// One copy of the program: its platform and its window's core.
struct Copy { HeadlessPlatform ui; Viewer v{ui}; };

struct HandoverTest : ::testing::Test {
    vtest::TempDir dir;
    std::shared_ptr<HeadlessBus> bus = std::make_shared<HeadlessBus>();

    std::string picture(const std::string& name, std::uint32_t seed) { return dir.random(name, 32128, seed); }
    // A copy after Form_Load; `tick` runs the first tick of its timer.
    std::unique_ptr<Copy> start(const std::string& commandLine, int single = 0, bool tick = true) {
        auto copy = std::make_unique<Copy>();
        copy->ui.bus = bus;
        copy->ui.commandLineText = commandLine;
        copy->ui.setProgramFolder(dir.path().string());
        copy->ui.registeredExtensions.insert("spu");
        copy->v.Form_Load();
        copy->v.options.single = std::int16_t(single);
        if (tick) copy->v.Timer1_Timer();
        return copy;
    }
};

TEST_F(HandoverTest, FirstTickByOptionAndEarlierCopy) {
    // The topics: the first copy's, then the second's.
    struct Row { const char* what; int firstSingle, secondSingle; bool firstAnswers, secondEnds; const char* topics; };
    const Row rows[] = {
        {"one copy takes all", 0, 0, true, true, "cmdLine Form1"},
        {"each start its own copy", 1, 1, true, false, "Form1 Form1"},
        {"first copy on its own, second asks", 1, 0, true, false, "Form1 cmdLine"},
        {"second copy on its own", 0, 1, true, false, "cmdLine Form1"},
        {"first copy does not answer", 0, 0, false, false, "cmdLine cmdLine"}};
    for (const auto& r : rows) {
        SCOPED_TRACE(r.what);
        bus = std::make_shared<HeadlessBus>();
        const std::string second = picture("second.neo", 2);
        auto first = start("", r.firstSingle);
        first->ui.answering = r.firstAnswers;
        auto copy = start(second, r.secondSingle);
        first->ui.runEvents();

        EXPECT_EQ(copy->ui.ended, r.secondEnds);
        EXPECT_EQ(copy->ui.shown, !r.secondEnds);
        EXPECT_EQ(first->ui.linkTopic + " " + copy->ui.linkTopic, r.topics);
        EXPECT_EQ(bus->owner == &first->ui, r.firstSingle == 0);
        EXPECT_TRUE((r.secondEnds ? first : copy)->ui.label.starts_with("SECOND.NEO  ")) << "the window with it";
        const bool asks = r.firstSingle == 0 && r.secondSingle == 0;
        EXPECT_EQ(copy->ui.sent, asks ? std::vector{second} : std::vector<std::string>{});
        if (r.secondEnds) {
            EXPECT_TRUE(copy->ui.settingsWritten.empty()) << "no option written";
            EXPECT_TRUE(copy->ui.timerEnabled) << "the copy ends before it switches its timer off";
        }
    }
}

// A name relative to the second copy's working folder reaches the first
// made absolute against it, with what follows the name unchanged.
TEST_F(HandoverTest, ARelativeNameGoesOverAbsolute) {
    const std::string pic = picture("pic.neo", 5), before = std::filesystem::current_path();
    std::filesystem::current_path(dir.path());
    for (const auto& [line, sent] : {std::pair{std::string("pic.neo"), pic}, {"pic.neo /x", pic + " /x"},
                                     {"./pic.neo", dir.file("./pic.neo")}, {pic, pic}, {"", ""}}) {
        bus = std::make_shared<HeadlessBus>();
        auto first = start(""), copy = start(line);
        EXPECT_EQ(first->ui.incoming, std::deque{sent}) << line;
    }
    std::filesystem::current_path(before);
}

// The outer open has taken its extension already; the decoder then reads
// the name that the command left, and the caption names that file.
TEST_F(HandoverTest, ACommandInsideAYieldOpensItsFileWithinTheRunningOpen) {
    const std::string outer = picture("outer.neo", 3), inner = picture("inner.neo", 4);
    auto first = start(outer, 0, false);
    first->ui.onYield = [&] { if (first->ui.yields == 1) first->ui.incoming.push_back(inner); };
    first->v.Timer1_Timer();
    EXPECT_TRUE(first->ui.label.starts_with("INNER.NEO  ")) << first->ui.label;
    EXPECT_EQ(first->ui.image.bytes(), vtest::decodeFresh(vtest::readFile(inner), "NEO"));
    EXPECT_EQ(first->ui.yields, 4) << "two yields of each open";
    EXPECT_EQ(first->v.openmode, 0);
    EXPECT_TRUE(first->ui.allCommandsEnabled());
}

}  // namespace
