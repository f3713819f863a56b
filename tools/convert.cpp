#include "tools/convert.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <ostream>
#include <sstream>
#include <thread>

#include "platform/files.h"
#include "shell/formats.h"
#include "tools/png.h"

namespace velmoric {
namespace {

namespace fs = std::filesystem;

struct Job {
    std::string source;
    std::string output;  // empty with --info
};

struct JobResult {
    bool done = false;
    bool ok = false;
    std::string line;  // what to print: an info line, or "path: reason"
};

bool isPictureName(const fs::path& p) { return findFormat(extensionOf(p.filename().string())) != nullptr; }

std::string outputName(const ConvertOptions& o, const fs::path& source, const fs::path& relativeFolder) {
    const std::string suffix = o.format == OutputFormat::Png ? ".png" : ".bmp";
    const std::string name = source.filename().string() + suffix;
    if (o.outputFolder.empty()) return (source.parent_path() / name).string();
    return (fs::path(o.outputFolder) / relativeFolder / name).lexically_normal().string();
}

// Expands folders into the picture files they hold, in name order.
std::vector<Job> collectJobs(const ConvertOptions& o) {
    std::vector<Job> jobs;
    for (const std::string& input : o.inputs) {
        std::error_code ec;
        if (!fs::is_directory(input, ec)) {
            jobs.push_back({input, o.info ? std::string() : outputName(o, input, {})});
            continue;
        }
        std::vector<fs::path> found;
        auto consider = [&](const fs::directory_entry& e) {
            std::error_code fileEc;
            if (e.is_regular_file(fileEc) && isPictureName(e.path())) found.push_back(e.path());
        };
        if (o.recursive) {
            for (auto it = fs::recursive_directory_iterator(input, fs::directory_options::skip_permission_denied, ec);
                 !ec && it != fs::recursive_directory_iterator(); it.increment(ec))
                consider(*it);
        } else {
            for (auto it = fs::directory_iterator(input, ec); !ec && it != fs::directory_iterator(); it.increment(ec))
                consider(*it);
        }
        std::sort(found.begin(), found.end());
        for (const fs::path& p : found) {
            const fs::path relative = p.parent_path().lexically_relative(input);
            jobs.push_back({p.string(), o.info ? std::string() : outputName(o, p, relative)});
        }
    }
    return jobs;
}

JobResult runJob(const ConvertOptions& o, const Job& job) {
    JobResult r;
    r.done = true;
    FileDecode d = decodeFile(job.source);
    if (!d.ok) {
        r.line = job.source + ": " + d.reason;
        return r;
    }
    if (o.info) {
        r.ok = true;
        r.line = job.source + "\t" + d.caption.substr(1) + "\t" + std::to_string(d.kind) + "\t" +
                 std::to_string(d.width) + "x" + std::to_string(d.height);
        return r;
    }
    try {
        if (!o.outputFolder.empty()) fs::create_directories(fs::path(job.output).parent_path());
        if (o.format == OutputFormat::Png) {
            files::writeWhole(job.output, encodePng(Picture::fromBitmapBytes(d.bitmap)));
        } else {
            files::writeWhole(job.output, d.bitmap);
        }
        r.ok = true;
    } catch (const PlatformError& e) {
        r.line = job.source + ": " + e.reason() + " (" + e.path() + ")";
    } catch (const std::exception& e) {
        r.line = job.source + ": " + e.what();
    }
    return r;
}

}  // namespace

FileDecode decodeFile(const std::string& path) {
    FileDecode d;
    const std::string name = fs::path(path).filename().string();
    const std::string extension = extensionOf(name);
    const Format* format = findFormat(extension);
    if (!format) {
        d.reason = "no decoder for the extension '" + extension + "'";
        return d;
    }
    SourceData data;
    try {
        data = files::readSource(path, kSourceLimit);
    } catch (const PlatformError& e) {
        d.reason = e.reason();
        return d;
    }
    auto staging = std::make_unique<Staging>();
    staging->buildTables();
    const Decoded result = decodeWith(*format, *staging, Source{data.bytes, data.length});
    if (result.rejected) {
        d.reason = "not a valid " + std::string(format->description) + " file";
        return d;
    }
    d.ok = true;
    d.caption = std::string(result.caption);
    d.kind = result.kind;
    d.bitmap.assign(result.bitmap.begin(), result.bitmap.end());
    d.width = nativeSizeOfKind(result.kind).width;
    d.height = nativeSizeOfKind(result.kind).height;
    return d;
}

std::string convertUsage() {
    std::ostringstream s;
    s << "usage: velmoric-convert [-o DIR] [-f bmp|png] [-j N] [-r] [--info] [-q] FILE|DIR...\n"
         "Decodes Atari ST and MacPaint pictures to Windows bitmaps (PI1 -> PI1.bmp) or PNG.\n"
         "  -o DIR      write the outputs into DIR instead of beside each source\n"
         "  -f bmp|png  output format (default bmp: the exact bitmap the viewer shows)\n"
         "  -j N        decode N files at once (default: one for each core)\n"
         "  -r          look for pictures in folders below the named folders too\n"
         "  --info      print path, format, kind and size of each picture; write nothing\n"
         "  -q          no progress line\n"
         "Formats, by the last three letters of the name (all capitals or all small letters):\n";
    for (const Format& f : formatTable())
        if (f.decode) s << "  " << f.upper << "  " << f.description << "\n";
    return s.str();
}

std::optional<ConvertOptions> parseConvertArgs(const std::vector<std::string>& args, std::ostream& err) {
    ConvertOptions o;
    bool onlyFiles = false;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        auto value = [&](const char* what) -> std::optional<std::string> {
            if (i + 1 >= args.size()) {
                err << "velmoric-convert: " << a << " needs " << what << "\n";
                return std::nullopt;
            }
            return args[++i];
        };
        if (onlyFiles || a.empty() || a[0] != '-' || a == "-") {
            o.inputs.push_back(a);
        } else if (a == "--") {
            onlyFiles = true;
        } else if (a == "-o") {
            auto v = value("a folder");
            if (!v) return std::nullopt;
            o.outputFolder = *v;
        } else if (a == "-f") {
            auto v = value("bmp or png");
            if (!v) return std::nullopt;
            if (*v == "bmp") o.format = OutputFormat::Bmp;
            else if (*v == "png") o.format = OutputFormat::Png;
            else {
                err << "velmoric-convert: unknown output format '" << *v << "' (bmp or png)\n";
                return std::nullopt;
            }
        } else if (a == "-j") {
            auto v = value("a number");
            if (!v) return std::nullopt;
            char* end = nullptr;
            const long n = std::strtol(v->c_str(), &end, 10);
            if (v->empty() || *end || n < 1 || n > 1024) {
                err << "velmoric-convert: -j needs a number from 1 to 1024\n";
                return std::nullopt;
            }
            o.jobs = int(n);
        } else if (a == "-r") {
            o.recursive = true;
        } else if (a == "--info") {
            o.info = true;
        } else if (a == "-q") {
            o.quiet = true;
        } else if (a == "-h" || a == "--help") {
            err << convertUsage();
            return std::nullopt;
        } else {
            err << "velmoric-convert: unknown option '" << a << "'\n";
            return std::nullopt;
        }
    }
    if (o.inputs.empty()) {
        err << convertUsage();
        return std::nullopt;
    }
    return o;
}

int runConvert(const std::vector<std::string>& args, std::ostream& out, std::ostream& err, bool errIsTerminal) {
    const std::optional<ConvertOptions> parsed = parseConvertArgs(args, err);
    if (!parsed) return 2;
    const ConvertOptions& o = *parsed;
    const std::vector<Job> jobs = collectJobs(o);
    std::vector<JobResult> results(jobs.size());
    const unsigned cores = std::max(1u, std::thread::hardware_concurrency());
    const std::size_t workers =
        std::min<std::size_t>(std::max<std::size_t>(1, o.jobs > 0 ? std::size_t(o.jobs) : cores), jobs.size());

    std::mutex m;
    std::condition_variable finished;
    std::atomic<std::size_t> next{0};
    auto work = [&] {
        for (std::size_t i; (i = next++) < jobs.size();) {
            JobResult r = runJob(o, jobs[i]);
            std::lock_guard lock(m);
            results[i] = std::move(r);
            finished.notify_one();
        }
    };
    std::vector<std::thread> pool;
    for (std::size_t t = 0; t < workers; ++t) pool.emplace_back(work);

    // Report in the order of the inputs, whatever order the workers finish in.
    const auto start = std::chrono::steady_clock::now();
    bool progressShown = false;
    bool anyFailed = false;
    std::size_t printed = 0;
    {
        std::unique_lock lock(m);
        while (printed < jobs.size()) {
            finished.wait_for(lock, std::chrono::milliseconds(200));
            bool wrote = false;
            for (; printed < jobs.size() && results[printed].done; ++printed, wrote = true) {
                const JobResult& r = results[printed];
                if (progressShown) err << "\r\033[K";
                if (!r.ok) {
                    anyFailed = true;
                    err << r.line << "\n";
                } else if (o.info) {
                    out << r.line << "\n";
                }
            }
            const bool slow = std::chrono::steady_clock::now() - start > std::chrono::seconds(1);
            if (errIsTerminal && !o.quiet && slow && printed < jobs.size() && (wrote || !progressShown)) {
                err << "\r\033[Kconverted " << printed << " of " << jobs.size() << " files" << std::flush;
                progressShown = true;
            }
        }
    }
    for (std::thread& t : pool) t.join();
    if (progressShown) err << "\r\033[K" << std::flush;
    return anyFailed ? 1 : 0;
}

}  // namespace velmoric
