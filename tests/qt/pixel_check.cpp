// velmoric_pixel_check SCREEN REFERENCE X Y [SCALE]: compares the reference
// picture with the part of the screen picture whose top left corner is at
// X, Y. With SCALE every reference pixel is SCALE by SCALE screen pixels, and
// the corner may lie up to 3 pixels from X, Y (a position in device pixels
// computed from a fractional ratio may be off by a pixel or two).
// Exit 0 when every pixel is equal, 1 when any differs, 2 on bad usage.
#include <QGuiApplication>
#include <QImage>
#include <algorithm>
#include <cstdio>

int main(int argc, char** argv) {
    if (argc != 5 && argc != 6) {
        std::fprintf(stderr, "usage: velmoric_pixel_check SCREEN.png REFERENCE.png X Y [SCALE]\n");
        return 2;
    }
    const QImage screen = QImage(QString::fromLocal8Bit(argv[1])).convertToFormat(QImage::Format_RGB32);
    QImage reference = QImage(QString::fromLocal8Bit(argv[2])).convertToFormat(QImage::Format_RGB32);
    int left = std::atoi(argv[3]), top = std::atoi(argv[4]);
    if (argc == 6) {
        const int scale = std::max(1, std::atoi(argv[5]));
        reference = reference.scaled(reference.size() * scale, Qt::IgnoreAspectRatio, Qt::FastTransformation);
        // The corner where the most pixels agree.
        long best = -1;
        const int x0 = left, y0 = top;
        for (int dy = -3; dy <= 3; ++dy)
            for (int dx = -3; dx <= 3; ++dx) {
                long same = 0;
                for (int y = 0; y < reference.height(); ++y)
                    for (int x = 0; x < reference.width(); ++x) {
                        const int sx = x0 + dx + x, sy = y0 + dy + y;
                        same += screen.valid(sx, sy) && ((screen.pixel(sx, sy) ^ reference.pixel(x, y)) & 0xFFFFFF) == 0;
                    }
                if (same > best) best = same, left = x0 + dx, top = y0 + dy;
            }
    }
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
