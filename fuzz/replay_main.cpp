// Runs a fuzz target's body over files and folders without libFuzzer, so the
// seeds and every input that ever crashed replay in the ordinary and the
// sanitizer builds. Prints the slowest input.
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fs = std::filesystem;

int main(int argc, char** argv) {
    std::vector<fs::path> inputs;
    for (int i = 1; i < argc; ++i) {
        std::error_code ec;
        if (fs::exists(argv[i], ec) && !fs::is_directory(argv[i], ec)) inputs.push_back(argv[i]);
        for (auto it = fs::recursive_directory_iterator(argv[i], ec); !ec && it != fs::end(it); it.increment(ec))
            if (it->is_regular_file() && it->path().filename() != ".gitkeep") inputs.push_back(it->path());
    }
    std::sort(inputs.begin(), inputs.end());
    double slowest = 0;
    std::string slowestName = "none";
    for (const fs::path& p : inputs) {
        std::ifstream f(p, std::ios::binary);
        const std::vector<std::uint8_t> bytes((std::istreambuf_iterator<char>(f)), {});
        const auto start = std::chrono::steady_clock::now();
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
        const double ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
        if (ms > slowest) slowest = ms, slowestName = p.string();
    }
    std::printf("%zu inputs replayed; slowest %.2f ms (%s)\n", inputs.size(), slowest, slowestName.c_str());
    return 0;
}
