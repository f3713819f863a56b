#pragma once
// The picture on show leaves the program as a Windows bitmap file chosen by
// the user, or on the clipboard. Both take the picture object of Image1, so
// an inverted picture leaves in its inverted form.
#include <cstdint>

#include "platform/platform.h"

namespace velmoric::tools {

inline constexpr const char* kSaveFilter = "Windows Bitmap (*.BMP)|*.BMP|All Files (*.*)|*.*";
// Hide the read-only box (4), ask before overwriting (2), the path must
// exist (0x800).
inline constexpr int kSaveFlags = 0x806;

// Asks for a name and writes the picture there; `saved` becomes true only
// when the file is written. The start-up picture (`nopicture` true) is not
// saved. `nopicture` is read after the pending events have run.
void savepic(Platform& ui, const std::int16_t& nopicture, std::int16_t& saved);

// Clears the clipboard and places the picture on it. Changes no state.
void copypic(Platform& ui);

}  // namespace velmoric::tools
