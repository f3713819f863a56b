#include "platform/folders.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace velmoric::files {
namespace {

[[noreturn]] void fail(const std::string& path, const char* what, int err) {
    throw PlatformError(path, std::string(what) + ": " + std::strerror(err));
}

// Every change of the folder's entries, and of the folder itself.
constexpr std::uint32_t kEntryEvents =
    IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

}  // namespace

std::string currentFolder() {
    std::vector<char> buffer(4096);
    while (::getcwd(buffer.data(), buffer.size()) == nullptr) {
        if (errno != ERANGE) fail(".", "cannot find the current folder", errno);
        buffer.resize(buffer.size() * 2);
    }
    return buffer.data();
}

void changeFolder(const std::string& path) {
    if (::chdir(path.c_str()) != 0) fail(path, "cannot change to this folder", errno);
}

std::vector<std::string> normalFiles(const std::string& folder, bool* sawLink) {
    DIR* dir = ::opendir(folder.c_str());
    if (!dir) fail(folder, "cannot list the folder", errno);
    std::vector<std::string> names;
    bool link = false;
    errno = 0;
    while (const dirent* entry = ::readdir(dir)) {
        if (entry->d_name[0] == '.') continue;  // hidden, and the folder and its parent
        unsigned char type = entry->d_type;
        struct stat st {};
        if (type == DT_UNKNOWN && ::fstatat(::dirfd(dir), entry->d_name, &st, AT_SYMLINK_NOFOLLOW) == 0)
            type = S_ISLNK(st.st_mode) ? DT_LNK : S_ISREG(st.st_mode) ? DT_REG : DT_UNKNOWN;
        if (type == DT_LNK) {
            link = true;
            const bool toRegular = ::fstatat(::dirfd(dir), entry->d_name, &st, 0) == 0 && S_ISREG(st.st_mode);
            type = toRegular ? DT_REG : DT_UNKNOWN;
        }
        if (type == DT_REG) names.emplace_back(entry->d_name);
        errno = 0;
    }
    const int err = errno;
    ::closedir(dir);
    if (err != 0) fail(folder, "cannot list the folder", err);
    std::sort(names.begin(), names.end());
    if (sawLink) *sawLink = link;
    return names;
}

FolderLister::~FolderLister() {
    if (notify_ >= 0) ::close(notify_);
}

bool FolderLister::unchanged() {
    if (!kept_ || watch_ < 0) return false;
    struct stat here {};
    if (::stat(".", &here) != 0 || here.st_dev != device_ || here.st_ino != inode_) return false;
    // Any event at all: the kernel queues them before the change returns to
    // whoever made it, so an empty queue means the entries are as listed.
    alignas(inotify_event) char events[4096];
    bool quiet = true;
    while (::read(notify_, events, sizeof events) > 0) quiet = false;
    return quiet && errno == EAGAIN;
}

void FolderLister::watchCurrentFolder() {
    kept_.reset();
    if (watch_ >= 0) ::inotify_rm_watch(notify_, watch_);
    watch_ = -1;
    if (notify_ < 0) notify_ = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (notify_ < 0) return;  // no watch to be had: list every time
    alignas(inotify_event) char events[4096];
    while (::read(notify_, events, sizeof events) > 0) {
    }
    struct stat here {};
    if (::stat(".", &here) != 0) return;
    // Watched before the folder is read: a change during the read shows as
    // an event and the next call reads again.
    watch_ = ::inotify_add_watch(notify_, ".", kEntryEvents);
    device_ = here.st_dev;
    inode_ = here.st_ino;
}

FolderListing FolderLister::list() {
    if (unchanged()) return kept_;
    watchCurrentFolder();
    bool sawLink = false;
    std::vector<std::string> found;
    try {
        found = normalFiles(".", &sawLink);
    } catch (const PlatformError& e) {
        std::string here = ".";
        try {
            here = currentFolder();
        } catch (const PlatformError&) {
        }
        throw PlatformError(here, e.reason());
    }
    auto names = std::make_shared<const std::vector<std::string>>(std::move(found));
    if (watch_ >= 0 && !sawLink) kept_ = names;
    return names;
}

}  // namespace velmoric::files
