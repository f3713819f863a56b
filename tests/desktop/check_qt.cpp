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
        const QString name = QString::fromStdString(picture);
        const QString type = QMimeDatabase().mimeTypeForFile(name).name();
        if (type.toStdString() != vcheck::rowOf(picture)->mimeType) fail(picture, "typed " + type.toStdString());
        QImageReader reader(name);
        const QImage image = reader.read(), reference(QString::fromStdString(bitmap), "BMP");
        const int repeat = reference.size() == QSize(640, 200) ? 2 : 1;
        if (image.isNull() || image.width() != reference.width() || image.height() != reference.height() * repeat) {
            fail(picture, "read as " + std::to_string(image.width()) + "x" + std::to_string(image.height()) + " " +
                              reader.errorString().toStdString());
            continue;
        }
        const auto differs = [&] {
            for (int y = 0; y < image.height(); ++y)
                for (int x = 0; x < image.width(); ++x)
                    if ((image.pixel(x, y) ^ reference.pixel(x, y / repeat)) & 0xFFFFFF) return true;
            return false;
        };
        if (differs()) fail(picture, "pixels other than the converter's");
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
