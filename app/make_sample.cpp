// velmoric-make-sample: draws the bundled sample picture, a Degas low
// resolution file (PI1), so the project ships a picture of its own making.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

namespace {

constexpr int kWidth = 320, kHeight = 200;

// ST colour levels 0 to 7 for red, green, blue.
struct StColour {
    int r, g, b;
};
constexpr StColour kPalette[16] = {
    {0, 0, 1}, {0, 1, 3}, {1, 2, 5}, {2, 3, 6}, {4, 4, 7}, {7, 5, 5}, {7, 4, 2}, {7, 7, 3},
    {1, 1, 2}, {2, 1, 3}, {3, 2, 4}, {0, 3, 2}, {0, 5, 3}, {7, 7, 7}, {6, 0, 4}, {3, 0, 2},
};

// A 5 by 7 font for the letters of the name.
const char* glyph(char c) {
    switch (c) {
    case 'V': return "10001100011000110001100010101000100";
    case 'E': return "11111100001000011110100001000011111";
    case 'L': return "10000100001000010000100001000011111";
    case 'M': return "10001110111010110101100011000110001";
    case 'O': return "01110100011000110001100011000101110";
    case 'R': return "11110100011000111110101001001010001";
    case 'I': return "01110001000010000100001000010001110";
    case 'C': return "01110100011000010000100001000101110";
    default: return "00000000000000000000000000000000000";
    }
}

std::vector<int> draw() {
    std::vector<int> px(kWidth * kHeight, 0);
    const int horizon = 120;
    for (int y = 0; y < horizon; ++y)  // sky in bands, dark at the top
        for (int x = 0; x < kWidth; ++x) px[y * kWidth + x] = 1 + std::min(6, y * 7 / horizon);
    for (int y = 0; y < horizon; ++y)  // the sun, striped at its foot
        for (int x = 0; x < kWidth; ++x) {
            const double d = std::hypot(x - 160.0, y - 100.0);
            if (d < 42 && !(y > 84 && (y / 3) % 2 == 0)) px[y * kWidth + x] = d < 36 ? 7 : 6;
        }
    for (int x = 0; x < kWidth; ++x) {  // two ridges of mountains
        const int far = horizon - 18 - int(14 * std::sin(x / 23.0) + 8 * std::sin(x / 7.0 + 1));
        const int nearTop = horizon - 6 - int(10 * std::sin(x / 41.0 + 2) + 4 * std::sin(x / 11.0));
        for (int y = std::max(0, far); y < horizon; ++y) px[y * kWidth + x] = 9;
        for (int y = std::max(0, nearTop); y < horizon; ++y) px[y * kWidth + x] = 8;
    }
    for (int y = horizon; y < kHeight; ++y) {  // a chequered floor running to the horizon
        const double depth = 2000.0 / (y - horizon + 8);
        for (int x = 0; x < kWidth; ++x) {
            const double u = (x - 160) * depth / 160.0;
            const bool dark = (int(std::floor(u / 20)) + int(std::floor(depth / 20))) % 2 == 0;
            px[y * kWidth + x] = dark ? 11 : 12;
        }
    }
    const std::string name = "VELMORIC";
    const int scale = 3, left = (kWidth - int(name.size()) * 6 * scale) / 2, top = 14;
    for (int pass = 0; pass < 2; ++pass)  // the shadow first, then the letters over it
        for (std::size_t i = 0; i < name.size(); ++i)
            for (int gy = 0; gy < 7; ++gy)
                for (int gx = 0; gx < 5; ++gx) {
                    if (glyph(name[i])[gy * 5 + gx] != '1') continue;
                    for (int sy = 0; sy < scale; ++sy)
                        for (int sx = 0; sx < scale; ++sx) {
                            const int x = left + int(i) * 6 * scale + gx * scale + sx, y = top + gy * scale + sy;
                            if (pass == 0) px[(y + 1) * kWidth + x + 1] = 15;
                            else px[y * kWidth + x] = sy == 0 ? 13 : 14;
                        }
                }
    return px;
}

// Colour numbers to a PI1 file: resolution word, 16 colour words, 200 rows
// of 20 groups of four plane words, all big-endian.
std::vector<std::uint8_t> encodePi1(const std::vector<int>& px) {
    std::vector<std::uint8_t> out = {0, 0};
    for (const StColour& c : kPalette) {
        out.push_back(std::uint8_t(c.r));
        out.push_back(std::uint8_t(c.g << 4 | c.b));
    }
    for (int y = 0; y < kHeight; ++y)
        for (int group = 0; group < 20; ++group)
            for (int plane = 0; plane < 4; ++plane) {
                unsigned word = 0;
                for (int i = 0; i < 16; ++i)
                    if (px[y * kWidth + group * 16 + i] >> plane & 1) word |= 0x8000u >> i;
                out.push_back(std::uint8_t(word >> 8));
                out.push_back(std::uint8_t(word));
            }
    return out;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: velmoric-make-sample OUT.PI1\n");
        return 2;
    }
    const std::vector<std::uint8_t> file = encodePi1(draw());
    std::ofstream f(argv[1], std::ios::binary);
    f.write(reinterpret_cast<const char*>(file.data()), std::streamsize(file.size()));
    if (!f) {
        std::fprintf(stderr, "%s: cannot write\n", argv[1]);
        return 1;
    }
    return 0;
}
