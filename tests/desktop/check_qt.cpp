// check_qt PLUGINS PICTURES BROKEN: Qt (6 or 5, as built) with no plugin
// folder but PLUGINS. Qt's types include the table's; the MIME database of
// the environment names each picture's type; QImageReader reads it with the
// pixels of the converter's bitmap (lines doubled for medium resolution),
// refuses every broken file with an error, and honours the allocation limit.
// A picture whose format has a signature reads by its first bytes alone, from
// a file without extension and from memory. A picture whose colours cycle is
// an animation whose frames carry the core's palettes over the same pixels,
// with their delays, and QMovie plays it; any other stays one still image.
#include <QBuffer>
#include <QGuiApplication>
#include <QLibraryInfo>
#include <QFile>
#include <QImage>
#include <QImageReader>
#include <QMimeDatabase>
#include <QMovie>
#include <QTemporaryDir>

#include <cstring>

#include "check_common.h"

using vcheck::fail;

namespace {

QImage rgb(const QImage& i) { return i.convertToFormat(QImage::Format_RGB32); }

// Read by the first bytes alone: from a copy without extension and from memory.
bool readsByContent(const std::string& picture, const std::vector<std::uint8_t>& bytes, const QImage& byName,
                    const QTemporaryDir& dir) {
    const QString copy = dir.filePath(QStringLiteral("picture"));
    QFile::remove(copy);
    QByteArray data(reinterpret_cast<const char*>(bytes.data()), int(bytes.size()));
    QBuffer memory(&data);
    memory.open(QIODevice::ReadOnly);
    return QFile::copy(QString::fromStdString(picture), copy) && rgb(QImageReader(copy).read()) == rgb(byName) &&
           rgb(QImageReader(&memory).read()) == rgb(byName);
}

QVector<QRgb> colourTable(const velmoric::cycles::Palette& palette) {
    QVector<QRgb> table;
    for (const auto& c : palette) table.append(qRgb(c[2], c[1], c[0]));
    return table;
}

// The same pixels, whatever the colour tables.
bool samePixels(QImage a, const QImage& b) {
    a.setColorTable(b.colorTable());
    return a == b;
}

// The frames, in order, against the core's palettes and delays; then QMovie.
void checkAnimation(const std::string& picture, const velmoric::cycles::Animation& expected) {
    const QString name = QString::fromStdString(picture);
    QImageReader reader(name);
    const int count = int(expected.frames.size());
    if (!expected.animated()) {
        if (reader.supportsAnimation() || reader.imageCount() != 1) fail(picture, "a still picture read as an animation");
        return;
    }
    if (!reader.supportsAnimation() || reader.imageCount() != count || reader.loopCount() != -1)
        fail(picture, "not an animation of " + std::to_string(count) + " frames looping for ever");
    const std::vector<int> delays = velmoric::cycles::delaysIn(expected.frames, 1000);
    std::vector<QImage> frames;
    for (int i = 0; i < count; ++i) {
        const QImage frame = reader.read();
        frames.push_back(frame);
        if (frame.format() != QImage::Format_Indexed8 || !samePixels(frame, frames.front()) ||
            frame.colorTable() != colourTable(expected.frames[std::size_t(i)].palette) ||
            reader.nextImageDelay() != delays[std::size_t(i)])
            fail(picture, "frame " + std::to_string(i) + " is not the core's palette over the same pixels for its time");
    }
    if (reader.canRead()) fail(picture, "a frame beyond the period");
    QMovie movie(name);
    if (movie.frameCount() != count) fail(picture, "QMovie counts " + std::to_string(movie.frameCount()) + " frames");
    // QMovie takes the time a frame took to read off its delay, so its delay
    // may only be shorter than the reader's, which is checked exactly above.
    for (int i = 0; i < count + 1; ++i) {
        const int want = i % count;  // and round again
        if (!movie.jumpToNextFrame() || rgb(movie.currentImage()) != rgb(frames[std::size_t(want)]) ||
            movie.nextFrameDelay() > delays[std::size_t(want)])
            fail(picture, "QMovie's frame " + std::to_string(i) + " is not the core's");
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) return 2;
    // QMovie wants a GUI application, whose platform plugin lies among Qt's own.
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
    const QString qtPlugins = QLibraryInfo::path(QLibraryInfo::PluginsPath);
#else
    const QString qtPlugins = QLibraryInfo::location(QLibraryInfo::PluginsPath);
#endif
    qputenv("QT_QPA_PLATFORM_PLUGIN_PATH", (qtPlugins + "/platforms").toLocal8Bit());
    QCoreApplication::setLibraryPaths({QString::fromLocal8Bit(argv[1])});
    QGuiApplication app(argc, argv);
    const auto pictures = vcheck::readList(argv[2]), broken = vcheck::readList(argv[3]);
    QTemporaryDir dir;
    std::size_t byContent = 0, animated = 0;
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
        if (image.size() != size || rgb(image) != rgb(reference.scaled(size)))
            fail(picture, image.isNull() ? reader.errorString().toStdString() : "pixels other than the converter's");
        const auto bytes = vcheck::bytesOf(picture);
        if (velmoric::findFormatByContent(std::span(bytes).first(std::min(bytes.size(), velmoric::signatureExtent()))) ==
            vcheck::rowOf(picture)) {
            ++byContent;
            if (!readsByContent(picture, bytes, image, dir)) fail(picture, "not read by its first bytes");
        }
        const vcheck::Expected expected = vcheck::expectedOf(picture);
        if (expected.animation.animated()) {
            ++animated;
            std::cout << "colours cycle: " << picture << ", " << expected.animation.frames.size() << " frames\n";
        }
        checkAnimation(picture, expected.animation);
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
    std::cout << "Qt " << QT_VERSION_MAJOR << ": " << pictures.size() << " pictures (" << byContent
              << " also by their first bytes, " << animated << " animated), " << broken.size()
              << " broken files, " << vcheck::failures << " failures\n";
    return vcheck::failures == 0 ? 0 : 1;
}
