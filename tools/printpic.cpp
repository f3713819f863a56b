#include "tools/printpic.h"

#include <cmath>
#include <exception>
#include <limits>
#include <stdexcept>

#include "tools/errorbox.h"

namespace velmoric::tools {
namespace {

// An edge handed over as a 32-bit whole number, to the nearest, a half to even.
std::int32_t edge(double value) {
    const double rounded = std::nearbyint(value);
    if (!(rounded >= std::numeric_limits<std::int32_t>::min() && rounded <= std::numeric_limits<std::int32_t>::max()))
        throw std::range_error("Overflow: the picture's place on the page is out of range");
    return std::int32_t(rounded);
}

}  // namespace

void printpic(Platform& ui, std::int16_t orientation, std::int16_t printscale) {
    try {
        if (!ui.runPrintDialog(PrintDialogSettings{kPrintFlags, orientation == 0 ? 2 : 1})) return;
        // The page as the printer reports it after the dialog, in its own
        // units; nothing else is read back from the dialog.
        const std::int32_t pageWidth = ui.printerWidth();
        const double w = pageWidth * 0.009 * printscale;
        // Every picture gets the shape of a 320 by 200 screen.
        const double h = 0.625 * w;
        const double x = (pageWidth - w) / 2;
        const std::int32_t pageHeight = ui.printerHeight();
        const double y = (pageHeight - h) / 2;
        ui.printPicture(ui.picture(), edge(x), edge(y), w, h);
        ui.endDocument();
    } catch (const std::exception& e) {
        showErrorBox(ui, e.what());
    }
}

}  // namespace velmoric::tools
