// The options dialog's arithmetic without a window: the preview's place on
// its sheet in 32-bit floats, whole twips, and the delay buttons. What the
// dialog shows and stores is tested on the real dialog.
#include <cmath>

#include "options/optionsdialog.h"
#include "support.h"

using namespace velmoric;

namespace {

TEST(OptionsPreview, AgreesWithFloatArithmeticForEveryScaleAndOrientation) {
    for (int height : {kPortraitSheetHeight, kLandscapeSheetHeight})
        for (int scale = 5; scale <= 100; ++scale) {
            const float w = 1325.0f, h = float(height);
            const float iw = float(scale) * w / 100.0f, ih = 0.625f * iw;
            // nearbyint rounds halves to even in the default rounding mode.
            const PreviewPlace expected{int(std::nearbyint((w - iw) / 2.0f)), int(std::nearbyint((h - ih) / 2.0f)),
                                        int(std::nearbyint(iw)), int(std::nearbyint(ih))};
            EXPECT_EQ(previewPlace(scale, kSheetWidth, height), expected) << scale << " on " << height;
        }
    EXPECT_EQ(previewPlace(100, 1325, 1875), (PreviewPlace{0, 523, 1325, 828}));
    EXPECT_EQ(previewPlace(5, 1325, 936), (PreviewPlace{629, 447, 66, 41}));
}

TEST(OptionsPreview, HalvesRoundToEven) {
    for (const auto& [x, whole] : {std::pair{0.5f, 0}, {1.5f, 2}, {662.5f, 662}, {-1.5f, -2}, {629.375f, 629}, {0.75f, 1}})
        EXPECT_EQ(wholeTwips(x), whole) << x;
}

TEST(OptionsDelay, EveryOtherValueSelectsTwoSeconds) {
    for (const auto& [delay, index] : {std::pair{0, 0}, {2, 1}, {5, 2}, {10, 3}, {15, 4}, {7, 1}, {-1, 1}, {1, 1}})
        EXPECT_EQ(option1IndexFor(delay), index) << delay;
}

}  // namespace
