// The play of colour cycles in the real window, run by hand (offscreen unless
// a display is asked for with QT_QPA_PLATFORM, e.g. under xvfb-run with
// QT_QPA_PLATFORM=xcb): the processor's share over 5 seconds with the
// picture still, then over 5 seconds playing, from the process's CPU time.
// Playing must cost under 2 % of a core more than standing still.
// Usage: velmoric_bench_cycles [PICTURE] [seconds]; the default picture is
// LOGO.PC1 of the shared corpus. Exit status 1 when the bar is missed.
#include <QApplication>
#include <QEventLoop>
#include <QTimer>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string>

#include "platform/qt/form1.h"
#include "window_bench.h"

using namespace velmoric;
using namespace velmoric::qt;

namespace {

using bench::processSeconds;

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
    const bench::BenchFolders folders("velmoric-bench-cycles");
    int qtArgc = 1;
    QApplication app(qtArgc, argv);
    int status = 0;
    {
        bench::BenchPlatform platform;
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
    return status;
}
