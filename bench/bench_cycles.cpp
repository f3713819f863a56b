// The play of colour cycles in the real window, run by hand (offscreen unless
// a display is asked for with QT_QPA_PLATFORM, e.g. under xvfb-run with
// QT_QPA_PLATFORM=xcb): the processor's share over 5 seconds with the
// picture still, then over 5 seconds playing, from the process's CPU time.
// Playing must cost under 2 % of a core more than standing still.
// Usage: velmoric_bench_cycles [PICTURE] [seconds]; the default picture is
// LOGO.PC1 of the shared corpus. Exit status 1 when the bar is missed.
#include <unistd.h>

#include <QApplication>
#include <QEventLoop>
#include <QTimer>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string>

#include "platform/qt/form1.h"

using namespace velmoric;
using namespace velmoric::qt;
namespace fs = std::filesystem;

namespace {

class BenchPlatform : public QtPlatform {
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

double processSeconds() {
    timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return double(t.tv_sec) + double(t.tv_nsec) * 1e-9;
}

double monotonicSeconds() {
    timespec t{};
    clock_gettime(CLOCK_MONOTONIC, &t);
    return double(t.tv_sec) + double(t.tv_nsec) * 1e-9;
}

// The share of a core the process took while the event loop ran `seconds`.
double shareWhileRunning(double seconds) {
    const double cpu = processSeconds(), wall = monotonicSeconds();
    QEventLoop loop;
    QTimer::singleShot(int(seconds * 1000), &loop, &QEventLoop::quit);
    loop.exec();
    return (processSeconds() - cpu) / (monotonicSeconds() - wall) * 100;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string picture = argc > 1 ? argv[1] : std::string(VELMORIC_CORPUS_DIR) + "/pc1/LOGO.PC1";
    const double seconds = argc > 2 ? std::max(1.0, std::atof(argv[2])) : 5.0;
    const fs::path root = fs::temp_directory_path() / ("velmoric-bench-cycles-" + std::to_string(getpid()));
    fs::create_directories(root / "config");
    fs::create_directories(root / "runtime");
    fs::permissions(root / "runtime", fs::perms::owner_all);
    setenv("XDG_CONFIG_HOME", (root / "config").c_str(), 1);
    setenv("XDG_RUNTIME_DIR", (root / "runtime").c_str(), 1);
    if (!std::getenv("QT_QPA_PLATFORM")) setenv("QT_QPA_PLATFORM", "offscreen", 1);
    int qtArgc = 1;
    QApplication app(qtArgc, argv);
    int status = 0;
    {
        BenchPlatform platform;
        Form1 form(platform);
        form.load();
        form.timer1()->stop();
        form.show();
        form.viewer().Form_LinkExecute(picture);
        QCoreApplication::processEvents();
        if (!form.viewer().animation.animated()) {
            std::fprintf(stderr, "%s: the picture has no colour cycles\n", picture.c_str());
            status = 2;
        } else {
            const double still = shareWhileRunning(seconds);
            form.cycleAction()->trigger();
            const double playing = shareWhileRunning(seconds);
            std::printf("%s, %zu frames in %.2f s, window %dx%d on %s\n", picture.c_str(),
                        form.viewer().animation.frames.size(),
                        double(form.viewer().animation.periodTicks()) / cycles::kTicksPerSecond,
                        form.image1()->width(), form.image1()->height(), qPrintable(QApplication::platformName()));
            std::printf("still: %.2f %% of a core; playing: %.2f %%; the play costs %.2f %% (bar 2 %%)\n", still,
                        playing, playing - still);
            if (playing - still >= 2 || platform.boxes) status = 1;
        }
    }
    std::error_code ec;
    fs::remove_all(root, ec);
    return status;
}
