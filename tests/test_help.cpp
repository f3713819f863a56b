// The help window's rules without a window: the pages' text, and the wire
// model's placed end points against a separate computation with one composed
// rotation matrix in long double. The views are tested on the real window.
#include <cmath>
#include <cstring>

#include "help/helpwindow.h"
#include "support.h"

using namespace velmoric;

namespace {

struct HelpTest : ::testing::Test {
    HelpWindow h;
    void SetUp() override { h.Form_Load(); }
    // Holds a rotate button down for `ticks` ticks of Timer1.
    void hold(int number, int ticks) {
        h.Command_MouseDown(number);
        EXPECT_TRUE(h.timer1);
        for (int i = 0; i < ticks; ++i) h.Timer1_Timer();
        h.Command_MouseUp(number);
        EXPECT_FALSE(h.timer1);
    }
};

TEST_F(HelpTest, EveryPageHasItsTitleDashesAndSentences) {
    struct Row {
        const char* title;
        int dashes;
        const char* sentence;
    };
    const Row rows[] = {
        {"Introduction.", 13,
         "Thanks for using the Velmoric picture viewer. I have produced this program to enable easy viewing of "
         "these files on the PC."},
        {"Contents.", 9, "Contact.         Page 10"},
        {"File Menu.", 9, "Save as.   Save the current picture as a Windows"},
        {"Edit Menu.", 9, "Copy.        Copies the current picture to the"},
        {"Tool Menu.", 9, "Click  anywhere on the picture to stop"},
        {"Help Menu.", 9, "Help pages.  Your here. These help pages."},
        {"Options Window.", 15, "Medium resolution pictures will be"},
        {"Misc.", 4,
         "The program supports file association, so clicking on a supported picture file in the file manager will "
         "start Velmoric and display the picture."},
        {"More Misc.", 9, "copyright"},
        {"Contact.", 8, "issue tracker"},
    };
    for (int n = 1; n <= 10; ++n) {
        const Row& r = rows[n - 1];
        const std::string& p = h.pages[std::size_t(n)];
        EXPECT_EQ(p.rfind(std::string(r.title) + "\r\n" + std::string(std::size_t(r.dashes), '-') + "\r\n", 0), 0u)
            << "page " << n;
        EXPECT_NE(p.find(r.sentence), std::string::npos) << "page " << n;
        for (std::size_t i = 1; i < p.size(); ++i) EXPECT_EQ(p[i] == '\n', p[i - 1] == '\r') << "page " << n;
        // The contents name each page's title at its number.
        const std::string entry =
            r.title + std::string(17 - std::strlen(r.title), ' ') + "Page " + std::to_string(n);
        EXPECT_NE(h.pages[2].find(entry), std::string::npos) << entry;
    }
}

// ---- The wire model --------------------------------------------------------------------

// The placed end point by one matrix Rz * Rx * Ry, from the angles the
// window reached.
PlacedPoint expectedPoint(const float* p, const HelpWindow& w) {
    using L = long double;
    using M = std::array<std::array<L, 3>, 3>;
    const L sx = std::sin(L(w.anglex)), cx = std::cos(L(w.anglex)), sy = std::sin(L(w.angley));
    const L cy = std::cos(L(w.angley)), sz = std::sin(L(w.anglez)), cz = std::cos(L(w.anglez));
    auto mul = [](const M& a, const M& b) {
        M c{};
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 3; ++j)
                for (int k = 0; k < 3; ++k) c[i][j] += a[i][k] * b[k][j];
        return c;
    };
    const M m = mul(mul(M{{{cz, -sz, 0}, {sz, cz, 0}, {0, 0, 1}}}, M{{{1, 0, 0}, {0, cx, -sx}, {0, sx, cx}}}),
                    M{{{cy, 0, -sy}, {0, 1, 0}, {sy, 0, cy}}});
    L q[3] = {};
    for (int i = 0; i < 3; ++i) q[i] = m[i][0] * p[0] + m[i][1] * p[1] + m[i][2] * p[2];
    return {float(5000 * q[0] / (q[2] + 6000) + 3247), float(1807 - 5000 * q[1] / (q[2] + 6000))};
}

// Both end points of every line as the model stores them and as drawn.
template <typename Check>
void eachEnd(const HelpWindow& w, Check check) {
    for (int i = 0; i < kModelLineCount; ++i) {
        const ModelLine& m = wireModel()[std::size_t(i)];
        const float from[3] = {m.x1, m.y1, m.z1}, to[3] = {m.x2, m.y2, m.z2};
        check(from, w.picture1[std::size_t(i)].from, i);
        check(to, w.picture1[std::size_t(i)].to, i);
    }
}

void expectFrameMatches(const HelpWindow& w, const std::string& pose) {
    eachEnd(w, [&](const float* p, PlacedPoint placed, int line) {
        const PlacedPoint want = expectedPoint(p, w);
        EXPECT_NEAR(placed.left, want.left, 0.5) << pose << ", line " << line;
        EXPECT_NEAR(placed.top, want.top, 0.5) << pose << ", line " << line;
    });
}

TEST_F(HelpTest, AtRestTheModelStandsUprightInTheCentre) {
    h.Image1_Click();
    ASSERT_EQ(h.frames, 1);
    // With no turn the projection is a plain division, so every end point
    // is exact.
    eachEnd(h, [](const float* p, PlacedPoint placed, int line) {
        EXPECT_EQ(placed.left, float(5000.0 * p[0] / (double(p[2]) + 6000.0)) + 3247.0f) << line;
        EXPECT_EQ(placed.top, 1807.0f - float(5000.0 * p[1] / (double(p[2]) + 6000.0))) << line;
    });
    // The centre bar's top stands above the middle of the box, its foot below.
    EXPECT_LT(h.picture1[0].from.top, 1807.0f - 1000);
    EXPECT_GT(h.picture1[0].to.top, 1807.0f + 1000);
}

TEST_F(HelpTest, PosesReachedByTicksMatchTheMatrix) {
    // Pairs of a button's number and the ticks it is held for.
    const std::vector<std::vector<std::pair<int, int>>> poses = {
        {{3, 1}},                     // +X from 0: a full turn, the same pose
        {{6, 5}},                     // -X, 37.5 degrees
        {{2, 12}},                    // +Y, from 0 down to 277.5 degrees
        {{7, 30}},                    // -Z, 225 degrees
        {{6, 3}, {5, 9}, {4, 20}},    // all three axes
        {{5, 47}, {3, 60}, {7, 13}},  // past the wrap of each direction
    };
    for (std::size_t n = 0; n < poses.size(); ++n) {
        h.Image1_Click();
        for (auto [number, ticks] : poses[n]) hold(number, ticks);
        expectFrameMatches(h, "pose " + std::to_string(n));
    }
}

TEST_F(HelpTest, AnAngleFallingFromZeroBecomesAFullTurnAndTheFrameStays) {
    h.Image1_Click();
    h.Command_MouseDown(4);
    h.Timer1_Timer();
    EXPECT_EQ(h.anglez, 6.2831855f);
    EXPECT_EQ(h.frames, 2);
    eachEnd(h, [&](const float* p, PlacedPoint placed, int line) {
        const PlacedPoint rest = expectedPoint(p, HelpWindow{});
        EXPECT_EQ(std::lround(placed.left), std::lround(rest.left)) << line;
        EXPECT_EQ(std::lround(placed.top), std::lround(rest.top)) << line;
    });
}

TEST_F(HelpTest, ARisingAngleComesBackToExactlyZero) {
    h.Image1_Click();
    h.Command_MouseDown(6);
    int ticks = 0;
    do {
        h.Timer1_Timer();
        ++ticks;
        ASSERT_LT(h.anglex, kFullTurn);
    } while (h.anglex != 0.0f && ticks < 60);
    // The rounding of 47 steps leaves the 48th a hair past a full turn:
    // 48 ticks to the turn, as 7.5 degrees a step gives.
    EXPECT_EQ(ticks, 48);
}

TEST_F(HelpTest, APressBetweenTwoTicksChangesNothing) {
    h.Image1_Click();
    const auto atRest = h.picture1;
    h.Command_MouseDown(6);
    h.Command_MouseUp(6);
    EXPECT_FALSE(h.timer1);
    EXPECT_EQ(h.frames, 1);
    EXPECT_EQ(h.anglex, 0.0f);
    EXPECT_EQ(h.rotflags, kRiseX) << "the direction stays, the turn does not";
    EXPECT_EQ(std::memcmp(&atRest, &h.picture1, sizeof atRest), 0);
}

}  // namespace
