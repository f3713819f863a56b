#pragma once
// Plain file operations on the local file system, shared by every platform
// implementation and by the converter. Failures throw PlatformError with a
// text that names the file and the reason.
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace velmoric {

class PlatformError : public std::runtime_error {
public:
    PlatformError(std::string path, std::string reason)
        : std::runtime_error(path + ": " + reason), path_(std::move(path)), reason_(std::move(reason)) {}
    const std::string& path() const { return path_; }
    const std::string& reason() const { return reason_; }

private:
    std::string path_;
    std::string reason_;
};

// The first bytes of a source file and its whole length.
struct SourceData {
    std::vector<std::uint8_t> bytes;  // at most the limit asked for
    std::uint64_t length = 0;         // the length of the whole file
};

namespace files {

// Reads at most `limit` bytes from the start of an existing regular file.
// Never creates or changes the file.
SourceData readSource(const std::string& path, std::size_t limit);

// Writes `bytes` from the first byte of the file on, creating it when it is
// missing. An existing file is not truncated: a longer old file keeps its tail.
void writeOver(const std::string& path, std::span<const std::uint8_t> bytes);

// Writes `bytes` as the whole new content of the file.
void writeWhole(const std::string& path, std::span<const std::uint8_t> bytes);

// Reads a whole file (for loading bitmaps back).
std::vector<std::uint8_t> readWhole(const std::string& path);

void remove(const std::string& path);
bool folderWritable(const std::string& folder);
bool isTerminal(int fd);

// The user's runtime folder: XDG_RUNTIME_DIR, else the system's temporary folder.
std::string runtimeFolder();
// The folder that holds the running program, without a trailing separator
// except at the root.
std::string programFolder();

}  // namespace files
}  // namespace velmoric
