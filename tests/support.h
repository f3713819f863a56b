#pragma once
// Shared helpers for the tests: temporary folders, the corpus of real
// pictures, fixture builders and a literal reference for the bitmap layouts.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <memory>
#include <vector>

#include "decoders/decoder.h"
#include "shell/formats.h"

namespace vtest {

using Bytes = std::vector<std::uint8_t>;
namespace fs = std::filesystem;

// A fresh folder removed at the end of the test.
class TempDir {
public:
    TempDir() {
        static std::mt19937_64 rng{std::random_device{}()};
        path_ = fs::temp_directory_path() / ("velmoric-test-" + std::to_string(rng()));
        fs::create_directories(path_);
    }
    ~TempDir() {
        std::error_code ec;
        fs::remove_all(path_, ec);
    }
    const fs::path& path() const { return path_; }
    std::string file(const std::string& name) const { return (path_ / name).string(); }

private:
    fs::path path_;
};

inline void writeFile(const std::string& path, const Bytes& bytes) {
    std::ofstream f(path, std::ios::binary);
    f.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
}

inline Bytes readFile(const std::string& path) {
    std::ifstream f(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(f), {});
}

inline fs::path corpusDir() { return fs::path(VELMORIC_CORPUS_DIR); }

// The corpus files of one extension folder ("neo", "pi1"...), sorted.
inline std::vector<fs::path> corpusFiles(const std::string& folder) {
    std::vector<fs::path> out;
    std::error_code ec;
    for (auto it = fs::directory_iterator(corpusDir() / folder, ec); !ec && it != fs::directory_iterator();
         it.increment(ec))
        if (it->is_regular_file()) out.push_back(it->path());
    std::sort(out.begin(), out.end());
    return out;
}

#define SKIP_WITHOUT_CORPUS(folder)                                                      \
    do {                                                                                 \
        if (vtest::corpusFiles(folder).empty()) GTEST_SKIP() << "no corpus for " folder; \
    } while (0)

inline Bytes randomBytes(std::size_t n, std::uint32_t seed) {
    std::mt19937 rng(seed);
    Bytes b(n);
    for (auto& x : b) x = std::uint8_t(rng());
    return b;
}

// ---- Decoding in a test ---------------------------------------------------

// Staging arrays as the viewer has them after start-up.
inline std::unique_ptr<velmoric::Staging> freshStaging() {
    auto s = std::make_unique<velmoric::Staging>();
    s->buildTables();
    return s;
}

inline Bytes bytesOf(std::span<const std::uint8_t> b) { return {b.begin(), b.end()}; }

// Decodes `file` as the extension `ext` ("PI1", "tny"...) would dispatch it.
inline velmoric::Decoded decodeAs(velmoric::Staging& s, const Bytes& file, const char* ext) {
    const velmoric::Format* f = velmoric::findFormat(ext);
    EXPECT_NE(f, nullptr) << ext;
    if (!f) return velmoric::rejectedSource();
    return velmoric::decodeWith(*f, s, velmoric::Source{file, file.size()});
}

// ---- A literal reference of the bitmap layouts --------------------------
// Written straight from the layout tables, pixel by pixel, with none of the
// decoders' shortcuts, so that fast paths are checked against plain rules.

inline void put32(Bytes& b, std::size_t at, std::uint32_t v) {
    for (int i = 0; i < 4; ++i) b[at + i] = std::uint8_t(v >> (8 * i));
}

// Header fields by offset, as the layout table gives them.
inline Bytes referenceHeader(std::uint32_t fileSize, std::uint32_t offset, std::uint32_t w, std::uint32_t h,
                             std::uint16_t bpp, std::uint32_t imageSize, std::uint32_t ppm, std::uint32_t colours) {
    Bytes b(54, 0);
    b[0] = 'B';
    b[1] = 'M';
    put32(b, 2, fileSize);
    put32(b, 10, offset);
    put32(b, 14, 40);
    put32(b, 18, w);
    put32(b, 22, h);
    b[26] = 1;
    b[28] = std::uint8_t(bpp);
    put32(b, 34, imageSize);
    put32(b, 38, ppm);
    put32(b, 42, ppm);
    put32(b, 46, colours);
    put32(b, 50, colours);
    return b;
}

// ST colour word (first byte F, second byte S) -> palette entry B, G, R, 0.
inline void appendStColour(Bytes& out, std::uint8_t f, std::uint8_t s) {
    out.push_back(std::uint8_t((s & 7) * 36));
    out.push_back(std::uint8_t(((s >> 4) & 7) * 36));
    out.push_back(std::uint8_t((f & 7) * 36));
    out.push_back(0);
}

// A 320 by 200 picture of `planes` interleaved planes (4: low, 2: medium,
// 1: mono 640 by 400) given as an Atari screen of 32000 bytes, with the 16
// colour words as 32 file bytes. Builds the whole expected bitmap file.
inline Bytes referenceScreenBitmap(const Bytes& screen, const Bytes& palette32, int planes) {
    if (planes == 1) {
        Bytes out = referenceHeader(32062, 62, 640, 400, 1, 32000, 0, 2);
        out.insert(out.end(), {0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0});
        for (int row = 399; row >= 0; --row)
            out.insert(out.end(), screen.begin() + row * 80, screen.begin() + row * 80 + 80);
        return out;
    }
    const int width = planes == 4 ? 320 : 640;
    Bytes out = planes == 4 ? referenceHeader(32118, 118, 320, 200, 4, 32000, 0, 16)
                            : referenceHeader(64118, 118, 640, 200, 4, 64000, 0, 16);
    for (int i = 0; i < 16; ++i) appendStColour(out, palette32[2 * i], palette32[2 * i + 1]);
    for (int row = 199; row >= 0; --row) {
        std::vector<int> colour(width);
        for (int x = 0; x < width; ++x) {
            const int group = x / 16, inGroup = x % 16;
            int c = 0;
            for (int p = 0; p < planes; ++p) {
                const int wordAt = row * 160 + (group * planes + p) * 2;  // byte offset of the plane's word
                const std::uint8_t b = screen[wordAt + (inGroup < 8 ? 0 : 1)];
                if (b & (0x80 >> (inGroup % 8))) c += 1 << p;
            }
            colour[x] = c;
        }
        for (int x = 0; x < width; x += 2) out.push_back(std::uint8_t(colour[x] << 4 | colour[x + 1]));
    }
    return out;
}

}  // namespace vtest
