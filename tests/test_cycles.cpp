// Colour cycles: the channels read from each format's bytes, the way a step
// moves the palette, and the frames of one period.
#include "support.h"
#include "cycles/cycles.h"

namespace {

using namespace velmoric;
using cycles::Channel;
using cycles::Direction;
using vtest::Bytes;

std::string describe(const std::vector<Channel>& channels) {
    std::string out;
    for (const Channel& c : channels)
        out += std::to_string(c.left) + ".." + std::to_string(c.right) +
               (c.direction == Direction::left ? " L" : " R") + std::to_string(c.ticks) + ";";
    return out;
}

void putBig16(Bytes& b, std::size_t at, int v) {
    b[at] = std::uint8_t(v >> 8);
    b[at + 1] = std::uint8_t(v);
}

// A Degas Elite block of up to four channels: left, right, direction
// (0 left, 1 off, 2 right) and ticks, kept as 128 - ticks.
Bytes withDegasBlock(Bytes file, std::size_t at, std::vector<std::array<int, 4>> channels) {
    file.resize(std::max(file.size(), at + 32));
    for (std::size_t c = 0; c < channels.size(); ++c)
        for (std::size_t field = 0; field < 4; ++field)
            putBig16(file, at + 8 * field + 2 * c, field == 3 ? 128 - channels[c][3] : channels[c][field]);
    return file;
}

Bytes neochrome(int rangeWord, int speedWord) {
    Bytes b(32128);
    putBig16(b, 48, rangeWord);
    putBig16(b, 50, speedWord);
    return b;
}

// A PC1 whose 800 plane rows are each one run of 40 zeros: the screen ends
// at 34 + 1600.
Bytes packedLowScreen() {
    Bytes b(34);
    for (int i = 0; i < 800; ++i) b.insert(b.end(), {217, 0});
    return b;
}

Bytes tinyHeader(std::uint8_t first, std::uint8_t range, std::uint8_t speed) {
    Bytes b = {first, range, speed};
    b.resize(200);
    return b;
}

TEST(Cycles, ChannelsReadFromEachFormatsBytes) {
    struct Row { const char* what; Bytes file; const char* ext; const char* want; };
    const Bytes pi1(32034), pi2(32034), pi3(32034);
    const Bytes block = withDegasBlock(packedLowScreen(), 1634, {{2, 5, 2, 6}});
    const Bytes cutShort(block.begin(), block.end() - 1);
    const Row rows[] = {
        {"neochrome left", neochrome(0x8000 | 0x1E, 0x8000 | 0xFD), "NEO", "1..14 L3;"},
        {"neochrome right", neochrome(0x8000 | 0x0F, 0x8000 | 0x05), "NEO", "0..15 R5;"},
        {"neochrome junk in bits 8-14", neochrome(0xFF00 | 0x2A, 0xFF00 | 0x02), "NEO", "2..10 R2;"},
        {"neochrome speed 0", neochrome(0x8000 | 0x0F, 0x8000), "NEO", ""},
        {"neochrome not valid", neochrome(0x0F, 0x8000 | 0x05), "NEO", ""},
        {"neochrome not on", neochrome(0x8000 | 0x0F, 0x05), "NEO", ""},
        {"neochrome reversed range", neochrome(0x8000 | 0xF0, 0x8000 | 0x05), "NEO", ""},
        {"degas four channels in order", withDegasBlock(pi1, 32034, {{0, 3, 0, 1}, {4, 7, 2, 128}, {8, 9, 1, 4},
                                                                     {10, 15, 2, 9}}),
         "PI1", "0..3 L1;4..7 R128;10..15 R9;"},
        {"degas all zero block plays nothing", withDegasBlock(pi1, 32034, {}), "PI1", ""},
        {"degas file without the block", pi1, "PI1", ""},
        {"degas delay out of range", withDegasBlock(pi1, 32034, {{0, 3, 0, 0}, {0, 3, 0, 129}}), "PI1", ""},
        {"degas direction other than 0 or 2", withDegasBlock(pi1, 32034, {{0, 3, 3, 4}}), "PI1", ""},
        {"medium: a range past 4 colours", withDegasBlock(pi2, 32034, {{0, 4, 0, 2}, {1, 3, 2, 2}}), "PI2", "1..3 R2;"},
        {"high: a range past 2 colours", withDegasBlock(pi3, 32034, {{0, 2, 0, 2}, {0, 1, 2, 2}}), "PI3", "0..1 R2;"},
        {"compressed: block behind the screen", block, "PC1", "2..5 R6;"},
        {"compressed: file ends with its screen", packedLowScreen(), "PC1", ""},
        {"compressed: block cut short", cutShort, "PC1", ""},
        {"tiny with cycles", tinyHeader(3, 0x4E, -54 & 0xFF), "TNY", "4..14 L54;"},
        {"tiny medium, range inside 4", tinyHeader(4, 0x03, 7), "TN2", "0..3 R7;"},
        {"tiny without cycles", tinyHeader(0, 0x4E, 5), "TN1", ""},
        {"tiny speed 0", tinyHeader(3, 0x4E, 0), "TNY", ""},
        {"spectrum has none", neochrome(0x8000 | 0x0F, 0x8000 | 0x05), "SPU", ""}};
    for (const Row& r : rows) {
        const Decoded decoded = vtest::decodeAs(*vtest::freshStaging(), r.file, r.ext);
        const auto channels = cycles::readChannels(*findFormat(r.ext), Source{r.file, r.file.size()}, decoded);
        EXPECT_EQ(describe(channels), r.want) << r.what;
    }
}

cycles::Palette numbered(int n) {
    cycles::Palette p(std::size_t(n), cycles::Colour{});
    for (int i = 0; i < n; ++i) p[std::size_t(i)][0] = std::uint8_t(i);
    return p;
}

std::string order(const cycles::Palette& p) {
    std::string out;
    for (const auto& c : p) out += char('a' + c[0]);
    return out;
}

TEST(Cycles, StepsMoveOnlyTheRangeAndOverlappingChannelsApplyInOrder) {
    struct Row { std::vector<Channel> channels; long long tick; const char* want; };
    const Row rows[] = {
        {{{1, 4, Direction::left, 2}}, 1, "abcdefgh"}, {{{1, 4, Direction::left, 2}}, 2, "acdebfgh"},
        {{{1, 4, Direction::right, 2}}, 2, "aebcdfgh"}, {{{1, 4, Direction::right, 2}}, 8, "abcdefgh"},
        // Both step at tick 6: the second turns what the first left.
        {{{0, 3, Direction::left, 3}, {2, 5, Direction::right, 2}}, 6, "fedcbagh"},
        {{{0, 3, Direction::left, 3}, {2, 5, Direction::right, 2}}, 7, "fedcbagh"}};
    for (const Row& r : rows) {
        EXPECT_EQ(order(cycles::paletteAt(numbered(8), r.channels, r.tick)), r.want)
            << describe(r.channels) << " at " << r.tick;
    }
}

// The frames of a period are the palettes the rules give at the ticks each
// begins, every change shown once, and the period ends back at the start.
void expectFramesFollowTheSteps(const cycles::Palette& start, const std::vector<Channel>& channels,
                                const std::string& what) {
    const auto frames = cycles::framesOfPeriod(start, channels);
    ASSERT_FALSE(frames.empty()) << what;
    EXPECT_EQ(frames.front().palette, start) << what;
    long long tick = 0;
    for (std::size_t i = 0; i < frames.size(); ++i) {
        EXPECT_EQ(cycles::paletteAt(start, channels, tick), frames[i].palette) << what << " frame " << i;
        EXPECT_EQ(cycles::paletteAt(start, channels, tick + frames[i].ticks - 1), frames[i].palette) << what;
        if (i > 0) {
            EXPECT_NE(frames[i].palette, frames[i - 1].palette) << what << " frame " << i;
        }
        tick += frames[i].ticks;
    }
    if (frames.size() < cycles::kMaxFrames) {
        EXPECT_EQ(cycles::paletteAt(start, channels, tick), start) << what << " after " << tick;
    }
}

TEST(Cycles, FramesOfOnePeriod) {
    const auto start = numbered(16);
    expectFramesFollowTheSteps(start, {{0, 15, Direction::right, 3}}, "one channel");
    expectFramesFollowTheSteps(start, {{0, 3, Direction::left, 3}, {2, 5, Direction::right, 2}}, "overlapping");
    expectFramesFollowTheSteps(start, {{0, 1, Direction::left, 127}, {2, 15, Direction::right, 128},
                                       {3, 13, Direction::left, 125}}, "long period, cut off");
    EXPECT_EQ(cycles::framesOfPeriod(start, {}).size(), 1u);
    // A range of one colour never changes: one frame, however long the steps.
    const std::vector<Channel> grey{{0, 15, Direction::left, 2}};
    const auto frames = cycles::framesOfPeriod(cycles::Palette(16, cycles::Colour{}), grey);
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_EQ(frames[0].ticks, 32);
}

// The ten real pictures that carry cycles, and what they play.
TEST(Cycles, RealPicturesWithCycles) {
    const std::pair<const char*, const char*> rows[] = {
        {"neo/LOD_AUTOBIG2.NEO", "0..15 R3;"}, {"neo/LOD_AUTOBIG3.NEO", "0..15 R3;"},
        {"neo/LOD_FONT1_C.NEO", "1..14 L3;"},  {"neo/LOD_FONT1_D.NEO", "0..15 R3;"},
        {"neo/LOD_FONTM1_4.NEO", "1..14 L3;"}, {"neo/LOD_RIPPED.NEO", "0..1 R127;"},
        {"pc1/ELITE_TITLE.PC1", "8..11 R2;"},  {"pc1/LOGO.PC1", "7..11 L3;"},
        {"pc1/MAGICMTN.PC1", "9..15 R3;"},     {"pi1/00471.PI1", "11..14 R2;"}};
    if (!std::filesystem::exists(vtest::corpusDir())) GTEST_SKIP() << "no corpus";
    for (const auto& [name, want] : rows) {
        const Bytes file = vtest::readFile((vtest::corpusDir() / name).string());
        auto staging = vtest::freshStaging();
        const Format& format = *findFormat(extensionOf(name));
        const Decoded decoded = decodeWith(format, *staging, Source{file, file.size()});
        const auto animation = cycles::animationOf(format, Source{file, file.size()}, decoded);
        EXPECT_EQ(describe(animation.channels), want) << name;
        EXPECT_EQ(animation.frames[0].palette, cycles::paletteOf(decoded.bitmap)) << name;
    }
}

}  // namespace
