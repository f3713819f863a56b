#pragma once
#include <cstdint>
#include <vector>

#include "platform/picture.h"

namespace velmoric {

// The picture as a PNG file: 8-bit RGB, every pixel as the bitmap shows it.
std::vector<std::uint8_t> encodePng(const Picture& picture);

}  // namespace velmoric
