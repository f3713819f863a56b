#pragma once
// What the checks of the installed plugin and loader share: the list of
// pictures with the converter's bitmap of each, the type the table gives a
// name, and the broken files every reader must refuse.
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "shell/formats.h"

namespace vcheck {

struct Listed {
    std::string picture, bitmap;  // a shared picture and the converter's bitmap of it
};

// Lines "picture<TAB>bitmap".
inline std::vector<Listed> readList(const std::string& path) {
    std::vector<Listed> out;
    std::ifstream in(path);
    for (std::string line; std::getline(in, line);) {
        const auto tab = line.find('\t');
        if (tab != std::string::npos) out.push_back({line.substr(0, tab), line.substr(tab + 1)});
    }
    return out;
}

// The row of a file name by its last three characters, in any case, as the
// desktop's globs match.
inline const velmoric::Format* rowOf(const std::string& name) {
    std::string ext = velmoric::extensionOf(name);
    for (char& c : ext) c = char(std::tolower(static_cast<unsigned char>(c)));
    return velmoric::findFormat(ext);
}

inline std::vector<char> bytesOf(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<char>(std::istreambuf_iterator<char>(in), {});
}

// For every extension: an empty file, three of 100 random bytes, and the
// first listed picture of the extension cut to 60 bytes or to half its
// length, whichever is shorter.
inline std::vector<std::string> writeBrokenFiles(const std::vector<Listed>& list, const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    std::vector<std::string> out;
    std::mt19937 rng(16);
    auto write = [&](const std::string& name, const std::vector<char>& bytes) {
        const std::string path = (folder / name).string();
        std::ofstream(path, std::ios::binary).write(bytes.data(), std::streamsize(bytes.size()));
        out.push_back(path);
    };
    for (const velmoric::Format& f : velmoric::formatTable()) {
        const std::string ext(f.lower);
        write("empty." + ext, {});
        for (int i = 0; i < 3; ++i) {
            std::vector<char> random(100);
            for (char& c : random) c = char(rng());
            write("random" + std::to_string(i) + "." + ext, random);
        }
        for (const Listed& l : list)
            if (rowOf(l.picture) == &f) {
                std::vector<char> bytes = bytesOf(l.picture);
                bytes.resize(std::min<std::size_t>(60, bytes.size() / 2));
                write("cut." + ext, bytes);
                break;
            }
    }
    return out;
}

// Counts failures and prints each with the file it concerns.
class Failures {
public:
    void add(const std::string& file, const std::string& what) {
        if (++count_ <= 40) std::cerr << file << ": " << what << "\n";
    }
    int finish(const char* what, std::size_t pictures, std::size_t broken) const {
        std::cout << what << ": " << pictures << " pictures, " << broken << " broken files, " << count_
                  << " failures\n";
        return count_ == 0 ? 0 : 1;
    }

private:
    int count_ = 0;
};

}  // namespace vcheck
