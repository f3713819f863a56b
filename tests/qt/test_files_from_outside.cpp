// Files that reach the real window from outside: drags and drops through the
// window as the window system hands them over, and where the real open
// dialog starts. Label1's capitals are read under a real X server.
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

std::string neoFile(const vtest::TempDir& dir, const std::string& name) {
    const std::string path = dir.file(name);
    vtest::writeFile(path, vtest::randomBytes(32128, 7));
    return path;
}

QUrl localUrl(const std::string& path) { return QUrl::fromLocalFile(QFile::decodeName(QByteArray::fromStdString(path))); }

struct FilesFromOutside : WindowTest {
    vtest::TempDir pictures;

    // A drag that enters the window over `target` and is dropped there; the
    // window passes both on to the control under the point that takes drops.
    // Returns whether the drag was accepted.
    bool dragAndDrop(QWidget* target, QMimeData* data, Qt::DropActions actions = Qt::CopyAction | Qt::MoveAction) {
        QWindow* window = form->windowHandle();
        const QPointF at = target->mapTo(form.get(), QPoint(target->width() - 3, target->height() / 2));
        QDragEnterEvent enter(at.toPoint(), actions, data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(window, &enter);
        const bool accepted = enter.isAccepted() && enter.dropAction() == Qt::CopyAction;
        QDropEvent drop(at, actions, data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(window, &drop);
        settle(*platform);
        delete data;
        return accepted;
    }
    static QMimeData* urls(const QList<QUrl>& list) {
        auto* data = new QMimeData;
        data->setUrls(list);
        return data;
    }
};

// Only a list with local files, which may be copied, is taken, and only by
// Image1: the first local file opens.
TEST_F(FilesFromOutside, Image1AloneTakesListsOfLocalFiles) {
    loadAndShow();
    const std::string a = neoFile(pictures, "a.neo"), b = neoFile(pictures, "b.neo");
    auto* text = new QMimeData;
    text->setText(QString::fromStdString(a));
    struct Row {
        QWidget* target;
        QMimeData* data;
        Qt::DropActions actions;
    };
    const Row refused[] = {
        {form->image1(), text, Qt::CopyAction},
        {form->image1(), urls({QUrl(QStringLiteral("https://example.org/x.neo"))}), Qt::CopyAction},
        {form->image1(), urls({localUrl(a)}), Qt::MoveAction},
        {form->label1(), urls({localUrl(a)}), Qt::CopyAction},
        {form->toolbar1(), urls({localUrl(a)}), Qt::CopyAction},
        {form->menuBar(), urls({localUrl(a)}), Qt::CopyAction},
    };
    for (const Row& r : refused) EXPECT_FALSE(dragAndDrop(r.target, r.data, r.actions)) << r.target->objectName().toStdString();
    EXPECT_EQ(form->label1()->text(), "");
    EXPECT_TRUE(dragAndDrop(form->image1(), urls({QUrl(QStringLiteral("https://example.org/r.neo")), localUrl(b),
                                                  localUrl(a), localUrl(pictures.file("missing.neo"))})));
    EXPECT_TRUE(form->label1()->text().startsWith("B.NEO  Neo")) << form->label1()->text().toStdString();
    EXPECT_TRUE(platform->messages.empty());
}

TEST_F(FilesFromOutside, TheOpenDialogStartsInTheFolderOfThePictureOpenedLast) {
    loadAndShow();
    vtest::TempDir other;
    const std::string first = neoFile(pictures, "first.neo"), dropped = neoFile(other, "dropped.neo");
    auto canonical = [](const QString& folder) { return QFileInfo(folder).canonicalFilePath(); };
    auto folderOf = [&](const vtest::TempDir& d) { return canonical(QString::fromStdString(d.path().string())); };
    // Runs the real dialog and chooses `path` ("" cancels); gives the folder
    // it started in.
    auto startsIn = [&](const std::string& path) {
        QString folder;
        whenModal<QFileDialog>([&](QFileDialog* dialog) {
            folder = canonical(dialog->directory().absolutePath());
            if (path.empty()) return dialog->reject();
            // Typed as a whole path, as a user may: no wait for the listing
            // of another folder.
            dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(QString::fromStdString(path));
            QMetaObject::invokeMethod(dialog, "accept");
        });
        platform->QtPlatform::runFileSelector(FileSelector{6148, kOpenFilter, 1, "Select Picture File."});
        return folder;
    };
    platform->setFileName(other.file("before.neo"));
    EXPECT_EQ(startsIn(first), folderOf(other)) << "the folder of the name the platform holds";
    viewer().Form_LinkExecute(platform->fileName());
    EXPECT_EQ(startsIn(""), folderOf(pictures)) << "the folder of the picture chosen before";
    EXPECT_EQ(startsIn(""), folderOf(pictures)) << "a cancel keeps it";
    viewer().Image1_OLEDragDrop({dropped});
    EXPECT_EQ(startsIn(""), folderOf(other)) << "a dropped picture counts too";
}

}  // namespace
