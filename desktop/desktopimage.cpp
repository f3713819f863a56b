#include "desktop/desktopimage.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>

#include "cycles/cycles.h"

namespace velmoric::desktop {
namespace {

// Decoders whose files hold the screen as it is, row after row: a file cut
// short still has its first rows right.
constexpr std::string_view kPlainScreenRoutines[] = {"degas1", "degas2", "degas3", "spec"};

bool isPlainScreen(const Format& format) {
    return std::find(std::begin(kPlainScreenRoutines), std::end(kPlainScreenRoutines), format.routine) !=
           std::end(kPlainScreenRoutines);
}

// Packed files whose header says where their streams lie: a header that
// points outside the file belongs to a file that is cut short or is no such
// picture, though the decoder, which tests almost nothing, would still give
// a picture of it.
std::string headerProblem(const Format& format, const Source& src) {
    if (format.routine == "tiny") {
        const std::int64_t first = src.byte(0) >= 3 ? 41 : 37;  // after the resolution, the palette and the counts
        const std::int64_t controlLength = std::int16_t(src.bigEndian16(std::size_t(first - 4)));
        if (controlLength <= 0 || std::uint64_t(first + controlLength) > src.length)
            return "its control bytes lie outside the file";
    }
    if ((format.routine == "specc" || format.routine == "specs") && 12 + std::uint64_t(src.bigEndian32(4)) >= src.length)
        return "its colour data lie outside the file";
    return {};
}

char lowerAscii(char c) { return (c >= 'A' && c <= 'Z') ? char(c - 'A' + 'a') : c; }

// The staging arrays and tables of this thread, built once and brought back
// to their fresh state before every later decode: a file manager previewing
// a folder pays for the tables once, and each picture still decodes alone.
Staging& freshStaging() {
    thread_local std::unique_ptr<Staging> staging;
    if (staging) {
        staging->resetToFresh();
    } else {
        staging = std::make_unique<Staging>();
        staging->buildTables();
    }
    return *staging;
}

std::uint32_t little32(std::span<const std::uint8_t> b, std::size_t at) {
    return std::uint32_t(b[at]) | std::uint32_t(b[at + 1]) << 8 | std::uint32_t(b[at + 2]) << 16 |
           std::uint32_t(b[at + 3]) << 24;
}

// Where the rows of one of the decoders' bitmaps lie; the bottom row comes first.
struct BitmapLayout {
    int width = 0, height = 0, bitsPerPixel = 0;
    std::size_t pixels = 0, stride = 0;

    const std::uint8_t* row(std::span<const std::uint8_t> bitmap, int fromTop) const {
        return bitmap.data() + pixels + std::size_t(height - 1 - fromTop) * stride;
    }
};

std::optional<BitmapLayout> layoutOf(std::span<const std::uint8_t> bitmap) {
    if (bitmap.size() < 54 || bitmap[0] != 'B' || bitmap[1] != 'M') return std::nullopt;
    BitmapLayout l{std::int32_t(little32(bitmap, 18)), std::int32_t(little32(bitmap, 22)),
                   bitmap[28] | bitmap[29] << 8, little32(bitmap, 10), 0};
    if (l.width <= 0 || l.height <= 0 || l.width > 4096 || l.height > 4096) return std::nullopt;
    if (l.bitsPerPixel != 1 && l.bitsPerPixel != 4 && l.bitsPerPixel != 24) return std::nullopt;
    l.stride = (std::size_t(l.width) * std::size_t(l.bitsPerPixel) + 31) / 32 * 4;
    if (l.bitsPerPixel < 24 && l.pixels < 54 + (std::size_t(4) << l.bitsPerPixel)) return std::nullopt;
    if (l.pixels + l.stride * std::size_t(l.height) > bitmap.size()) return std::nullopt;
    return l;
}

// A row of 4-bit or 1-bit pixels as one palette index a byte.
void unpackRow(const std::uint8_t* row, int bitsPerPixel, int width, std::uint8_t* out) {
    if (bitsPerPixel == 4) {
        for (int x = 0; x + 1 < width; x += 2, ++row) {
            out[x] = std::uint8_t(*row >> 4);
            out[x + 1] = std::uint8_t(*row & 15);
        }
        return;
    }
    for (int x = 0; x < width; x += 8, ++row)
        for (int k = 0; k < 8 && x + k < width; ++k) out[x + k] = std::uint8_t(*row >> (7 - k) & 1);
}

// The picture as the desktop shows it, every line doubled for medium resolution.
DesktopPicture pictureOf(std::span<const std::uint8_t> bitmap, const BitmapLayout& l, int kind) {
    DesktopPicture p;
    const NativeSize size = desktopSizeOfKind(kind);
    if (l.width != size.width || size.height % l.height != 0) {
        p.error = "the decoder gave a bitmap of " + std::to_string(l.width) + " by " + std::to_string(l.height) +
                  " pixels for kind " + std::to_string(kind);
        return p;
    }
    p.ok = true;
    p.kind = kind;
    p.width = size.width;
    p.height = size.height;
    const int repeat = size.height / l.height;
    const std::size_t width = std::size_t(p.width);
    if (l.bitsPerPixel <= 8) {
        for (std::size_t i = 0; i < (std::size_t(1) << l.bitsPerPixel); ++i)
            p.palette.push_back(std::uint32_t(bitmap[56 + 4 * i]) << 16 | std::uint32_t(bitmap[55 + 4 * i]) << 8 |
                                bitmap[54 + 4 * i]);
        p.indices.resize(width * std::size_t(p.height));
        for (int y = 0; y < l.height; ++y) {
            std::uint8_t* out = p.indices.data() + std::size_t(y * repeat) * width;
            unpackRow(l.row(bitmap, y), l.bitsPerPixel, l.width, out);
            for (int r = 1; r < repeat; ++r) std::memcpy(out + std::size_t(r) * width, out, width);
        }
        return p;
    }
    p.pixels.resize(width * std::size_t(p.height));
    for (int y = 0; y < l.height; ++y) {
        const std::uint8_t* in = l.row(bitmap, y);
        std::uint32_t* out = p.pixels.data() + std::size_t(y * repeat) * width;
        for (std::size_t x = 0; x < width; ++x, in += 3) out[x] = std::uint32_t(in[2]) << 16 | std::uint32_t(in[1]) << 8 | in[0];
        for (int r = 1; r < repeat; ++r) std::copy_n(out, width, out + std::size_t(r) * width);
    }
    return p;
}

// Where the top row of a plain screen ends in its file.
std::uint64_t firstRowEnd(const Format& format) {
    if (format.routine == "degas1") return 2 * std::uint64_t(format.args.values[2] + 80);  // 80 words from the top row's
    if (format.routine == "degas2") return 2 * (17 + 80);
    if (format.routine == "degas3") return 2 * (17 + 40);
    return 0;  // a Spectrum picture has one length only
}

// Whether the picture needs bytes the file does not have. A plain screen
// needs its top row; below it, a cut file shows what it has.
bool endsTooSoon(const Format& format, std::uint64_t length, const Decoded& decoded) {
    if (length >= kSourceLimit) return false;  // the decoder saw only the first kSourceLimit bytes
    return isPlainScreen(format) ? length < firstRowEnd(format) : length < decoded.sourceEnd;
}

// The palettes of one period of a picture whose colours cycle, each for
// whole milliseconds.
std::vector<DesktopFrame> framesOf(const cycles::Animation& animation) {
    std::vector<DesktopFrame> out;
    if (!animation.animated()) return out;
    const std::vector<int> delays = cycles::delaysIn(animation.frames, 1000);
    for (std::size_t i = 0; i < animation.frames.size(); ++i)
        out.push_back({cycles::rgbOf(animation.frames[i].palette), delays[i]});
    return out;
}

DesktopPicture failed(std::string reason) {
    DesktopPicture p;
    p.error = std::move(reason);
    return p;
}

}  // namespace

const Format* formatForKey(std::string_view key) {
    for (const Format& f : formatTable()) {
        if (!f.decode || f.lower.size() != key.size()) continue;
        if (std::equal(key.begin(), key.end(), f.lower.begin(), [](char a, char b) { return lowerAscii(a) == b; }))
            return &f;
    }
    return nullptr;
}

void SourceBytes::append(std::span<const std::uint8_t> piece) {
    const std::size_t room = kSourceLimit - head_.size();
    head_.insert(head_.end(), piece.begin(), piece.begin() + std::ptrdiff_t(std::min(room, piece.size())));
    length_ += piece.size();
}

NativeSize desktopSizeOfKind(int kind) {
    const NativeSize native = nativeSizeOfKind(kind);
    return kind == 2 ? NativeSize{native.width, 2 * native.height} : native;
}

std::uint32_t DesktopPicture::rgb(int x, int y) const {
    const std::size_t at = std::size_t(y) * std::size_t(width) + std::size_t(x);
    return paletted() ? palette[indices[at]] : pixels[at];
}

void DesktopPicture::rowRgb(int y, std::span<const std::uint32_t> colours, std::uint32_t* out) const {
    const std::size_t at = std::size_t(y) * std::size_t(width);
    if (!paletted()) {
        std::copy_n(pixels.data() + at, width, out);
        return;
    }
    for (int x = 0; x < width; ++x) out[x] = colours[indices[at + std::size_t(x)]];
}

DesktopPicture decodeForDesktop(const Format& format, std::span<const std::uint8_t> head, std::uint64_t length) {
    if (length == 0) return failed("the file is empty");
    if (length > kLongestFile) return failed("the file is far longer than any Atari picture");
    head = head.first(std::min<std::size_t>(head.size(), kSourceLimit));
    const Source source{head, length};
    const Decoded real = decodeWith(format, freshStaging(), source);
    if (real.rejected) return failed("not a valid " + std::string(format.description) + " file");
    if (std::string why = headerProblem(format, source); !why.empty())
        return failed("not a valid " + std::string(format.description) + " file: " + why);
    if (endsTooSoon(format, length, real))
        return failed(isPlainScreen(format) ? "the file ends before the first row of the picture"
                                            : "the file ends before the picture does");
    const std::optional<BitmapLayout> layout = layoutOf(real.bitmap);
    if (!layout) return failed("the decoder gave no bitmap");
    DesktopPicture picture = pictureOf(real.bitmap, *layout, real.kind);
    if (picture.ok) picture.frames = framesOf(cycles::animationOf(format, source, real));
    return picture;
}

}  // namespace velmoric::desktop
