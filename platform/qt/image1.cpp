#include "platform/qt/image1.h"

#include <QContextMenuEvent>
#include <QDropEvent>
#include <QFile>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QUrl>
#include <cmath>

#include "shell/viewer.h"

namespace velmoric::qt {

// Qt's own BMP reader turns the bitmap bytes into an image; the bytes stay
// with the picture object for saving and the clipboard.
QImage toImage(const Picture& picture) {
    if (picture.empty()) return {};
    const std::vector<std::uint8_t>& bytes = picture.bytes();
    return QImage::fromData(QByteArrayView(bytes.data(), qsizetype(bytes.size())), "BMP");
}

std::vector<std::string> droppedFiles(const QMimeData* data) {
    std::vector<std::string> files;
    if (!data || !data->hasFormat(QStringLiteral("text/uri-list"))) return files;
    for (const QUrl& url : data->urls())
        if (url.isLocalFile() && !url.toLocalFile().isEmpty())
            files.push_back(QFile::encodeName(url.toLocalFile()).toStdString());
    return files;
}

Image1::Image1(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAcceptDrops(true);
}

void Image1::setNative(bool native) {
    if (native == native_) return;
    native_ = native;
    update();
}

int Image1::nativeScale() const { return std::max(1, int(std::floor(devicePixelRatioF()))); }

void Image1::setPicture(const Picture& picture) {
    picture_ = picture;
    showDecodedColours();
}

void Image1::setColourTable(const QList<QRgb>& table) {
    if (image_.colorCount() != table.size()) return;
    image_.setColorTable(table);
    cycling_ = true;
    update();
}

void Image1::showDecodedColours() {
    image_ = toImage(picture_);
    cycling_ = false;
    drawnFrames_.clear();
    update();
}

const QImage& Image1::drawnFrame() {
    constexpr qsizetype kMostBytes = 64 << 20;  // beyond that, frames are drawn anew each time
    const qreal ratio = devicePixelRatioF();
    const QSize device(qRound(width() * ratio), qRound(height() * ratio));
    qsizetype bytes = 0;
    for (const DrawnFrame& f : drawnFrames_) {
        if (f.drawn.size() != device) {
            drawnFrames_.clear();
            break;
        }
        if (f.colours == image_.colorTable()) return f.drawn;
        bytes += f.drawn.sizeInBytes();
    }
    QImage drawn(device, QImage::Format_RGB32);
    drawn.setDevicePixelRatio(ratio);
    QPainter painter(&drawn);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    painter.drawImage(QRect(QPoint(0, 0), size()), image_);
    painter.end();
    if (bytes + drawn.sizeInBytes() > kMostBytes) drawnFrames_.clear();
    drawnFrames_.push_back({image_.colorTable(), std::move(drawn)});
    return drawnFrames_.back().drawn;
}

void Image1::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    // Nearest pixel: no smoothing of the stretch.
    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    if (image_.isNull()) {
        painter.fillRect(rect(), palette().window());
    } else if (native_) {
        // Scaled by a whole number first, then drawn at the device's own
        // resolution: no column or row comes out wider than another.
        const int scale = nativeScale();
        QImage device = scale == 1 ? image_
                                   : image_.scaled(image_.width() * scale, image_.height() * scale,
                                                   Qt::IgnoreAspectRatio, Qt::FastTransformation);
        device.setDevicePixelRatio(devicePixelRatioF());
        painter.fillRect(rect(), palette().window());
        painter.drawImage(QPointF(0, 0), device);
    } else if (cycling_) {
        painter.drawImage(QPointF(0, 0), drawnFrame());
    } else {
        painter.drawImage(rect(), image_);
    }
}

// A click is a press and a release of the left button on the control.
void Image1::mousePressEvent(QMouseEvent* event) { pressed_ = event->button() == Qt::LeftButton; }

void Image1::mouseReleaseEvent(QMouseEvent* event) {
    const bool click = pressed_ && event->button() == Qt::LeftButton && rect().contains(event->position().toPoint());
    pressed_ = false;
    if (click) emit clicked();
}

// Drop effects as bits: 1 copy, 2 move, 4 link.
namespace {

int effectOf(Qt::DropActions actions) {
    return (actions & Qt::CopyAction ? 1 : 0) | (actions & Qt::MoveAction ? 2 : 0) | (actions & Qt::LinkAction ? 4 : 0);
}

// Accepts a drag with the copy action, or refuses it: the platform then
// shows its no-drop cursor.
void answerDrag(QDropEvent* event) {
    const int effect = Viewer::Image1_OLEDragOver(!droppedFiles(event->mimeData()).empty(),
                                                  effectOf(event->possibleActions()));
    if (effect & 1) {
        event->setDropAction(Qt::CopyAction);
        event->accept();
    } else {
        event->ignore();
    }
}

}  // namespace

void Image1::contextMenuEvent(QContextMenuEvent* event) { emit contextMenuAsked(event->globalPos()); }

void Image1::dragEnterEvent(QDragEnterEvent* event) { answerDrag(event); }
void Image1::dragMoveEvent(QDragMoveEvent* event) { answerDrag(event); }

void Image1::dropEvent(QDropEvent* event) {
    const std::vector<std::string> files = droppedFiles(event->mimeData());
    if (files.empty()) {
        event->ignore();
        return;
    }
    event->setDropAction(Qt::CopyAction);
    event->accept();
    emit filesDropped(files);
}

}  // namespace velmoric::qt
