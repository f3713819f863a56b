// Files from outside: the first tick of Timer1 between copies of the
// program, commands from a later copy and drops on Image1, with headless
// copies on one bus.
#include <filesystem>

#include "platform/headless.h"
#include "shell/viewer.h"
#include "support.h"

using namespace velmoric;

namespace {

// One copy of the program: its platform and its window's core, started up.
struct Copy {
    HeadlessPlatform ui;
    Viewer v{ui};
    Copy(const std::shared_ptr<HeadlessBus>& bus, const std::string& commandLine, int single, const std::string& folder) {
        ui.bus = bus;
        ui.commandLineText = commandLine;
        ui.setProgramFolder(folder);
        ui.registeredExtensions.insert("spu");
        v.Form_Load();
        v.options.single = std::int16_t(single);
    }
};

struct HandoverTest : ::testing::Test {
    vtest::TempDir dir;
    std::shared_ptr<HeadlessBus> bus = std::make_shared<HeadlessBus>();

    std::string picture(const std::string& name, std::uint32_t seed = 1) {
        const std::string path = dir.file(name);
        vtest::writeFile(path, vtest::randomBytes(32128, seed));
        return path;
    }
    std::unique_ptr<Copy> start(const std::string& commandLine, int single = 0) {
        auto copy = std::make_unique<Copy>(bus, commandLine, single, dir.path().string());
        copy->v.Timer1_Timer();
        return copy;
    }
};

TEST_F(HandoverTest, FirstTickByOptionAndEarlierCopy) {
    struct Row {
        const char* what;
        int firstSingle, secondSingle;
        bool firstAnswers;
        bool secondEnds;
        const char* firstTopic;
        const char* secondTopic;
    };
    const Row rows[] = {
        {"one copy takes all", 0, 0, true, true, "cmdLine", "Form1"},
        {"each start its own copy", 1, 1, true, false, "Form1", "Form1"},
        {"first copy on its own, second asks", 1, 0, true, false, "Form1", "cmdLine"},
        {"second copy on its own", 0, 1, true, false, "cmdLine", "Form1"},
        {"first copy does not answer", 0, 0, false, false, "cmdLine", "cmdLine"},
    };
    for (const Row& r : rows) {
        bus = std::make_shared<HeadlessBus>();
        const std::string second = picture("second.neo", 2);
        auto first = start("", r.firstSingle);
        first->ui.answering = r.firstAnswers;
        auto copy = start(second, r.secondSingle);
        first->ui.runEvents();

        EXPECT_TRUE(first->ui.shown) << r.what;
        EXPECT_EQ(copy->ui.ended, r.secondEnds) << r.what;
        EXPECT_EQ(copy->ui.shown, !r.secondEnds) << r.what;
        EXPECT_EQ(first->ui.linkTopic, r.firstTopic) << r.what;
        EXPECT_EQ(copy->ui.linkTopic, r.secondTopic) << r.what;
        EXPECT_EQ(bus->owner == &first->ui, r.firstSingle == 0) << r.what;
        // The file ends up in exactly one window.
        EXPECT_EQ(first->ui.label.starts_with("SECOND.NEO  "), r.secondEnds) << r.what;
        EXPECT_EQ(copy->ui.label.starts_with("SECOND.NEO  "), !r.secondEnds) << r.what;
        EXPECT_EQ(copy->ui.sent.size(), r.secondSingle == 0 && r.firstSingle == 0 ? 1u : 0u) << r.what;
        if (r.secondEnds) {
            EXPECT_EQ(copy->ui.sent[0], second) << r.what;
            EXPECT_TRUE(copy->ui.settingsWritten.empty()) << "no option written: " << r.what;
            EXPECT_TRUE(copy->ui.timerEnabled) << "the copy ends before it switches its timer off";
        }
    }
}

TEST_F(HandoverTest, WithoutABusEveryCopyRunsAlone) {
    bus = nullptr;
    auto first = start("");
    auto second = start(picture("a.neo"));
    EXPECT_TRUE(first->ui.shown);
    EXPECT_TRUE(second->ui.shown);
    EXPECT_FALSE(second->ui.ended);
    EXPECT_EQ(second->ui.label.substr(0, 7), "A.NEO  ");
}

TEST_F(HandoverTest, CommandsAreNamesAsTheyStand) {
    auto first = start("");
    const std::string name = picture("x.neo");
    struct Row {
        std::string command;
        std::string labelStart;    // "" for no change
        std::string boxStart;      // "" for no box
    };
    const Row rows[] = {
        {name, "X.NEO  ", ""},
        // Trailing text is not cut off: the name with it reaches the
        // decoder, and its last three characters are the extension.
        {name + " /x", "", " /x##Sorry a file error has occured."},
        {"", "", ""},
    };
    for (const Row& r : rows) {
        first->ui.messages.clear();
        const std::string before = first->ui.label;
        auto later = start(r.command);
        EXPECT_TRUE(later->ui.ended);
        first->ui.runEvents();
        EXPECT_EQ(first->v.openmode, 0);
        if (r.labelStart.empty())
            EXPECT_EQ(first->ui.label, before) << r.command;
        else
            EXPECT_TRUE(first->ui.label.starts_with(r.labelStart)) << first->ui.label;
        if (r.boxStart.empty()) {
            EXPECT_TRUE(first->ui.messages.empty()) << r.command;
        } else {
            ASSERT_EQ(first->ui.messages.size(), 1u);
            EXPECT_TRUE(first->ui.messages[0].text.starts_with(r.boxStart)) << first->ui.messages[0].text;
            EXPECT_EQ(first->ui.fileName(), r.command);
        }
    }
}

TEST_F(HandoverTest, TenCopiesAtOnceLeaveOneWindowWithAllCommands) {
    std::vector<std::unique_ptr<Copy>> copies;
    for (int i = 0; i < 10; ++i)
        copies.push_back(std::make_unique<Copy>(bus, "file" + std::to_string(i) + ".neo", 0, dir.path().string()));
    for (auto& c : copies) c->v.Timer1_Timer();
    int shown = 0;
    for (auto& c : copies) shown += c->ui.shown;
    EXPECT_EQ(shown, 1);
    const std::deque<std::string>& incoming = copies[0]->ui.incoming;
    ASSERT_EQ(incoming.size(), 9u);
    for (int i = 1; i < 10; ++i) EXPECT_EQ(incoming[std::size_t(i - 1)], "file" + std::to_string(i) + ".neo");
}

TEST_F(HandoverTest, ACopyThatIsGoneLeavesTheChannelFree) {
    auto first = start("");
    first.reset();  // killed: its hold on the channel goes with it
    auto next = start("");
    EXPECT_TRUE(next->ui.shown);
    EXPECT_EQ(bus->owner, &next->ui);
}

// The outer open has taken its extension already; the decoder then reads
// the name that the command left, and the caption names that file.
TEST_F(HandoverTest, ACommandInsideAYieldOpensItsFileWithinTheRunningOpen) {
    const std::string outer = picture("outer.neo", 3), inner = picture("inner.neo", 4);
    auto first = std::make_unique<Copy>(bus, outer, 0, dir.path().string());
    int yieldsSeen = 0;
    first->ui.onYield = [&] {
        if (++yieldsSeen == 1) first->ui.incoming.push_back(inner);
    };
    first->v.Timer1_Timer();
    EXPECT_TRUE(first->ui.label.starts_with("INNER.NEO  ")) << first->ui.label;
    auto s = vtest::freshStaging();
    EXPECT_EQ(first->ui.image.bytes(), vtest::bytesOf(vtest::decodeAs(*s, vtest::readFile(inner), "NEO").bitmap));
    EXPECT_EQ(first->ui.yields, 4) << "two yields of each open";
    EXPECT_EQ(first->v.openmode, 0);
    EXPECT_TRUE(first->ui.allCommandsEnabled());
}

TEST_F(HandoverTest, DropsOpenTheFirstFileOfAList) {
    auto copy = start("");
    const std::string a = picture("a.neo", 5), b = picture("b.neo", 6);
    copy->v.Image1_OLEDragDrop({});
    EXPECT_EQ(copy->ui.label, "");
    copy->v.Image1_OLEDragDrop({a, b, dir.file("c.neo")});
    EXPECT_TRUE(copy->ui.label.starts_with("A.NEO  "));
    EXPECT_EQ(copy->v.openmode, 0);

    struct Row {
        bool files;
        int effect, allowed;
    };
    for (const Row r : {Row{true, 7, 1}, Row{true, 2, 0}, Row{false, 7, 0}, Row{false, 1, 0}})
        EXPECT_EQ(Viewer::Image1_OLEDragOver(r.files, r.effect), r.allowed) << r.files << " " << r.effect;
}

TEST_F(HandoverTest, NativeModeIsToldToThePicture) {
    auto copy = start("");
    for (int size : {1, 0, 2, 1}) {
        copy->v.options.size = std::int16_t(size);
        copy->v.Form_Resize();
        EXPECT_EQ(copy->ui.imageNative, size == 1) << size;
    }
}

}  // namespace
