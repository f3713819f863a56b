#include "desktop/icon.h"

#include "convert/png.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>

namespace velmoric::desktop {
namespace {

struct Colour {
    double r, g, b, a;
};

constexpr Colour kClear{0, 0, 0, 0};
constexpr Colour kCase{0.86, 0.84, 0.78, 1};
constexpr Colour kCaseShade{0.55, 0.53, 0.49, 1};
constexpr Colour kBezel{0.16, 0.16, 0.18, 1};
constexpr Colour kStand{0.42, 0.41, 0.39, 1};
constexpr Colour kLight{0.2, 0.85, 0.25, 1};
constexpr Colour kSky[] = {{0.10, 0.07, 0.35, 1}, {0.42, 0.12, 0.50, 1}, {0.85, 0.25, 0.45, 1}, {0.98, 0.55, 0.25, 1}};
constexpr Colour kSun{1.0, 0.88, 0.30, 1};
constexpr Colour kFloor[] = {{0.05, 0.35, 0.40, 1}, {0.10, 0.60, 0.55, 1}};

bool inRoundedBox(double u, double v, double x0, double y0, double x1, double y1, double radius) {
    if (u < x0 || u > x1 || v < y0 || v > y1) return false;
    const double cx = std::clamp(u, x0 + radius, x1 - radius), cy = std::clamp(v, y0 + radius, y1 - radius);
    return (u - cx) * (u - cx) + (v - cy) * (v - cy) <= radius * radius;
}

// The screen's picture in its own unit square.
Colour screenAt(double u, double v) {
    constexpr double horizon = 0.62;
    if (v < horizon) {
        const double du = u - 0.5, dv = v - horizon;
        // The sun, cut by three bands that widen towards the horizon.
        const bool band = (v > 0.44 && v < 0.47) || (v > 0.51 && v < 0.545) || (v > 0.575 && v < 0.62);
        if (du * du + dv * dv < 0.27 * 0.27 && !band) return kSun;
        return kSky[std::min(3, int(v / horizon * 4))];
    }
    // Floor squares that narrow towards the horizon.
    const double depth = (v - horizon) / (1 - horizon);
    const double x = (u - 0.5) / (0.25 + 0.75 * depth);
    const int column = int(std::floor(x * 4)), row = int(std::floor(std::sqrt(depth) * 5));
    return kFloor[(column + row) & 1];
}

Colour iconAt(double u, double v) {
    if (inRoundedBox(u, v, 0.38, 0.74, 0.62, 0.86, 0.01)) return kStand;
    if (inRoundedBox(u, v, 0.2, 0.84, 0.8, 0.94, 0.03)) return kStand;
    if (!inRoundedBox(u, v, 0.04, 0.06, 0.96, 0.8, 0.07)) return kClear;
    if (!inRoundedBox(u, v, 0.04, 0.06, 0.94, 0.77, 0.07)) return kCaseShade;
    if (u > 0.83 && u < 0.88 && v > 0.715 && v < 0.745) return kLight;
    if (!inRoundedBox(u, v, 0.1, 0.12, 0.88, 0.7, 0.03)) return kCase;
    constexpr double sx0 = 0.13, sy0 = 0.15, sx1 = 0.85, sy1 = 0.67;
    if (u < sx0 || u > sx1 || v < sy0 || v > sy1) return kBezel;
    return screenAt((u - sx0) / (sx1 - sx0), (v - sy0) / (sy1 - sy0));
}

}  // namespace

RgbaImage drawIcon(int size) {
    constexpr int kSamples = 4;  // a side: 16 samples a pixel smooth the edges
    RgbaImage image{size, size, std::vector<std::uint32_t>(std::size_t(size) * std::size_t(size))};
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < size; ++x) {
            double r = 0, g = 0, b = 0, a = 0;
            for (int sy = 0; sy < kSamples; ++sy)
                for (int sx = 0; sx < kSamples; ++sx) {
                    const Colour c = iconAt((x + (sx + 0.5) / kSamples) / size, (y + (sy + 0.5) / kSamples) / size);
                    r += c.r * c.a, g += c.g * c.a, b += c.b * c.a, a += c.a;
                }
            auto channel = [](double v) { return std::uint32_t(std::lround(std::clamp(v, 0.0, 1.0) * 255)); };
            const double alpha = a / (kSamples * kSamples);
            const std::uint32_t pixel = a == 0 ? 0
                                               : channel(alpha) << 24 | channel(r / a) << 16 | channel(g / a) << 8 |
                                                     channel(b / a);
            image.pixels[std::size_t(y) * std::size_t(size) + std::size_t(x)] = pixel;
        }
    return image;
}

std::vector<std::uint8_t> encodeRgbaPng(const RgbaImage& image) {
    if (image.width <= 0 || image.height <= 0) throw std::runtime_error("cannot encode an empty picture");
    const bool opaque = std::all_of(image.pixels.begin(), image.pixels.end(), [](std::uint32_t p) { return p >> 24 == 0xFF; });
    const int channels = opaque ? 3 : 4;
    std::vector<std::uint8_t> rows;
    rows.reserve(image.pixels.size() * std::size_t(channels));
    for (std::uint32_t p : image.pixels) {
        rows.insert(rows.end(), {std::uint8_t(p >> 16), std::uint8_t(p >> 8), std::uint8_t(p)});
        if (!opaque) rows.push_back(std::uint8_t(p >> 24));
    }
    return encodePngRows(image.width, image.height, 8, opaque ? PngColour::Rgb : PngColour::Rgba, {}, rows);
}

}  // namespace velmoric::desktop
