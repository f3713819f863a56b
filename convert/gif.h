#pragma once
#include <cstdint>
#include <vector>

#include "cycles/cycles.h"
#include "platform/picture.h"

namespace velmoric {

// The picture as a GIF with exactly its pixels. With more than one frame of
// colour cycles it is an animation that loops for ever: every frame the same
// pixels under its own palette, shown for its ticks. Throws
// std::runtime_error with the reason for a picture of more than 256 colours.
std::vector<std::uint8_t> encodeGif(const Picture& picture, const std::vector<cycles::Frame>& frames);

}  // namespace velmoric
