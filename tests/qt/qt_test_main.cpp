// The window tests run the real widgets under the offscreen platform. The
// settings store and the desktop folders point into a folder of the test
// run, set before Qt looks at them for the first time.
#include <QApplication>

#include <cstdlib>

#include "../support.h"

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    if (!std::getenv("QT_QPA_PLATFORM")) setenv("QT_QPA_PLATFORM", "offscreen", 1);
    // Removed after the application, which is made after it. Each window
    // test makes the configuration folder afresh.
    const vtest::TempDir root;
    std::filesystem::create_directories(root.path() / "runtime");
    std::filesystem::permissions(root.path() / "runtime", std::filesystem::perms::owner_all);
    setenv("XDG_CONFIG_HOME", root.file("config").c_str(), 1);
    setenv("XDG_RUNTIME_DIR", root.file("runtime").c_str(), 1);
    setenv("HOME", root.path().c_str(), 1);
    // No session bus: every window here is a lone copy, and none hands its
    // command line to a viewer that runs on the desktop.
    setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + root.file("no-bus")).c_str(), 1);
    QApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
