#pragma once
// The Qt image-format plugin: Atari pictures for every Qt program (Gwenview,
// qView, Dolphin's thumbnails). Built for Qt 6 and, where its development
// files are present, for Qt 5 from the same source.
#include <QImageIOHandler>
#include <QImageIOPlugin>

#include "desktop/desktopimage.h"

namespace velmoric::qtplugin {

// Reads one picture: the format key Qt gives (the file's extension in small
// letters) chooses the decoder, never the contents.
class ImageHandler : public QImageIOHandler {
public:
    bool canRead() const override;
    bool read(QImage* image) override;
    bool supportsOption(ImageOption option) const override;
    QVariant option(ImageOption option) const override;

private:
    const Format* row() const;
    // Reads the device and decodes once; later calls keep the result.
    const desktop::DesktopPicture& picture() const;

    mutable bool decoded_ = false;
    mutable desktop::DesktopPicture picture_;
};

class ImagePlugin : public QImageIOPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.qt-project.Qt.QImageIOHandlerFactoryInterface" FILE "velmoric.json")

public:
    Capabilities capabilities(QIODevice* device, const QByteArray& format) const override;
    QImageIOHandler* create(QIODevice* device, const QByteArray& format = QByteArray()) const override;
};

}  // namespace velmoric::qtplugin
