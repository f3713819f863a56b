#pragma once
// `Image1`: shows the current picture stretched to the control's size. Each
// screen pixel takes the nearest source pixel, so pixel art stays sharp at
// any size. In native mode every picture pixel is the same whole number of
// device pixels instead, from the top left corner. Image1 alone of the window
// takes drops: a list of local files.
#include <QImage>
#include <QStringList>
#include <QWidget>

class QMimeData;

#include <string>
#include <vector>

#include "platform/picture.h"

namespace velmoric::qt {

// The picture's pixels as an image for the screen.
QImage toImage(const Picture& picture);

// The local files of a dragged list of files, as the platform names files;
// empty when the data holds no such list.
std::vector<std::string> droppedFiles(const QMimeData* data);

class Image1 : public QWidget {
    Q_OBJECT
public:
    explicit Image1(QWidget* parent);

    void setPicture(const Picture& picture);
    // Shows the picture's pixels under another palette (an indexed picture
    // only), and the picture's own colours again.
    void setColourTable(const QList<QRgb>& table);
    void showDecodedColours();
    const Picture& picture() const { return picture_; }
    const QImage& image() const { return image_; }
    void setNative(bool native);
    bool native() const { return native_; }
    // Device pixels to a picture pixel in native mode: the device pixel
    // ratio taken down to a whole number, at least 1.
    int nativeScale() const;

signals:
    void clicked();
    void filesDropped(const std::vector<std::string>& files);
    void contextMenuAsked(const QPoint& globalPosition);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    // While colour cycles play, each palette's picture as drawn at the
    // control's size: a frame that comes round again costs a copy, not a
    // conversion and a stretch.
    struct DrawnFrame {
        QList<QRgb> colours;
        QImage drawn;
    };
    const QImage& drawnFrame();

    Picture picture_;
    QImage image_;
    std::vector<DrawnFrame> drawnFrames_;
    bool cycling_ = false;
    bool pressed_ = false;
    bool native_ = false;
};

}  // namespace velmoric::qt
