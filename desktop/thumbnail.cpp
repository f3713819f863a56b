#include "desktop/thumbnail.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <ostream>
#include <string_view>

#include "platform/files.h"

namespace velmoric::desktop {
namespace {

RgbaImage enlarged(const DesktopPicture& p, int factor) {
    RgbaImage out{p.width * factor, p.height * factor, {}};
    out.pixels.reserve(std::size_t(out.width) * std::size_t(out.height));
    for (int y = 0; y < out.height; ++y)
        for (int x = 0; x < out.width; ++x)
            out.pixels.push_back(0xFF000000u | p.rgb(x / factor, y / factor));
    return out;
}

RgbaImage shrunk(const DesktopPicture& p, int width, int height) {
    RgbaImage out{width, height, {}};
    out.pixels.reserve(std::size_t(width) * std::size_t(height));
    for (int y = 0; y < height; ++y) {
        const int y0 = y * p.height / height, y1 = std::max(y0 + 1, (y + 1) * p.height / height);
        for (int x = 0; x < width; ++x) {
            const int x0 = x * p.width / width, x1 = std::max(x0 + 1, (x + 1) * p.width / width);
            std::uint32_t r = 0, g = 0, b = 0;
            for (int sy = y0; sy < y1; ++sy)
                for (int sx = x0; sx < x1; ++sx) {
                    const std::uint32_t c = p.rgb(sx, sy);
                    r += c >> 16 & 0xFF, g += c >> 8 & 0xFF, b += c & 0xFF;
                }
            const std::uint32_t n = std::uint32_t((y1 - y0) * (x1 - x0));
            out.pixels.push_back(0xFF000000u | (r + n / 2) / n << 16 | (g + n / 2) / n << 8 | (b + n / 2) / n);
        }
    }
    return out;
}

}  // namespace

RgbaImage thumbnailOf(const DesktopPicture& picture, int size) {
    size = std::max(size, 1);
    if (picture.width <= size && picture.height <= size)
        return enlarged(picture, std::min(size / picture.width, size / picture.height));
    // The larger side becomes `size`; the other keeps the proportion, rounded.
    const bool wide = picture.width >= picture.height;
    const int longSide = wide ? picture.width : picture.height, shortSide = wide ? picture.height : picture.width;
    const int other = std::max(1, (shortSide * size + longSide / 2) / longSide);
    return wide ? shrunk(picture, size, other) : shrunk(picture, other, size);
}

int runThumbnailer(int argc, char** argv, std::ostream& err) {
    int size = 256;
    std::vector<std::string> names;
    for (int i = 1; i < argc; ++i) {
        const std::string_view arg = argv[i];
        if (arg == "-s" && i + 1 < argc) {
            const std::string_view value = argv[++i];
            const auto [end, ec] = std::from_chars(value.data(), value.data() + value.size(), size);
            if (ec != std::errc() || end != value.data() + value.size() || size < 1 || size > 4096) {
                err << "velmoric-thumbnailer: bad size '" << value << "'\n";
                return 2;
            }
        } else {
            names.emplace_back(arg);
        }
    }
    if (names.size() != 2) {
        err << "usage: velmoric-thumbnailer [-s SIZE] FILE OUTPUT\n"
               "Writes a PNG thumbnail, at most SIZE pixels (256) on its larger side, of an Atari picture.\n";
        return 2;
    }
    const std::string& path = names[0];
    const Format* format = formatForKey(extensionOf(std::filesystem::path(path).filename().string()));
    if (!format) {
        err << "velmoric-thumbnailer: " << path << ": not an Atari picture name\n";
        return 1;
    }
    try {
        const SourceData source = files::readSource(path, kSourceLimit);
        const DesktopPicture picture = decodeForDesktop(*format, source.bytes, source.length);
        if (!picture.ok) {
            err << "velmoric-thumbnailer: " << path << ": " << picture.error << "\n";
            return 1;
        }
        files::replaceAtomically(names[1], encodeRgbaPng(thumbnailOf(picture, size)));
    } catch (const PlatformError& e) {
        err << "velmoric-thumbnailer: " << e.what() << "\n";
        return 1;
    } catch (const std::exception& e) {
        err << "velmoric-thumbnailer: " << path << ": " << e.what() << "\n";
        return 1;
    }
    return 0;
}

}  // namespace velmoric::desktop
