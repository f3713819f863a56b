#include "platform/qt/artwork.h"

#include <QBitmap>
#include <QImage>
#include <QPalette>
#include <array>
#include <cmath>
#include <cstring>
#include <string_view>

namespace velmoric::qt {
namespace {

// ---- The start-up picture ---------------------------------------------------
// A demo-style scene: a sky that runs from night blue to sunset orange, a
// striped sun over a mountain ridge, a checkered floor running to the
// horizon, and the name in chrome letters.

constexpr int kWidth = 320, kHeight = 200;
constexpr int kHorizon = 120;

// Palette regions of the 256 colours.
constexpr int kSky = 0;         // 64 shades, top to horizon
constexpr int kFloorA = 64;     // 32 shades, far to near
constexpr int kFloorB = 96;     // 32 shades, far to near
constexpr int kSun = 128;       // 32 shades, top to bottom
constexpr int kChrome = 160;    // 32 shades, top to bottom of a letter
constexpr int kMountain = 192;  // 16 shades, ridge to foot
constexpr int kShadow = 208;
constexpr int kWhite = 209;
constexpr int kStar = 210;      // 16 greys

struct Rgb {
    int r, g, b;
};

Rgb mix(Rgb a, Rgb b, double t) {
    return {int(std::lround(a.r + (b.r - a.r) * t)), int(std::lround(a.g + (b.g - a.g) * t)),
            int(std::lround(a.b + (b.b - a.b) * t))};
}

// A ramp through several colours, t from 0 to 1.
Rgb ramp(std::initializer_list<Rgb> stops, double t) {
    const std::vector<Rgb> s(stops);
    const double scaled = t * double(s.size() - 1);
    const std::size_t i = std::min(s.size() - 2, std::size_t(scaled));
    return mix(s[i], s[i + 1], scaled - double(i));
}

std::array<Rgb, 256> startupPalette() {
    std::array<Rgb, 256> p{};
    for (int i = 0; i < 64; ++i)
        p[kSky + i] = ramp({{0, 0, 32}, {24, 16, 96}, {112, 32, 128}, {224, 80, 96}, {252, 160, 64}}, i / 63.0);
    for (int i = 0; i < 32; ++i) {
        p[kFloorA + i] = mix({40, 16, 72}, {72, 200, 252}, i / 31.0);
        p[kFloorB + i] = mix({16, 0, 40}, {16, 40, 120}, i / 31.0);
        p[kSun + i] = ramp({{252, 252, 144}, {252, 196, 36}, {252, 72, 36}, {200, 0, 72}}, i / 31.0);
        p[kChrome + i] = ramp({{252, 252, 252}, {108, 180, 252}, {0, 36, 144}, {120, 72, 0}, {252, 216, 108},
                               {252, 252, 216}},
                              i / 31.0);
    }
    for (int i = 0; i < 16; ++i) {
        p[kMountain + i] = mix({64, 16, 96}, {24, 0, 48}, i / 15.0);
        p[kStar + i] = mix({48, 48, 96}, {252, 252, 252}, i / 15.0);
    }
    p[kShadow] = {0, 0, 0};
    p[kWhite] = {252, 252, 252};
    return p;
}

// A 5 by 7 font for the few letters the picture needs, top row first.
std::string_view glyph(char c) {
    switch (c) {
    case 'A': return "01110100011000111111100011000110001";
    case 'C': return "01110100011000010000100001000101110";
    case 'E': return "11111100001000011110100001000011111";
    case 'I': return "01110001000010000100001000010001110";
    case 'L': return "10000100001000010000100001000011111";
    case 'M': return "10001110111010110101100011000110001";
    case 'O': return "01110100011000110001100011000101110";
    case 'P': return "11110100011000111110100001000010000";
    case 'R': return "11110100011000111110101001001010001";
    case 'S': return "01111100001000001110000010000111110";
    case 'T': return "11111001000010000100001000010000100";
    case 'U': return "10001100011000110001100011000101110";
    case 'V': return "10001100011000110001100010101000100";
    case 'W': return "10001100011000110101101011010101010";
    default: return {};
    }
}

class Canvas {
public:
    std::vector<std::uint8_t> pixels = std::vector<std::uint8_t>(kWidth * kHeight, 0);

    void put(int x, int y, int index) {
        if (x >= 0 && x < kWidth && y >= 0 && y < kHeight) pixels[std::size_t(y * kWidth + x)] = std::uint8_t(index);
    }
    std::uint8_t at(int x, int y) const { return pixels[std::size_t(y * kWidth + x)]; }

    // Text in the 5 by 7 font, `scale` pixels a dot; `colour` gives the
    // index for a row of the letter (0 at its top).
    template <typename Colour>
    void text(std::string_view s, int left, int top, int scale, Colour colour) {
        for (std::size_t n = 0; n < s.size(); ++n) {
            const std::string_view g = glyph(s[n]);
            for (std::size_t dot = 0; dot < g.size(); ++dot) {
                if (g[dot] != '1') continue;
                const int gx = int(dot % 5), gy = int(dot / 5);
                for (int dy = 0; dy < scale; ++dy)
                    for (int dx = 0; dx < scale; ++dx)
                        put(left + int(n) * 6 * scale + gx * scale + dx, top + gy * scale + dy, colour(gy * scale + dy));
            }
        }
    }
};

int textWidth(std::string_view s, int scale) { return (int(s.size()) * 6 - 1) * scale; }

void drawSky(Canvas& c) {
    std::uint32_t seed = 0x5EED;
    for (int y = 0; y < kHorizon; ++y)
        for (int x = 0; x < kWidth; ++x) c.put(x, y, kSky + y * 64 / kHorizon);
    for (int n = 0; n < 90; ++n) {
        seed = seed * 1103515245u + 12345u;
        const int x = int((seed >> 8) % kWidth);
        seed = seed * 1103515245u + 12345u;
        const int y = int((seed >> 8) % 70);
        c.put(x, y, kStar + 15 - y * 15 / 70);
    }
}

void drawSun(Canvas& c) {
    constexpr int cx = 160, cy = 94, radius = 38;
    for (int y = cy - radius; y < kHorizon; ++y) {
        // Ever wider gaps towards the horizon.
        const int below = y - cy;
        if (below > 0 && below % 8 >= 8 - (below / 8 + 1)) continue;
        for (int x = cx - radius; x <= cx + radius; ++x) {
            const int dx = x - cx, dy = y - cy;
            if (dx * dx + dy * dy <= radius * radius) c.put(x, y, kSun + (y - (cy - radius)) * 32 / (2 * radius));
        }
    }
}

void drawMountains(Canvas& c) {
    for (int x = 0; x < kWidth; ++x) {
        const double h = 9 + 5 * std::sin(x * 0.045) + 3 * std::sin(x * 0.13 + 1.0) + 2 * std::sin(x * 0.31 + 2.0);
        const int top = kHorizon - int(h);
        for (int y = top; y < kHorizon; ++y) c.put(x, y, kMountain + (y - top) * 16 / (kHorizon - top + 1));
    }
}

void drawFloor(Canvas& c) {
    for (int y = kHorizon; y < kHeight; ++y) {
        const double depth = 600.0 / (y - kHorizon + 1);
        const int shade = std::min(31, (y - kHorizon) * 32 / (kHeight - kHorizon));
        const int row = int(std::floor(depth / 16.0));
        for (int x = 0; x < kWidth; ++x) {
            const int column = int(std::floor((x - kWidth / 2 + 0.5) * depth / 240.0));
            c.put(x, y, (((row + column) & 1) ? kFloorA : kFloorB) + shade);
        }
    }
}

void drawTitle(Canvas& c) {
    constexpr std::string_view title = "VELMORIC";
    constexpr int scale = 4, top = 8;
    const int left = (kWidth - textWidth(title, scale)) / 2;
    c.text(title, left + 3, top + 3, scale, [](int) { return kShadow; });
    c.text(title, left, top, scale, [](int row) { return kChrome + row * 32 / (7 * scale); });

    constexpr std::string_view line = "ATARI ST PICTURE VIEWER";
    const int lineLeft = (kWidth - textWidth(line, 1)) / 2;
    c.text(line, lineLeft + 1, 45, 1, [](int) { return kShadow; });
    c.text(line, lineLeft, 44, 1, [](int) { return kWhite; });
}

void putLe16(std::vector<std::uint8_t>& out, unsigned v) {
    out.push_back(std::uint8_t(v));
    out.push_back(std::uint8_t(v >> 8));
}
void putLe32(std::vector<std::uint8_t>& out, unsigned v) {
    putLe16(out, v & 0xFFFF);
    putLe16(out, v >> 16);
}

// ---- The window's icon ----------------------------------------------------------
// A monitor of the period showing the same sunset.

constexpr std::array<QRgb, 16> kIconColours = {
    0xC0C0C0, 0x000000, 0xFFFFFF, 0x808080, 0xE0E0E0, 0x000080, 0x800080, 0xFF8040,
    0xFFFF00, 0xFF0000, 0x00FFFF, 0x0000FF, 0x404040, 0x008080, 0xA0A0A0, 0x600060,
};

// ---- The image list ----------------------------------------------------------------
// 16 by 16, 16 colours; '.' is the transparent colour 0xC0C0C0.

constexpr std::array<std::pair<char, QRgb>, 16> kListColours = {{
    {'.', 0xC0C0C0}, {'k', 0x000000}, {'w', 0xFFFFFF}, {'g', 0x808080},
    {'y', 0xFFFF00}, {'o', 0x808000}, {'b', 0x0000FF}, {'n', 0x000080},
    {'r', 0xFF0000}, {'m', 0x800000}, {'c', 0x00FFFF}, {'t', 0x008080},
    {'G', 0x00FF00}, {'d', 0x008000}, {'p', 0xFF00FF}, {'s', 0xE0E0E0},
}};

using ListPicture = std::array<std::string_view, 16>;

constexpr std::array<ListPicture, 9> kListPictures = {{
    // 1 open: a folder opening
    {"................",
     "................",
     "................",
     ".kkkkk..........",
     "kyyyyyk.........",
     "kywyyyykkkkkk...",
     "kywyyyyyyyyyk...",
     "kywyyykkkkkkkkkk",
     "kywyykoooooooook",
     "kywykoooooooook.",
     "kyykoooooooook..",
     "kykoooooooook...",
     "kkoooooooook....",
     "kkkkkkkkkkk.....",
     "................",
     "................"},
    // 2 save: a floppy disk
    {"................",
     ".kkkkkkkkkkkkkk.",
     ".knkwwwwwwwwknnk",
     ".knkwwwwwwwwknnk",
     ".knkwggggggwknnk",
     ".knkwwwwwwwwknnk",
     ".knkwggggggwknnk",
     ".knkwwwwwwwwknnk",
     ".knnkkkkkkkknnnk",
     ".knnnnnnnnnnnnnk",
     ".knnssssssssnnnk",
     ".knnsskkssssnnnk",
     ".knnsskkssssnnnk",
     ".knnsskkssssnnnk",
     "..kkkkkkkkkkkkkk",
     "................"},
    // 3 print: a printer with a sheet
    {"................",
     "....kkkkkkkk....",
     "....kwwwwwwk....",
     "....kwggggwk....",
     "....kwwwwwwk....",
     "..kkkkkkkkkkkk..",
     ".kssssssssssssk.",
     ".kwwwwwwwwwwwwk.",
     ".kwwwwwwwwwGGwk.",
     ".kggggggggggggk.",
     ".kkkkkkkkkkkkkk.",
     "..kwwwwwwwwwwk..",
     "..kwggggggggwk..",
     "..kwwwwwwwwwwk..",
     "..kkkkkkkkkkkk..",
     "................"},
    // 4 copy: two sheets
    {"kkkkkkk.........",
     "kwwwwwkk........",
     "kwgggwkwk.......",
     "kwwwwwkkkk......",
     "kwgggggwwk......",
     "kwwwwkkkkkkk....",
     "kwgggkwwwwwkk...",
     "kwwwwkwggggkwk..",
     "kwgggkwwwwwkkkk.",
     "kwwwwkwgggggwwk.",
     "kkkkkkwwwwwwwwk.",
     ".....kwggggggwk.",
     ".....kwwwwwwwwk.",
     ".....kwgggggwwk.",
     ".....kwwwwwwwwk.",
     ".....kkkkkkkkkk."},
    // 5 paste: a clipboard with a sheet
    {".....kkkkkk.....",
     ".kkkkkgwwgkkkkk.",
     ".koookkkkkkoook.",
     ".kookwwwwwwkook.",
     ".kookwggggwkook.",
     ".kookwwwwwwkook.",
     ".kookwggggwkook.",
     ".kookwwwwwwkook.",
     ".kookwgggwwkook.",
     ".kookwwwwwwkook.",
     ".kookwggggwkook.",
     ".kookwwwwwwkook.",
     ".kookkkkkkkkook.",
     ".koooooooooooook",
     ".kkkkkkkkkkkkkk.",
     "................"},
    // 6 slide: a projection screen with a landscape
    {"kkkkkkkkkkkkkkkk",
     "kggggggggggggggk",
     ".kwwwwwwwwwwwwk.",
     ".kccccccccyyyck.",
     ".kccccccccyyyck.",
     ".kcccccccccccck.",
     ".kccccGGcccccck.",
     ".kcccGGGGccGGck.",
     ".kcGGGdGGGGGGGk.",
     ".kGGddddGGdddGk.",
     ".kddddddddddddk.",
     ".kkkkkkkkkkkkkk.",
     ".......kk.......",
     "......k..k......",
     ".....k....k.....",
     "....k......k...."},
    // 7 pref: check boxes
    {"................",
     ".kkkkk..........",
     ".kwwwk......r...",
     ".kwwwk.....rr...",
     ".kwwrk.kkkrrkkk.",
     ".kkrrk....rr....",
     "...rr..r.rr.....",
     "....rrrrrr......",
     ".kkkkkrrr.......",
     ".kwwwk.r........",
     ".kwwwk..........",
     ".kwwwk.kkkkkkkk.",
     ".kkkkk..........",
     "................",
     "................",
     "................"},
    // 8 invert: a picture and its reverse
    {"................",
     ".kkkkkkkkkkkkkk.",
     ".kwwwwwwwwwwwkk.",
     ".kwwwwwwwwwwkkk.",
     ".kwwkkkwwwwkkkk.",
     ".kwwkkkwwwkkkkk.",
     ".kwwkkkwwkkkkkk.",
     ".kwwwwwwkkkkkkk.",
     ".kwwwwwkkkkkkkk.",
     ".kwwwwkkkkwwwkk.",
     ".kwwwkkkkkwwwkk.",
     ".kwwkkkkkkwwwkk.",
     ".kwkkkkkkkkkkkk.",
     ".kkkkkkkkkkkkkk.",
     "................",
     "................"},
    // 9 help: a question mark on a disc
    {".....kkkkkk.....",
     "...kknnnnnnkk...",
     "..knnnwwwwnnnk..",
     ".knnnwwnnwwnnnk.",
     ".knnnwwnnwwnnnk.",
     "knnnnnnnwwnnnnnk",
     "knnnnnnwwnnnnnnk",
     "knnnnnwwnnnnnnnk",
     "knnnnnwwnnnnnnnk",
     "knnnnnnnnnnnnnnk",
     ".knnnnwwnnnnnnk.",
     ".knnnnwwnnnnnnk.",
     "..knnnnnnnnnnk..",
     "...kknnnnnnkk...",
     ".....kkkkkk.....",
     "................"},
}};

constexpr bool everyRowSixteenWide() {
    for (const ListPicture& picture : kListPictures)
        for (std::string_view row : picture)
            if (row.size() != 16) return false;
    return true;
}
static_assert(everyRowSixteenWide(), "an image list picture is 16 pixels wide");

QPixmap withTransparentBackground(const QImage& image) {
    QPixmap pixmap = QPixmap::fromImage(image);
    pixmap.setMask(QBitmap::fromImage(
        image.convertToFormat(QImage::Format_RGB32).createMaskFromColor(0xFFC0C0C0, Qt::MaskInColor)));
    return pixmap;
}

}  // namespace

std::vector<std::uint8_t> startupBitmapBytes() {
    Canvas c;
    drawSky(c);
    drawSun(c);
    drawMountains(c);
    drawFloor(c);
    drawTitle(c);

    const unsigned pixelOffset = 14 + 40 + 256 * 4;
    const unsigned imageSize = kWidth * kHeight;  // rows of 320 bytes need no padding
    std::vector<std::uint8_t> out;
    out.reserve(pixelOffset + imageSize);
    out.push_back('B');
    out.push_back('M');
    putLe32(out, pixelOffset + imageSize);
    putLe32(out, 0);
    putLe32(out, pixelOffset);
    putLe32(out, 40);
    putLe32(out, kWidth);
    putLe32(out, kHeight);
    putLe16(out, 1);
    putLe16(out, 8);
    putLe32(out, 0);
    putLe32(out, imageSize);
    putLe32(out, 0);
    putLe32(out, 0);
    putLe32(out, 256);
    putLe32(out, 0);
    for (const Rgb& rgb : startupPalette()) {
        out.push_back(std::uint8_t(rgb.b));
        out.push_back(std::uint8_t(rgb.g));
        out.push_back(std::uint8_t(rgb.r));
        out.push_back(0);
    }
    for (int y = kHeight - 1; y >= 0; --y)
        for (int x = 0; x < kWidth; ++x) out.push_back(c.at(x, y));
    return out;
}

Picture startupPicture() { return Picture::fromBitmapBytes(startupBitmapBytes()); }

QImage windowIconImage() {
    QImage icon(32, 32, QImage::Format_Indexed8);
    QList<QRgb> table;
    for (QRgb rgb : kIconColours) table << (0xFF000000u | rgb);
    icon.setColorTable(table);
    icon.fill(0);
    auto fill = [&](int x0, int y0, int x1, int y1, int index) {
        for (int y = y0; y <= y1; ++y)
            for (int x = x0; x <= x1; ++x) icon.setPixel(x, y, uint(index));
    };
    // Cabinet with a shaded edge, the dark bezel and the screen.
    fill(1, 1, 30, 24, 1);
    fill(2, 2, 29, 23, 4);
    fill(3, 23, 29, 23, 14);
    fill(29, 3, 29, 23, 14);
    fill(4, 4, 27, 20, 12);
    // On the screen: sky bands, the sun, a two-colour floor.
    fill(5, 5, 26, 8, 5);
    fill(5, 9, 26, 11, 6);
    fill(5, 12, 26, 14, 7);
    for (int y = 9; y <= 14; ++y)
        for (int x = 10; x <= 21; ++x) {
            const int dx = 2 * x - 31, dy = 2 * y - 30;
            if (dx * dx + dy * dy <= 100 && y != 13) icon.setPixel(x, y, 8);
        }
    for (int y = 15; y <= 19; ++y)
        for (int x = 5; x <= 26; ++x) icon.setPixel(x, y, ((x / 3 + y / 2) & 1) ? 10 : 13);
    // Power light, neck and foot.
    icon.setPixel(26, 22, 9);
    fill(12, 25, 19, 27, 3);
    fill(7, 28, 24, 30, 1);
    fill(8, 28, 23, 29, 14);
    return icon;
}

QPixmap windowIconPixmap() { return withTransparentBackground(windowIconImage()); }

QImage imageListImage(int number) {
    if (number < 1 || number > int(kListPictures.size())) return {};
    const ListPicture& rows = kListPictures[std::size_t(number - 1)];
    QImage image(16, 16, QImage::Format_Indexed8);
    QList<QRgb> table;
    for (const auto& entry : kListColours) table << (0xFF000000u | entry.second);
    image.setColorTable(table);
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) {
            const char c = x < int(rows[std::size_t(y)].size()) ? rows[std::size_t(y)][std::size_t(x)] : '.';
            std::size_t index = 0;
            while (index + 1 < kListColours.size() && kListColours[index].first != c) ++index;
            image.setPixel(x, y, uint(kListColours[index].first == c ? index : 0));
        }
    return image;
}

QPixmap imageListPicture(int number) {
    const QImage image = imageListImage(number);
    return image.isNull() ? QPixmap() : withTransparentBackground(image);
}

void greyDisabledTextReadably(QWidget* widget) {
    QPalette palette = widget->palette();
    const QColor text = palette.color(QPalette::Active, QPalette::ButtonText);
    const QColor background = palette.color(QPalette::Active, QPalette::Window);
    const auto third = [](int from, int to) { return (from + 2 * to) / 3; };
    const QColor grey(third(text.red(), background.red()), third(text.green(), background.green()),
                      third(text.blue(), background.blue()));
    for (const QPalette::ColorRole role : {QPalette::ButtonText, QPalette::WindowText, QPalette::Text})
        palette.setColor(QPalette::Disabled, role, grey);
    widget->setPalette(palette);
}

}  // namespace velmoric::qt
