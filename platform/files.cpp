#include "platform/files.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <system_error>

namespace velmoric::files {
namespace {

namespace fs = std::filesystem;

struct FileCloser {
    void operator()(std::FILE* f) const { std::fclose(f); }
};
using FilePtr = std::unique_ptr<std::FILE, FileCloser>;

[[noreturn]] void fail(const std::string& path, const char* what, int err) {
    throw PlatformError(path, std::string(what) + ": " + std::strerror(err));
}

FilePtr openExistingForReading(const std::string& path) {
    std::error_code ec;
    if (fs::is_directory(path, ec)) fail(path, "cannot read", EISDIR);
    FilePtr f(std::fopen(path.c_str(), "rb"));
    if (!f) fail(path, "cannot read", errno);
    return f;
}

void writeAll(std::FILE* f, const std::string& path, std::span<const std::uint8_t> bytes) {
    if (!bytes.empty() && std::fwrite(bytes.data(), 1, bytes.size(), f) != bytes.size())
        fail(path, "cannot write", errno ? errno : EIO);
    if (std::fflush(f) != 0) fail(path, "cannot write", errno);
}

}  // namespace

SourceData readSource(const std::string& path, std::size_t limit) {
    FilePtr f = openExistingForReading(path);
    SourceData out;
    out.bytes.resize(limit);
    const std::size_t got = std::fread(out.bytes.data(), 1, limit, f.get());
    if (std::ferror(f.get())) fail(path, "cannot read", errno ? errno : EIO);
    out.bytes.resize(got);
    out.length = got;
    if (got == limit) {
        if (std::fseek(f.get(), 0, SEEK_END) == 0) {
            const long end = std::ftell(f.get());
            if (end > 0) out.length = std::uint64_t(end);
        }
    }
    return out;
}

void writeOver(const std::string& path, std::span<const std::uint8_t> bytes) {
    FilePtr f(std::fopen(path.c_str(), "r+b"));
    if (!f && errno == ENOENT) f.reset(std::fopen(path.c_str(), "w+b"));
    if (!f) fail(path, "cannot write", errno);
    writeAll(f.get(), path, bytes);
}

void writeWhole(const std::string& path, std::span<const std::uint8_t> bytes) {
    FilePtr f(std::fopen(path.c_str(), "wb"));
    if (!f) fail(path, "cannot write", errno);
    writeAll(f.get(), path, bytes);
}

std::vector<std::uint8_t> readWhole(const std::string& path) {
    FilePtr f = openExistingForReading(path);
    std::vector<std::uint8_t> out;
    std::uint8_t buf[65536];
    std::size_t got;
    while ((got = std::fread(buf, 1, sizeof buf, f.get())) > 0) out.insert(out.end(), buf, buf + got);
    if (std::ferror(f.get())) fail(path, "cannot read", errno ? errno : EIO);
    return out;
}

void remove(const std::string& path) {
    if (std::remove(path.c_str()) != 0) fail(path, "cannot delete", errno);
}

bool folderWritable(const std::string& folder) { return ::access(folder.c_str(), W_OK | X_OK) == 0; }

bool isTerminal(int fd) { return ::isatty(fd) == 1; }

std::string runtimeFolder() {
    if (const char* xdg = std::getenv("XDG_RUNTIME_DIR"); xdg && *xdg && folderWritable(xdg)) return xdg;
    std::error_code ec;
    auto tmp = fs::temp_directory_path(ec);
    return ec ? std::string("/tmp") : tmp.string();
}

std::string programFolder() {
    std::error_code ec;
    auto exe = fs::read_symlink("/proc/self/exe", ec);
    if (ec) return fs::current_path(ec).string();
    auto folder = exe.parent_path().string();
    return folder.empty() ? std::string("/") : folder;
}

}  // namespace velmoric::files
