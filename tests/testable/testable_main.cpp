// The viewer as the process tests run it, never installed: the same window
// and platform as `velmoric`, plus what the environment asks for (see README,
// "The window"), so that a test can read what a real process shows.
#include <QApplication>
#include <QCryptographicHash>
#include <QElapsedTimer>
#include <QScreen>
#include <QWindow>
#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "platform/qt/form1.h"

using namespace velmoric;
using velmoric::qt::Form1;

namespace {

bool environmentSet(const char* name) { return !qEnvironmentVariable(name).isEmpty(); }

void line(const std::string& text) {
    std::printf("%s\n", text.c_str());
    std::fflush(stdout);
}

// VELMORIC_TRACE: a line when the window shows, when a command from a later
// copy arrives, when Label1 changes and when a message box comes, which is
// then answered at once with OK, or No.
class TracedPlatform : public qt::QtPlatform {
public:
    using QtPlatform::QtPlatform;
    void showWindow() override {
        line("shown");
        QtPlatform::showWindow();
    }
    void setCommandHandler(std::function<void(const std::string&)> handler) override {
        if (handler)
            handler = [inner = std::move(handler)](const std::string& command) {
                line("command: " + command);
                inner(command);
            };
        QtPlatform::setCommandHandler(std::move(handler));
    }
    void setCaption(const std::string& text) override {
        line("caption: " + text);
        QtPlatform::setCaption(text);
    }
    Answer messageBox(const std::string& text, const std::string& title, Buttons buttons, Icon) override {
        std::string flat = text;
        std::replace_if(flat.begin(), flat.end(), [](char c) { return c == '\n' || c == '\r'; }, '|');
        line("box: " + title + " " + flat);
        return buttons == Buttons::Ok ? Answer::Ok : Answer::No;
    }
};

// Once the first picture is on screen (mapped, laid out and painted):
// VELMORIC_REPORT prints what the window shows, VELMORIC_SCREENSHOT saves it
// (VELMORIC_SCREENSHOT_SCREEN: the whole screen) and quits, as does
// VELMORIC_EXIT_WHEN_SHOWN.
void onFirstPicture(Form1& form, qt::QtPlatform& platform, qint64 elapsedMs) {
    const QString screenshot = qEnvironmentVariable("VELMORIC_SCREENSHOT");
    const bool reporting = environmentSet("VELMORIC_REPORT");
    const bool exiting = !screenshot.isEmpty() || environmentSet("VELMORIC_EXIT_WHEN_SHOWN");
    if (!reporting && !exiting) return;
    QElapsedTimer waited;
    waited.start();
    while (waited.elapsed() < 3000 && !(form.windowHandle() && form.windowHandle()->isExposed() && platform.settled()))
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    form.repaint();
    QCoreApplication::processEvents();
    if (reporting) {
        const QPoint image = form.image1()->mapToGlobal(QPoint(0, 0));
        const std::vector<std::uint8_t>& bitmap = form.image1()->picture().bytes();
        const QByteArray digest = QCryptographicHash::hash(
            QByteArrayView(bitmap.data(), qsizetype(bitmap.size())), QCryptographicHash::Sha256);
        std::printf("Label1: %s\nImage1: %d %d %d %d\nClient: %d %d\nShown after: %lld ms\nPicture: %s\n",
                    form.label1()->text().toUtf8().constData(), image.x(), image.y(), form.image1()->width(),
                    form.image1()->height(), form.centralWidget()->width(), form.centralWidget()->height(),
                    static_cast<long long>(elapsedMs), digest.toHex().constData());
        std::fflush(stdout);
    }
    const bool whole = environmentSet("VELMORIC_SCREENSHOT_SCREEN");
    const bool saved = screenshot.isEmpty() || (whole ? form.screen()->grabWindow(0) : form.grab()).save(screenshot, "PNG");
    if (!saved) std::fprintf(stderr, "velmoric: cannot write the screenshot %s\n", qPrintable(screenshot));
    if (exiting) QCoreApplication::exit(saved ? 0 : 1);
}

}  // namespace

int main(int argc, char** argv) {
    QElapsedTimer sinceStart;
    sinceStart.start();
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    int qtArgc = 1;
    QApplication app(qtArgc, argv);
    const std::unique_ptr<qt::QtPlatform> platform =
        environmentSet("VELMORIC_TRACE") ? std::make_unique<TracedPlatform>(arguments)
                                         : std::make_unique<qt::QtPlatform>(arguments);
    Form1 form(*platform);
    QObject::connect(&form, &Form1::firstTickDone, &form,
                     [&] { onFirstPicture(form, *platform, sinceStart.elapsed()); }, Qt::QueuedConnection);
    form.load();
    return app.exec();
}
