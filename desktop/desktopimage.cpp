#include "desktop/desktopimage.h"

#include <algorithm>
#include <memory>
#include <stdexcept>

#include "platform/picture.h"

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

struct FreshDecode {
    bool rejected = false;
    std::vector<std::uint8_t> bitmap;
    int kind = 0;
};

FreshDecode decodeFresh(const Format& format, std::span<const std::uint8_t> bytes, std::uint64_t length) {
    auto staging = std::make_unique<Staging>();
    staging->buildTables();
    const Decoded d = decodeWith(format, *staging, Source{bytes, length});
    return {d.rejected, std::vector<std::uint8_t>(d.bitmap.begin(), d.bitmap.end()), d.kind};
}

// The same decode with every byte past the end of the file set: if that
// changes what matters of the picture, the picture needs bytes the file lacks.
bool needsMissingBytes(const Format& format, std::span<const std::uint8_t> head, std::uint64_t length,
                       const FreshDecode& real, const Picture& realPicture) {
    if (length >= kSourceLimit) return false;
    std::vector<std::uint8_t> padded(head.begin(), head.end());
    padded.resize(kSourceLimit, 0xFF);
    const FreshDecode other = decodeFresh(format, padded, length);
    if (other.rejected != real.rejected) return true;
    if (!isPlainScreen(format)) return other.bitmap != real.bitmap;
    // The first row by palette index, which tells missing bytes apart even
    // where the palette gives two indices the same colour.
    const Picture otherPicture = Picture::fromBitmapBytes(other.bitmap);
    const bool indexed = realPicture.bitsPerPixel() <= 8;
    for (int x = 0; x < realPicture.width(); ++x)
        if (indexed ? otherPicture.paletteIndex(x, 0) != realPicture.paletteIndex(x, 0)
                    : otherPicture.rgb(x, 0) != realPicture.rgb(x, 0))
            return true;
    return false;
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

DesktopPicture decodeForDesktop(const Format& format, std::span<const std::uint8_t> head, std::uint64_t length) {
    if (length == 0) return failed("the file is empty");
    if (length > kLongestFile) return failed("the file is far longer than any Atari picture");
    head = head.first(std::min<std::size_t>(head.size(), kSourceLimit));
    const FreshDecode real = decodeFresh(format, head, length);
    if (real.rejected) return failed("not a valid " + std::string(format.description) + " file");
    if (std::string why = headerProblem(format, Source{head, length}); !why.empty())
        return failed("not a valid " + std::string(format.description) + " file: " + why);
    Picture picture;
    try {
        picture = Picture::fromBitmapBytes(real.bitmap);
    } catch (const std::invalid_argument& e) {
        return failed(std::string("the decoder gave no bitmap: ") + e.what());
    }
    if (needsMissingBytes(format, head, length, real, picture))
        return failed(isPlainScreen(format) ? "the file ends before the first row of the picture"
                                            : "the file ends before the picture does");

    DesktopPicture p;
    p.ok = true;
    p.kind = real.kind;
    const NativeSize size = desktopSizeOfKind(real.kind);
    p.width = size.width;
    p.height = size.height;
    const std::vector<std::uint32_t> rows = picture.toRgb();
    const int repeat = size.height / picture.height();  // 2 for medium resolution
    p.pixels.reserve(std::size_t(size.width) * std::size_t(size.height));
    for (int y = 0; y < picture.height(); ++y)
        for (int r = 0; r < repeat; ++r)
            p.pixels.insert(p.pixels.end(), rows.begin() + std::ptrdiff_t(y) * picture.width(),
                            rows.begin() + std::ptrdiff_t(y + 1) * picture.width());
    if (picture.width() != size.width || int(p.pixels.size()) != size.width * size.height)
        return failed("the decoder gave a bitmap of " + std::to_string(picture.width()) + " by " +
                      std::to_string(picture.height()) + " pixels for kind " + std::to_string(real.kind));
    return p;
}

}  // namespace velmoric::desktop
