#pragma once
// Shared helpers for the tests: temporary folders, the corpus of real
// pictures, random files and decoding as the viewer dispatches.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <memory>
#include <vector>

#include "decoders/decoder.h"
#include "formats/formats.h"

namespace vtest {

using Bytes = std::vector<std::uint8_t>;
namespace fs = std::filesystem;

inline void writeFile(const std::string& path, const Bytes& bytes) {
    std::ofstream f(path, std::ios::binary);
    f.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
}

inline Bytes readFile(const std::string& path) {
    std::ifstream f(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(f), {});
}

inline std::string readText(const std::string& path) {
    const Bytes b = readFile(path);
    return {b.begin(), b.end()};
}

inline Bytes randomBytes(std::size_t n, std::uint32_t seed) {
    std::mt19937 rng(seed);
    Bytes b(n);
    for (auto& x : b) x = std::uint8_t(rng());
    return b;
}

// How many entries a folder holds.
inline long entryCount(const fs::path& folder) { return std::distance(fs::directory_iterator(folder), {}); }

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
    // A file of `size` random bytes at `name`, its folders made; its path.
    std::string random(const std::string& name, std::size_t size, std::uint32_t seed) const {
        fs::create_directories(fs::path(file(name)).parent_path());
        writeFile(file(name), randomBytes(size, seed));
        return file(name);
    }

private:
    fs::path path_;
};

inline fs::path corpusDir() { return fs::path(VELMORIC_CORPUS_DIR); }

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

// The bitmap a decode from fresh staging arrays gives.
inline Bytes decodeFresh(const Bytes& file, const char* ext) {
    return bytesOf(decodeAs(*freshStaging(), file, ext).bitmap);
}

}  // namespace vtest
