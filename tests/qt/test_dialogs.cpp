// The real message box and open dialog of QtPlatform, answered by a timer
// that finds them on screen.
#include <QAbstractButton>
#include <QComboBox>
#include <QFileDialog>
#include <QMessageBox>
#include <QTimer>

#include "window_fixture.h"

using namespace vqt;

namespace {

// Runs `answer` on the modal dialog as soon as it is open.
template <typename Dialog>
void whenOpen(std::function<void(Dialog*)> answer) {
    auto* timer = new QTimer;
    timer->setInterval(10);
    QObject::connect(timer, &QTimer::timeout, [timer, answer] {
        if (auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget())) {
            timer->stop();
            timer->deleteLater();
            answer(dialog);
        }
    });
    timer->start();
}

struct RealDialogs : ::testing::Test {
    QtPlatform platform{{}};
};

TEST_F(RealDialogs, MessageBoxShowsTitleTextButtonsAndIcon) {
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QString title, text;
    int buttons = 0;
    whenOpen<QMessageBox>([&](QMessageBox* box) {
        icon = box->icon();
        title = box->windowTitle();
        text = box->text();
        buttons = box->buttons().size();
        box->button(QMessageBox::No)->click();
    });
    const Answer a = platform.messageBox("first\rsecond", "Register Files", Buttons::YesNo, Icon::None);
    EXPECT_EQ(a, Answer::No);
    EXPECT_EQ(title, "Register Files");
    EXPECT_EQ(text, "first\nsecond") << "a carriage return ends a line";
    EXPECT_EQ(icon, QMessageBox::NoIcon);
    EXPECT_EQ(buttons, 2);

    whenOpen<QMessageBox>([&](QMessageBox* box) {
        icon = box->icon();
        box->button(QMessageBox::Yes)->click();
    });
    EXPECT_EQ(platform.messageBox("q", "Warning.", Buttons::YesNo, Icon::Question), Answer::Yes);
    EXPECT_EQ(icon, QMessageBox::Question);

    whenOpen<QMessageBox>([&](QMessageBox* box) {
        icon = box->icon();
        buttons = box->buttons().size();
        box->button(QMessageBox::Ok)->click();
    });
    EXPECT_EQ(platform.messageBox("e", "Error.", Buttons::Ok, Icon::Exclamation), Answer::Ok);
    EXPECT_EQ(icon, QMessageBox::Warning);
    EXPECT_EQ(buttons, 1);
}

TEST_F(RealDialogs, OpenDialogHasTheFiltersAndGivesTheChosenFile) {
    vtest::TempDir dir;
    const std::string path = dir.file("Mixed.Pi1");
    vtest::writeFile(path, vtest::Bytes(10, 0));
    QString title, selectedFilter;
    QStringList filters;
    QFileDialog::FileMode mode = QFileDialog::AnyFile;
    whenOpen<QFileDialog>([&](QFileDialog* dialog) {
        title = dialog->windowTitle();
        filters = dialog->nameFilters();
        selectedFilter = dialog->selectedNameFilter();
        mode = dialog->fileMode();
        dialog->selectFile(QString::fromStdString(path));
        QMetaObject::invokeMethod(dialog, "accept");
    });
    platform.setFileName("before");
    platform.runFileSelector(FileSelector{6148, kOpenFilter, 1, "Select Picture File."});
    EXPECT_EQ(platform.fileName(), path);
    EXPECT_EQ(title, "Select Picture File.");
    EXPECT_EQ(filters, nameFiltersFor(kOpenFilter));
    EXPECT_EQ(selectedFilter, "Atari Pictures") << "the first entry, shown by its description";
    EXPECT_EQ(mode, QFileDialog::ExistingFile) << "the file must exist";

    whenOpen<QFileDialog>([&](QFileDialog* dialog) { dialog->reject(); });
    platform.runFileSelector(FileSelector{6148, kOpenFilter, 1, "Select Picture File."});
    EXPECT_EQ(platform.fileName(), "") << "a cancel leaves the name empty";
}

}  // namespace

namespace {

TEST(QtPlatformText, TheCommandLineIsTheArgumentsJoinedByOneBlank) {
    EXPECT_EQ(QtPlatform({}).commandLine(), "");
    EXPECT_EQ(QtPlatform({"C:\\PICS\\A.NEO", "/X"}).commandLine(), "C:\\PICS\\A.NEO /X");
    EXPECT_EQ(QtPlatform({"/p/my pic.pi1"}).commandLine(), "/p/my pic.pi1");
}

TEST(QtPlatformText, TwipsBecomeTheNearestPixel) {
    EXPECT_EQ(twipsToPixels(3600), 240);
    EXPECT_EQ(twipsToPixels(3607), 240);
    EXPECT_EQ(twipsToPixels(3608), 241);
    EXPECT_EQ(twipsToPixels(-15), -1);
}

}  // namespace
