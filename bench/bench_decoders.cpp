// Each decoder from source bytes in memory to the finished bitmap bytes,
// beside a baseline that copies a buffer of the same output size in the same
// run. Prints microseconds per picture for both, their ratio, and fails when
// a decoder takes more than half a millisecond for one picture: that would
// mean a loop that does far more work than the picture has.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "formats/formats.h"

namespace {

using namespace velmoric;
using Bytes = std::vector<std::uint8_t>;
namespace fs = std::filesystem;

constexpr double kLimitMicroseconds = 500;

// The first file of the folder whose name ends in the extension, in either
// case: packed formats are only as fast as their pictures are packed.
Bytes firstPicture(const fs::path& folder, const Format& f) {
    std::error_code ec;
    std::vector<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator(folder, ec)) {
        const std::string name = entry.path().filename().string();
        if (entry.is_regular_file() && findFormat(extensionOf(name)) == &f) files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    for (const fs::path& file : files) {
        std::ifstream in(file, std::ios::binary);
        Bytes b((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        if (!b.empty()) return b;
    }
    return {};
}

// A real picture where the corpus has one, else a generated one.
Bytes sourceFor(const Format& f) {
    const fs::path corpus(VELMORIC_CORPUS_DIR);
    if (Bytes real = firstPicture(corpus, f); !real.empty()) return real;
    return firstPicture(corpus.parent_path() / "synthetic", f);
}

struct Timing {
    double decode = 0, copy = 0;
};
std::map<std::string, Timing> timings;

class TimingReporter : public benchmark::ConsoleReporter {
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
    sources.reserve(formatTable().size());
    for (const Format& f : formatTable()) {
        sources.push_back(sourceFor(f));
        const Bytes& src = sources.back();
        if (src.empty()) {
            std::printf("%s: no picture to time\n", std::string(f.upper).c_str());
            continue;
        }
        const Format* format = &f;
        const std::size_t outSize = std::max<std::size_t>(decodeWith(f, *staging, Source{src, src.size()}).bitmap.size(), 1);
        const std::string ext(f.upper);
        benchmark::RegisterBenchmark(("decode/" + ext).c_str(), [format, &src](benchmark::State& state) {
            for (auto _ : state) {
                const Decoded d = decodeWith(*format, *staging, Source{src, src.size()});
                benchmark::DoNotOptimize(d.bitmap.data());
                benchmark::ClobberMemory();
            }
        })->Unit(benchmark::kMicrosecond);
        benchmark::RegisterBenchmark(("copy/" + ext).c_str(), [outSize](benchmark::State& state) {
            Bytes from(outSize, 0x5A), to(outSize);
            for (auto _ : state) {
                std::memcpy(to.data(), from.data(), outSize);
                benchmark::DoNotOptimize(to.data());
                benchmark::ClobberMemory();
            }
        })->Unit(benchmark::kMicrosecond);
    }
    benchmark::Initialize(&argc, argv);
    TimingReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();

    int over = 0;
    std::printf("\n%-6s %12s %12s %8s\n", "format", "decode us", "copy us", "ratio");
    for (const auto& [ext, t] : timings) {
        if (t.decode == 0 || t.copy == 0) continue;
        const bool tooSlow = t.decode > kLimitMicroseconds;
        over += tooSlow;
        std::printf("%-6s %12.1f %12.2f %8.1f%s\n", ext.c_str(), t.decode, t.copy, t.decode / t.copy,
                    tooSlow ? "  OVER 500 us" : "");
    }
    return over == 0 ? 0 : 1;
}
