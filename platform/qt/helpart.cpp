#include "platform/qt/helpart.h"

#include <QList>
#include <array>
#include <cmath>
#include <cstdint>
#include <string_view>
#include <vector>

namespace velmoric::qt {
namespace {

// ---- A 16-colour canvas ---------------------------------------------------------

// A 5 by 7 font with two rows below the line for descenders; each row is
// five bits, the leftmost pixel in bit 4.
struct Glyph {
    char c;
    std::array<std::uint8_t, 9> rows;
};

constexpr Glyph kFont[] = {
    {'A', {0x0E, 0x11, 0x11, 0x1F, 0x11, 0x11, 0x11}}, {'B', {0x1E, 0x11, 0x11, 0x1E, 0x11, 0x11, 0x1E}},
    {'C', {0x0E, 0x11, 0x10, 0x10, 0x10, 0x11, 0x0E}}, {'D', {0x1E, 0x11, 0x11, 0x11, 0x11, 0x11, 0x1E}},
    {'E', {0x1F, 0x10, 0x10, 0x1E, 0x10, 0x10, 0x1F}}, {'F', {0x1F, 0x10, 0x10, 0x1E, 0x10, 0x10, 0x10}},
    {'G', {0x0E, 0x11, 0x10, 0x17, 0x11, 0x11, 0x0F}}, {'H', {0x11, 0x11, 0x11, 0x1F, 0x11, 0x11, 0x11}},
    {'I', {0x0E, 0x04, 0x04, 0x04, 0x04, 0x04, 0x0E}}, {'K', {0x11, 0x12, 0x14, 0x18, 0x14, 0x12, 0x11}},
    {'L', {0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x1F}}, {'M', {0x11, 0x1B, 0x15, 0x15, 0x11, 0x11, 0x11}},
    {'N', {0x11, 0x11, 0x19, 0x15, 0x13, 0x11, 0x11}}, {'O', {0x0E, 0x11, 0x11, 0x11, 0x11, 0x11, 0x0E}},
    {'P', {0x1E, 0x11, 0x11, 0x1E, 0x10, 0x10, 0x10}}, {'R', {0x1E, 0x11, 0x11, 0x1E, 0x14, 0x12, 0x11}},
    {'S', {0x0F, 0x10, 0x10, 0x0E, 0x01, 0x01, 0x1E}}, {'T', {0x1F, 0x04, 0x04, 0x04, 0x04, 0x04, 0x04}},
    {'U', {0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x0E}}, {'V', {0x11, 0x11, 0x11, 0x11, 0x11, 0x0A, 0x04}},
    {'Y', {0x11, 0x11, 0x0A, 0x04, 0x04, 0x04, 0x04}}, {':', {0x00, 0x0C, 0x0C, 0x00, 0x0C, 0x0C, 0x00}},
    {'\\', {0x00, 0x10, 0x08, 0x04, 0x02, 0x01, 0x00}},
    {'e', {0x00, 0x00, 0x0E, 0x11, 0x1F, 0x10, 0x0E}}, {'i', {0x04, 0x00, 0x0C, 0x04, 0x04, 0x04, 0x0E}},
    {'k', {0x10, 0x10, 0x12, 0x14, 0x18, 0x14, 0x12}}, {'l', {0x0C, 0x04, 0x04, 0x04, 0x04, 0x04, 0x0E}},
    {'n', {0x00, 0x00, 0x16, 0x19, 0x11, 0x11, 0x11}}, {'o', {0x00, 0x00, 0x0E, 0x11, 0x11, 0x11, 0x0E}},
    {'p', {0x00, 0x00, 0x1E, 0x11, 0x11, 0x11, 0x1E, 0x10, 0x10}},
    {'s', {0x00, 0x00, 0x0F, 0x10, 0x0E, 0x01, 0x1E}}, {'t', {0x08, 0x08, 0x1C, 0x08, 0x08, 0x09, 0x06}},
    {'w', {0x00, 0x00, 0x11, 0x11, 0x15, 0x15, 0x0A}},
};

const Glyph* glyphOf(char c) {
    for (const Glyph& g : kFont)
        if (g.c == c) return &g;
    return nullptr;
}

class Canvas {
public:
    Canvas(int width, int height, int background)
        : width_(width), height_(height), pixels_(std::size_t(width * height), std::uint8_t(background)) {}

    void put(int x, int y, int colour) {
        if (x >= 0 && x < width_ && y >= 0 && y < height_) pixels_[std::size_t(y * width_ + x)] = std::uint8_t(colour);
    }
    void fill(int x0, int y0, int x1, int y1, int colour) {
        for (int y = y0; y <= y1; ++y)
            for (int x = x0; x <= x1; ++x) put(x, y, colour);
    }
    void frame(int x0, int y0, int x1, int y1, int colour) {
        fill(x0, y0, x1, y0, colour);
        fill(x0, y1, x1, y1, colour);
        fill(x0, y0, x0, y1, colour);
        fill(x1, y0, x1, y1, colour);
    }
    // A line `pen` pixels square, stepped along its longer axis.
    void line(double x0, double y0, double x1, double y1, int colour, int pen = 1) {
        const int steps = std::max(1, int(std::ceil(std::max(std::abs(x1 - x0), std::abs(y1 - y0)))));
        for (int s = 0; s <= steps; ++s) {
            const double t = double(s) / steps;
            const int x = int(std::lround(x0 + (x1 - x0) * t)), y = int(std::lround(y0 + (y1 - y0) * t));
            fill(x, y, x + pen - 1, y + pen - 1, colour);
        }
    }
    // Text in the 5 by 7 font; each dot is `sx` by `sy` pixels, and `bold`
    // strikes every dot a second time one pixel to the right.
    void text(std::string_view s, int left, int top, int colour, int sx = 1, int sy = 1, bool bold = false) {
        const int advance = (6 + (bold ? 1 : 0)) * sx;
        for (std::size_t n = 0; n < s.size(); ++n) {
            const Glyph* g = glyphOf(s[n]);
            if (!g) continue;
            const int x0 = left + int(n) * advance;
            for (int row = 0; row < 9; ++row)
                for (int col = 0; col < 5; ++col) {
                    if (!(g->rows[std::size_t(row)] & (0x10 >> col))) continue;
                    const int x = x0 + col * sx, y = top + row * sy;
                    fill(x, y, x + sx - 1 + (bold ? 1 : 0), y + sy - 1, colour);
                }
        }
    }
    static int textWidth(std::string_view s, int sx = 1, bool bold = false) {
        return int(s.size()) * (6 + (bold ? 1 : 0)) * sx - sx;
    }

    QImage image(const std::array<QRgb, 16>& colours) const {
        QImage out(width_, height_, QImage::Format_Indexed8);
        QList<QRgb> table;
        for (QRgb rgb : colours) table << (0xFF000000u | rgb);
        out.setColorTable(table);
        for (int y = 0; y < height_; ++y)
            for (int x = 0; x < width_; ++x) out.setPixel(x, y, pixels_[std::size_t(y * width_ + x)]);
        return out;
    }

private:
    int width_, height_;
    std::vector<std::uint8_t> pixels_;
};

// The sixteen colours both pictures use.
enum Colour {
    kGreen, kBlack, kWhite, kLightGrey, kGrey, kDarkGrey, kDarkGreen, kDiskBlue,
    kDiskDark, kShutter, kBlue, kDeepBlue, kYellow, kOchre, kRed, kCream,
};
constexpr std::array<QRgb, 16> kColours = {
    0x00A040, 0x000000, 0xFFFFFF, 0xC0C0C0, 0x808080, 0x404040, 0x006020, 0x3050A0,
    0x182850, 0xB0B8C0, 0x2060E0, 0x002080, 0xF0D040, 0xA07010, 0xE03020, 0xF0F0E0,
};

// A white menu strip with a black line below it.
void menuStrip(Canvas& c, int width, int height, int sx, int sy, bool bold) {
    c.fill(0, 0, width - 1, height - 1, kWhite);
    c.fill(0, height, width - 1, height, kBlack);
    int left = 8 * sx;
    for (std::string_view title : {"Desk", "File", "View", "Options"}) {
        c.text(title, left, (height - 7 * sy) / 2, kBlack, sx, sy, bold);
        left += Canvas::textWidth(title, sx, bold) + 16 * sx;
    }
}

// A caption centred under an icon, white on a black band as the desktop's
// icons have it.
void iconCaption(Canvas& c, std::string_view caption, int centre, int top) {
    const int w = Canvas::textWidth(caption);
    c.fill(centre - w / 2 - 2, top - 1, centre - w / 2 + w + 1, top + 7, kBlack);
    c.text(caption, centre - w / 2, top, kWhite);
}

// A 3.5 inch disk: a blue case with a notched corner, the metal shutter at
// the top and a paper label that carries the drive's letter.
void floppy(Canvas& c, const QRect& r, char letter) {
    const int x0 = r.left(), y0 = r.top(), x1 = r.right(), y1 = r.bottom();
    c.fill(x0, y0, x1, y1, kBlack);
    c.fill(x0 + 1, y0 + 1, x1 - 1, y1 - 1, kDiskBlue);
    for (int i = 0; i < 4; ++i) c.fill(x1 - 3 + i, y0, x1, y0 + i, kGreen);  // the bevelled corner
    c.line(x1 - 4, y0, x1, y0 + 4, kBlack);
    c.fill(x0 + 1, y1 - 1, x1 - 1, y1 - 1, kDiskDark);
    // The shutter with its window.
    c.fill(x0 + 8, y0 + 1, x1 - 8, y0 + 11, kShutter);
    c.frame(x0 + 8, y0 + 1, x1 - 8, y0 + 11, kDarkGrey);
    c.fill(x0 + 18, y0 + 3, x1 - 11, y0 + 9, kDiskDark);
    // The label.
    c.fill(x0 + 4, y0 + 15, x1 - 4, y1 - 2, kCream);
    c.frame(x0 + 4, y0 + 15, x1 - 4, y1 - 2, kDarkGrey);
    const char text[2] = {letter, '\0'};
    c.text(text, (x0 + x1) / 2 - 5, y0 + 16, kBlack, 2, 2);
    c.fill(x0 + 2, y1 - 5, x0 + 3, y1 - 3, kBlack);  // the write-protect hole
}

// A metal bin with a ribbed body and a lid with a handle.
void bin(Canvas& c, const QRect& r) {
    const int x0 = r.left(), y0 = r.top(), x1 = r.right(), y1 = r.bottom();
    const int mid = (x0 + x1) / 2;
    c.fill(mid - 5, y0, mid + 5, y0 + 3, kBlack);
    c.fill(mid - 3, y0 + 2, mid + 3, y0 + 3, kLightGrey);
    c.fill(x0, y0 + 4, x1, y0 + 8, kBlack);
    c.fill(x0 + 1, y0 + 5, x1 - 1, y0 + 7, kLightGrey);
    // The body narrows towards its foot.
    for (int y = y0 + 9; y <= y1; ++y) {
        const int inset = 3 + (y - y0 - 9) * 3 / (y1 - y0 - 9);
        c.fill(x0 + inset, y, x1 - inset, y, kBlack);
        if (y < y1) c.fill(x0 + inset + 1, y, x1 - inset - 1, y, kShutter);
    }
    for (int rib = -2; rib <= 2; ++rib) {
        const int x = mid + rib * 5;
        c.line(x, y0 + 12, mid + rib * 4, y1 - 3, kGrey);
    }
}

}  // namespace

QImage helpBackgroundImage() {
    constexpr int kW = 640, kH = 400;
    Canvas c(kW, kH, kGreen);
    // A sprinkle of darker dots gives the desktop its texture.
    for (int y = 0; y < kH; y += 4)
        for (int x = (y / 4) % 2 * 2; x < kW; x += 4) c.put(x, y, kDarkGreen);
    menuStrip(c, kW, 19, 1, 2, true);

    // The window the help sits in, its title bar under the menu strip.
    constexpr int wl = 146, wt = 21, wr = 589, wb = 398;
    c.fill(wl, wt, wr, wb, kBlack);
    c.fill(wl + 1, wt + 1, wr - 1, wb - 1, kLightGrey);
    for (int y = wt + 1; y < 31; y += 2) c.fill(wl + 1, y, wr - 1, y, kWhite);
    c.fill(wl + 1, 31, wr - 1, 31, kBlack);
    c.frame(wl + 3, wt + 2, wl + 10, wt + 8, kBlack);  // the close box
    const int titleWidth = Canvas::textWidth("HELP");
    c.fill((wl + wr - titleWidth) / 2 - 4, wt + 1, (wl + wr + titleWidth) / 2 + 4, 30, kWhite);
    c.text("HELP", (wl + wr - titleWidth) / 2, wt + 2, kBlack);

    floppy(c, kDiskAIcon, 'A');
    iconCaption(c, "FLOPPY DISK", kDiskAIcon.center().x(), kDiskAIcon.bottom() + 4);
    floppy(c, kDiskBIcon, 'B');
    iconCaption(c, "FLOPPY DISK", kDiskBIcon.center().x(), kDiskBIcon.bottom() + 4);
    bin(c, kBinIcon);
    iconCaption(c, "TRASH", kBinIcon.center().x(), kBinIcon.bottom() + 4);
    return c.image(kColours);
}

QImage helpPictureImage() {
    constexpr int kW = 320, kH = 200;
    Canvas c(kW, kH, kBlue);
    menuStrip(c, kW, 10, 1, 1, false);

    // A window of the first disk with its icons: folders and picture files.
    constexpr int wl = 24, wt = 22, wr = 296, wb = 138;
    c.fill(wl + 3, wt + 3, wr + 3, wb + 3, kDeepBlue);  // its shadow
    c.fill(wl, wt, wr, wb, kBlack);
    c.fill(wl + 1, wt + 11, wr - 1, wb - 1, kWhite);
    c.fill(wl + 1, wt + 1, wr - 1, wt + 9, kWhite);
    c.fill(wl + 1, wt + 10, wr - 1, wt + 10, kBlack);
    c.text("A:\\", (wl + wr) / 2 - 8, wt + 2, kBlack);
    c.frame(wl + 2, wt + 2, wl + 8, wt + 8, kBlack);
    constexpr std::string_view names[] = {"PICTURES", "SLIDES", "NEO", "DEGAS", "TINY", "SPECTRUM", "CRACK", "README"};
    for (int n = 0; n < 8; ++n) {
        const int cx = wl + 34 + (n % 4) * 68, top = wt + 20 + (n / 4) * 50;
        if (n < 2) {
            // A folder with its tab.
            c.fill(cx - 12, top + 4, cx + 12, top + 22, kBlack);
            c.fill(cx - 11, top + 5, cx + 11, top + 21, kYellow);
            c.fill(cx - 12, top, cx - 3, top + 4, kBlack);
            c.fill(cx - 11, top + 1, cx - 4, top + 4, kYellow);
            c.fill(cx - 11, top + 21, cx + 11, top + 21, kOchre);
        } else {
            // A sheet with a folded corner; the pictures show a sun over a hill.
            c.fill(cx - 9, top, cx + 9, top + 22, kBlack);
            c.fill(cx - 8, top + 1, cx + 8, top + 21, kCream);
            c.fill(cx + 4, top, cx + 9, top + 5, kWhite);
            c.line(cx + 4, top, cx + 9, top + 5, kBlack);
            if (n < 7) {
                c.fill(cx - 6, top + 8, cx + 6, top + 19, kBlue);
                c.fill(cx + 1, top + 9, cx + 4, top + 12, kYellow);
                for (int x = -6; x <= 6; ++x) c.fill(cx + x, top + 16 - (6 - std::abs(x)) / 2, cx + x, top + 19, kGreen);
            } else {
                for (int y = top + 8; y <= top + 18; y += 3) c.fill(cx - 6, y, cx + 5, y, kGrey);
            }
        }
        const int w = Canvas::textWidth(names[n]);
        c.text(names[n], cx - w / 2, top + 26, kBlack);
    }

    // A line of handwriting across the desktop, slanted and joined up: 'l'
    // is a tall loop, 'e' a small one, 'n' an arch without a loop, ' ' a
    // lift of the pen.
    constexpr double kPi = 3.14159265358979;
    constexpr std::string_view script = "lenel nleen ele nlnel";
    double x0 = 44, penX = x0, penY = 178;
    bool down = false;
    for (char k : script) {
        if (k == ' ') {
            x0 += 10;
            down = false;
            continue;
        }
        const double height = k == 'l' ? 20 : 8, width = k == 'n' ? 9 : 10, radius = k == 'n' ? 0.5 : 4;
        for (int s = 0; s <= 24; ++s) {
            const double t = s / 24.0 * 2 * kPi;
            const double rise = height * (1 - std::cos(t)) / 2;
            const double x = x0 + width * t / (2 * kPi) - radius * std::sin(t) + rise * 0.35;
            const double y = 178 - rise;
            if (down) c.line(penX, penY, x, y, kWhite, 2);
            penX = x;
            penY = y;
            down = true;
        }
        x0 += width;
    }
    c.line(penX, penY, penX + 12, penY - 3, kWhite, 2);  // the last stroke trails off
    return c.image(kColours);
}

}  // namespace velmoric::qt
