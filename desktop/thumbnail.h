#pragma once
// Thumbnails of Atari pictures, as the file managers ask for them.
#include <iosfwd>
#include <string>

#include "desktop/desktopimage.h"
#include "desktop/icon.h"

namespace velmoric::desktop {

// The thumbnail of a picture whose larger side is at most `size` pixels, in
// the picture's proportions. A picture that fits is enlarged by the largest
// whole factor that still fits, each pixel a square block: pixel art is never
// smoothed. A larger one is shrunk to fit, each thumbnail pixel the mean of
// the picture's pixels it covers.
RgbaImage thumbnailOf(const DesktopPicture& picture, int size);

// velmoric-thumbnailer [-s SIZE] FILE OUTPUT: the whole program. Returns the
// exit status; errors name the file and the reason on `err`.
int runThumbnailer(int argc, char** argv, std::ostream& err);

}  // namespace velmoric::desktop
