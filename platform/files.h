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

// Reads at most `limit` bytes from the start of a regular file (a link to one
// counts). A FIFO, a device, a socket or a folder is refused without waiting
// and without being read. Never creates or changes anything.
SourceData readSource(const std::string& path, std::size_t limit);

// Reads a whole regular file, with the same refusals; a file longer than
// `limit` bytes is refused unread.
std::vector<std::uint8_t> readWhole(const std::string& path, std::size_t limit);

// Creates the file anew with `bytes`, readable by the user alone: a file of
// that name is removed first, and the new one is created exclusively, never
// through a link. For files in a folder only this process writes.
void writeNew(const std::string& path, std::span<const std::uint8_t> bytes);

// Replaces the file with `bytes` in one step: the bytes go to a new file in
// the same folder, which is flushed to the disk (unless `flush` says later)
// and then renamed over the name, or linked to it when there was none. A
// failure, or with the flush a power loss, leaves the old file (or no file)
// under the name and no partial file; a link at the name is replaced, not
// followed.
// Whether the bytes reach the disk before the name does. What the viewer
// saves is flushed, so that a power loss cannot leave an empty file under
// its name; the converter's outputs, which their sources can always give
// again, are not, which keeps a batch several times as fast.
enum class Flush { toDisk, later };
void replaceAtomically(const std::string& path, std::span<const std::uint8_t> bytes, Flush flush = Flush::toDisk);

void remove(const std::string& path);
bool isTerminal(int fd);

// The user's runtime folder: XDG_RUNTIME_DIR, else the system's temporary folder.
std::string runtimeFolder();
// The folder that holds the running program, without a trailing separator
// except at the root.
std::string programFolder();

// A folder of this process alone (mode 0700, a fresh random name under the
// runtime folder), made on first use and removed with everything in it when
// the object ends, and also when SIGTERM, SIGHUP or SIGINT ends the process
// (unless the process ignores or handles that signal itself).
class PrivateFolder {
public:
    PrivateFolder() = default;
    ~PrivateFolder();
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;

    // The folder's path; throws PlatformError when it cannot be made.
    const std::string& path();

private:
    std::string path_;
    int slot_ = -1;  // where the signal handlers find the path
};

}  // namespace files
}  // namespace velmoric
