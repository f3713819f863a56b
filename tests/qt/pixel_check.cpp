// velmoric_pixel_check SCREEN REFERENCE X Y [SCALE]: compares the reference
// picture with the part of the screen picture whose top left corner is at
// X, Y. With SCALE every reference pixel is SCALE by SCALE screen pixels, and
// the corner may lie up to 3 pixels from X, Y (a position in device pixels
// computed from a fractional ratio may be off by a pixel or two).
// Exit 0 when every pixel is equal, 1 when any differs, 2 on bad usage.
#include <QGuiApplication>
#include <QImage>
#include <algorithm>
#include <climits>
#include <cstdio>
#include <tuple>

namespace {

// The reference pixels that differ on the screen with the corner at left,
// top; a pixel off the screen differs.
long differing(const QImage& screen, const QImage& reference, int left, int top) {
    long count = 0;
    for (int y = 0; y < reference.height(); ++y)
        for (int x = 0; x < reference.width(); ++x)
            count += !screen.valid(left + x, top + y) ||
                     ((screen.pixel(left + x, top + y) ^ reference.pixel(x, y)) & 0xFFFFFF) != 0;
    return count;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 5 && argc != 6) {
        std::fprintf(stderr, "usage: velmoric_pixel_check SCREEN.png REFERENCE.png X Y [SCALE]\n");
        return 2;
    }
    const QImage screen = QImage(QString::fromLocal8Bit(argv[1])).convertToFormat(QImage::Format_RGB32);
    QImage reference = QImage(QString::fromLocal8Bit(argv[2])).convertToFormat(QImage::Format_RGB32);
    if (screen.isNull() || reference.isNull()) {
        std::fprintf(stderr, "cannot read the pictures\n");
        return 2;
    }
    const int scale = argc == 6 ? std::max(1, std::atoi(argv[5])) : 1, slack = argc == 6 ? 3 : 0;
    reference = reference.scaled(reference.size() * scale, Qt::IgnoreAspectRatio, Qt::FastTransformation);
    // The corner where the fewest pixels differ.
    const int x0 = std::atoi(argv[3]), y0 = std::atoi(argv[4]);
    std::tuple<long, int, int> best{LONG_MAX, x0, y0};
    for (int y = y0 - slack; y <= y0 + slack; ++y)
        for (int x = x0 - slack; x <= x0 + slack; ++x)
            best = std::min(best, std::tuple{differing(screen, reference, x, y), x, y});
    const auto [fewest, left, top] = best;
    std::printf("%ld pixels differ with the corner at %d,%d\n", fewest, left, top);
    return fewest == 0 ? 0 : 1;
}
