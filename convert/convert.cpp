#include "convert/convert.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

#include "convert/gif.h"
#include "convert/png.h"
#include "platform/files.h"
#include "formats/formats.h"

namespace velmoric {
namespace {

namespace fs = std::filesystem;

struct Job {
    std::string source;
    std::string output;  // empty with --info
};

struct Collected {
    std::vector<Job> jobs;
    std::vector<std::string> errors;  // lines for inputs that gave no job
};

struct JobResult {
    bool done = false;
    bool ok = false;
    std::string line;  // what to print: an info line, or "path: reason"
};

bool isPictureName(const fs::path& p) { return findFormat(extensionOf(p.filename().string())) != nullptr; }

std::string outputName(const ConvertOptions& o, const fs::path& source, const fs::path& relativeFolder) {
    const std::string suffix = o.format == OutputFormat::Png ? ".png" : o.format == OutputFormat::Gif ? ".gif" : ".bmp";
    const std::string name = source.filename().string() + suffix;
    if (o.outputFolder.empty()) return (source.parent_path() / name).string();
    return (fs::path(o.outputFolder) / relativeFolder / name).lexically_normal().string();
}

// The picture files a folder holds (with -r, also below it), in name order.
std::vector<fs::path> picturesIn(const std::string& folder, bool recursive) {
    std::vector<fs::path> found;
    std::error_code ec;
    auto consider = [&](const fs::directory_entry& e) {
        std::error_code fileEc;
        if (e.is_regular_file(fileEc) && isPictureName(e.path())) found.push_back(e.path());
    };
    if (recursive) {
        for (auto it = fs::recursive_directory_iterator(folder, fs::directory_options::skip_permission_denied, ec);
             !ec && it != fs::recursive_directory_iterator(); it.increment(ec))
            consider(*it);
    } else {
        for (auto it = fs::directory_iterator(folder, ec); !ec && it != fs::directory_iterator(); it.increment(ec))
            consider(*it);
    }
    std::sort(found.begin(), found.end());
    return found;
}

// Expands folders into the picture files they hold.
Collected collectJobs(const ConvertOptions& o) {
    Collected c;
    for (const std::string& input : o.inputs) {
        std::error_code ec;
        if (!fs::is_directory(input, ec)) {
            c.jobs.push_back({input, o.info ? std::string() : outputName(o, input, {})});
            continue;
        }
        const std::vector<fs::path> found = picturesIn(input, o.recursive);
        if (found.empty()) c.errors.push_back(input + ": no picture files in this folder");
        for (const fs::path& p : found) {
            const fs::path relative = p.parent_path().lexically_relative(input);
            c.jobs.push_back({p.string(), o.info ? std::string() : outputName(o, p, relative)});
        }
    }
    return c;
}

// An output's absolute path in small letters: on a folder that ignores case
// (a FAT memory stick) X.PI1.bmp and x.pi1.bmp are one file.
std::string collisionKey(const std::string& output) {
    if (output.empty()) return {};
    std::string key = fs::absolute(output).lexically_normal().string();
    for (char& c : key)
        if (c >= 'A' && c <= 'Z') c = char(c - 'A' + 'a');
    return key;
}

// One line for every input whose output another input would write too.
std::vector<std::string> collisions(const std::vector<Job>& jobs) {
    std::vector<std::string> keys;
    std::map<std::string, std::vector<const Job*>> byOutput;
    for (const Job& j : jobs) {
        keys.push_back(collisionKey(j.output));
        if (!keys.back().empty()) byOutput[keys.back()].push_back(&j);
    }
    std::vector<std::string> lines;
    for (std::size_t i = 0; i < jobs.size(); ++i) {
        if (keys[i].empty()) continue;
        for (const Job* other : byOutput[keys[i]]) {
            if (other == &jobs[i]) continue;
            lines.push_back(jobs[i].source + ": " + other->source + " would be written to the same file " + jobs[i].output);
            break;
        }
    }
    return lines;
}

// Decodes without copying the bitmap: `bitmap` views the staging arrays.
FileDecode decodeInto(Staging& staging, const std::string& path, std::span<const std::uint8_t>& bitmap,
                      bool withCycles) {
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
    const Decoded result = decodeWith(*format, staging, Source{data.bytes, data.length});
    if (result.rejected) {
        d.reason = "not a valid " + std::string(format->description) + " file";
        return d;
    }
    d.ok = true;
    d.caption = std::string(result.caption);
    d.kind = result.kind;
    bitmap = result.bitmap;
    if (withCycles) d.frames = cycles::animationOf(*format, Source{data.bytes, data.length}, result).frames;
    d.width = nativeSizeOfKind(result.kind).width;
    d.height = nativeSizeOfKind(result.kind).height;
    return d;
}

// What one thread keeps from job to job: its staging block, and the output
// folder it made last, so that a folder of pictures is made once, not
// looked up again for every file.
struct Worker {
    FreshStaging staging;
    std::string madeFolder;
};

JobResult runJob(const ConvertOptions& o, const Job& job, Worker& worker) {
    JobResult r;
    r.done = true;
    std::span<const std::uint8_t> bitmap;
    const FileDecode d = worker.staging.decodeInPlace(job.source, bitmap, o.format == OutputFormat::Gif);
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
        if (!o.outputFolder.empty()) {
            std::string folder = fs::path(job.output).parent_path().string();
            if (folder != worker.madeFolder) fs::create_directories(folder);
            worker.madeFolder = std::move(folder);
        }
        if (o.format == OutputFormat::Png) {
            files::replaceAtomically(job.output, encodePng(Picture::fromBitmapBytes({bitmap.begin(), bitmap.end()})),
                                     files::Flush::later);
        } else if (o.format == OutputFormat::Gif) {
            files::replaceAtomically(
                job.output, encodeGif(Picture::fromBitmapBytes({bitmap.begin(), bitmap.end()}), d.frames),
                files::Flush::later);
        } else {
            files::replaceAtomically(job.output, bitmap, files::Flush::later);
        }
        r.ok = true;
    } catch (const PlatformError& e) {
        r.line = job.source + ": " + e.reason() + " (" + e.path() + ")";
    } catch (const std::exception& e) {
        r.line = job.source + ": " + e.what();
    }
    return r;
}

// Prints results in the order of the inputs, and a progress line on a
// terminal once a run takes longer than a second.
class Reporter {
public:
    Reporter(const ConvertOptions& o, Console& console, std::size_t total)
        : o_(o), console_(console), terminal_(console.errIsTerminal()), total_(total) {}
    ~Reporter() {
        if (progressShown_) console_.err("\r\033[K");
    }

    void print(const JobResult& r) {
        if (progressShown_) console_.err("\r\033[K");
        if (!r.ok) {
            failed = true;
            console_.err(r.line + "\n");
        } else if (o_.info) {
            console_.out(r.line + "\n");
        }
        ++printed_;
    }

    void progress(bool wrote) {
        const bool slow = std::chrono::steady_clock::now() - start_ > std::chrono::seconds(1);
        if (terminal_ && !o_.quiet && slow && printed_ < total_ && (wrote || !progressShown_)) {
            console_.err("\r\033[Kconverted " + std::to_string(printed_) + " of " + std::to_string(total_) + " files");
            progressShown_ = true;
        }
    }

    bool failed = false;

private:
    const ConvertOptions& o_;
    Console& console_;
    bool terminal_;
    std::size_t total_;
    std::size_t printed_ = 0;
    bool progressShown_ = false;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

// Every thread, this one too, takes the next job in turn; this thread also
// prints the results in input order as soon as all before them are done.
// With one thread nothing is started: the jobs run here, one by one.
class Pool {
public:
    Pool(const ConvertOptions& o, const std::vector<Job>& jobs, Reporter& report)
        : o_(o), jobs_(jobs), report_(report), results_(jobs.size()) {}

    void run(std::size_t threads) {
        std::vector<std::thread> helpers;
        for (std::size_t t = 1; t < threads; ++t)
            helpers.emplace_back([this] {
                Worker worker;
                while (runNext(worker)) {
                }
            });
        Worker worker;
        while (runNext(worker)) printReady(false);
        printRest();
        for (std::thread& t : helpers) t.join();
    }

private:
    // Runs the next job, if there is one left.
    bool runNext(Worker& worker) {
        std::size_t i;
        {
            std::lock_guard lock(m_);
            if (next_ == jobs_.size()) return false;
            i = next_++;
        }
        JobResult r = runJob(o_, jobs_[i], worker);
        std::lock_guard lock(m_);
        results_[i] = std::move(r);
        finished_.notify_one();
        return true;
    }

    void printReady(bool waited) {
        std::lock_guard lock(m_);
        printReadyLocked(waited);
    }

    void printReadyLocked(bool waited) {
        bool wrote = false;
        for (; printed_ < jobs_.size() && results_[printed_].done; ++printed_, wrote = true)
            report_.print(results_[printed_]);
        if (wrote || waited) report_.progress(wrote);
    }

    // Waits for the jobs the other threads still run; wakes when the next
    // result is there, or now and then for the progress line.
    void printRest() {
        std::unique_lock lock(m_);
        while (printed_ < jobs_.size()) {
            finished_.wait_for(lock, std::chrono::milliseconds(200), [&] { return results_[printed_].done; });
            printReadyLocked(true);
        }
    }

    const ConvertOptions& o_;
    const std::vector<Job>& jobs_;
    Reporter& report_;
    std::vector<JobResult> results_;
    std::mutex m_;
    std::condition_variable finished_;
    std::size_t next_ = 0;
    std::size_t printed_ = 0;
};

}  // namespace

FreshStaging::FreshStaging() : staging_(std::make_unique<Staging>()) { staging_->buildTables(); }
FreshStaging::~FreshStaging() = default;

FileDecode FreshStaging::decodeInPlace(const std::string& path, std::span<const std::uint8_t>& bitmap,
                                       bool withCycles) {
    if (used_) staging_->resetToFresh();
    used_ = true;
    return decodeInto(*staging_, path, bitmap, withCycles);
}

FileDecode FreshStaging::decode(const std::string& path) {
    std::span<const std::uint8_t> bitmap;
    FileDecode d = decodeInPlace(path, bitmap);
    d.bitmap.assign(bitmap.begin(), bitmap.end());
    return d;
}

FileDecode decodeFile(const std::string& path) {
    FreshStaging staging;
    return staging.decode(path);
}

std::string convertUsage() {
    std::string s =
        "usage: velmoric-convert [-o DIR] [-f bmp|png|gif] [-j N] [-r] [--info] [-q] FILE|DIR...\n"
         "Decodes Atari ST and MacPaint pictures to Windows bitmaps (PI1 -> PI1.bmp), PNG or GIF.\n"
         "  -o DIR      write the outputs into DIR instead of beside each source\n"
         "  -f bmp|png|gif  output format (default bmp: the exact bitmap the viewer shows);\n"
         "              a GIF of a picture with colour cycles plays them, looping for ever\n"
         "  -j N        decode N files at once (default: one for each core)\n"
         "  -r          look for pictures in folders below the named folders too\n"
         "  --info      print path, format, kind and size of each picture; write nothing\n"
         "  -q          no progress line\n"
         "Two inputs that would write the same output file (the same name from\n"
         "different folders into one -o DIR) are refused before anything is written;\n"
         "with -r the outputs keep the folders below the named folder. Every output is\n"
         "written whole before it takes its name, so none is ever left half written.\n"
         "Formats, by the last three letters of the name (all capitals or all small letters):\n";
    for (const Format& f : formatTable())
        if (f.decode) s += "  " + std::string(f.upper) + "  " + std::string(f.description) + "\n";
    return s;
}

std::optional<ConvertOptions> parseConvertArgs(const std::vector<std::string>& args, std::string& err) {
    ConvertOptions o;
    bool onlyFiles = false;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        auto value = [&](const char* what) -> std::optional<std::string> {
            if (i + 1 >= args.size()) {
                err += "velmoric-convert: " + a + " needs " + what + "\n";
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
            auto v = value("bmp, png or gif");
            if (!v) return std::nullopt;
            if (*v == "bmp") o.format = OutputFormat::Bmp;
            else if (*v == "png") o.format = OutputFormat::Png;
            else if (*v == "gif") o.format = OutputFormat::Gif;
            else {
                err += "velmoric-convert: unknown output format '" + *v + "' (bmp, png or gif)\n";
                return std::nullopt;
            }
        } else if (a.starts_with("-j")) {
            // "-j4" as well as "-j 4", as make and xargs take it.
            auto v = a.size() > 2 ? std::optional<std::string>(a.substr(2)) : value("a number");
            if (!v) return std::nullopt;
            char* end = nullptr;
            const long n = std::strtol(v->c_str(), &end, 10);
            if (v->empty() || *end || n < 1 || n > 1024) {
                err += "velmoric-convert: -j needs a number from 1 to 1024\n";
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
            err += convertUsage();
            return std::nullopt;
        } else {
            err += "velmoric-convert: unknown option '" + a + "'\n";
            return std::nullopt;
        }
    }
    if (o.inputs.empty()) {
        err += convertUsage();
        return std::nullopt;
    }
    return o;
}

int runConvert(const std::vector<std::string>& args, Console& console) {
    std::string usageErrors;
    const std::optional<ConvertOptions> parsed = parseConvertArgs(args, usageErrors);
    if (!parsed) {
        console.err(usageErrors);
        return 2;
    }
    const ConvertOptions& o = *parsed;
    const Collected collected = collectJobs(o);
    const std::vector<Job>& jobs = collected.jobs;
    if (jobs.size() > 1) {
        if (const std::vector<std::string> clashes = collisions(jobs); !clashes.empty()) {
            for (const std::string& line : clashes) console.err(line + "\n");
            return 2;
        }
    }
    for (const std::string& line : collected.errors) console.err(line + "\n");
    // One file is converted here, without asking how many cores there are.
    std::size_t workers = 1;
    if (jobs.size() > 1) workers = o.jobs > 0 ? std::size_t(o.jobs) : std::max(1u, std::thread::hardware_concurrency());
    workers = std::min(workers, jobs.size());
    bool failed = !collected.errors.empty();
    {
        Reporter report(o, console, jobs.size());
        Pool(o, jobs, report).run(workers);
        failed = failed || report.failed;
    }
    return failed ? 1 : 0;
}

}  // namespace velmoric
