// velmoric-make-seeds OUT: writes starting inputs for every fuzz target,
// OUT/<family>/<name>. Each input is a selector byte (which extension of the
// family) and a file built here: empty, zero and random files of the usual
// length, short ones, and a few with the structure each format expects.
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;
namespace fs = std::filesystem;

Bytes randomBytes(std::size_t n, std::uint32_t seed) {
    std::mt19937 rng(seed);
    Bytes b(n);
    for (auto& x : b) x = std::uint8_t(rng());
    return b;
}

void put16(Bytes& b, unsigned v) {
    b.push_back(std::uint8_t(v >> 8));
    b.push_back(std::uint8_t(v));
}

void put32(Bytes& b, std::uint32_t v) {
    put16(b, v >> 16);
    put16(b, v & 0xFFFF);
}

struct Writer {
    fs::path folder;
    int count = 0;
    void operator()(std::uint8_t selector, const Bytes& file) {
        fs::create_directories(folder);
        std::ofstream f(folder / ("seed-" + std::to_string(count++)), std::ios::binary);
        f.put(char(selector));
        f.write(reinterpret_cast<const char*>(file.data()), std::streamsize(file.size()));
    }
    // The plain cases every format gets.
    void plain(std::uint8_t selector, std::size_t usual) {
        (*this)(selector, {});
        (*this)(selector, Bytes(usual, 0));
        (*this)(selector, randomBytes(usual, selector * 7u + 1));
        (*this)(selector, randomBytes(usual / 3, selector * 7u + 2));
        (*this)(selector, randomBytes(37, selector * 7u + 3));
    }
};

// A Degas compressed picture: every plane of every row one repeated byte.
Bytes degasCompressed(int rows, int planes, int bytesPerPlane) {
    Bytes b = {0x80, 0x00};
    Bytes palette = randomBytes(32, 11);
    b.insert(b.end(), palette.begin(), palette.end());
    for (int y = 0; y < rows; ++y)
        for (int p = 0; p < planes; ++p) {
            b.push_back(std::uint8_t(257 - bytesPerPlane));
            b.push_back(std::uint8_t(y * 3 + p));
        }
    return b;
}

Bytes tinyFile(std::uint8_t resolution) {
    Bytes b = {resolution};
    if (resolution >= 3) b.insert(b.end(), {1, 2, 3, 4});
    Bytes palette = randomBytes(32, 12);
    b.insert(b.end(), palette.begin(), palette.end());
    const Bytes control = {0x82, 0x05, 0x01, 0x00, 0x40, 0x00, 0x01, 0x20, 0x7F, 0xFF, 0x02};
    put16(b, unsigned(control.size()));
    put16(b, 200);
    b.insert(b.end(), control.begin(), control.end());
    Bytes data = randomBytes(800, 13);
    b.insert(b.end(), data.begin(), data.end());
    return b;
}

Bytes spectrumPacked(bool smooshed) {
    Bytes pixels;
    for (int i = 0; i < 260; ++i) {
        pixels.push_back(smooshed ? 0x7F : 0x80);  // a long run of one byte
        pixels.push_back(std::uint8_t(i));
    }
    Bytes b;
    put32(b, smooshed ? 0x5350u : 0x5350u);
    put32(b, std::uint32_t(pixels.size()));
    put32(b, 597 * 4);
    b.insert(b.end(), pixels.begin(), pixels.end());
    Bytes colours = randomBytes(597 * 6, 14);
    b.insert(b.end(), colours.begin(), colours.end());
    return b;
}

Bytes crackCompressed(int paletteBytes) {
    Bytes b = {'C', 'A', 1, 0};
    Bytes palette = randomBytes(std::size_t(paletteBytes), 15);
    b.insert(b.end(), palette.begin(), palette.end());
    b.insert(b.end(), {0xCD, 0x00});
    put16(b, 160);
    const Bytes stream = {1, 2, 0xCD, 0xCD, 0xCD, 0x00, 10, 7, 0xCD, 0x01, 0x01, 0x00, 9,
                          0xCD, 0x05, 3, 0xCD, 0x02, 0x00, 0x10, 4, 5, 0xCD, 0x02, 0x00};
    b.insert(b.end(), stream.begin(), stream.end());
    return b;
}

Bytes macPaint(bool macBinary) {
    Bytes b(macBinary ? 640 : 512, 0);
    if (macBinary) b[1] = 11;
    else b[3] = 2;
    for (int row = 0; row < 720; ++row) {
        b.push_back(0xB9);  // 72 bytes of one value
        b.push_back(std::uint8_t(row & 1 ? 0xAA : 0x55));
    }
    return b;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    const fs::path out = argv[1];
    Writer degas{out / "degas"}, degasc{out / "degasc"}, tiny{out / "tiny"}, spectrum{out / "spectrum"},
        crack{out / "crack"}, mac{out / "macpaint"};
    degas.plain(0, 32128);
    for (std::uint8_t s = 1; s < 4; ++s) degas.plain(s, 32034);
    for (std::uint8_t s = 0; s < 3; ++s) degasc.plain(s, 20000);
    degasc(0, degasCompressed(200, 4, 40));
    degasc(1, degasCompressed(200, 2, 80));
    degasc(2, degasCompressed(400, 1, 80));
    for (std::uint8_t s = 0; s < 4; ++s) tiny.plain(s, 12000);
    for (std::uint8_t n : {0, 1, 2, 3, 4, 5, 6}) tiny(std::uint8_t(n % 4), tinyFile(n));
    spectrum.plain(0x80, 51104);
    spectrum.plain(1, 30000);
    spectrum.plain(2, 30000);
    spectrum(1, spectrumPacked(false));
    spectrum(2, spectrumPacked(true));
    for (std::uint8_t s = 0; s < 3; ++s) crack.plain(s, 20000);
    crack(0, crackCompressed(32));
    crack(1, crackCompressed(8));
    crack(2, crackCompressed(0));
    mac.plain(0, 30000);
    mac(0, macPaint(false));
    mac(0, macPaint(true));
    return 0;
}
