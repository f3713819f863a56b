// The real save dialog, clipboard and printer behind the window's commands,
// answered by a timer that finds the dialog on screen. Printed pages go to
// PDF files and come back as pixels through pdftoppm (poppler-utils).
#include <QAbstractButton>
#include <QClipboard>
#include <QComboBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QMimeData>
#include <QPrintDialog>
#include <QPrinter>
#include <QProcess>
#include <QTimer>

#include "window_fixture.h"

using namespace vqt;

namespace {

void acceptLater(QDialog* dialog) { QMetaObject::invokeMethod(dialog, "accept", Qt::QueuedConnection); }

struct OutputTest : WindowTest {
    vtest::TempDir files;
    void SetUp() override { WindowTest::SetUp(), loadAndShow(); }
    vtest::Bytes open(const char* ext) {
        viewer().Form_LinkExecute(files.random(std::string("picture.") + ext, 32034, 5));
        return form->image1()->picture().bytes();
    }
    // Prints from the toolbar onto the PDF file `pdf`, chosen in the dialog's
    // own fields. Gives the orientation the dialog showed.
    QPageLayout::Orientation print(const QString& pdf) {
        QPageLayout::Orientation shown{};
        whenModal<QPrintDialog>([&](QPrintDialog* dialog) {
            shown = dialog->printer()->pageLayout().orientation();
            EXPECT_TRUE(dialog->findChild<QWidget*>("gbPrintRange")->isHidden()) << "no page numbers offered";
            auto* printers = dialog->findChild<QComboBox*>("printers");
            printers->setCurrentIndex(printers->findText("Print to File (PDF)"));
            dialog->findChild<QLineEdit*>("filename")->setText(pdf);
            acceptLater(dialog);
        });
        form->toolbarAction("print")->trigger();
        return shown;
    }
};

TEST_F(OutputTest, TheSaveDialogWantsAnExistingFolderAndAddsBMPToANameWithoutExtension) {
    const vtest::Bytes bitmap = open("PI1");
    whenModal<QFileDialog>([&](QFileDialog* dialog) {
        EXPECT_EQ(dialog->windowTitle() + "|" + dialog->selectedNameFilter(),
                  "Save picture as.|Windows Bitmap (*.BMP)");
        dialog->setDirectory(QString::fromStdString(files.path().string()));
        dialog->findChild<QLineEdit*>("fileNameEdit")->setText("missing/picture");
        acceptLater(dialog);
        whenModal<QMessageBox>([&](QMessageBox* box) {
            EXPECT_TRUE(box->text().contains("Path does not exist")) << box->text().toStdString();
            box->button(QMessageBox::Ok)->click();
            whenModal<QFileDialog>([&](QFileDialog* dialog) {
                dialog->findChild<QLineEdit*>("fileNameEdit")->setText("picture");
                acceptLater(dialog);
            });
        });
    });
    form->menuAction(MenuArray::fmenu, 1)->trigger();
    EXPECT_EQ(vtest::readFile(files.file("picture.BMP")), bitmap);
    EXPECT_EQ(viewer().saved, kTrue);
}

TEST_F(OutputTest, CopyPutsThePicturesPixelsAndItsBitmapOnTheClipboard) {
    for (const bool startup : {true, false}) {
        if (!startup) open("PI3");
        const auto flags = std::make_tuple(viewer().saved, viewer().nopicture);
        form->toolbarAction("copy")->trigger();
        const QMimeData* data = QGuiApplication::clipboard()->mimeData();
        const Picture& picture = form->image1()->picture();
        const QImage image = qvariant_cast<QImage>(data->imageData()).convertToFormat(QImage::Format_RGB32);
        ASSERT_EQ(image.size(), QSize(picture.width(), picture.height()));
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x) ASSERT_EQ(image.pixel(x, y) & 0xFFFFFF, picture.rgb(x, y));
        const QByteArray bmp = data->data("image/bmp");
        EXPECT_EQ(vtest::Bytes(bmp.begin(), bmp.end()), picture.bytes());
        EXPECT_EQ(std::make_tuple(viewer().saved, viewer().nopicture), flags);
    }
}

TEST_F(OutputTest, ThePrintedPictureIsCentredAtItsScaleOnThePageOfEitherOrientation) {
    open("PI1");
    const Picture& picture = form->image1()->picture();
    for (const auto& [orientation, scale] : {std::pair{0, 100}, {1, 100}, {0, 5}, {1, 5}}) {
        viewer().options.orientation = std::int16_t(orientation);
        viewer().options.printscale = std::int16_t(scale);
        SCOPED_TRACE(::testing::Message() << "orientation " << orientation << ", scale " << scale);
        const vtest::TempDir pages;
        const QString pdf = QString::fromStdString(pages.file("page.pdf"));
        EXPECT_EQ(print(pdf), orientation == 0 ? QPageLayout::Landscape : QPageLayout::Portrait);
        ASSERT_EQ(QProcess::execute("pdftoppm", {"-r", "200", "-png", "-singlefile", pdf, pdf}), 0) << "poppler-utils";
        const QImage page(pdf + ".png");
        // Every ST colour is darker than the paper: the picture is what is not white.
        QRect box;
        for (int y = 0; y < page.height(); ++y)
            for (int x = 0; x < page.width(); ++x)
                if ((page.pixel(x, y) & 0xFFFFFF) != 0xFFFFFF) box |= QRect(x, y, 1, 1);
        const double w = page.width() * 0.009 * scale, h = 0.625 * w, left = (page.width() - w) / 2,
                     top = (page.height() - h) / 2;
        EXPECT_EQ(page.width() > page.height(), orientation == 0);
        // Within the pixels an edge may partly cover.
        EXPECT_NEAR(box.left(), left, 1.5);
        EXPECT_NEAR(box.top(), top, 1.5);
        EXPECT_NEAR(box.width(), w, 2);
        EXPECT_NEAR(box.height(), h, 2);
        // The whole picture, pixel for pixel: the middle of each one's place.
        for (int y = 0; scale == 100 && y < 200; ++y)
            for (int x = 0; x < 320; ++x)
                ASSERT_EQ(page.pixel(int(left + (x + 0.5) * w / 320), int(top + (y + 0.5) * h / 200)) & 0xFFFFFF,
                          picture.rgb(x, y)) << x << "," << y;
    }
    EXPECT_TRUE(platform->messages.empty());

    // A cancel prints nothing and shows nothing; a printer that cannot take
    // the document (a file in a folder that does not exist) shows the error
    // box.
    const std::string missing = files.file("missing/page.pdf");
    whenModal<QPrintDialog>([](QPrintDialog* dialog) { dialog->reject(); });
    form->menuAction(MenuArray::fmenu, 3)->trigger();
    EXPECT_TRUE(platform->messages.empty());
    print(QString::fromStdString(missing));
    ASSERT_EQ(platform->messages.size(), 1u);
    EXPECT_EQ(platform->messages[0].text, errorBoxText(missing + ": cannot start printing"));
    EXPECT_EQ(vtest::entryCount(files.path()), 1) << "the picture alone";
}

}  // namespace
