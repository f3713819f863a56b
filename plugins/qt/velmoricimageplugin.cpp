#include "plugins/qt/velmoricimageplugin.h"

#include <QFileDevice>
#include <QFileInfo>
#include <QImage>
#include <QVariant>
#include <algorithm>

namespace velmoric::qtplugin {
namespace {

std::span<const std::uint8_t> bytesOf(const QByteArray& a) {
    return {reinterpret_cast<const std::uint8_t*>(a.constData()), std::size_t(a.size())};
}

QString nameOf(QIODevice* device) {
    if (const auto* file = qobject_cast<QFileDevice*>(device)) return file->fileName();
    return QStringLiteral("(a stream)");
}

// The first bytes of what is left on the device and the length of all of it.
desktop::DesktopPicture decodeDevice(const Format& format, QIODevice* device) {
    if (!device->isSequential()) {
        const qint64 length = std::max<qint64>(0, device->size() - device->pos());
        const QByteArray head = device->read(std::min<qint64>(length, qint64(kSourceLimit)));
        return desktop::decodeForDesktop(format, bytesOf(head), std::uint64_t(length));
    }
    desktop::SourceBytes source;
    char buffer[16384];
    for (qint64 n; source.length() <= desktop::kLongestFile && (n = device->read(buffer, sizeof buffer)) > 0;)
        source.append({reinterpret_cast<const std::uint8_t*>(buffer), std::size_t(n)});
    return desktop::decodeForDesktop(format, source.head(), source.length());
}

}  // namespace

const Format* ImageHandler::row() const {
    if (const Format* f = desktop::formatForKey(format().toStdString())) return f;
    // Without a key the file's name decides, as it does everywhere else.
    return desktop::formatForKey(extensionOf(QFileInfo(nameOf(device())).fileName().toStdString()));
}

const desktop::DesktopPicture& ImageHandler::picture() const {
    if (decoded_) return picture_;
    decoded_ = true;
    QIODevice* device = this->device();
    const Format* format = row();
    if (!format)
        picture_.error = "not the name of an Atari picture";
    else if (!device || !device->isReadable())
        picture_.error = "the file cannot be read";
    else
        picture_ = decodeDevice(*format, device);
    if (!picture_.ok)
        qWarning("velmoric image plugin: %s: %s", qPrintable(nameOf(device)), picture_.error.c_str());
    return picture_;
}

bool ImageHandler::canRead() const {
    const Format* format = row();
    if (!format || !device() || !device()->isReadable()) return false;
    const_cast<ImageHandler*>(this)->setFormat(QByteArray(format->lower.data(), qsizetype(format->lower.size())));
    return true;
}

bool ImageHandler::read(QImage* image) {
    const desktop::DesktopPicture& p = picture();
    if (!p.ok) return false;
    QImage out;
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
    // Refuses, with Qt's own warning, a picture above QImageReader::allocationLimit().
    if (!QImageIOHandler::allocateImage(QSize(p.width, p.height), QImage::Format_RGB32, &out)) {
        qWarning("velmoric image plugin: %s: the picture is larger than the allocation limit",
                 qPrintable(nameOf(device())));
        return false;
    }
#else
    out = QImage(p.width, p.height, QImage::Format_RGB32);
    if (out.isNull()) return false;
#endif
    for (int y = 0; y < p.height; ++y) {
        auto* line = reinterpret_cast<QRgb*>(out.scanLine(y));
        for (int x = 0; x < p.width; ++x) line[x] = 0xFF000000u | p.pixels[std::size_t(y) * std::size_t(p.width) + std::size_t(x)];
    }
    *image = out;
    return true;
}

bool ImageHandler::supportsOption(ImageOption option) const { return option == Size || option == ImageFormat; }

QVariant ImageHandler::option(ImageOption option) const {
    if (option == ImageFormat) return QImage::Format_RGB32;
    if (option == Size && picture().ok) return QSize(picture().width, picture().height);
    return {};
}

QImageIOPlugin::Capabilities ImagePlugin::capabilities(QIODevice* device, const QByteArray& format) const {
    // No look at the contents: an extension alone decides, and one Qt did not name is not ours.
    if (!desktop::formatForKey(format.toStdString())) return {};
    if (device && !device->isReadable()) return {};
    return CanRead;
}

QImageIOHandler* ImagePlugin::create(QIODevice* device, const QByteArray& format) const {
    auto* handler = new ImageHandler;
    handler->setDevice(device);
    handler->setFormat(format);
    return handler;
}

}  // namespace velmoric::qtplugin
