// MacPaint pictures: 576 by 720 in one bit, packed with PackBits behind a
// header of 512 bytes, or of 640 when a MacBinary header is still in front.
#include "decoders/decoder.h"

namespace velmoric {
namespace {

constexpr std::size_t kRowBytes = 72;
constexpr std::size_t kRows = 720;
constexpr std::size_t kPictureBytes = kRowBytes * kRows;  // 51840

}  // namespace

Decoded hmac(Staging& s, const Source& src) {
    // The whole source into srcbytes from index 0; behind a short file lie
    // the previous picture's bytes.
    const std::size_t length = std::min(src.bytes.size(), kSrcBytesExtent);
    for (std::size_t i = 0; i < length; ++i) s.srcbytes[i] = src.bytes[i];

    // A MacBinary header starts with a zero byte and then the length of the
    // file name, where a bare MacPaint header has its version number's high
    // bytes, both 0.
    std::size_t r = (s.srcbytes.get(1) == 0 && s.srcbytes.get(2) == 0) ? 512 : 640;

    // One stream, blind to rows: a run may cross a row's end, and the count
    // is tested only between runs, so the last run may reach up to 127 bytes
    // behind the picture, inside pixbytes. Bytes behind the last run keep
    // what the picture before left there. Behind srcbytes the control reads
    // 0, which writes, so the loop ends.
    std::size_t w = 0;
    while (w < kPictureBytes) {
        const unsigned control = s.srcbytes.get(r++);
        if (control < 128) {
            for (unsigned i = 0; i <= control; ++i) s.pixbytes.put(w++, s.srcbytes.get(r++));
        } else if (control > 128) {
            const std::uint8_t value = s.srcbytes.get(r++);
            for (unsigned i = 0; i < 257 - control; ++i) s.pixbytes.put(w++, value);
        }
        // 128 writes nothing and takes no further byte.
    }

    // The header, then the rows bottom first, each byte complemented: the
    // palette has black at entry 0, and a set bit of the picture is black.
    // pixbytes keeps the picture as it was unpacked.
    std::uint8_t* out = s.out.data();
    for (std::size_t i = 0; i < kMacHeaderSize; ++i) *out++ = s.macbmp[i];
    for (std::size_t row = kRows; row-- > 0;)
        for (std::size_t x = 0; x < kRowBytes; ++x) *out++ = std::uint8_t(~s.pixbytes[row * kRowBytes + x]);
    return {false, {s.out.data(), kMacBmpSize}, " Mac Paint 576*720 Mono", 4, r};
}

}  // namespace velmoric
