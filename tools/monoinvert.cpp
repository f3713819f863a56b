#include "tools/monoinvert.h"

#include <exception>
#include <vector>

#include "tools/errorbox.h"
#include "tools/inversion.h"

namespace velmoric::tools {

void monoinvert(Platform& ui, Staging& s, std::int16_t kind, std::int16_t& saved) {
    if (!isMonoKind(kind)) {
        ui.messageBox(kNotMonoText, "Alert.", Buttons::Ok, Icon::Exclamation);
        return;
    }
    std::string temporary;
    try {
        temporary = ui.temporaryBitmapPath();
        ui.writeFile(temporary, invertedBitmap(s, kind));
        const Picture picture = ui.loadPicture(temporary);
        ui.setPicture(picture);
        ui.closeAllFiles();
    } catch (const std::exception& e) {
        // Image1 and the saved flag stay; the swap or the complement stays
        // done, as the arrays have no way back.
        showErrorBox(ui, e.what());
        return;
    }
    // The picture is on show; a temporary file that will not go now goes
    // with the private folder when the program ends.
    try {
        ui.deleteFile(temporary);
    } catch (const std::exception&) {
    }
    saved = 0;  // false
}

}  // namespace velmoric::tools
