// Form_Resize's arithmetic on the headless window model: the nested runs
// that each change of the outer size sets off, and free mode reached from
// a window too low and too high. The real window's sizes by kind, mode and
// window state are tested on the widgets.
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

}  // namespace
