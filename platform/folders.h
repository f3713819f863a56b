#pragma once
// The process's current folder: where it is, moving it, and the list of the
// picture candidates in it, which a slide show walks through once per file.
// Failures throw PlatformError with the folder and the reason.
#include <sys/types.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/files.h"

namespace velmoric::files {

// Names of the normal files of a folder, sorted bytewise.
using FolderListing = std::shared_ptr<const std::vector<std::string>>;

std::string currentFolder();
void changeFolder(const std::string& path);

// The normal files of `folder`: regular files and links to them, without
// folders, FIFOs, devices, sockets and hidden files (a name that begins
// with a dot). `sawLink` tells whether a link was followed.
std::vector<std::string> normalFiles(const std::string& folder, bool* sawLink = nullptr);

// Lists the current folder, and lists it again only when something may
// have changed: the process moved to another folder, or the kernel reported
// an entry of the folder created, removed or renamed. A slide show asks for
// the listing once per file, so a pass costs time linear in the number of
// files instead of a new read of the whole folder each time. A folder with
// links is read every time, since a link's target can change unseen.
class FolderLister {
public:
    FolderLister() = default;
    ~FolderLister();
    FolderLister(const FolderLister&) = delete;
    FolderLister& operator=(const FolderLister&) = delete;

    FolderListing list();

private:
    bool unchanged();
    void watchCurrentFolder();

    int notify_ = -1;  // the inotify descriptor, made on first use
    int watch_ = -1;   // the watch on the folder of `kept_`
    dev_t device_ = 0;
    ino_t inode_ = 0;
    FolderListing kept_;
};

}  // namespace velmoric::files
