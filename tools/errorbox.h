#pragma once
// The error box of the routines that catch their own errors: a fixed text
// and the error as the platform reports it, which names the file and the
// reason.
#include <string>

#include "platform/platform.h"

namespace velmoric {

std::string errorBoxText(const std::string& systemText);
void showErrorBox(Platform& ui, const std::string& systemText);

}  // namespace velmoric
