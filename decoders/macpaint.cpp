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
    const std::size_t n = std::min(src.bytes.size(), kSrcBytesExtent);
    if (n) std::memcpy(s.srcbytes.data(), src.bytes.data(), n);
    const auto& in = s.srcbytes;
    auto& pix = s.pixbytes;

    // A MacBinary header starts with a zero byte and then the length of the
    // file name, where a bare MacPaint header has its version number's high
    // bytes, both 0.
    std::size_t r = (in.get(1) == 0 && in.get(2) == 0) ? 512 : 640;

    // One stream, blind to rows: a run may cross a row's end, and the count
    // is tested only between runs, so the last run may reach up to 127
    // bytes behind the picture; pixbytes has room for them. Every control
    // byte but 128 writes, and a read behind srcbytes gives the control 0,
    // so the loop ends.
    std::size_t w = 0;
    while (w < kPictureBytes) {
        const unsigned control = in.get(r++);
        if (control < 128) {
            for (unsigned i = 0; i <= control; ++i) pix.put(w++, in.get(r++));
        } else if (control > 128) {
            const std::uint8_t value = in.get(r++);
            const std::size_t count = 257 - control;
            if (w + count <= kPixBytesExtent) std::memset(pix.data() + w, value, count);
            w += count;
        }
    }

    // Bottom row first, each byte complemented: the palette has black at
    // entry 0, and a set bit of the picture is black. pixbytes keeps the
    // picture as it was unpacked.
    std::uint8_t* out = s.out.data();
    std::memcpy(out, s.macbmp.data(), kMacHeaderSize);
    std::uint8_t* dst = out + kMacHeaderSize;
    for (std::size_t row = kRows; row-- > 0;) {
        const std::uint8_t* line = pix.data() + row * kRowBytes;
        for (std::size_t x = 0; x < kRowBytes; ++x) *dst++ = std::uint8_t(~line[x]);
    }
    return {false, {out, kMacBmpSize}, " Mac Paint 576*720 Mono", 4};
}

}  // namespace velmoric
