// velmoric_pixel_check SCREEN REFERENCE X Y: compares the reference picture
// with the part of the screen picture whose top left corner is at X, Y.
// Exit 0 when every pixel is equal, 1 when any differs, 2 on bad usage.
#include <QGuiApplication>
#include <QImage>
#include <cstdio>

int main(int argc, char** argv) {
    if (argc != 5) {
        std::fprintf(stderr, "usage: velmoric_pixel_check SCREEN.png REFERENCE.png X Y\n");
        return 2;
    }
    const QImage screen = QImage(QString::fromLocal8Bit(argv[1])).convertToFormat(QImage::Format_RGB32);
    const QImage reference = QImage(QString::fromLocal8Bit(argv[2])).convertToFormat(QImage::Format_RGB32);
    const int left = std::atoi(argv[3]), top = std::atoi(argv[4]);
    if (screen.isNull() || reference.isNull()) {
        std::fprintf(stderr, "cannot read the pictures\n");
        return 2;
    }
    if (left < 0 || top < 0 || left + reference.width() > screen.width() || top + reference.height() > screen.height()) {
        std::fprintf(stderr, "the reference does not fit the screen at %d,%d\n", left, top);
        return 1;
    }
    long differing = 0;
    for (int y = 0; y < reference.height(); ++y)
        for (int x = 0; x < reference.width(); ++x) {
            const QRgb want = reference.pixel(x, y) & 0xFFFFFF, got = screen.pixel(left + x, top + y) & 0xFFFFFF;
            if (want == got) continue;
            if (differing++ < 5)
                std::fprintf(stderr, "pixel %d,%d: screen %06X, picture %06X\n", x, y, unsigned(got), unsigned(want));
        }
    std::printf("%ld of %d pixels differ\n", differing, reference.width() * reference.height());
    return differing == 0 ? 0 : 1;
}
