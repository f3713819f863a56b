#pragma once
// The help window's own pictures, drawn by the project in code: the
// background of the form, a small desktop with two floppy disks and a bin in
// its left column, and the fixed picture of `Image3`.
#include <QImage>
#include <QRect>

namespace velmoric::qt {

// The form's background: 640 by 400 pixels in 16 colours. A green desktop
// with a white menu strip, and the icons under the three hot spots.
QImage helpBackgroundImage();

// `Image3`: 320 by 200 pixels in 16 colours. A blue desktop with a window of
// icons and a line of handwriting.
QImage helpPictureImage();

// Where the icons lie on the background, in pixels: the two disks and the bin.
inline constexpr QRect kDiskAIcon{47, 50, 34, 34};
inline constexpr QRect kDiskBIcon{47, 146, 34, 34};
inline constexpr QRect kBinIcon{56, 313, 33, 43};

}  // namespace velmoric::qt
