// The window tests run the real widgets under the offscreen platform. The
// settings store and the desktop folders point into a folder of the test
// run, set before Qt looks at them for the first time.
#include <QApplication>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <unistd.h>

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    if (!std::getenv("QT_QPA_PLATFORM")) setenv("QT_QPA_PLATFORM", "offscreen", 1);
    const std::filesystem::path root =
        std::filesystem::temp_directory_path() / ("velmoric-qt-tests-" + std::to_string(getpid()));
    std::filesystem::create_directories(root / "config");
    std::filesystem::create_directories(root / "runtime");
    std::filesystem::permissions(root / "runtime", std::filesystem::perms::owner_all);
    setenv("XDG_CONFIG_HOME", (root / "config").c_str(), 1);
    setenv("XDG_RUNTIME_DIR", (root / "runtime").c_str(), 1);
    setenv("HOME", root.c_str(), 1);
    // No session bus: every window here is a lone copy, and none hands its
    // command line to a viewer that runs on the desktop.
    setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + (root / "no-bus").string()).c_str(), 1);
    int status = 0;
    {
        QApplication app(argc, argv);
        status = RUN_ALL_TESTS();
    }
    std::error_code ec;
    std::filesystem::remove_all(root, ec);
    return status;
}
