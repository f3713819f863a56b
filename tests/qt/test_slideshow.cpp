// The slide show in the real window under the offscreen platform: Form3 on
// its own, then whole shows over temporary folders with Form3 answered by
// the test as it comes up.
#include <QComboBox>
#include <QListWidget>
#include <QMouseEvent>
#include <QPushButton>
#include <QStorageInfo>
#include <QTimer>

#include "platform/qt/form3.h"
#include "window_fixture.h"

using namespace vqt;
namespace fs = std::filesystem;

namespace {

// A click of the left button, as events that come through the event loop.
void click(QWidget* widget) {
    for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease})
        QCoreApplication::postEvent(widget, new QMouseEvent(type, QPointF(2, 2), widget->mapToGlobal(QPointF(2, 2)),
                                                            Qt::LeftButton, Qt::LeftButton, Qt::NoModifier));
}

QStringList texts(const QListWidget* list) {
    QStringList out;
    for (int i = 0; i < list->count(); ++i) out << list->item(i)->text();
    return out;
}

QString qpath(const fs::path& path) { return QString::fromStdString(path.string()); }

// Notes each file whose picture reaches Image1, and when.
class ShowPlatform : public ScriptedPlatform {
public:
    std::vector<std::string> shown;
    std::vector<double> times;
    std::function<void()> onPicture;

    void setPicture(const Picture& picture) override {
        ScriptedPlatform::setPicture(picture);
        shown.push_back(fileName());
        times.push_back(clock());
        if (onPicture) onPicture();
    }
    void runSaveDialog(const SaveDialogSettings&) override { setFileName(""); }  // cancelled
};

struct SlideShowTest : WindowTest {
    vtest::TempDir folder;
    fs::path before = fs::current_path();
    ShowPlatform* show = nullptr;

    void TearDown() override { fs::current_path(before); }
    // A fresh window on screen with `names` in the folder; a name ending in
    // "spu" holds a file one byte short of a Spectrum picture.
    void ready(const std::vector<std::string>& names, int delay, int repeat) {
        show = &make<ShowPlatform>();
        for (const std::string& name : names) folder.random(name, name.ends_with("spu") ? 51103 : 32128, 1);
        loadAndShow();
        viewer().options.delay = std::int16_t(delay);
        viewer().options.repeat = std::int16_t(repeat);
        platform->log.clear();
    }
    // The show by `command`, Form3 answered with the folder and "Start".
    // Returns the clock when the show has ended.
    double run(QAction* command = nullptr) {
        whenModal<Form3>([this](Form3* f) {
            f->setDir1Path(qpath(folder.path()));
            f->command1()->click();
        });
        (command ? command : form->menuAction(MenuArray::medit, 0))->trigger();
        return platform->clock();
    }
    bool ended() const {
        for (int i = 0; i < 4; ++i)
            if (!form->mfile(i)->menuAction()->isEnabled()) return false;
        return form->toolbar1()->isEnabled() && form->windowTitle() == "Velmoric Picture Viewer." &&
               form->viewer().stop == kTrue;
    }
};

// Parents above, sub-folders below, no hidden ones. A folder or a drive that
// cannot be entered gives the error box and leaves the lists as they were.
// Cancel and the close box leave the flag that only Start clears.
TEST_F(SlideShowTest, Form3FollowsTheFolderChosenAndOnlyStartClearsTheFlag) {
    for (const char* sub : {"b/inner", "A", ".hidden"}) fs::create_directories(folder.path() / sub);
    fs::current_path(folder.path());
    std::int16_t flag = -1;
    Form3 f(*platform, flag, form.get());
    f.show();
    const QStringList parents = QStringList{"/"} + qpath(folder.path()).split('/', Qt::SkipEmptyParts);
    EXPECT_EQ(f.drive1()->currentText(), QStorageInfo(qpath(folder.path())).rootPath());
    EXPECT_EQ(texts(f.dir1()), (parents + QStringList{"A", "b"}));
    const auto choose = [&](const QString& text) {
        emit f.dir1()->itemActivated(f.dir1()->findItems(text, Qt::MatchExactly).value(0));
        QCoreApplication::processEvents();
    };
    choose("b");
    EXPECT_EQ(fs::current_path(), folder.path() / "b");
    fs::remove_all(folder.path() / "b");
    choose("inner");
    f.drive1()->addItem("/velmoric-gone");
    f.drive1()->setCurrentIndex(f.drive1()->count() - 1);
    ASSERT_EQ(platform->messages.size(), 2u);
    for (const auto& m : platform->messages)
        EXPECT_TRUE(m.text.ends_with(": cannot change to this folder: No such file or directory")) << m.text;
    EXPECT_EQ(f.drive1()->currentText(), QStorageInfo(qpath(folder.path())).rootPath());
    EXPECT_EQ(texts(f.dir1()), (parents + QStringList{"b", "inner"}));

    f.command2()->click();
    Form3 g(*platform, flag, form.get());
    g.show();
    g.close();
    EXPECT_EQ(flag, -1);
}

// Two passes with `repeat` 1: the other files take no time, and in the
// second pass the close box does nothing and a click ends the wait.
TEST_F(SlideShowTest, EachPictureStaysItsDelayOthersPassAtOnceAndAClickEndsTheShow) {
    ready({"a.neo", "b.txt", "c", "d.pi1", "e.txt"}, 1, 1);
    bool visible = false;
    double clicked = 0;
    show->onPicture = [&] {
        EXPECT_EQ(form->windowTitle(), "Slide show. Click on picture to stop.");
        if (show->shown.size() < 3) return;
        QTimer::singleShot(400, [&] {
            form->close();
            visible = form->isVisible();
            clicked = platform->clock();
            click(form->image1());
        });
    };
    EXPECT_LT(run() - clicked, 0.05);
    ASSERT_EQ(show->shown, (std::vector<std::string>{"a.neo", "d.pi1", "a.neo"}));
    for (double wait : {show->times[1] - show->times[0], show->times[2] - show->times[1]})
        EXPECT_NEAR(wait, 1.125, 0.125) << "a second each, none for the other files";
    EXPECT_TRUE(visible);
    EXPECT_TRUE(platform->messages.empty());
    for (const std::string& line : platform->log) EXPECT_FALSE(line.starts_with("write ")) << line;
    EXPECT_TRUE(ended());
}

TEST_F(SlideShowTest, NoPicturesAndFailuresEndTheShowWithTheirBoxAndLeaveThePictureBefore) {
    const std::string fileError =
        "Sorry a file error has occured.\nProbably an incorrect file type or invalid picture file.";
    const struct { std::vector<std::string> files; bool removeDuringWait; std::string title, text; } rows[] = {{{"a.Neo", "b.txt"}, false, "No Pictures.", "There are no Atari picture files in this directory."},
                {{"a.neo", "b.spu", "c.neo"}, false, "Error.", fileError},
                {{"a.neo", "b.spu"}, true, "Error.", errorBoxText("a.neo: the file has left the folder during the slide show")}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        ready(row.files, 0, 1);
        show->onPicture = [&] { if (row.removeDuringWait) fs::remove(folder.file("a.neo")); };
        run();
        ASSERT_EQ(platform->messages.size(), 1u);
        const auto& m = platform->messages[0];
        EXPECT_EQ(std::tie(m.title, m.text, m.icon), std::make_tuple(row.title, row.text, Icon::Exclamation));
        EXPECT_EQ(form->label1()->text().startsWith("A.NEO  "), row.title == "Error.") << "the picture before";
        EXPECT_TRUE(ended());
        for (const std::string& name : row.files) fs::remove(folder.file(name));
    }
}

// With `repeat` 0 the show ends by itself. Stopped during the first picture
// after start-up, it leaves nothing to save; a full wait arms the warning.
TEST_F(SlideShowTest, OnlyAFullWaitLeavesAPictureToSaveAndToWarnAbout) {
    for (const bool stopAtOnce : {true, false}) {
        ready({"a.neo"}, stopAtOnce ? 5 : 0, 0);
        viewer().options.save = 1;
        show->onPicture = [&] { if (stopAtOnce) click(form->image1()); };
        run();
        EXPECT_TRUE(ended());
        viewer().fmenu_Click(1);
        form->close();
        std::string titles;
        for (const auto& m : platform->messages) titles += m.title;
        EXPECT_EQ(titles, stopAtOnce ? "No picture." : "Warning.") << "save refused, or its dialog cancelled";
    }
}

}  // namespace
