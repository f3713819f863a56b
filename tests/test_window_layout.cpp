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
    for (v.kind = 1; v.kind <= 4; ++v.kind)
        for (int width : {240, 333, 339, 641})
            for (int startHeight : {1500, 20000}) {
                ui.outerW = (width + ui.frameW) * 15;
                ui.outerH = startHeight;
                run();
                const int area = ui.clientHeight() - ui.imageTopPx;
                EXPECT_EQ(std::make_tuple(ui.clientWidth(), ui.imageW, area, ui.imageH),
                          std::make_tuple(width, width, int(width * (v.kind == 4 ? 1.25 : 0.625)), area))
                    << "kind " << v.kind << " width " << width << " from " << startHeight;
                runs = 0;
                run();
                EXPECT_EQ(runs, 1) << "a layout that is met sets nothing off";
            }
}

}  // namespace
