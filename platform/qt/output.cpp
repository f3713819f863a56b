// The ways the picture on show leaves the program on Qt: the save dialog,
// the clipboard and the printer.
#include <QClipboard>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMessageBox>
#include <QMimeData>
#include <QPainter>
#include <QPrintDialog>
#include <QPrinter>
#include <QTimer>

#include "platform/qt/form1.h"
#include "platform/qt/image1.h"
#include "platform/qt/qtplatform.h"

namespace velmoric::qt {
namespace {

constexpr int kOverwritePrompt = 0x2;
constexpr int kPathMustExist = 0x800;
constexpr int kNoSelection = 0x4;
constexpr int kNoPageNumbers = 0x8;

// Qt's own save dialog asks before it overwrites; this one also refuses,
// when asked to, a name in a folder that does not exist.
class SaveFileDialog : public QFileDialog {
public:
    SaveFileDialog(QWidget* parent, const QString& title) : QFileDialog(parent, title) {}
    bool pathMustExist = false;

protected:
    void accept() override {
        const QStringList files = selectedFiles();
        if (pathMustExist && !files.isEmpty()) {
            const QFileInfo chosen(files.first());
            if (!chosen.isDir() && !chosen.absoluteDir().exists()) {
                QMessageBox::warning(this, windowTitle(),
                                     chosen.absolutePath() + QStringLiteral("\nPath does not exist.\n"
                                                                            "Check the path and try again."));
                return;
            }
        }
        QFileDialog::accept();
    }
};

}  // namespace

// One document on the printer chosen in the dialog.
class PrintJob {
public:
    QPrinter printer{QPrinter::HighResolution};
    QPainter painter;  // ends before the printer goes

    // What an error names: the file of a PDF printer, else the printer.
    std::string name() const {
        if (!printer.outputFileName().isEmpty()) return QFile::encodeName(printer.outputFileName()).toStdString();
        if (!printer.printerName().isEmpty()) return "printer " + printer.printerName().toStdString();
        return "printer";
    }
};

void QtPlatform::runSaveDialog(const SaveDialogSettings& settings) {
    fileName_ = settings.fileName;
    SaveFileDialog dialog(form_ && form_->isVisible() ? form_ : nullptr, QString::fromStdString(settings.title));
    // The same dialog as for opening: the filter's patterns match in either case.
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setOption(QFileDialog::HideNameFilterDetails);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setOption(QFileDialog::DontConfirmOverwrite, !(settings.flags & kOverwritePrompt));
    dialog.pathMustExist = settings.flags & kPathMustExist;
    const QStringList filters = nameFiltersFor(settings.filter);
    dialog.setNameFilters(filters);
    if (settings.filterIndex >= 1 && settings.filterIndex <= filters.size())
        dialog.selectNameFilter(filters[settings.filterIndex - 1]);
    dialog.setDefaultSuffix(QString::fromStdString(settings.defaultExtension));
    if (!settings.fileName.empty()) dialog.selectFile(QString::fromStdString(settings.fileName));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return;
    fileName_ = QFile::encodeName(dialog.selectedFiles().first()).toStdString();
}

void QtPlatform::clearClipboard() { QGuiApplication::clipboard()->clear(); }

// The image for programs that take any image, and beside it the exact bytes
// of the bitmap for those that ask for a BMP file.
void QtPlatform::setClipboardPicture(const Picture& picture) {
    auto* data = new QMimeData;
    const QImage image = toImage(picture);
    if (!image.isNull()) data->setImageData(image);
    const std::vector<std::uint8_t>& bytes = picture.bytes();
    if (!bytes.empty())
        data->setData(QStringLiteral("image/bmp"),
                      QByteArray(reinterpret_cast<const char*>(bytes.data()), qsizetype(bytes.size())));
    QGuiApplication::clipboard()->setMimeData(data);
}

bool QtPlatform::runPrintDialog(const PrintDialogSettings& settings) {
    // A document left open by an earlier failure ends here.
    printJob_.reset();
    auto job = std::make_shared<PrintJob>();
    // The page is the whole sheet, so the picture is centred on the paper.
    job->printer.setFullPage(true);
    job->printer.setPageOrientation(settings.orientation == 2 ? QPageLayout::Landscape : QPageLayout::Portrait);
    QPrintDialog dialog(&job->printer, form_ && form_->isVisible() ? form_ : nullptr);
    // One page, no range and no selection; the copies go to the driver with
    // the job. Printing to a PDF file is one of the printers Qt's dialog
    // offers; the program adds no file choice of its own.
    QAbstractPrintDialog::PrintDialogOptions options =
        QAbstractPrintDialog::PrintToFile | QAbstractPrintDialog::PrintShowPageSize | QAbstractPrintDialog::PrintCollateCopies;
    if (!(settings.flags & kNoSelection)) options |= QAbstractPrintDialog::PrintSelection;
    if (!(settings.flags & kNoPageNumbers)) options |= QAbstractPrintDialog::PrintPageRange;
    dialog.setOptions(options);
    // Qt's dialog on CUPS shows its page range (the server could pick the
    // pages) even when asked for none; hidden once it is shown, and the whole
    // document printed whatever it held.
    const bool noPageNumbers = settings.flags & kNoPageNumbers;
    if (noPageNumbers)
        QTimer::singleShot(0, &dialog, [&dialog] {
            if (auto* range = dialog.findChild<QWidget*>(QStringLiteral("gbPrintRange"))) range->hide();
        });
    if (dialog.exec() != QDialog::Accepted) return false;
    if (noPageNumbers) {
        job->printer.setPrintRange(QPrinter::AllPages);
        job->printer.setFromTo(0, 0);
    }
    if (!job->printer.isValid()) throw PlatformError(job->name(), "no printer is available");
    printJob_ = std::move(job);
    return true;
}

namespace {

PrintJob& chosen(const std::shared_ptr<PrintJob>& job) {
    if (!job) throw PlatformError("printer", "no printer has been chosen");
    return *job;
}

}  // namespace

int QtPlatform::printerWidth() { return chosen(printJob_).printer.width(); }
int QtPlatform::printerHeight() { return chosen(printJob_).printer.height(); }

void QtPlatform::printPicture(const Picture& picture, int left, int top, double width, double height) {
    PrintJob& job = chosen(printJob_);
    if (!job.painter.isActive() && !job.painter.begin(&job.printer))
        throw PlatformError(job.name(), "cannot start printing");
    // Full colour, so that every palette prints as it shows, the swapped
    // mono one too.
    const QImage image = toImage(picture).convertToFormat(QImage::Format_RGB32);
    if (image.isNull()) throw PlatformError(job.name(), "the picture cannot be printed");
    // Pixel art: each page pixel takes the nearest picture pixel, and the
    // image goes into the document without lossy compression.
    job.painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    job.painter.setRenderHint(QPainter::LosslessImageRendering, true);
    job.painter.drawImage(QRectF(left, top, width, height), image);
}

void QtPlatform::endDocument() {
    PrintJob& job = chosen(printJob_);
    const std::string name = job.name();
    const bool ended = !job.painter.isActive() || job.painter.end();
    printJob_.reset();
    if (!ended) throw PlatformError(name, "cannot finish printing");
}

}  // namespace velmoric::qt
