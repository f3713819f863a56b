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

struct DesktopPicture {
    bool ok = false;
    std::string error;  // why not, when !ok
    int kind = 0;
    int width = 0, height = 0;
    std::vector<std::uint32_t> pixels;  // 0xRRGGBB, top row first, width * height
};

// The picture as the viewer's free mode shows it: a medium-resolution
// picture (640 by 200) with every line doubled to 640 by 400, so that its
// proportions are right; every other kind at its native size. The pixels are
// those of the converter's bitmap. Broken files fail with a reason: an empty
// file, one the decoder rejects, and one whose picture needs bytes the file
// does not have (a packed picture cut short, or a plain one that ends before
// its first row; a plain picture that ends later shows what it has, as in the
// viewer), and one longer than kLongestFile.
DesktopPicture decodeForDesktop(const Format& format, std::span<const std::uint8_t> head, std::uint64_t length);

// The size of the picture decodeForDesktop gives for a kind (1 to 4).
NativeSize desktopSizeOfKind(int kind);

}  // namespace velmoric::desktop
