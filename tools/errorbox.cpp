#include "tools/errorbox.h"

namespace velmoric {

std::string errorBoxText(const std::string& systemText) {
    return std::string("Sorry an error has occured.\nThe system reports the following.\n") + systemText;
}

void showErrorBox(Platform& ui, const std::string& systemText) {
    ui.messageBox(errorBoxText(systemText), "Error.", Buttons::Ok, Icon::Exclamation);
}

}  // namespace velmoric
