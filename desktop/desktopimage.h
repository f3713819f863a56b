#pragma once
// Atari pictures for the desktop's image libraries: the Qt image plugin, the
// GdkPixbuf loader and the thumbnailer all decode through here. Every decode
// starts from a fresh state, so a picture depends on its file alone.
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "formats/formats.h"

namespace velmoric::desktop {

// The row of the table for a file name's extension or an image library's
// format key. Unlike the viewer's dispatch, any mixture of capitals and small
// letters counts: the desktop's MIME globs match names regardless of case.
const Format* formatForKey(std::string_view key);

// Far longer than any Atari picture: a stream is read no further, and a file
// this long is refused.
inline constexpr std::uint64_t kLongestFile = 16u << 20;

// The first bytes of a file (at most kSourceLimit) and the length of all of
// it, gathered from a stream that arrives in pieces.
class SourceBytes {
public:
    void append(std::span<const std::uint8_t> piece);
    std::span<const std::uint8_t> head() const { return head_; }
    std::uint64_t length() const { return length_; }

private:
    std::vector<std::uint8_t> head_;
    std::uint64_t length_ = 0;
};

// One palette of a picture whose colours cycle, and how long it shows.
struct DesktopFrame {
    std::vector<std::uint32_t> palette;  // 0xRRGGBB, as many entries as the picture's palette
    int delayMs = 0;
};

struct DesktopPicture {
    bool ok = false;
    std::string error;  // why not, when !ok
    int kind = 0;
    int width = 0, height = 0;
    // A picture with a palette (every kind but the 24-bit one): one palette
    // index a pixel, top row first, width * height, and the palette as
    // 0xRRGGBB (16 entries, or 2 for a mono picture).
    std::vector<std::uint8_t> indices;
    std::vector<std::uint32_t> palette;
    // A picture without one: 0xRRGGBB a pixel, top row first, width * height.
    std::vector<std::uint32_t> pixels;
    // When the picture's colours cycle, the palettes of one period in order,
    // the first being `palette`; empty when they do not.
    std::vector<DesktopFrame> frames;

    bool paletted() const { return !palette.empty(); }
    bool animated() const { return !frames.empty(); }
    // The colour of a pixel as 0xRRGGBB, with the picture's own palette.
    std::uint32_t rgb(int x, int y) const;
    // Row y as 0xRRGGBB, a paletted picture's indices through `colours`.
    void rowRgb(int y, std::span<const std::uint32_t> colours, std::uint32_t* out) const;
};

// The picture as the viewer's free mode shows it: a medium-resolution
// picture (640 by 200) with every line doubled to 640 by 400, so that its
// proportions are right; every other kind at its native size. The pixels are
// those of the converter's bitmap, and a picture whose colours cycle has the
// palettes of its frames. Broken files fail with a reason: an empty
// file, one the decoder rejects, and one whose picture needs bytes the file
// does not have (a packed picture whose data run on past the file's end, or
// a plain one that ends before its first row; a plain picture that ends later
// shows what it has, as in the viewer), and one longer than kLongestFile.
DesktopPicture decodeForDesktop(const Format& format, std::span<const std::uint8_t> head, std::uint64_t length);

// The size of the picture decodeForDesktop gives for a kind (1 to 4).
NativeSize desktopSizeOfKind(int kind);

}  // namespace velmoric::desktop
