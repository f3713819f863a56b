#pragma once
// The program's icon for the desktop's icon theme, drawn in code at any
// size, and the PNG writer for it and for thumbnails.
#include <cstdint>
#include <vector>

namespace velmoric::desktop {

// An image of 0xAARRGGBB pixels, top row first.
struct RgbaImage {
    int width = 0, height = 0;
    std::vector<std::uint32_t> pixels;
};

// A monitor showing a sunset over a chequered floor, the picture of the
// window's own icon, drawn for `size` by `size` pixels with smoothed edges.
RgbaImage drawIcon(int size);

// The image as an 8-bit RGBA PNG file (RGB when every pixel is opaque).
std::vector<std::uint8_t> encodeRgbaPng(const RgbaImage& image);

}  // namespace velmoric::desktop
