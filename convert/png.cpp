#include "convert/png.h"

#include <dlfcn.h>
#include <spng.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>

namespace velmoric {
namespace {

// libspng is opened when the first PNG is written, not when a program
// starts: most conversions write bitmaps, and loading libspng with zlib is
// about a tenth of a whole one-file conversion.
struct Spng {
    decltype(&spng_ctx_new) ctx_new;
    decltype(&spng_ctx_free) ctx_free;
    decltype(&spng_set_option) set_option;
    decltype(&spng_set_ihdr) set_ihdr;
    decltype(&spng_set_plte) set_plte;
    decltype(&spng_encode_image) encode_image;
    decltype(&spng_get_png_buffer) get_png_buffer;
    decltype(&spng_strerror) strerror;
};

template <class F>
void bind(void* library, F& function, const char* name) {
    function = reinterpret_cast<F>(::dlsym(library, name));
    if (!function) throw std::runtime_error(std::string("cannot encode the PNG: ") + VELMORIC_SPNG_SONAME + " has no " + name);
}

Spng loadSpng() {
    void* library = ::dlopen(VELMORIC_SPNG_SONAME, RTLD_NOW | RTLD_LOCAL);
    if (!library) throw std::runtime_error(std::string("cannot encode the PNG: ") + ::dlerror());
    Spng api{};
    bind(library, api.ctx_new, "spng_ctx_new");
    bind(library, api.ctx_free, "spng_ctx_free");
    bind(library, api.set_option, "spng_set_option");
    bind(library, api.set_ihdr, "spng_set_ihdr");
    bind(library, api.set_plte, "spng_set_plte");
    bind(library, api.encode_image, "spng_encode_image");
    bind(library, api.get_png_buffer, "spng_get_png_buffer");
    bind(library, api.strerror, "spng_strerror");
    return api;
}

const Spng& spng() {
    static const Spng api = loadSpng();
    return api;
}

struct ContextFree {
    void operator()(spng_ctx* ctx) const { spng().ctx_free(ctx); }
};

// Rows of palette indices packed at `bits` a pixel, leftmost pixel high, as
// a PNG holds them.
std::vector<std::uint8_t> packIndices(const std::vector<std::uint8_t>& indices, int width, int height, int bits) {
    const std::size_t rowBytes = (std::size_t(width) * std::size_t(bits) + 7) / 8;
    std::vector<std::uint8_t> rows(rowBytes * std::size_t(height), 0);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const std::size_t bit = std::size_t(x) * std::size_t(bits);
            const int shift = 8 - bits - int(bit % 8);
            rows[std::size_t(y) * rowBytes + bit / 8] |=
                std::uint8_t(indices[std::size_t(y) * std::size_t(width) + std::size_t(x)] << shift);
        }
    return rows;
}

struct Planned {
    std::uint8_t colourType = SPNG_COLOR_TYPE_INDEXED;
    std::uint8_t bits = 8;
    std::vector<std::uint32_t> palette;  // 0xRRGGBB
    std::vector<std::uint8_t> rows;      // the image as the PNG holds it
};

// A palette bitmap keeps its palette and indices.
Planned fromPalette(const Picture& p) {
    Planned plan;
    plan.palette = p.palette();
    plan.bits = std::uint8_t(p.bitsPerPixel());
    std::vector<std::uint8_t> indices(std::size_t(p.width()) * std::size_t(p.height()));
    for (int y = 0; y < p.height(); ++y)
        for (int x = 0; x < p.width(); ++x)
            indices[std::size_t(y) * std::size_t(p.width()) + std::size_t(x)] = std::uint8_t(p.paletteIndex(x, y));
    plan.rows = packIndices(indices, p.width(), p.height(), plan.bits);
    return plan;
}

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

// A 24-bit picture: a palette of its colours while there are at most 256.
Planned fromTrueColour(const Picture& p) {
    Planned plan;
    const std::vector<std::uint32_t> colours = p.toRgb();
    auto counter = std::make_unique<ColourCounter>();
    bool fits = true;
    for (std::size_t i = 0; i < colours.size() && fits; ++i) fits = counter->add(colours[i]);
    if (!fits) {
        plan.colourType = SPNG_COLOR_TYPE_TRUECOLOR;
        plan.rows.resize(3 * colours.size());
        for (std::size_t i = 0; i < colours.size(); ++i) {
            plan.rows[3 * i] = std::uint8_t(colours[i] >> 16);
            plan.rows[3 * i + 1] = std::uint8_t(colours[i] >> 8);
            plan.rows[3 * i + 2] = std::uint8_t(colours[i]);
        }
        return plan;
    }
    plan.bits = counter->count() <= 16 ? 4 : 8;
    plan.palette = counter->sortedPalette();
    std::vector<std::uint8_t> indices(colours.size());
    for (std::size_t i = 0; i < colours.size(); ++i) indices[i] = counter->indexOf(colours[i]);
    plan.rows = packIndices(indices, p.width(), p.height(), plan.bits);
    return plan;
}

void check(int error) {
    if (error) throw std::runtime_error(std::string("cannot encode the PNG: ") + spng().strerror(error));
}

}  // namespace

std::vector<std::uint8_t> encodePngRows(int width, int height, int bits, PngColour colour,
                                        const std::vector<std::uint32_t>& palette,
                                        const std::vector<std::uint8_t>& rows) {
    std::unique_ptr<spng_ctx, ContextFree> ctx(spng().ctx_new(SPNG_CTX_ENCODER));
    if (!ctx) throw std::runtime_error("cannot encode the PNG: out of memory");
    check(spng().set_option(ctx.get(), SPNG_ENCODE_TO_BUFFER, 1));
    spng_ihdr ihdr{};
    ihdr.width = std::uint32_t(width);
    ihdr.height = std::uint32_t(height);
    ihdr.bit_depth = std::uint8_t(bits);
    ihdr.color_type = colour == PngColour::Indexed ? SPNG_COLOR_TYPE_INDEXED
                      : colour == PngColour::Rgb   ? SPNG_COLOR_TYPE_TRUECOLOR
                                                   : SPNG_COLOR_TYPE_TRUECOLOR_ALPHA;
    check(spng().set_ihdr(ctx.get(), &ihdr));
    if (colour == PngColour::Indexed) {
        spng_plte plte{};
        plte.n_entries = std::uint32_t(palette.size());
        for (std::size_t i = 0; i < palette.size(); ++i)
            plte.entries[i] = {std::uint8_t(palette[i] >> 16), std::uint8_t(palette[i] >> 8), std::uint8_t(palette[i]),
                               255};
        check(spng().set_plte(ctx.get(), &plte));
    }
    check(spng().encode_image(ctx.get(), rows.data(), rows.size(), SPNG_FMT_PNG, SPNG_ENCODE_FINALIZE));
    std::size_t size = 0;
    int error = 0;
    std::unique_ptr<void, decltype(&std::free)> buffer(spng().get_png_buffer(ctx.get(), &size, &error), &std::free);
    check(error);
    const auto* bytes = static_cast<const std::uint8_t*>(buffer.get());
    return {bytes, bytes + size};
}

std::vector<std::uint8_t> encodePng(const Picture& picture) {
    if (picture.empty()) throw std::runtime_error("cannot encode an empty picture");
    const Planned plan = picture.bitsPerPixel() <= 8 ? fromPalette(picture) : fromTrueColour(picture);
    return encodePngRows(picture.width(), picture.height(), plan.bits,
                         plan.colourType == SPNG_COLOR_TYPE_INDEXED ? PngColour::Indexed : PngColour::Rgb, plan.palette,
                         plan.rows);
}

}  // namespace velmoric
