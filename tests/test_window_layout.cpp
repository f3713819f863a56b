// Form_Resize's arithmetic on the headless window model, where each change
// of the outer size sets off a nested run at once: free mode reached from a
// window too low and too high. The real window's sizes by kind, mode and
// window state are tested on the widgets.
#include <functional>

#include "platform/headless.h"
#include "shell/viewer.h"
#include "support.h"

using namespace velmoric;

namespace {

TEST(Layout, FreeModeAreaIsTheWholePartOfWidthTimesRatioFromEitherSide) {
    HeadlessPlatform ui;
    Viewer v{ui};
    ui.registeredExtensions.insert("spu");
    v.Form_Load();
    int runs = 0, depth = 0;
    const std::function<void()> run = [&] {
        ++runs;
        ASSERT_LT(++depth, 10) << "the nested runs must end";
        v.Form_Resize();
        --depth;
    };
    ui.onResize = run;
    v.options.size = 0;
    const std::pair<std::int16_t, double> kinds[] = {{1, 0.625}, {2, 0.625}, {3, 0.625}, {4, 1.25}};
    for (const auto& [kind, ratio] : kinds)
        for (int width : {240, 333, 339, 641})
            for (int startHeight : {1500, 20000}) {
                SCOPED_TRACE(testing::Message() << "kind " << kind << " width " << width << " from " << startHeight);
                ui.outerW = (width + ui.frameW) * 15;
                ui.outerH = startHeight;
                v.kind = kind;
                run();
                const int area = ui.clientHeight() - ui.imageTopPx;
                EXPECT_EQ(std::make_tuple(ui.clientWidth(), ui.imageW, area, ui.imageH),
                          std::make_tuple(width, width, int(width * ratio), area));
                runs = 0;
                run();
                EXPECT_EQ(runs, 1) << "a layout that is met sets nothing off";
            }
}

}  // namespace
