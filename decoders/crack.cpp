// Crack Art pictures (CA1 to CA3). The packed form fills the 32000-byte
// Atari screen not in reading order but column by column at a stride; once
// unpacked, the screen goes through the same merges as a Degas picture.
#include "decoders/decoder.h"

namespace velmoric {
namespace {

constexpr std::size_t kScreenBytes = 32000;

// The whole source, byte for byte, into srcbytes from index 0. What lies
// behind a short file is left as the previous picture had it.
void readSourceBytes(Staging& s, const Source& src) {
    const std::size_t n = std::min(src.bytes.size(), kSrcBytesExtent);
    if (n) std::memcpy(s.srcbytes.data(), src.bytes.data(), n);
}

// Where the next byte of the picture goes: every stride-th byte of the
// screen, pass after pass, `stride` passes in all.
class StrideCursor {
public:
    explicit StrideCursor(std::size_t stride) : stride_(stride), passesLeft_(std::ptrdiff_t(stride) - 1) {}

    std::size_t pos() const { return pos_; }
    // False once the last pass is over: the picture ends there, even in the
    // middle of a command.
    bool advance() {
        pos_ += stride_;
        if (pos_ >= kScreenBytes) {
            ++pass_;
            pos_ = pass_;
            if (--passesLeft_ < 0) return false;
        }
        return true;
    }

private:
    std::size_t stride_;
    std::size_t pos_ = 0;
    std::size_t pass_ = 0;
    std::ptrdiff_t passesLeft_;
};

// Reads the packed stream from srcbytes at `at`. Each command stores or
// skips at least one position, and there are only about as many positions
// as the larger of the screen and the stride, so the loop always ends; a
// read behind the extent of srcbytes gives 0, which is an ordinary command.
void unpackStream(Staging& s, std::size_t at) {
    const auto& in = s.srcbytes;
    auto& pix = s.pixbytes;
    const std::uint8_t escape = in.get(at);
    const std::uint8_t initial = in.get(at + 1);
    const std::size_t stride = std::size_t(((in.get(at + 2) & 0x7F) << 8) | in.get(at + 3));
    std::memset(pix.data(), initial, kScreenBytes);
    if (stride == 0) return;

    StrideCursor cursor(stride);
    std::size_t r = at + 4;
    auto next = [&] { return in.get(r++); };
    // Positions behind the screen (a stride above 32000) still take the
    // store, inside pixbytes, where no bitmap row reads it.
    // False when the last pass ended inside the run.
    auto fill = [&](std::uint8_t value, std::size_t count) {
        for (; count; --count) {
            pix.put(cursor.pos(), value);
            if (!cursor.advance()) return false;
        }
        return true;
    };

    for (;;) {
        const std::uint8_t b = next();
        bool more;
        if (b != escape) {
            more = fill(b, 1);
        } else {
            // A doubled escape is a literal before anything else, whatever
            // the escape's value, so an escape of 0, 1 or 2 can still be stored.
            const std::uint8_t k = next();
            if (k == escape) {
                more = fill(escape, 1);
            } else if (k == 0) {
                const std::size_t n = next();
                more = fill(next(), n + 1);
            } else if (k == 1) {
                const std::size_t h = next();
                const std::size_t l = next();
                more = fill(next(), h * 256 + l + 1);
            } else if (k == 2) {
                const std::size_t h = next();
                if (h == 0) return;  // end of the picture
                const std::size_t l = next();
                more = true;
                for (std::size_t n = h * 256 + l + 1; n && more; --n) more = cursor.advance();
            } else {
                more = fill(next(), std::size_t(k) + 1);
            }
        }
        if (!more) return;
    }
}

// The three resolutions differ in where the pixels start (behind a palette
// of 16, 4 or no colours) and in what the screen is merged into.
enum class Resolution { Low, Medium, High };

Decoded crack(Staging& s, const Source& src, Resolution res) {
    readSourceBytes(s, src);
    const std::size_t pixelsAt = res == Resolution::Low ? 36 : res == Resolution::Medium ? 12 : 4;

    if (s.srcbytes.get(2) == 0) {
        for (std::size_t i = 0; i < kScreenBytes; ++i) s.pixbytes[i] = s.srcbytes.get(pixelsAt + i);
    } else {
        unpackStream(s, pixelsAt);
    }

    // Medium resolution also converts 16 words from byte 4, though its file
    // holds only four colours: the other entries are never referred to.
    std::uint16_t palette[16];
    for (std::size_t i = 0; i < 16; ++i)
        palette[i] = std::uint16_t(s.srcbytes.get(4 + 2 * i) | (s.srcbytes.get(5 + 2 * i) << 8));

    // The same byte image, word by word with the first byte low.
    std::memcpy(s.srcwords.data(), s.pixbytes.data(), kScreenBytes);

    switch (res) {
        case Resolution::Low:
            Staging::convertPalette(palette, s.lowbmp.data());
            s.mergeLow(0, 15920);
            return {false, s.emitLow(), " Crack Art 320*200 16 Colour", 1};
        case Resolution::Medium:
            Staging::convertPalette(palette, s.medbmp.data());
            s.mergeMedium(0, 15920);
            return {false, s.emitMedium(), " Crack Art 640*200 4 Colour", 2};
        case Resolution::High:
            break;
    }
    s.copyMono(0, 15960);
    return {false, s.emitMono(), " Crack Art 640*400 Mono", 3};
}

}  // namespace

Decoded crack1(Staging& s, const Source& src) { return crack(s, src, Resolution::Low); }
Decoded crack2(Staging& s, const Source& src) { return crack(s, src, Resolution::Medium); }
Decoded crack3(Staging& s, const Source& src) { return crack(s, src, Resolution::High); }

}  // namespace velmoric
