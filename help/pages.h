#pragma once
// The ten pages of the help window, built in code at each opening. A page is
// one string: its title, a row of dashes, then the body, lines joined by
// CR LF. Lists are laid out with blanks for a fixed-pitch font.
#include <array>
#include <string>

namespace velmoric {

inline constexpr int kHelpPageCount = 10;

// Page n (1 to 10) at index n - 1.
std::array<std::string, kHelpPageCount> buildHelpPages();

}  // namespace velmoric
