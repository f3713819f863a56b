// The real message box and open dialog of QtPlatform, answered as soon as
// they are on screen, and the open dialog's patterns.
#include <QAbstractButton>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QRegularExpression>

#include "window_fixture.h"

using namespace vqt;

namespace {

TEST(RealDialogs, MessageBoxShowsTitleTextButtonsAndIconAndGivesTheAnswer) {
    QtPlatform platform{{}};
    struct Row { Buttons buttons; Icon icon; QMessageBox::StandardButton click; Answer answer; QMessageBox::Icon shown; };
    const Row rows[] = {
        {Buttons::YesNo, Icon::None, QMessageBox::No, Answer::No, QMessageBox::NoIcon},
        {Buttons::YesNo, Icon::Question, QMessageBox::Yes, Answer::Yes, QMessageBox::Question},
        {Buttons::Ok, Icon::Exclamation, QMessageBox::Ok, Answer::Ok, QMessageBox::Warning},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(int(row.icon));
        whenModal<QMessageBox>([&](QMessageBox* box) {
            EXPECT_EQ(box->windowTitle(), "Register Files");
            EXPECT_EQ(box->text(), "first\nsecond") << "a carriage return ends a line";
            EXPECT_EQ(box->icon(), row.shown);
            EXPECT_EQ(box->buttons().size(), row.buttons == Buttons::Ok ? 1 : 2);
            box->button(row.click)->click();
        });
        EXPECT_EQ(platform.messageBox("first\rsecond", "Register Files", row.buttons, row.icon), row.answer);
    }
}

TEST(RealDialogs, OpenDialogHasTheFiltersAndGivesTheChosenFileOrNothing) {
    QtPlatform platform{{}};
    vtest::TempDir dir;
    const std::string path = dir.file("Mixed.Pi1");
    vtest::writeFile(path, vtest::Bytes(10, 0));
    for (const bool cancel : {false, true}) {
        whenModal<QFileDialog>([&](QFileDialog* dialog) {
            EXPECT_EQ(dialog->windowTitle(), "Select Picture File.");
            EXPECT_EQ(dialog->selectedNameFilter(), "Atari Pictures") << "the first entry, by its description";
            EXPECT_EQ(dialog->fileMode(), QFileDialog::ExistingFile) << "the file must exist";
            if (cancel) return dialog->reject();
            // Typed as a whole path: no wait for the listing of the folder.
            dialog->findChild<QLineEdit*>("fileNameEdit")->setText(QString::fromStdString(path));
            QMetaObject::invokeMethod(dialog, "accept");
        });
        platform.setFileName("before");
        platform.runFileSelector(FileSelector{6148, kOpenFilter, 1, "Select Picture File."});
        EXPECT_EQ(platform.fileName(), cancel ? "" : path) << "a cancel leaves the name empty";
    }
}

TEST(NameFilters, PatternsMatchInAnyCase) {
    const std::tuple<const char*, const char*, bool> rows[] = {
        {"*.NEO", "x.neo", true}, {"*.NEO", "X.NEO", true},  {"*.NEO", "x.Neo", true}, {"*.NEO", "x.ne", false},
        {"*.PI?", "a.pI3", true}, {"*.PI?", "a.PI", false},  {"*.TN?", "b.tny", true}, {"*.CA?", "c.ca1", true},
        {"*.SPU", "s.spc", false}, {"*.MAC", "m.Mac", true},
    };
    for (const auto& [pattern, name, matches] : rows) {
        const QString wildcard = caseInsensitivePattern(QString::fromLatin1(pattern));
        const QRegularExpression re(QRegularExpression::wildcardToRegularExpression(wildcard));
        EXPECT_EQ(re.match(QString::fromLatin1(name)).hasMatch(), matches) << pattern << " " << name;
    }
}

}  // namespace
