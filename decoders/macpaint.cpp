// MacPaint pictures: 576 by 720 in one bit, packed with PackBits behind a
// header of 512 bytes, or of 640 when a MacBinary header is still in front.
#include "decoders/decoder.h"
#include "decoders/vector_clones.h"

namespace velmoric {
namespace {

constexpr std::size_t kRowBytes = 72;
constexpr std::size_t kRows = 720;
constexpr std::size_t kPictureBytes = kRowBytes * kRows;  // 51840
// The most bytes one command writes, and reads behind its control byte.
constexpr std::size_t kLongestRun = 128;

using Chunk = std::uint8_t __attribute__((vector_size(32)));

// Where the stream stands: the next control byte in srcbytes and the next
// byte of pixbytes to write.
struct Cursor {
    std::size_t r, w;
};

// The bulk of the picture in whole blocks of 32 bytes: a command writes
// its first block, and a longer one all 128 bytes it may need, then moves
// on by what it really wrote. The bytes written behind that are garbage,
// but this runs only while they stay inside the picture, so a later command
// overwrites them: the last command ends at 51840 or behind it. Stops near
// the end of the picture or of srcbytes, where the exact loop takes over.
VELMORIC_VECTOR_CLONES
Cursor unpackBulk(const std::uint8_t* in, std::uint8_t* pix, Cursor c) {
    while (c.w + kLongestRun <= kPictureBytes && c.r + 1 + kLongestRun <= kSrcBytesExtent) {
        const unsigned control = in[c.r];
        const std::uint8_t* data = in + c.r + 1;
        std::uint8_t* to = pix + c.w;
        if (control > 128) {
            const std::size_t count = 257 - control;
            Chunk repeated;
            std::memset(&repeated, data[0], sizeof repeated);
            std::memcpy(to, &repeated, sizeof repeated);
            for (std::size_t i = sizeof repeated; i < count; i += sizeof repeated)
                std::memcpy(to + i, &repeated, sizeof repeated);
            c.w += count;
            c.r += 2;
        } else if (control < 128) {
            const std::size_t count = control + 1;
            std::memcpy(to, data, sizeof(Chunk));
            if (count > sizeof(Chunk)) std::memcpy(to, data, kLongestRun);
            c.w += count;
            c.r += count + 1;
        } else {
            c.r += 1;
        }
    }
    return c;
}

// The rule itself, byte by byte with checked access: until 51840 bytes or
// more are out, n below 128 copies n + 1 bytes, n above 128 repeats the
// next byte 257 - n times, 128 does nothing. Every control byte but 128
// writes, and a read behind srcbytes gives the control 0, so the loop ends.
void unpackExact(const FixedArray<std::uint8_t, kSrcBytesExtent>& in, FixedArray<std::uint8_t, kPixBytesExtent>& pix,
                 Cursor c) {
    while (c.w < kPictureBytes) {
        const unsigned control = in.get(c.r++);
        if (control < 128) {
            for (unsigned i = 0; i <= control; ++i) pix.put(c.w++, in.get(c.r++));
        } else if (control > 128) {
            const std::uint8_t value = in.get(c.r++);
            const std::size_t count = 257 - control;
            if (c.w + count <= kPixBytesExtent) std::memset(pix.data() + c.w, value, count);
            c.w += count;
        }
    }
}

// Bottom row first, each byte complemented: the palette has black at entry
// 0, and a set bit of the picture is black.
VELMORIC_VECTOR_CLONES
void writeRowsComplemented(const std::uint8_t* pix, std::uint8_t* dst) {
    static_assert(kRowBytes == 2 * sizeof(Chunk) + 8);
    for (std::size_t row = kRows; row-- > 0;) {
        const std::uint8_t* line = pix + row * kRowBytes;
        Chunk a, b;
        std::uint64_t tail;
        std::memcpy(&a, line, sizeof a);
        std::memcpy(&b, line + sizeof a, sizeof b);
        std::memcpy(&tail, line + 2 * sizeof a, sizeof tail);
        a = ~a, b = ~b, tail = ~tail;
        std::memcpy(dst, &a, sizeof a);
        std::memcpy(dst + sizeof a, &b, sizeof b);
        std::memcpy(dst + 2 * sizeof a, &tail, sizeof tail);
        dst += kRowBytes;
    }
}

}  // namespace

Decoded hmac(Staging& s, const Source& src) {
    // The whole source into srcbytes from index 0; behind a short file lie
    // the previous picture's bytes.
    const std::size_t n = std::min(src.bytes.size(), kSrcBytesExtent);
    if (n) std::memcpy(s.srcbytes.data(), src.bytes.data(), n);

    // A MacBinary header starts with a zero byte and then the length of the
    // file name, where a bare MacPaint header has its version number's high
    // bytes, both 0.
    const std::size_t start = (s.srcbytes.get(1) == 0 && s.srcbytes.get(2) == 0) ? 512 : 640;

    // One stream, blind to rows: a run may cross a row's end, and the count
    // is tested only between runs, so the last run may reach up to 127
    // bytes behind the picture; pixbytes has room for them.
    const Cursor bulk = unpackBulk(s.srcbytes.data(), s.pixbytes.data(), Cursor{start, 0});
    unpackExact(s.srcbytes, s.pixbytes, bulk);

    // pixbytes keeps the picture as it was unpacked.
    std::uint8_t* out = s.out.data();
    std::memcpy(out, s.macbmp.data(), kMacHeaderSize);
    writeRowsComplemented(s.pixbytes.data(), out + kMacHeaderSize);
    return {false, {out, kMacBmpSize}, " Mac Paint 576*720 Mono", 4};
}

}  // namespace velmoric
