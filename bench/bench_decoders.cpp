// Each decoder from source bytes in memory to the finished bitmap bytes,
// beside a baseline that copies a buffer of the same output size in the same
// run. Prints the ratio of each decoder to its baseline and the limit it is
// held to (20 times; Spectrum formats 40 times).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <cstring>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "shell/formats.h"

namespace {

using namespace velmoric;
using Bytes = std::vector<std::uint8_t>;

Bytes randomBytes(std::size_t n, std::uint32_t seed) {
    std::mt19937 rng(seed);
    Bytes b(n);
    for (auto& x : b) x = std::uint8_t(rng());
    return b;
}

// The first real picture of the extension in the corpus, when it is there:
// packed formats are only as fast as their pictures are packed.
Bytes corpusPicture(std::string_view extension) {
    namespace fs = std::filesystem;
    std::error_code ec;
    const fs::path folder = fs::path(VELMORIC_CORPUS_DIR) / std::string(extension);
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(folder, ec)) files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    for (const fs::path& file : files) {
        std::ifstream in(file, std::ios::binary);
        Bytes b((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        if (!b.empty()) return b;
    }
    return {};
}

// A source of the usual length for the format: a real picture when there is
// one, else random bytes (uncompressed formats get their whole length,
// packed ones a stream long enough for a whole picture).
Bytes sourceFor(const Format& f) {
    if (Bytes real = corpusPicture(f.lower); !real.empty()) return real;
    // A sister format's real picture, re-headed: Tiny keeps its stream behind
    // the resolution byte, Crack Art's stream follows a shorter palette.
    const std::string_view e0 = f.upper;
    if (e0.substr(0, 2) == "TN") {
        Bytes b = corpusPicture("tn1");
        if (!b.empty() && e0 != "TNY") b[0] = std::uint8_t(e0[2] - '1');
        if (!b.empty()) return b;
    }
    if (e0 == "CA2" || e0 == "CA3") {
        Bytes b = corpusPicture("ca1");
        const std::size_t palette = e0 == "CA2" ? 24 : 32;  // of CA1's 32 bytes, what goes
        if (b.size() > 36) {
            b.erase(b.begin() + std::ptrdiff_t(36 - palette), b.begin() + 36);
            return b;
        }
    }
    const std::string_view e = f.upper;
    if (e == "NEO") return randomBytes(32128, 1);
    if (e == "SPU") return randomBytes(51104, 2);
    if (e[0] == 'P' && e[1] == 'I') return randomBytes(32034, 3);
    return randomBytes(40000, 4);
}

double limitFor(const Format& f) { return f.upper[0] == 'S' && f.upper[1] == 'P' ? 40.0 : 20.0; }

struct Timing {
    double decode = 0, copy = 0;
};
std::map<std::string, Timing> timings;

class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& r : runs) {
            if (r.run_type != Run::RT_Iteration) continue;
            const std::string name = r.benchmark_name();
            const auto slash = name.find('/');
            if (slash == std::string::npos) continue;
            Timing& t = timings[name.substr(slash + 1)];
            (name.rfind("decode", 0) == 0 ? t.decode : t.copy) = r.GetAdjustedRealTime();
        }
    }
};

}  // namespace

int main(int argc, char** argv) {
    static std::vector<Bytes> sources;
    static auto staging = std::make_unique<Staging>();
    staging->buildTables();
    std::map<std::string, double> limits;
    sources.reserve(formatTable().size());
    for (const Format& f : formatTable()) {
        if (!f.decode) continue;
        sources.push_back(sourceFor(f));
        const Bytes& src = sources.back();
        const Format* format = &f;
        const std::size_t outSize = decodeWith(f, *staging, Source{src, src.size()}).bitmap.size();
        const std::string ext(f.upper);
        limits[ext] = limitFor(f);
        benchmark::RegisterBenchmark(("decode/" + ext).c_str(), [format, &src](benchmark::State& state) {
            for (auto _ : state) {
                const Decoded d = decodeWith(*format, *staging, Source{src, src.size()});
                benchmark::DoNotOptimize(d.bitmap.data());
                benchmark::ClobberMemory();
            }
        });
        benchmark::RegisterBenchmark(("copy/" + ext).c_str(), [outSize](benchmark::State& state) {
            Bytes from = randomBytes(outSize, 5), to(outSize);
            for (auto _ : state) {
                std::memcpy(to.data(), from.data(), outSize);
                benchmark::DoNotOptimize(to.data());
                benchmark::ClobberMemory();
            }
        });
    }
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();

    int over = 0;
    std::printf("\n%-6s %12s %12s %8s %6s\n", "format", "decode ns", "copy ns", "ratio", "limit");
    for (const auto& [ext, t] : timings) {
        if (t.decode == 0 || t.copy == 0) continue;
        const double ratio = t.decode / t.copy;
        const bool tooSlow = ratio > limits[ext];
        over += tooSlow;
        std::printf("%-6s %12.0f %12.0f %8.1f %6.0f%s\n", ext.c_str(), t.decode, t.copy, ratio, limits[ext],
                    tooSlow ? "  OVER" : "");
    }
    return over == 0 ? 0 : 1;
}
