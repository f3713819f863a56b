#pragma once
// The Qt image-format plugin: Atari pictures for every Qt program (Gwenview,
// qView, Dolphin's thumbnails). Built for Qt 6 and, where its development
// files are present, for Qt 5 from the same source.
#include <QImage>
#include <QImageIOHandler>
#include <QImageIOPlugin>

#include "desktop/desktopimage.h"

namespace velmoric::qtplugin {

// Reads one picture. The format key Qt gives (the file's extension in small
// letters) chooses the decoder; without one the file's name does, and
// without a name (a buffer in memory, a file without extension) the first
// bytes, for the formats whose files carry a signature. A picture whose
// colours cycle is an animation: one image for each palette of a period,
// sharing its pixels, looping for ever.
class ImageHandler : public QImageIOHandler {
public:
    bool canRead() const override;
    bool read(QImage* image) override;
    bool supportsOption(ImageOption option) const override;
    QVariant option(ImageOption option) const override;
    int imageCount() const override;
    int currentImageNumber() const override;
    int nextImageDelay() const override;
    int loopCount() const override;
    bool jumpToNextImage() override;
    bool jumpToImage(int imageNumber) override;

private:
    const Format* row() const;
    // Reads the device and decodes once; later calls keep the result.
    const desktop::DesktopPicture& picture() const;
    bool animated() const { return picture().ok && picture().animated(); }
    int frameCount() const { return int(picture().frames.size()); }

    mutable bool decoded_ = false;
    mutable desktop::DesktopPicture picture_;
    QImage image_;     // the picture in its first palette, made at the first read
    int next_ = 0;     // the frame the next read gives
    int current_ = 0;  // the frame the last read gave
};

class ImagePlugin : public QImageIOPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.qt-project.Qt.QImageIOHandlerFactoryInterface" FILE "velmoric.json")

public:
    Capabilities capabilities(QIODevice* device, const QByteArray& format) const override;
    QImageIOHandler* create(QIODevice* device, const QByteArray& format = QByteArray()) const override;
};

}  // namespace velmoric::qtplugin
