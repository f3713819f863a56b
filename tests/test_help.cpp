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
    struct Row { const char* title; int dashes; const char* sentence; };
    const Row rows[] = {
        {"Introduction.", 13, "Thanks for using the Velmoric picture viewer. I have produced this program to "
                              "enable easy viewing of these files on the PC."},
        {"Contents.", 9, "Contact.         Page 10"},
        {"File Menu.", 9, "Save as.   Save the current picture as a Windows"},
        {"Edit Menu.", 9, "Copy.        Copies the current picture to the"},
        {"Tool Menu.", 9, "Click  anywhere on the picture to stop"},
        {"Help Menu.", 9, "Help pages.  Your here. These help pages."},
        {"Options Window.", 15, "Medium resolution pictures will be"},
        {"Misc.", 4, "The program supports file association, so clicking on a supported picture file in the "
                     "file manager will start Velmoric and display the picture."},
        {"More Misc.", 9, "copyright"}, {"Contact.", 8, "issue tracker"}};
    for (int n = 1; n <= 10; ++n) {
        const Row& r = rows[n - 1];
        const std::string& p = h.pages[std::size_t(n)];
        EXPECT_EQ(p.rfind(std::string(r.title) + "\r\n" + std::string(std::size_t(r.dashes), '-') + "\r\n", 0), 0u)
            << "page " << n;
        EXPECT_NE(p.find(r.sentence), std::string::npos) << "page " << n;
        for (std::size_t i = 1; i < p.size(); ++i) EXPECT_EQ(p[i] == '\n', p[i - 1] == '\r') << "page " << n;
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
    const M rz{{{cz, -sz, 0}, {sz, cz, 0}, {0, 0, 1}}}, rx{{{1, 0, 0}, {0, cx, -sx}, {0, sx, cx}}};
    const M ry{{{cy, 0, -sy}, {0, 1, 0}, {sy, 0, cy}}};
    M m{};
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            for (int k = 0; k < 3; ++k)
                for (int l = 0; l < 3; ++l) m[i][j] += rz[i][k] * rx[k][l] * ry[l][j];
    L q[3] = {};
    for (int i = 0; i < 3; ++i) q[i] = m[i][0] * p[0] + m[i][1] * p[1] + m[i][2] * p[2];
    return {float(5000 * q[0] / (q[2] + 6000) + 3247), float(1807 - 5000 * q[1] / (q[2] + 6000))};
}

// Both end points of every line, as drawn, against the matrix to the twip.
void expectFrameMatches(const HelpWindow& w, const std::string& pose) {
    for (std::size_t i = 0; i < kModelLineCount; ++i) {
        const ModelLine& m = wireModel()[i];
        const float from[3] = {m.x1, m.y1, m.z1}, to[3] = {m.x2, m.y2, m.z2};
        for (const auto& [p, placed] : {std::pair{from, w.picture1[i].from}, {to, w.picture1[i].to}}) {
            const PlacedPoint want = expectedPoint(p, w);
            EXPECT_NEAR(placed.left, want.left, 0.5) << pose << ", line " << i;
            EXPECT_NEAR(placed.top, want.top, 0.5) << pose << ", line " << i;
        }
    }
}

TEST_F(HelpTest, PosesReachedByTicksMatchTheMatrix) {
    // Pairs of a button's number and the ticks it is held for.
    const std::vector<std::vector<std::pair<int, int>>> poses = {
        {},                           // at rest
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

// A press between two ticks changes nothing. An angle falling from 0 becomes
// a full turn on the first tick; one rising comes back to exactly 0 after 48
// steps of 7.5 degrees, the rounding of 47 steps leaving the 48th a hair past
// a full turn, and never reaches a full turn.
TEST_F(HelpTest, OnlyTicksTurnTheModelAndTheAnglesWrapAtAFullTurn) {
    h.Image1_Click();
    const auto atRest = h.picture1;
    hold(6, 0);
    EXPECT_EQ(h.frames, 1);
    EXPECT_EQ(h.anglex, 0.0f);
    EXPECT_EQ(std::memcmp(&atRest, &h.picture1, sizeof atRest), 0);
    hold(4, 1);
    EXPECT_EQ(h.anglez, 6.2831855f);
    h.Command_MouseDown(6);
    for (int tick = 1; tick <= 48; ++tick) {
        h.Timer1_Timer();
        ASSERT_LT(h.anglex, 6.2831855f) << tick;
        EXPECT_EQ(h.anglex == 0.0f, tick == 48) << tick;
    }
}

}  // namespace
