#pragma once
// Shared helpers for the tests: temporary folders, the corpus of real
// pictures, random files and decoding as the viewer dispatches.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <memory>
#include <vector>

#include "decoders/decoder.h"
#include "formats/formats.h"

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

}  // namespace vtest
