#include "platform/qt/image1.h"

#include <QMouseEvent>
#include <QPainter>

namespace velmoric::qt {

// Qt's own BMP reader turns the bitmap bytes into an image; the bytes stay
// with the picture object for saving and the clipboard.
QImage toImage(const Picture& picture) {
    if (picture.empty()) return {};
    const std::vector<std::uint8_t>& bytes = picture.bytes();
    return QImage::fromData(QByteArrayView(bytes.data(), qsizetype(bytes.size())), "BMP");
}

Image1::Image1(QWidget* parent) : QWidget(parent) { setAttribute(Qt::WA_OpaquePaintEvent); }

void Image1::setPicture(const Picture& picture) {
    picture_ = picture;
    image_ = toImage(picture);
    update();
}

void Image1::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    // Nearest pixel: no smoothing of the stretch.
    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    if (image_.isNull())
        painter.fillRect(rect(), palette().window());
    else
        painter.drawImage(rect(), image_);
}

// A click is a press and a release of the left button on the control.
void Image1::mousePressEvent(QMouseEvent* event) { pressed_ = event->button() == Qt::LeftButton; }

void Image1::mouseReleaseEvent(QMouseEvent* event) {
    const bool click = pressed_ && event->button() == Qt::LeftButton && rect().contains(event->position().toPoint());
    pressed_ = false;
    if (click) emit clicked();
}

}  // namespace velmoric::qt
