#pragma once
// A picture object: a Windows bitmap held in memory, independent of the file
// it was loaded from. Every layer passes pictures around in this form; the Qt
// layer turns one into an image only to show, print or copy it.
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace velmoric {

class Picture {
public:
    Picture() = default;

    // Parses the bytes of a Windows bitmap file (1, 4, 8 or 24 bits a pixel,
    // uncompressed). Throws std::invalid_argument with a reason when the bytes
    // are no such bitmap. Bytes behind the pixels are kept but ignored.
    static Picture fromBitmapBytes(std::vector<std::uint8_t> bytes);

    bool empty() const { return !data_; }
    int width() const { return width_; }
    int height() const { return height_; }
    int bitsPerPixel() const { return bpp_; }
    const std::vector<std::uint8_t>& bytes() const;

    // Colour of the pixel at column x of row y, row 0 at the top, as 0xRRGGBB.
    std::uint32_t rgb(int x, int y) const;
    // For 1, 4 and 8 bits a pixel: the palette as 0xRRGGBB, 2 to the power
    // of the bits entries, and the palette index of a pixel.
    const std::vector<std::uint32_t>& palette() const { return palette_; }
    int paletteIndex(int x, int y) const;
    // The whole picture as rows of 0xRRGGBB, top row first.
    std::vector<std::uint32_t> toRgb() const;

    bool operator==(const Picture& other) const;

private:
    std::shared_ptr<const std::vector<std::uint8_t>> data_;
    int width_ = 0;
    int height_ = 0;
    int bpp_ = 0;
    bool bottomUp_ = true;
    std::size_t pixelOffset_ = 0;
    std::size_t stride_ = 0;
    std::vector<std::uint32_t> palette_;
};

}  // namespace velmoric
