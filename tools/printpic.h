#pragma once
// Prints the picture on show on one page, centred, at a width set by the
// option `printscale` (a percentage) and on the orientation preselected by
// the option `orientation` (0 landscape, else portrait).
#include <cstdint>

#include "platform/platform.h"

namespace velmoric::tools {

// No selection button (4), no page numbers (8), copies and collation left to
// the printer driver (0x40000), printing to a file of its own disabled
// (0x80000) and hidden (0x100000).
inline constexpr int kPrintFlags = 0x1C000C;

// A cancelled dialog ends in silence; every other failure shows the error
// box. Changes no state.
void printpic(Platform& ui, std::int16_t orientation, std::int16_t printscale);

}  // namespace velmoric::tools
