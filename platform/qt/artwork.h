#pragma once
// The window's own pictures, drawn by the project in code: the start-up
// picture of `Image1`, the window's icon and the nine pictures of the image
// list behind `Toolbar1`.
#include <QPixmap>
#include <QWidget>
#include <cstdint>
#include <vector>

#include "platform/picture.h"

namespace velmoric::qt {

// The start-up picture: a Windows bitmap of 320 by 200 pixels in 256 colours.
std::vector<std::uint8_t> startupBitmapBytes();
Picture startupPicture();

// The window's icon: 32 by 32 pixels in 16 colours.
QImage windowIconImage();
QPixmap windowIconPixmap();

// Picture `number` (1 to 9) of the image list: 16 by 16 pixels in 16
// colours; the colour 0xC0C0C0 is transparent. Null for other numbers.
QImage imageListImage(int number);
QPixmap imageListPicture(int number);

// Greys the disabled text of `widget` two thirds of the way from its enabled
// text to its background: black on #C0C0C0 gives #808080, the grey of
// Windows' greyed titles, and any palette a text that stays readable, where
// the style's own may all but vanish on the bar (#BEBEBE on #C0C0C0).
void greyDisabledTextReadably(QWidget* widget);

}  // namespace velmoric::qt
