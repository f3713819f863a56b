#include "platform/files.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

namespace velmoric::files {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const std::string& path, const char* what, int err) {
    throw PlatformError(path, std::string(what) + ": " + std::strerror(err));
}

// Closes a descriptor when it goes out of scope.
class Descriptor {
public:
    explicit Descriptor(int fd) : fd_(fd) {}
    ~Descriptor() {
        if (fd_ >= 0) ::close(fd_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return fd_; }
    int release() { return std::exchange(fd_, -1); }

private:
    int fd_;
};

const char* whatItIs(mode_t mode) {
    if (S_ISDIR(mode)) return "is a folder, not a picture file";
    if (S_ISFIFO(mode)) return "is a FIFO, not a picture file";
    if (S_ISCHR(mode)) return "is a character device, not a picture file";
    if (S_ISBLK(mode)) return "is a block device, not a picture file";
    if (S_ISSOCK(mode)) return "is a socket, not a picture file";
    return "is not a regular file";
}

// Opens a regular file for reading. O_NONBLOCK keeps the open of a FIFO from
// waiting for a writer; it has no effect on a regular file.
Descriptor openRegular(const std::string& path, struct stat& st) {
    Descriptor fd(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    if (fd.get() < 0) fail(path, "cannot read", errno);
    if (::fstat(fd.get(), &st) != 0) fail(path, "cannot read", errno);
    if (!S_ISREG(st.st_mode)) throw PlatformError(path, whatItIs(st.st_mode));
    return Descriptor(fd.release());
}

// Reads until `limit` bytes or the end of the file.
std::size_t readUpTo(int fd, const std::string& path, std::uint8_t* to, std::size_t limit) {
    std::size_t got = 0;
    while (got < limit) {
        const ssize_t n = ::read(fd, to + got, limit - got);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) fail(path, "cannot read", errno);
        if (n == 0) break;
        got += std::size_t(n);
    }
    return got;
}

void writeAll(int fd, const std::string& path, std::span<const std::uint8_t> bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) fail(path, "cannot write", n < 0 ? errno : EIO);
        done += std::size_t(n);
    }
}

void closeChecked(Descriptor& fd, const std::string& path) {
    if (::close(fd.release()) != 0) fail(path, "cannot write", errno);
}

// The folder a file named `target` goes into.
fs::path folderOf(const fs::path& target) { return target.has_parent_path() ? target.parent_path() : fs::path("."); }

// A name for a new file beside `target` that nobody else uses: a dot, the
// target's name and random letters.
std::string temporaryNameBeside(const fs::path& target) {
    static constexpr char letters[] = "abcdefghijklmnopqrstuvwxyz0123456789";
    std::uint64_t random = 0;
    if (::getentropy(&random, sizeof random) != 0) random = std::uint64_t(::getpid()) * 0x9E3779B97F4A7C15ull;
    std::string suffix;
    for (int i = 0; i < 10; ++i, random /= 36) suffix += letters[random % 36];
    return (folderOf(target) / ("." + target.filename().string() + "." + suffix)).string();
}

// Gives the unnamed file open at `fd` the name `path`, never replacing one.
// Kernels since 6.10 let its owner link it by the descriptor; older ones only
// through /proc/self/fd, whose first use costs a process a tenth of a
// millisecond.
bool linkDescriptor(int fd, const std::string& path) {
    if (::linkat(fd, "", AT_FDCWD, path.c_str(), AT_EMPTY_PATH) == 0) return true;
    if (errno == EEXIST) return false;
    const std::string self = "/proc/self/fd/" + std::to_string(fd);
    return ::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW) == 0;
}

// Writes a file that does not exist yet unnamed (O_TMPFILE) and gives it the
// name only once it is whole: one change to the folder instead of the two of a
// named temporary file and its rename. linkat never replaces a name, so a file
// or link that appeared there meanwhile makes it return false, as does a file
// system without unnamed files; the caller then takes the named way.
bool linkWhenWhole(const std::string& path, std::span<const std::uint8_t> bytes, Flush flush) {
    Descriptor fd(::open(folderOf(path).c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0666));
    if (fd.get() < 0) return false;
    writeAll(fd.get(), path, bytes);
    if (flush == Flush::toDisk && ::fsync(fd.get()) != 0) fail(path, "cannot write", errno);
    if (!linkDescriptor(fd.get(), path)) return false;
    if (::close(fd.release()) != 0) {
        const int err = errno;
        ::unlink(path.c_str());
        fail(path, "cannot write", err);
    }
    return true;
}

// ---- Private folders on the signals that end a process ---------------------
// A handler may call only async-signal-safe functions: the paths are copied
// into fixed slots beforehand, and the folder is emptied with raw getdents64,
// unlinkat and rmdir.

constexpr int kEndingSignals[] = {SIGTERM, SIGHUP, SIGINT};

struct FolderSlot {
    std::atomic<bool> claimed{false}, ready{false};
    char path[4096] = {};
};
FolderSlot folderSlots[8];

void emptyAndRemove(const char* folder) {
    const int fd = ::open(folder, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (fd >= 0) {
        alignas(8) char buffer[4096];
        for (long n; (n = ::syscall(SYS_getdents64, fd, buffer, sizeof buffer)) > 0;) {
            for (long at = 0; at < n;) {
                const auto* entry = reinterpret_cast<const struct dirent64*>(buffer + at);
                const char* name = entry->d_name;
                if (!(name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0))))
                    ::unlinkat(fd, name, 0);
                at += entry->d_reclen;
            }
        }
        ::close(fd);
    }
    ::rmdir(folder);
}

extern "C" void removeFoldersAndEnd(int signal) {
    for (FolderSlot& slot : folderSlots)
        if (slot.ready.load()) emptyAndRemove(slot.path);
    ::signal(signal, SIG_DFL);
    ::raise(signal);  // delivered with its default action once this returns
}

// Takes the ending signals that still have their default action.
void removeFoldersOnEndingSignals() {
    static std::atomic<bool> installed{false};
    if (installed.exchange(true)) return;
    for (const int signal : kEndingSignals) {
        struct sigaction old {};
        if (::sigaction(signal, nullptr, &old) != 0 || old.sa_handler != SIG_DFL ||
            (old.sa_flags & SA_SIGINFO))
            continue;
        struct sigaction ours {};
        ours.sa_handler = removeFoldersAndEnd;
        sigemptyset(&ours.sa_mask);
        for (const int other : kEndingSignals) sigaddset(&ours.sa_mask, other);
        ::sigaction(signal, &ours, nullptr);
    }
}

// The slot that now holds the path, or -1 when none is free.
int rememberFolder(const std::string& path) {
    if (path.size() >= sizeof FolderSlot::path) return -1;
    for (int i = 0; i < int(std::size(folderSlots)); ++i) {
        FolderSlot& slot = folderSlots[i];
        if (bool expected = false; !slot.claimed.compare_exchange_strong(expected, true)) continue;
        std::memcpy(slot.path, path.c_str(), path.size() + 1);
        slot.ready.store(true);
        removeFoldersOnEndingSignals();
        return i;
    }
    return -1;
}

void forgetFolder(int i) {
    if (i < 0) return;
    folderSlots[i].ready.store(false);
    folderSlots[i].claimed.store(false);
}

}  // namespace

SourceData readSource(const std::string& path, std::size_t limit) {
    struct stat st {};
    Descriptor fd = openRegular(path, st);
    SourceData out;
    out.bytes.resize(std::min<std::uint64_t>(limit, std::uint64_t(st.st_size)));
    out.bytes.resize(readUpTo(fd.get(), path, out.bytes.data(), out.bytes.size()));
    // A file that ended before the limit (or shrank while read) is as long as
    // what was read.
    out.length = out.bytes.size() < limit ? out.bytes.size() : std::max<std::uint64_t>(limit, st.st_size);
    return out;
}

std::vector<std::uint8_t> readWhole(const std::string& path, std::size_t limit) {
    struct stat st {};
    Descriptor fd = openRegular(path, st);
    if (std::uint64_t(st.st_size) > limit)
        throw PlatformError(path, "is larger than " + std::to_string(limit) + " bytes");
    std::vector<std::uint8_t> out(std::size_t(st.st_size));
    out.resize(readUpTo(fd.get(), path, out.data(), out.size()));
    return out;
}

void writeNew(const std::string& path, std::span<const std::uint8_t> bytes) {
    if (::unlink(path.c_str()) != 0 && errno != ENOENT) fail(path, "cannot replace", errno);
    Descriptor fd(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (fd.get() < 0) fail(path, "cannot write", errno);
    writeAll(fd.get(), path, bytes);
    closeChecked(fd, path);
}

void replaceAtomically(const std::string& path, std::span<const std::uint8_t> bytes, Flush flush) {
    // A file that is replaced keeps its mode; a new one gets the mode any
    // new file would, which the creation's 0666 under the umask gives.
    struct stat old {};
    const bool exists = ::lstat(path.c_str(), &old) == 0;
    if (!exists && linkWhenWhole(path, bytes, flush)) return;
    const bool replacing = exists && S_ISREG(old.st_mode);
    std::string temporary;
    int created = -1;
    for (int attempt = 0; attempt < 100 && created < 0; ++attempt) {
        temporary = temporaryNameBeside(fs::path(path));
        created = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
        if (created < 0 && errno != EEXIST) break;
    }
    if (created < 0) fail(path, "cannot write", errno);
    Descriptor fd(created);
    try {
        if (replacing && ::fchmod(fd.get(), old.st_mode & 07777) != 0) fail(path, "cannot write", errno);
        writeAll(fd.get(), path, bytes);
        // On the disk before the name moves to it: a power loss after the
        // rename must not find an empty file under the name.
        if (flush == Flush::toDisk && ::fsync(fd.get()) != 0) fail(path, "cannot write", errno);
        closeChecked(fd, path);
        if (::rename(temporary.c_str(), path.c_str()) != 0) fail(path, "cannot write", errno);
    } catch (...) {
        ::unlink(temporary.c_str());
        throw;
    }
}

void remove(const std::string& path) {
    if (std::remove(path.c_str()) != 0) fail(path, "cannot delete", errno);
}

bool isTerminal(int fd) { return ::isatty(fd) == 1; }

std::string runtimeFolder() {
    if (const char* xdg = std::getenv("XDG_RUNTIME_DIR"); xdg && *xdg && ::access(xdg, W_OK | X_OK) == 0) return xdg;
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

const std::string& PrivateFolder::path() {
    if (path_.empty()) {
        std::string name = (fs::path(runtimeFolder()) / "velmoric-XXXXXX").string();
        if (!::mkdtemp(name.data())) fail(name, "cannot make a private folder", errno);
        path_ = name;
        slot_ = rememberFolder(path_);
    }
    return path_;
}

PrivateFolder::~PrivateFolder() {
    if (path_.empty()) return;
    forgetFolder(slot_);
    std::error_code ec;
    fs::remove_all(path_, ec);
}

}  // namespace velmoric::files
