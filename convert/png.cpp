#include "convert/png.h"

#include <spng.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>

#include "convert/colours.h"
#include "convert/library.h"

namespace velmoric {
namespace {

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

// Loading libspng with zlib is about a tenth of a whole one-file conversion.
Spng loadSpng() {
    const std::string what = "cannot encode the PNG";
    void* library = openLibrary(VELMORIC_SPNG_SONAME, what);
    auto bind = [&](auto& function, const char* name) {
        bindSymbol(library, function, name, VELMORIC_SPNG_SONAME, what);
    };
    Spng api{};
    bind(api.ctx_new, "spng_ctx_new");
    bind(api.ctx_free, "spng_ctx_free");
    bind(api.set_option, "spng_set_option");
    bind(api.set_ihdr, "spng_set_ihdr");
    bind(api.set_plte, "spng_set_plte");
    bind(api.encode_image, "spng_encode_image");
    bind(api.get_png_buffer, "spng_get_png_buffer");
    bind(api.strerror, "spng_strerror");
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

// A picture of at most 256 colours as palette indices, else as RGB rows.
Planned plan(const Picture& p) {
    Planned plan;
    if (auto indexed = indexedPicture(p)) {
        plan.bits = std::uint8_t(indexed->bits);
        plan.palette = std::move(indexed->palette);
        plan.rows = packIndices(indexed->indices, p.width(), p.height(), plan.bits);
        return plan;
    }
    const std::vector<std::uint32_t> colours = p.toRgb();
    plan.colourType = SPNG_COLOR_TYPE_TRUECOLOR;
    plan.rows.resize(3 * colours.size());
    for (std::size_t i = 0; i < colours.size(); ++i) {
        plan.rows[3 * i] = std::uint8_t(colours[i] >> 16);
        plan.rows[3 * i + 1] = std::uint8_t(colours[i] >> 8);
        plan.rows[3 * i + 2] = std::uint8_t(colours[i]);
    }
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
    const Planned p = plan(picture);
    return encodePngRows(picture.width(), picture.height(), p.bits,
                         p.colourType == SPNG_COLOR_TYPE_INDEXED ? PngColour::Indexed : PngColour::Rgb, p.palette, p.rows);
}

}  // namespace velmoric
