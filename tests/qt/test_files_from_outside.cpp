// Files that reach the real window from outside: drags and drops through the
// window as the window system hands them over, and the real open dialog:
// what it offers, what it gives and where it starts. Label1's capitals are
// read under a real X server.
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenuBar>
#include <QMimeData>
#include <QToolBar>
#include <QUrl>
#include <QWindow>

#include "window_fixture.h"

using namespace vqt;

namespace {

std::string neoFile(const vtest::TempDir& dir, const std::string& name) { return dir.random(name, 32128, 7); }

QUrl localUrl(const std::string& path) { return QUrl::fromLocalFile(QString::fromStdString(path)); }

struct FilesFromOutside : WindowTest {
    vtest::TempDir pictures;

    // A drag of `urls` (none: a plain text) that enters the window over
    // `target` and is dropped there; the window passes both on to the control
    // under the point that takes drops. Returns whether the drag was accepted.
    bool dragAndDrop(QWidget* target, const QList<QUrl>& urls,
                     Qt::DropActions actions = Qt::CopyAction | Qt::MoveAction) {
        QMimeData data;
        if (urls.isEmpty())
            data.setText(QString::fromStdString(pictures.file("a.neo")));
        else
            data.setUrls(urls);
        const QPointF at = target->mapTo(form.get(), QPoint(target->width() - 3, target->height() / 2));
        QDragEnterEvent enter(at.toPoint(), actions, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(form->windowHandle(), &enter);
        QDropEvent drop(at, actions, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(form->windowHandle(), &drop);
        settle(*platform);
        return enter.isAccepted() && enter.dropAction() == Qt::CopyAction;
    }
};

// Only a list with local files, which may be copied, is taken, and only by
// Image1: the first local file opens.
TEST_F(FilesFromOutside, Image1AloneTakesListsOfLocalFiles) {
    loadAndShow();
    const QUrl a = localUrl(neoFile(pictures, "a.neo")), b = localUrl(neoFile(pictures, "b.neo"));
    const QUrl remote(QStringLiteral("https://example.org/x.neo"));
    const std::tuple<QWidget*, QList<QUrl>, Qt::DropActions> refused[] = {
        {form->image1(), {}, Qt::CopyAction},          {form->image1(), {remote}, Qt::CopyAction},
        {form->image1(), {a}, Qt::MoveAction},         {form->label1(), {a}, Qt::CopyAction},
        {form->toolbar1(), {a}, Qt::CopyAction},       {form->menuBar(), {a}, Qt::CopyAction}};
    for (const auto& [target, urls, actions] : refused)
        EXPECT_FALSE(dragAndDrop(target, urls, actions)) << target->objectName().toStdString() << " " << urls.size();
    EXPECT_EQ(form->label1()->text(), "");
    EXPECT_TRUE(dragAndDrop(form->image1(), {remote, b, a, localUrl(pictures.file("missing.neo"))}));
    EXPECT_TRUE(form->label1()->text().startsWith("B.NEO  Neo")) << form->label1()->text().toStdString();
    EXPECT_TRUE(platform->messages.empty());
}

TEST_F(FilesFromOutside, TheOpenDialogStartsInTheFolderOfThePictureOpenedLast) {
    loadAndShow();
    vtest::TempDir other;
    const std::string first = neoFile(pictures, "first.neo"), dropped = neoFile(other, "dropped.neo");
    // Runs the real dialog and chooses `path` ("" cancels, which leaves the
    // name empty); gives whether it started in the folder of `expected`.
    auto startsIn = [&](const std::string& path, const vtest::TempDir& expected) {
        std::string folder;
        whenModal<QFileDialog>([&](QFileDialog* dialog) {
            folder = QFile::encodeName(dialog->directory().absolutePath()).toStdString();
            // The first filter entry, chosen by its description.
            EXPECT_EQ(dialog->windowTitle() + "|" + dialog->selectedNameFilter(), "Select Picture File.|Atari Pictures");
            EXPECT_EQ(dialog->fileMode(), QFileDialog::ExistingFile) << "the file must exist";
            if (path.empty()) return dialog->reject();
            // Typed as a whole path, as a user may: no wait for the listing
            // of another folder.
            dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(QString::fromStdString(path));
            QMetaObject::invokeMethod(dialog, "accept");
        });
        platform->QtPlatform::runFileSelector(FileSelector{6148, kOpenFilter, 1, "Select Picture File."});
        EXPECT_EQ(platform->fileName(), path);
        return std::filesystem::equivalent(folder, expected.path());
    };
    platform->setFileName(other.file("before.neo"));
    EXPECT_TRUE(startsIn(first, other)) << "the folder of the name the platform holds";
    viewer().Form_LinkExecute(platform->fileName());
    EXPECT_TRUE(startsIn("", pictures)) << "the folder of the picture chosen before";
    EXPECT_TRUE(startsIn("", pictures)) << "a cancel keeps it";
    viewer().Image1_OLEDragDrop({dropped});
    EXPECT_TRUE(startsIn("", other)) << "a dropped picture counts too";
}

}  // namespace
