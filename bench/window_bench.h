#pragma once
// What the benches of the real window share: a platform that answers its
// boxes and asks no first-run question, the process's processor time, and
// private settings and runtime folders, removed at the end.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string>

#include "platform/qt/qtplatform.h"

namespace velmoric::bench {

class BenchPlatform : public qt::QtPlatform {
public:
    BenchPlatform() : QtPlatform({}) {}
    int boxes = 0;
    Answer messageBox(const std::string& text, const std::string&, Buttons buttons, Icon) override {
        ++boxes;
        std::fprintf(stderr, "box: %s\n", text.c_str());
        return buttons == Buttons::Ok ? Answer::Ok : Answer::No;
    }
    bool extensionRegistered(const std::string&) override { return true; }  // no first-run question
};

inline double processSeconds() {
    timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return double(t.tv_sec) + double(t.tv_nsec) * 1e-9;
}

// Settings and runtime folders of the bench's own, and the offscreen
// platform unless a display is asked for with QT_QPA_PLATFORM.
class BenchFolders {
public:
    explicit BenchFolders(const std::string& name)
        : root_(std::filesystem::temp_directory_path() / (name + "-" + std::to_string(getpid()))) {
        std::filesystem::create_directories(root_ / "config");
        std::filesystem::create_directories(root_ / "runtime");
        std::filesystem::permissions(root_ / "runtime", std::filesystem::perms::owner_all);
        setenv("XDG_CONFIG_HOME", (root_ / "config").c_str(), 1);
        setenv("XDG_RUNTIME_DIR", (root_ / "runtime").c_str(), 1);
        if (!std::getenv("QT_QPA_PLATFORM")) setenv("QT_QPA_PLATFORM", "offscreen", 1);
    }
    ~BenchFolders() {
        std::error_code ec;
        std::filesystem::current_path(std::filesystem::temp_directory_path(), ec);
        std::filesystem::remove_all(root_, ec);
    }
    const std::filesystem::path& root() const { return root_; }

private:
    std::filesystem::path root_;
};

}  // namespace velmoric::bench
