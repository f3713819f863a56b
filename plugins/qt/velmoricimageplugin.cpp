#include "plugins/qt/velmoricimageplugin.h"

#include <QFileDevice>
#include <QFileInfo>
#include <QVariant>
#include <QVector>
#include <algorithm>
#include <cstring>

namespace velmoric::qtplugin {
namespace {

std::span<const std::uint8_t> bytesOf(const QByteArray& a) {
    return {reinterpret_cast<const std::uint8_t*>(a.constData()), std::size_t(a.size())};
}

QString nameOf(QIODevice* device) {
    if (const auto* file = qobject_cast<QFileDevice*>(device)) return file->fileName();
    return QStringLiteral("(a stream)");
}

// The row the first bytes on the device name, looked at without reading them.
const Format* formatByContent(QIODevice* device) {
    if (!device || !device->isReadable()) return nullptr;
    return findFormatByContent(bytesOf(device->peek(qint64(signatureExtent()))));
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

QImage::Format imageFormatOf(const desktop::DesktopPicture& p) {
    return p.paletted() ? QImage::Format_Indexed8 : QImage::Format_RGB32;
}

QVector<QRgb> colourTable(const std::vector<std::uint32_t>& palette) {
    QVector<QRgb> table;
    table.reserve(int(palette.size()));
    for (std::uint32_t c : palette) table.append(0xFF000000u | c);
    return table;
}

// The picture as a QImage of the kind Qt's own readers give: palette indices
// and a colour table, or 32-bit colours. Rows go over whole.
bool makeImage(const desktop::DesktopPicture& p, QIODevice* device, QImage* out) {
    const QSize size(p.width, p.height);
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
    // Refuses, with Qt's own warning, a picture above QImageReader::allocationLimit().
    if (!QImageIOHandler::allocateImage(size, imageFormatOf(p), out)) {
        qWarning("velmoric image plugin: %s: the picture is larger than the allocation limit", qPrintable(nameOf(device)));
        return false;
    }
#else
    Q_UNUSED(device);
    *out = QImage(size, imageFormatOf(p));
    if (out->isNull()) return false;
#endif
    const std::size_t width = std::size_t(p.width);
    for (int y = 0; y < p.height; ++y) {
        if (p.paletted()) {
            std::memcpy(out->scanLine(y), p.indices.data() + std::size_t(y) * width, width);
            continue;
        }
        auto* line = reinterpret_cast<QRgb*>(out->scanLine(y));
        const std::uint32_t* in = p.pixels.data() + std::size_t(y) * width;
        for (std::size_t x = 0; x < width; ++x) line[x] = 0xFF000000u | in[x];
    }
    if (p.paletted()) out->setColorTable(colourTable(p.palette));
    return true;
}

}  // namespace

const Format* ImageHandler::row() const {
    if (const Format* f = desktop::formatForKey(format().toStdString())) return f;
    // Without a key the file's name decides, as it does everywhere else...
    if (const Format* f = desktop::formatForKey(extensionOf(QFileInfo(nameOf(device())).fileName().toStdString())))
        return f;
    // ...and without a name that says so, the first bytes.
    return formatByContent(device());
}

const desktop::DesktopPicture& ImageHandler::picture() const {
    if (decoded_) return picture_;
    decoded_ = true;
    QIODevice* device = this->device();
    const Format* format = row();
    if (!format)
        picture_.error = "not the name of an Atari picture, nor the first bytes of one";
    else if (!device || !device->isReadable())
        picture_.error = "the file cannot be read";
    else
        picture_ = decodeDevice(*format, device);
    if (!picture_.ok)
        qWarning("velmoric image plugin: %s: %s", qPrintable(nameOf(device)), picture_.error.c_str());
    return picture_;
}

bool ImageHandler::canRead() const {
    // An animation can be read until its last frame has been.
    if (decoded_ && animated()) return next_ < frameCount();
    const Format* format = row();
    if (!format || !device() || !device()->isReadable()) return false;
    const_cast<ImageHandler*>(this)->setFormat(QByteArray(format->lower.data(), qsizetype(format->lower.size())));
    return true;
}

bool ImageHandler::read(QImage* image) {
    const desktop::DesktopPicture& p = picture();
    if (!p.ok || (image_.isNull() && !makeImage(p, device(), &image_))) return false;
    if (!p.animated()) {
        *image = image_;
        return true;
    }
    if (next_ < 0 || next_ >= frameCount()) return false;
    QImage frame = image_;
    if (next_ > 0) frame.setColorTable(colourTable(p.frames[std::size_t(next_)].palette));
    *image = frame;
    current_ = next_++;
    return true;
}

bool ImageHandler::supportsOption(ImageOption option) const {
    return option == Size || option == ImageFormat || (option == Animation && animated());
}

QVariant ImageHandler::option(ImageOption option) const {
    if (option == ImageFormat) return picture().ok ? imageFormatOf(picture()) : QImage::Format_Indexed8;
    if (option == Size && picture().ok) return QSize(picture().width, picture().height);
    if (option == Animation) return animated();
    return {};
}

int ImageHandler::imageCount() const { return animated() ? frameCount() : QImageIOHandler::imageCount(); }

int ImageHandler::currentImageNumber() const { return animated() ? current_ : QImageIOHandler::currentImageNumber(); }

// How long the image last read shows (the first, before any read).
int ImageHandler::nextImageDelay() const {
    return animated() ? picture().frames[std::size_t(current_)].delayMs : QImageIOHandler::nextImageDelay();
}

// For ever.
int ImageHandler::loopCount() const { return animated() ? -1 : QImageIOHandler::loopCount(); }

bool ImageHandler::jumpToNextImage() {
    if (!animated() || next_ >= frameCount()) return false;
    ++next_;
    return true;
}

bool ImageHandler::jumpToImage(int imageNumber) {
    if (!animated() || imageNumber < 0 || imageNumber >= frameCount()) return false;
    next_ = imageNumber;
    return true;
}

QImageIOPlugin::Capabilities ImagePlugin::capabilities(QIODevice* device, const QByteArray& format) const {
    if (device && !device->isReadable()) return {};
    // A key Qt names decides; without one, the first bytes of a format that has a signature.
    if (format.isEmpty() ? formatByContent(device) != nullptr : desktop::formatForKey(format.toStdString()) != nullptr)
        return CanRead;
    return {};
}

QImageIOHandler* ImagePlugin::create(QIODevice* device, const QByteArray& format) const {
    auto* handler = new ImageHandler;
    handler->setDevice(device);
    handler->setFormat(format);
    return handler;
}

}  // namespace velmoric::qtplugin
