// check_qt PLUGINS PICTURES BROKEN: Qt (6 or 5, as built) with no plugin
// folder but PLUGINS. Qt's types include the table's; the MIME database of
// the environment names each picture's type; QImageReader reads it with the
// pixels of the converter's bitmap (lines doubled for medium resolution),
// refuses every broken file with an error, and honours the allocation limit.
#include <QCoreApplication>
#include <QImage>
#include <QImageReader>
#include <QMimeDatabase>

#include "check_common.h"

using vcheck::fail;

int main(int argc, char** argv) {
    if (argc != 4) return 2;
    QCoreApplication::setLibraryPaths({QString::fromLocal8Bit(argv[1])});
    QCoreApplication app(argc, argv);
    const auto pictures = vcheck::readList(argv[2]), broken = vcheck::readList(argv[3]);
    for (const velmoric::Format& f : velmoric::formatTable())
        if (!QImageReader::supportedMimeTypes().contains(QByteArray(f.mimeType.data(), int(f.mimeType.size()))) ||
            !QImageReader::supportedImageFormats().contains(QByteArray(f.lower.data(), int(f.lower.size()))))
            fail(std::string(f.lower), "not among Qt's image formats and types");
    for (const auto& [picture, bitmap] : pictures) {
        const QString type = QMimeDatabase().mimeTypeForFile(QString::fromStdString(picture)).name();
        if (type.toStdString() != vcheck::rowOf(picture)->mimeType) fail(picture, "typed " + type.toStdString());
        QImageReader reader(QString::fromStdString(picture));
        const QImage image = reader.read(), reference(QString::fromStdString(bitmap), "BMP");
        // Medium resolution (640 by 200) with every line doubled.
        const QSize size(reference.width(), reference.size() == QSize(640, 200) ? 400 : reference.height());
        const auto rgb = [](const QImage& i) { return i.convertToFormat(QImage::Format_RGB32); };
        if (image.size() != size || rgb(image) != rgb(reference.scaled(size)))
            fail(picture, image.isNull() ? reader.errorString().toStdString() : "pixels other than the converter's");
    }
    for (const auto& [file, unused] : broken) {
        QImageReader reader(QString::fromStdString(file));
        if (!reader.read().isNull() || reader.errorString().isEmpty()) fail(file, "a broken file was read");
    }
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
    QImageReader::setAllocationLimit(1);  // a megabyte: 640 by 400 in 4 bytes, not MacPaint's 576 by 720
    for (const auto& [picture, unused] : pictures)
        if (QImageReader(QString::fromStdString(picture)).read().isNull() != (vcheck::rowOf(picture)->kind == 4))
            fail(picture, "the allocation limit of a megabyte was not kept to");
#endif
    std::cout << "Qt " << QT_VERSION_MAJOR << ": " << pictures.size() << " pictures, " << broken.size()
              << " broken files, " << vcheck::failures << " failures\n";
    return vcheck::failures == 0 ? 0 : 1;
}
