// The Qt image plugin's entry points as QImageReader calls them: the first
// input byte picks the format key and, with its high bit, a device that can
// only be read in sequence; the rest is the file. A read gives a picture of
// its kind's size, or fails with the size unknown.
#include <QBuffer>
#include <QImage>
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "plugins/qt/velmoricimageplugin.h"

namespace {

// A stream: no size, no going back.
class Stream : public QIODevice {
public:
    explicit Stream(const QByteArray& bytes) : bytes_(bytes) {}
    bool isSequential() const override { return true; }

protected:
    qint64 readData(char* data, qint64 most) override {
        const qint64 n = std::min<qint64>(most, bytes_.size() - at_);
        std::copy_n(bytes_.constData() + at_, n, data);
        return at_ += n, n;
    }
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    QByteArray bytes_;
    qint64 at_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    [[maybe_unused]] static const auto previous =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    if (size == 0) return 0;
    const auto table = velmoric::formatTable();
    const velmoric::Format& format = table[(data[0] & 0x7F) % table.size()];
    const QByteArray key(format.lower.data(), int(format.lower.size()));
    QByteArray bytes(reinterpret_cast<const char*>(data + 1), int(size - 1));
    const std::unique_ptr<QIODevice> device(data[0] & 0x80 ? static_cast<QIODevice*>(new Stream(bytes)) : new QBuffer(&bytes));
    device->open(QIODevice::ReadOnly);
    static velmoric::qtplugin::ImagePlugin plugin;
    if (!(plugin.capabilities(device.get(), key) & QImageIOPlugin::CanRead)) std::abort();
    const std::unique_ptr<QImageIOHandler> handler(plugin.create(device.get(), key));
    const QVariant known = handler->option(QImageIOHandler::Size);
    QImage image;
    const bool ok = handler->read(&image);
    if (ok != known.isValid() || ok == image.isNull() || (ok && image.size() != known.toSize())) std::abort();
    const QSize s = image.size();
    if (ok && s != QSize(320, 200) && s != QSize(640, 400) && s != QSize(576, 720)) std::abort();
    return 0;
}
