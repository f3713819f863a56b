#include "convert/colours.h"

#include <algorithm>
#include <memory>

namespace velmoric {
namespace {

// The distinct colours of a picture and the number of each, as long as there
// are at most 256; a picture of thousands stops at its 257th. Open
// addressing in a table four times that size keeps each pixel's look-up to a
// probe or two.
class ColourCounter {
public:
    static constexpr std::size_t kMaxColours = 256;

    // The slot of colour c, or of the empty slot where it would go.
    std::size_t slotOf(std::uint32_t c) const {
        std::size_t i = (c * 2654435761u) >> 22;  // the top 10 bits of a multiplicative hash
        while (used_[i] && colours_[i] != c) i = (i + 1) % kSlots;
        return i;
    }
    // Adds c if it is new; false once there would be more than 256.
    bool add(std::uint32_t c) {
        const std::size_t i = slotOf(c);
        if (used_[i]) return true;
        if (count_ == kMaxColours) return false;
        used_[i] = true, colours_[i] = c, ++count_;
        return true;
    }
    // The colours in ascending order, and each slot's index in that order.
    std::vector<std::uint32_t> sortedPalette() {
        std::vector<std::uint32_t> palette;
        for (std::size_t i = 0; i < kSlots; ++i)
            if (used_[i]) palette.push_back(colours_[i]);
        std::sort(palette.begin(), palette.end());
        for (std::size_t i = 0; i < kSlots; ++i)
            if (used_[i]) index_[i] = std::uint8_t(std::lower_bound(palette.begin(), palette.end(), colours_[i]) - palette.begin());
        return palette;
    }
    std::uint8_t indexOf(std::uint32_t c) const { return index_[slotOf(c)]; }
    std::size_t count() const { return count_; }

private:
    static constexpr std::size_t kSlots = 1024;
    std::uint32_t colours_[kSlots] = {};
    bool used_[kSlots] = {};
    std::uint8_t index_[kSlots] = {};
    std::size_t count_ = 0;
};

IndexedPicture ownPalette(const Picture& p) {
    IndexedPicture out{p.bitsPerPixel(), p.palette(), {}};
    out.indices.resize(std::size_t(p.width()) * std::size_t(p.height()));
    for (int y = 0; y < p.height(); ++y)
        for (int x = 0; x < p.width(); ++x)
            out.indices[std::size_t(y) * std::size_t(p.width()) + std::size_t(x)] = std::uint8_t(p.paletteIndex(x, y));
    return out;
}

std::optional<IndexedPicture> countedPalette(const Picture& p) {
    const std::vector<std::uint32_t> colours = p.toRgb();
    auto counter = std::make_unique<ColourCounter>();
    for (std::uint32_t c : colours)
        if (!counter->add(c)) return std::nullopt;
    IndexedPicture out{counter->count() <= 16 ? 4 : 8, counter->sortedPalette(), {}};
    out.indices.resize(colours.size());
    for (std::size_t i = 0; i < colours.size(); ++i) out.indices[i] = counter->indexOf(colours[i]);
    return out;
}

}  // namespace

std::optional<IndexedPicture> indexedPicture(const Picture& picture) {
    return picture.bitsPerPixel() <= 8 ? ownPalette(picture) : countedPalette(picture);
}

}  // namespace velmoric
