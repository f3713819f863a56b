// The viewer as the window tests run it, never installed: the same window
// and platform as `velmoric`, plus what the environment asks for, so that a
// test can read what a real process shows (see README, "The window").
#include <QApplication>
#include <QCryptographicHash>
#include <QElapsedTimer>
#include <QScreen>
#include <QWindow>
#include <cstdio>
#include <string>
#include <vector>

#include "platform/qt/form1.h"
#include "traced_platform.h"

using velmoric::qt::Form1;
using velmoric::qt::QtPlatform;

namespace {

bool environmentSet(const char* name) { return !qEnvironmentVariable(name).isEmpty(); }

// Lets the window system map, lay out and paint the window, so that what the
// screen shows is the window as the user sees it.
void waitUntilOnScreen(Form1& form, QtPlatform& platform) {
    QElapsedTimer waited;
    waited.start();
    while (waited.elapsed() < 3000) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        const QWindow* window = form.windowHandle();
        if (window && window->isExposed() && platform.settled()) break;
    }
    form.repaint();
    QCoreApplication::processEvents();
}

void report(Form1& form, qint64 elapsedMs) {
    const QPoint image = form.image1()->mapToGlobal(QPoint(0, 0));
    std::printf("Label1: %s\n", form.label1()->text().toUtf8().constData());
    std::printf("Image1: %d %d %d %d\n", image.x(), image.y(), form.image1()->width(), form.image1()->height());
    std::printf("Client: %d %d\n", form.centralWidget()->width(), form.centralWidget()->height());
    std::printf("Shown after: %lld ms\n", static_cast<long long>(elapsedMs));
    const std::vector<std::uint8_t>& bitmap = form.image1()->picture().bytes();
    const QByteArray digest = QCryptographicHash::hash(
        QByteArrayView(bitmap.data(), qsizetype(bitmap.size())), QCryptographicHash::Sha256);
    std::printf("Picture: %s\n", digest.toHex().constData());
    std::fflush(stdout);
}

bool saveScreenshot(Form1& form, const QString& path) {
    QPixmap shot;
    if (environmentSet("VELMORIC_SCREENSHOT_SCREEN"))
        shot = form.screen()->grabWindow(0);
    else
        shot = form.grab();
    return shot.save(path, "PNG");
}

// What the environment asks for once the first picture is on screen.
void onFirstPicture(Form1& form, QtPlatform& platform, const QElapsedTimer& sinceStart) {
    const QString screenshot = qEnvironmentVariable("VELMORIC_SCREENSHOT");
    const bool reporting = environmentSet("VELMORIC_REPORT");
    const bool exiting = !screenshot.isEmpty() || environmentSet("VELMORIC_EXIT_WHEN_SHOWN");
    if (!reporting && !exiting) return;
    waitUntilOnScreen(form, platform);
    if (reporting) report(form, sinceStart.elapsed());
    int status = 0;
    if (!screenshot.isEmpty() && !saveScreenshot(form, screenshot)) {
        std::fprintf(stderr, "velmoric: cannot write the screenshot %s\n", screenshot.toLocal8Bit().constData());
        status = 1;
    }
    if (exiting) QCoreApplication::exit(status);
}

}  // namespace

int main(int argc, char** argv) {
    QElapsedTimer sinceStart;
    sinceStart.start();
    // The arguments are the file to open, exactly as given: Qt sees none of
    // them, so none is taken for one of its own switches.
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    int qtArgc = 1;
    QApplication app(qtArgc, argv);

    velmoric::qt::TracedPlatform platform(arguments, environmentSet("VELMORIC_TRACE"));
    Form1 form(platform);
    QObject::connect(&form, &Form1::firstTickDone, &form,
                     [&] { onFirstPicture(form, platform, sinceStart); }, Qt::QueuedConnection);
    form.load();
    return app.exec();
}
