#pragma once
// The bitmap of a monochrome picture with black and white swapped, made from
// what the staging arrays still hold of the picture on show: a 640 by 400
// picture (kind 3) by the palette of `monobmp`, a MacPaint picture (kind 4)
// by its pixels in `pixbytes`. No platform: the window and the browser page
// share it.
#include <cstdint>
#include <vector>

#include "decoders/staging.h"

namespace velmoric::tools {

// Kinds 3 and 4; the others have nothing to invert.
inline bool isMonoKind(int kind) { return kind == 3 || kind == 4; }
inline constexpr const char* kNotMonoText = "Must be a Mono picture.";

// Inverts the staged picture of a mono kind and gives its new bitmap. The
// arrays stay changed, so the next call inverts back.
std::vector<std::uint8_t> invertedBitmap(Staging& s, int kind);

}  // namespace velmoric::tools
