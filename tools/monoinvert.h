#pragma once
// Swaps black and white in the monochrome picture on show. It works from
// what the staging arrays still hold of that picture, not from the picture
// object: a 640 by 400 picture (kind 3) by the palette of `monobmp`, a
// MacPaint picture (kind 4) by its pixels in `pixbytes`.
#include <cstdint>

#include "decoders/staging.h"
#include "platform/platform.h"

namespace velmoric::tools {

// Writes the inverted bitmap to the temporary file, loads it into Image1
// and deletes the file; `saved` becomes false. Other kinds get a message
// and nothing changes. The caller switches the commands off around it.
void monoinvert(Platform& ui, Staging& s, std::int16_t kind, std::int16_t& saved);

}  // namespace velmoric::tools
