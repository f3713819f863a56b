// Sizing of the window and the picture by the kind of the picture and the
// option `size`: in the normal state the outer height follows the width so
// the picture area keeps the proportions of the format.
#include <cmath>

#include "shell/viewer.h"

namespace velmoric {
namespace {

struct KindSize {
    int width, height;
    double nativeRatio, freeRatio;
};

constexpr KindSize kKindSizes[] = {
    {320, 200, 0.625, 0.625},
    {640, 200, 0.3125, 0.625},
    {640, 400, 0.625, 0.625},
    {576, 720, 1.25, 1.25},
};

constexpr int kMinimumFreeOuterWidth = 3600;

KindSize sizeOfKind(int kind) { return kKindSizes[(kind >= 1 && kind <= 4) ? kind - 1 : 0]; }

}  // namespace

void Viewer::Form_Resize() {
    try {
        if (ui.windowState() == WindowState::Minimised) return;
        const KindSize k = sizeOfKind(kind);
        const bool native = options.size == 1;
        ui.setImageNative(native);
        const double ratio = native ? k.nativeRatio : k.freeRatio;
        // The picture area below Image1's top must be the client width times
        // the ratio: D is what is missing, in pixels. A window has whole
        // pixels, so D is taken down to a whole number: the area becomes the
        // whole part of width times ratio from either side, and the run that
        // the resize sets off finds D at 0 and changes nothing.
        auto adjustHeight = [&] {
            const double d = ui.imageTop() + ui.clientWidth() * ratio - ui.clientHeight();
            ui.setOuterHeight(ui.outerHeight() + ui.pixelsToTwips(int(std::floor(d))));
        };
        if (native) {
            if (ui.windowState() == WindowState::Normal) {
                ui.setOuterWidth(ui.outerWidth() + ui.pixelsToTwips(k.width - ui.clientWidth()));
                adjustHeight();
            }
            if (ui.windowState() == WindowState::Maximised) {
                ui.setImageSize(k.width, k.height);
            } else {
                ui.setImageSize(ui.clientWidth(), ui.clientHeight() - ui.imageTop());
            }
        } else {
            if (ui.windowState() == WindowState::Normal) {
                if (ui.outerWidth() < kMinimumFreeOuterWidth) ui.setOuterWidth(kMinimumFreeOuterWidth);
                adjustHeight();
            }
            if (ui.windowState() != WindowState::Minimised)
                ui.setImageSize(ui.clientWidth(), ui.clientHeight() - ui.imageTop());
        }
        if (ui.windowState() != WindowState::Minimised) ui.setLabelWidth(ui.clientWidth());
    } catch (const std::exception& e) {
        showErrorBox(e.what());
    }
}

}  // namespace velmoric
