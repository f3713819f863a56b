#include "tools/savepic.h"

#include <exception>

#include "tools/errorbox.h"

namespace velmoric::tools {

void savepic(Platform& ui, const std::int16_t& nopicture, std::int16_t& saved) {
    try {
        // An open that waits in the events may still change what is on show.
        ui.yield();
        if (nopicture != 0) {
            ui.messageBox("Need to load a picture before it can be saved.", "No picture.", Buttons::Ok,
                          Icon::Exclamation);
            return;
        }
        ui.runSaveDialog(SaveDialogSettings{kSaveFlags, kSaveFilter, 1, "", "BMP", "Save picture as."});
        const std::string path = ui.fileName();
        if (path.empty()) return;
        ui.savePicture(ui.picture(), path);
        saved = -1;  // true
    } catch (const std::exception& e) {
        // The flag stays as it was, so quitting still warns.
        showErrorBox(ui, e.what());
    }
}

void copypic(Platform& ui) {
    ui.clearClipboard();
    ui.setClipboardPicture(ui.picture());
}

}  // namespace velmoric::tools
