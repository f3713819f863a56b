// check_qt PLUGINS LIST WORK: Qt (6 or 5, whichever this is built with)
// with only the installed plugin folder PLUGINS: the MIME database of the
// environment names every listed picture's type, QImageReader reads it with
// the pixels of the converter's bitmap (lines doubled for medium resolution),
// refuses every broken file with an error, and honours the allocation limit.
#include <QCoreApplication>
#include <QImage>
#include <QImageReader>
#include <QMimeDatabase>

#include "check_common.h"

namespace {

QString q(const std::string& s) { return QString::fromStdString(s); }

// The difference between the plugin's picture and the converter's bitmap, or "".
std::string difference(const QImage& image, const QImage& reference) {
    if (reference.isNull()) return "no reference bitmap";
    const int repeat = reference.height() == 200 && reference.width() == 640 ? 2 : 1;
    if (image.width() != reference.width() || image.height() != reference.height() * repeat)
        return "size " + std::to_string(image.width()) + "x" + std::to_string(image.height());
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if ((image.pixel(x, y) & 0xFFFFFF) != (reference.pixel(x, y / repeat) & 0xFFFFFF))
                return "pixel " + std::to_string(x) + "," + std::to_string(y);
    return {};
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::cerr << "usage: check_qt PLUGINS LIST WORK\n";
        return 2;
    }
    QCoreApplication::setLibraryPaths({QString::fromLocal8Bit(argv[1])});
    QCoreApplication app(argc, argv);
    const auto list = vcheck::readList(argv[2]);
    vcheck::Failures failures;
    if (list.empty()) failures.add(argv[2], "no pictures listed");

    const auto formats = QImageReader::supportedImageFormats();
    const auto types = QImageReader::supportedMimeTypes();
    for (const velmoric::Format& f : velmoric::formatTable()) {
        if (!formats.contains(QByteArray(f.lower.data(), int(f.lower.size()))))
            failures.add(std::string(f.lower), "not among Qt's image formats");
        if (!types.contains(QByteArray(f.mimeType.data(), int(f.mimeType.size()))))
            failures.add(std::string(f.mimeType), "not among Qt's image types");
    }

    const QMimeDatabase mime;
    for (const vcheck::Listed& l : list) {
        const velmoric::Format* row = vcheck::rowOf(l.picture);
        const QString type = mime.mimeTypeForFile(q(l.picture)).name();
        if (!row || type != q(std::string(row->mimeType)))
            failures.add(l.picture, "the MIME database says " + type.toStdString());
        QImageReader reader(q(l.picture));
        const QImage image = reader.read();
        if (image.isNull()) {
            failures.add(l.picture, "not read: " + reader.errorString().toStdString());
            continue;
        }
        if (const std::string d = difference(image, QImage(q(l.bitmap), "BMP")); !d.empty()) failures.add(l.picture, d);
    }

    const auto broken = vcheck::writeBrokenFiles(list, std::string(argv[3]) + "/broken-qt" QT_STRINGIFY(QT_VERSION_MAJOR));
    for (const std::string& path : broken) {
        QImageReader reader(q(path));
        if (!reader.read().isNull() || reader.error() == QImageReader::UnknownError || reader.errorString().isEmpty())
            failures.add(path, "a broken file was read");
    }

#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
    // 1 megabyte holds 640 by 400 pixels of 4 bytes, not MacPaint's 576 by 720.
    QImageReader::setAllocationLimit(1);
    for (const vcheck::Listed& l : list) {
        const velmoric::Format* row = vcheck::rowOf(l.picture);
        const bool fits = row && row->kind != 4;
        if (QImageReader(q(l.picture)).read().isNull() == fits)
            failures.add(l.picture, fits ? "refused under the limit" : "read above the allocation limit");
    }
    QImageReader::setAllocationLimit(256);
#endif
    return failures.finish("Qt " QT_STRINGIFY(QT_VERSION_MAJOR), list.size(), broken.size());
}
