#include "platform/picture.h"

#include <stdexcept>

namespace velmoric {
namespace {

std::uint32_t le32(const std::vector<std::uint8_t>& b, std::size_t at) {
    return b[at] | (b[at + 1] << 8) | (b[at + 2] << 16) | (std::uint32_t(b[at + 3]) << 24);
}
std::uint16_t le16(const std::vector<std::uint8_t>& b, std::size_t at) {
    return std::uint16_t(b[at] | (b[at + 1] << 8));
}

}  // namespace

Picture Picture::fromBitmapBytes(std::vector<std::uint8_t> bytes) {
    if (bytes.size() < 54 || bytes[0] != 'B' || bytes[1] != 'M')
        throw std::invalid_argument("not a Windows bitmap");
    const std::uint32_t headerSize = le32(bytes, 14);
    if (headerSize < 40) throw std::invalid_argument("unsupported bitmap header");
    const auto width = std::int32_t(le32(bytes, 18));
    const auto height = std::int32_t(le32(bytes, 22));
    const int bpp = le16(bytes, 28);
    const std::uint32_t compression = le32(bytes, 30);
    if (compression != 0) throw std::invalid_argument("compressed bitmaps are not supported");
    if (bpp != 1 && bpp != 4 && bpp != 8 && bpp != 24)
        throw std::invalid_argument("unsupported bits per pixel");
    if (width <= 0 || width > 16384 || height == 0 || height < -16384 || height > 16384)
        throw std::invalid_argument("unsupported bitmap size");

    Picture p;
    p.width_ = width;
    p.height_ = height < 0 ? -height : height;
    p.bottomUp_ = height > 0;
    p.bpp_ = bpp;
    p.pixelOffset_ = le32(bytes, 10);
    p.stride_ = ((std::size_t(width) * bpp + 31) / 32) * 4;
    if (p.pixelOffset_ > bytes.size() || bytes.size() - p.pixelOffset_ < p.stride_ * p.height_)
        throw std::invalid_argument("bitmap file is shorter than its pixels");
    if (bpp <= 8) {
        std::uint32_t colours = le32(bytes, 46);
        const std::uint32_t maxColours = 1u << bpp;
        if (colours == 0 || colours > maxColours) colours = maxColours;
        const std::size_t paletteAt = 14 + headerSize;
        p.palette_.assign(maxColours, 0);
        for (std::uint32_t i = 0; i < colours; ++i) {
            const std::size_t at = paletteAt + 4 * i;
            if (at + 2 >= bytes.size()) break;
            p.palette_[i] = (std::uint32_t(bytes[at + 2]) << 16) | (bytes[at + 1] << 8) | bytes[at];
        }
    }
    p.data_ = std::make_shared<const std::vector<std::uint8_t>>(std::move(bytes));
    return p;
}

const std::vector<std::uint8_t>& Picture::bytes() const {
    static const std::vector<std::uint8_t> none;
    return data_ ? *data_ : none;
}

int Picture::paletteIndex(int x, int y) const {
    if (!data_ || bpp_ > 8 || x < 0 || y < 0 || x >= width_ || y >= height_) return 0;
    const int fileRow = bottomUp_ ? height_ - 1 - y : y;
    const std::uint8_t* row = data_->data() + pixelOffset_ + stride_ * std::size_t(fileRow);
    switch (bpp_) {
    case 8: return row[x];
    case 4: return (row[x / 2] >> ((x & 1) ? 0 : 4)) & 15;
    default: return (row[x / 8] >> (7 - (x & 7))) & 1;
    }
}

std::uint32_t Picture::rgb(int x, int y) const {
    if (!data_ || x < 0 || y < 0 || x >= width_ || y >= height_) return 0;
    if (bpp_ <= 8) return palette_[std::size_t(paletteIndex(x, y))];
    const int fileRow = bottomUp_ ? height_ - 1 - y : y;
    const std::uint8_t* px = data_->data() + pixelOffset_ + stride_ * std::size_t(fileRow) + 3 * std::size_t(x);
    return (std::uint32_t(px[2]) << 16) | (px[1] << 8) | px[0];
}

std::vector<std::uint32_t> Picture::toRgb() const {
    std::vector<std::uint32_t> out;
    out.reserve(std::size_t(width_) * height_);
    for (int y = 0; y < height_; ++y)
        for (int x = 0; x < width_; ++x) out.push_back(rgb(x, y));
    return out;
}

bool Picture::operator==(const Picture& other) const {
    if (empty() || other.empty()) return empty() == other.empty();
    return width_ == other.width_ && height_ == other.height_ && toRgb() == other.toRgb();
}

}  // namespace velmoric
