// The options dialog's arithmetic without a window: the preview's place on
// its sheet in 32-bit floats and whole twips. What the dialog shows and
// stores is tested on the real dialog.
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
            // nearbyint rounds halves to even in the default rounding mode;
            // every eighth scale puts the left edge on a half.
            const PreviewPlace expected{int(std::nearbyint((w - iw) / 2.0f)), int(std::nearbyint((h - ih) / 2.0f)),
                                        int(std::nearbyint(iw)), int(std::nearbyint(ih))};
            EXPECT_EQ(previewPlace(scale, kSheetWidth, height), expected) << scale << " on " << height;
        }
}

}  // namespace
