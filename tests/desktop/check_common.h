#pragma once
// What the checks of the installed plugins share: the lists they are given
// and the type the table gives a file name.
#include <algorithm>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include <iterator>
#include <memory>

#include "cycles/cycles.h"
#include "formats/formats.h"

namespace vcheck {

// The lines of a list, split at a tab: a picture and the converter's bitmap
// of it, or a broken file alone.
inline std::vector<std::pair<std::string, std::string>> readList(const char* path) {
    std::vector<std::pair<std::string, std::string>> out;
    std::ifstream in(path);
    for (std::string line; std::getline(in, line);) {
        const auto tab = std::min(line.find('\t'), line.size());
        out.emplace_back(line.substr(0, tab), line.substr(std::min(tab + 1, line.size())));
    }
    return out;
}

// The row of a file name by its extension in any case, as the desktop's globs match.
inline const velmoric::Format* rowOf(const std::string& name) {
    std::string ext = velmoric::extensionOf(name);
    std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return char(std::tolower(c)); });
    return velmoric::findFormat(ext);
}

// Prints a failure with the file it concerns and counts it.
inline int failures = 0;
inline void fail(const std::string& file, const std::string& what) {
    ++failures;
    std::cerr << file << ": " << what << "\n";
}

inline std::vector<std::uint8_t> bytesOf(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<std::uint8_t>(std::istreambuf_iterator<char>(in), {});
}

// What the core makes of a picture: the converter's bitmap and the
// palettes its colours cycle through.
struct Expected {
    std::vector<std::uint8_t> bitmap;
    velmoric::cycles::Animation animation;
};
inline Expected expectedOf(const std::string& path) {
    static const auto staging = [] {
        auto s = std::make_unique<velmoric::Staging>();
        s->buildTables();
        return s;
    }();
    staging->resetToFresh();
    const auto bytes = bytesOf(path);
    const velmoric::Source src{std::span(bytes).first(std::min(bytes.size(), velmoric::kSourceLimit)), bytes.size()};
    const velmoric::Format& format = *rowOf(path);
    const velmoric::Decoded d = velmoric::decodeWith(format, *staging, src);
    return {{d.bitmap.begin(), d.bitmap.end()}, velmoric::cycles::animationOf(format, src, d)};
}

}  // namespace vcheck
