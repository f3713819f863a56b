#pragma once
// Registering the viewer as the program that opens the Atari picture files.
#include "platform/platform.h"

namespace velmoric {

// The extension whose registration tells that the question was answered.
inline constexpr const char* kFirstRunExtension = "spu";

// The association for all 18 extensions, pointing at the program in `folder`.
Association buildAssociation(const std::string& folder);

}  // namespace velmoric
