#pragma once
// The real Form1 under the offscreen platform, with message boxes answered
// from a queue and the open dialog cancelled, so that nothing waits for a
// person. Every test gets empty desktop folders of its own and an empty
// configuration folder, where the settings file lives.
#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTimer>
#include <cstdlib>
#include <deque>
#include <functional>
#include <memory>

#include "../support.h"
#include <QMenu>

#include "platform/qt/artwork.h"
#include "platform/qt/form1.h"

namespace vqt {

using namespace velmoric;
using namespace velmoric::qt;

class ScriptedPlatform : public QtPlatform {
public:
    struct Message { std::string text, title; Buttons buttons; Icon icon; };

    explicit ScriptedPlatform(std::vector<std::string> arguments = {}) : QtPlatform(std::move(arguments)) {}

    std::deque<Answer> answers;  // empty: OK, or No
    std::vector<Message> messages;
    std::vector<std::string> log;  // timer switches, questions, settings written

    Answer messageBox(const std::string& text, const std::string& title, Buttons buttons, Icon icon) override {
        messages.push_back({text, title, buttons, icon});
        log.push_back("box " + title);
        const Answer a = !answers.empty() ? answers.front() : buttons == Buttons::Ok ? Answer::Ok : Answer::No;
        if (!answers.empty()) answers.pop_front();
        return a;
    }
    // The open dialog is cancelled; tests of the real one call it themselves.
    void runFileSelector(const FileSelector&) override { setFileName(""); }
    void setTimerEnabled(bool enabled) override {
        log.push_back(enabled ? "timer on" : "timer off");
        QtPlatform::setTimerEnabled(enabled);
    }
    void writeSetting(const std::string& app, const std::string& section, const std::string& key,
                      const std::string& value) override {
        log.push_back("write " + section + "/" + key + "=" + value);
        QtPlatform::writeSetting(app, section, key, value);
    }
};

// Lets queued window-system events arrive until the sizes asked for are
// confirmed.
inline void settle(QtPlatform& platform) {
    QElapsedTimer t;
    t.start();
    do {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    } while ((!platform.settled() && t.elapsed() < 2000) || t.elapsed() < 30);
}

// Runs `answer` on the modal dialog of that type as soon as it is on top.
template <typename Dialog>
void whenModal(std::function<void(Dialog*)> answer) {
    auto* timer = new QTimer;
    QObject::connect(timer, &QTimer::timeout, [timer, answer] {
        if (auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget())) {
            timer->deleteLater();
            timer->stop();
            answer(dialog);
        }
    });
    timer->start(10);
}

inline std::string settingsFile() { return std::string(std::getenv("XDG_CONFIG_HOME")) + "/velmoric/velmoric.conf"; }

struct WindowTest : ::testing::Test {
    vtest::TempDir data, dataDirs, programDir;
    std::unique_ptr<ScriptedPlatform> platform;
    std::unique_ptr<Form1> form;  // declared last: goes first, before its platform

    void SetUp() override {
        setenv("XDG_DATA_HOME", data.path().c_str(), 1);
        setenv("XDG_DATA_DIRS", dataDirs.path().c_str(), 1);
        std::filesystem::remove_all(std::getenv("XDG_CONFIG_HOME"));
        std::filesystem::create_directories(std::getenv("XDG_CONFIG_HOME"));
        make();
    }

    // A fresh platform and window, as at a new start of the program.
    template <typename Platform = ScriptedPlatform>
    Platform& make() {
        form.reset();
        platform = std::make_unique<Platform>();
        platform->setProgramFolder(programDir.path().string());
        form = std::make_unique<Form1>(*platform);
        return static_cast<Platform&>(*platform);
    }

    // The *.spu glob known to the system's MIME database: not a first run.
    void knowSpuGlob() {
        std::filesystem::create_directories(dataDirs.path() / "mime");
        std::ofstream(dataDirs.path() / "mime/globs2") << "50:a/b:*.spu\n";
    }

    // Start-up without the question, then the window on screen.
    void loadAndShow() {
        knowSpuGlob();
        form->load();
        form->timer1()->stop();
        form->show();
        settle(*platform);
    }

    Viewer& viewer() { return form->viewer(); }
    void layOut(int kind, int size) {
        viewer().kind = std::int16_t(kind);
        viewer().options.size = std::int16_t(size);
        viewer().Form_Resize();
        settle(*platform);
    }
    // Sets the outer width so that the client area is `width` pixels wide.
    void setClientWidth(int width) {
        platform->setOuterWidth(platform->outerWidth() + 15 * (width - platform->clientWidth()));
        settle(*platform);
    }
    QSize imageSize() const { return form->image1()->size(); }
    int areaHeight() const { return form->centralWidget()->height() - form->image1()->y(); }
};

}  // namespace vqt
