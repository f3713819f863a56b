// Form_Resize's arithmetic on the headless window model, with the nested
// runs that each change of the outer size sets off.
#include "platform/headless.h"
#include "shell/viewer.h"
#include "support.h"

using namespace velmoric;

namespace {

struct LayoutTest : ::testing::Test {
    HeadlessPlatform ui;
    Viewer v{ui};
    int runs = 0, depth = 0, deepest = 0;

    void SetUp() override {
        ui.registeredExtensions.insert("spu");
        v.Form_Load();
        // A change of the outer size reports a resize at once, as a window does.
        ui.onResize = [this] { run(); };
    }
    void run() {
        ++runs;
        ++depth;
        deepest = std::max(deepest, depth);
        ASSERT_LT(depth, 10) << "the nested runs must end";
        v.Form_Resize();
        --depth;
    }
    void layOut(int kind, int size) {
        v.kind = std::int16_t(kind);
        v.options.size = std::int16_t(size);
        run();
    }
    void setClientWidth(int width) {
        ui.outerW = (width + ui.frameW) * 15;
    }
    int area() { return ui.clientHeight() - ui.imageTopPx; }
};

struct Kind {
    int kind, width, height;
    double freeRatio;
};
const Kind kKinds[] = {{1, 320, 200, 0.625}, {2, 640, 200, 0.625}, {3, 640, 400, 0.625}, {4, 576, 720, 1.25}};

TEST_F(LayoutTest, NativeModeMeetsTheNativeSizeFromAnySize) {
    for (const Kind& k : kKinds)
        for (int width : {200, 321, 1000}) {
            setClientWidth(width);
            ui.outerH = 9000;
            layOut(k.kind, 1);
            EXPECT_EQ(ui.clientWidth(), k.width) << k.kind;
            EXPECT_EQ(area(), k.height) << k.kind;
            EXPECT_EQ(ui.imageW, k.width);
            EXPECT_EQ(ui.imageH, k.height);
            EXPECT_EQ(ui.labelW, k.width);
        }
}

TEST_F(LayoutTest, FreeModeAreaIsTheWholePartOfWidthTimesRatioFromEitherSide) {
    for (const Kind& k : kKinds)
        for (int width : {240, 333, 339, 641})
            for (int startHeight : {1500, 20000}) {
                setClientWidth(width);
                ui.outerH = startHeight;
                layOut(k.kind, 0);
                EXPECT_EQ(ui.clientWidth(), width);
                EXPECT_EQ(area(), int(width * k.freeRatio)) << k.kind << " " << width << " from " << startHeight;
                EXPECT_EQ(ui.imageH, area());
                EXPECT_EQ(ui.imageW, width);
            }
}

TEST_F(LayoutTest, NestedRunsFindNothingLeftToDo) {
    setClientWidth(500);
    layOut(3, 1);
    // The width sets off a run that fixes the height, whose own run finds
    // everything met; the outer run then finds D at 0 and writes nothing new.
    EXPECT_EQ(runs, 3);
    EXPECT_EQ(deepest, 3);
    runs = 0;
    layOut(3, 1);
    EXPECT_EQ(runs, 1) << "a layout that is met writes the same values and sets off nothing";
}

TEST_F(LayoutTest, FreeModeMinimumOuterWidth) {
    for (int twips : {3000, 3585, 3600, 3615}) {
        ui.outerW = twips;
        layOut(1, 0);
        EXPECT_EQ(ui.outerW, std::max(3600, twips));
    }
    ui.outerW = 3000;
    layOut(1, 1);
    EXPECT_EQ(ui.clientWidth(), 320) << "native mode has no minimum";
}

TEST_F(LayoutTest, MaximisedNativeSetsOnlyTheImage) {
    ui.state = WindowState::Maximised;
    ui.outerW = 15000;
    ui.outerH = 12000;
    layOut(2, 1);
    EXPECT_EQ(ui.outerW, 15000);
    EXPECT_EQ(ui.outerH, 12000);
    EXPECT_EQ(ui.imageW, 640);
    EXPECT_EQ(ui.imageH, 200);
    EXPECT_EQ(ui.labelW, ui.clientWidth());

    layOut(2, 0);
    EXPECT_EQ(ui.imageW, ui.clientWidth());
    EXPECT_EQ(ui.imageH, area());
}

TEST_F(LayoutTest, MinimisedChangesNothing) {
    ui.state = WindowState::Minimised;
    const int w = ui.outerW, h = ui.outerH, iw = ui.imageW, ih = ui.imageH, lw = ui.labelW;
    for (int size : {0, 1}) layOut(4, size);
    EXPECT_EQ(ui.outerW, w);
    EXPECT_EQ(ui.outerH, h);
    EXPECT_EQ(ui.imageW, iw);
    EXPECT_EQ(ui.imageH, ih);
    EXPECT_EQ(ui.labelW, lw);
}

TEST_F(LayoutTest, TheOptionsCommandLaysOutWithoutADialog) {
    setClientWidth(500);
    layOut(1, 0);
    v.options.size = 1;
    v.toolbarClick("pref");
    EXPECT_EQ(ui.clientWidth(), 320);
}

}  // namespace
