#pragma once
// A picture as palette indices, for the encoders whose files hold a palette.
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/picture.h"

namespace velmoric {

struct IndexedPicture {
    int bits;                            // 1, 4 or 8: the fewest that hold every index
    std::vector<std::uint32_t> palette;  // 0xRRGGBB
    std::vector<std::uint8_t> indices;   // one a pixel, top row first
};

// A palette bitmap keeps its own palette and indices; a 24-bit picture gets
// a palette of its colours in ascending order while there are at most 256,
// and none (nullopt) when there are more.
std::optional<IndexedPicture> indexedPicture(const Picture& picture);

}  // namespace velmoric
