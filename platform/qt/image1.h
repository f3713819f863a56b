#pragma once
// `Image1`: shows the current picture stretched to the control's size. Each
// screen pixel takes the nearest source pixel, so pixel art stays sharp at
// any size and one source pixel is one screen pixel at the native size.
#include <QImage>
#include <QWidget>

#include "platform/picture.h"

namespace velmoric::qt {

// The picture's pixels as an image for the screen.
QImage toImage(const Picture& picture);

class Image1 : public QWidget {
    Q_OBJECT
public:
    explicit Image1(QWidget* parent);

    void setPicture(const Picture& picture);
    const Picture& picture() const { return picture_; }
    const QImage& image() const { return image_; }

signals:
    void clicked();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    Picture picture_;
    QImage image_;
    bool pressed_ = false;
};

}  // namespace velmoric::qt
