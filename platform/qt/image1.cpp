#include "platform/qt/image1.h"

#include <QMouseEvent>
#include <QPainter>

namespace velmoric::qt {

QImage toImage(const Picture& picture) {
    if (picture.empty() || picture.width() <= 0 || picture.height() <= 0) return {};
    QImage image(picture.width(), picture.height(), QImage::Format_RGB32);
    const std::vector<std::uint32_t> rgb = picture.toRgb();
    const int width = picture.width();
    for (int y = 0; y < picture.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        const std::uint32_t* source = rgb.data() + std::size_t(y) * std::size_t(width);
        for (int x = 0; x < width; ++x) line[x] = 0xFF000000u | source[x];
    }
    return image;
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
