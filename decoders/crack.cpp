// Crack Art pictures (CA1 to CA3). The packed form fills the 32000-byte
// Atari screen not in reading order but column by column at a stride; once
// unpacked, the screen goes through the same merges as a Degas picture.
#include "decoders/decoder.h"

namespace velmoric {
namespace {

constexpr std::size_t kScreenBytes = 32000;

// Where the stream's next store or skip lands. Each step moves on by the
// stride; a step that leaves the screen starts the next pass one byte
// further on than the last. When the passes run out the picture ends, even
// in the middle of a command.
struct StrideWalk {
    std::size_t stride;
    std::size_t pos = 0;
    std::size_t pass = 0;
    std::ptrdiff_t passesLeft;

    explicit StrideWalk(std::size_t s) : stride(s), passesLeft(std::ptrdiff_t(s) - 1) {}
    bool ended() const { return passesLeft < 0; }
    void step() {
        pos += stride;
        if (pos >= kScreenBytes) {
            ++pass;
            pos = pass;
            --passesLeft;
        }
    }
};

// The escape, initial byte, stride and command stream from srcbytes at `at`
// into pixbytes. Every command covers at least one position and the walk
// has a fixed number of them, so the loop ends on any stream; behind
// srcbytes the stream reads zeros. Gives the offset behind the last byte
// of the stream it read.
std::size_t unpackStream(Staging& s, std::size_t at) {
    const auto& in = s.srcbytes;
    const std::uint8_t escape = in.get(at);
    const std::uint8_t initial = in.get(at + 1);
    // The offset is big-endian; its top bit does not count.
    const std::size_t stride = std::size_t((in.get(at + 2) & 0x7F) << 8 | in.get(at + 3));

    // Skipped positions, and those the stream never reaches, keep the
    // initial byte.
    for (std::size_t i = 0; i < kScreenBytes; ++i) s.pixbytes[i] = initial;

    StrideWalk walk(stride);
    // A stride above 32000 takes one position in each pass, also behind the
    // screen: those bytes land in pixbytes too but are never shown.
    auto store = [&](std::uint8_t value, std::size_t count) {
        for (; count > 0 && !walk.ended(); --count) {
            s.pixbytes.put(walk.pos, value);
            walk.step();
        }
    };
    auto skip = [&](std::size_t count) {
        for (; count > 0 && !walk.ended(); --count) walk.step();
    };

    std::size_t r = at + 4;
    auto next = [&] { return in.get(r++); };
    while (!walk.ended()) {
        const std::uint8_t b = next();
        if (b != escape) {
            store(b, 1);
            continue;
        }
        // A doubled escape is a literal before anything else, whatever the
        // escape's value, so an escape of 0, 1 or 2 can still be stored.
        const std::uint8_t k = next();
        if (k == escape) {
            store(escape, 1);
        } else if (k == 0) {
            const std::size_t n = next();
            store(next(), n + 1);
        } else if (k == 1) {
            const std::size_t h = next();
            const std::size_t l = next();
            store(next(), h * 256 + l + 1);
        } else if (k == 2) {
            const std::size_t h = next();
            if (h == 0) break;  // the end of the picture
            const std::size_t l = next();
            skip(h * 256 + l + 1);
        } else {
            store(next(), std::size_t(k) + 1);
        }
    }
    return r;
}

// The three resolutions differ in where the pixels start (behind a palette
// of 16, 4 or no colours) and in what the screen is merged into.
enum class Resolution { Low, Medium, High };

Decoded crack(Staging& s, const Source& src, Resolution res) {
    // The whole source into srcbytes from index 0. Behind a short file lie
    // the previous picture's bytes, and the stream reads on into them.
    const std::size_t length = std::min(src.bytes.size(), kSrcBytesExtent);
    for (std::size_t i = 0; i < length; ++i) s.srcbytes[i] = src.bytes[i];

    const std::size_t pixelsAt = res == Resolution::Low ? 36 : res == Resolution::Medium ? 12 : 4;
    std::size_t end = pixelsAt + kScreenBytes;
    if (s.srcbytes.get(2) == 0) {
        for (std::size_t i = 0; i < kScreenBytes; ++i) s.pixbytes[i] = s.srcbytes.get(pixelsAt + i);
    } else {
        end = unpackStream(s, pixelsAt);
    }
    // The palette's 16 words reach byte 36; a mono picture does not use them.
    if (res != Resolution::High) end = std::max<std::size_t>(end, 36);

    // Medium resolution also converts 16 words from byte 4, though its file
    // holds only four colours: the other entries are never referred to.
    std::uint16_t palette[16];
    for (std::size_t i = 0; i < 16; ++i)
        palette[i] = std::uint16_t(s.srcbytes.get(4 + 2 * i) | s.srcbytes.get(5 + 2 * i) << 8);

    // The same byte image as words, the byte at the even position low.
    for (std::size_t w = 0; w < kScreenBytes / 2; ++w)
        s.srcwords[w] = std::uint16_t(s.pixbytes[2 * w] | s.pixbytes[2 * w + 1] << 8);

    switch (res) {
        case Resolution::Low:
            Staging::convertPalette(palette, s.lowbmp.data());
            s.mergeLow(0, 15920);
            return {false, s.emitLow(), " Crack Art 320*200 16 Colour", 1, end};
        case Resolution::Medium:
            Staging::convertPalette(palette, s.medbmp.data());
            s.mergeMedium(0, 15920);
            return {false, s.emitMedium(), " Crack Art 640*200 4 Colour", 2, end};
        case Resolution::High:
            break;
    }
    s.copyMono(0, 15960);
    return {false, s.emitMono(), " Crack Art 640*400 Mono", 3, end};
}

}  // namespace

Decoded crack1(Staging& s, const Source& src) { return crack(s, src, Resolution::Low); }
Decoded crack2(Staging& s, const Source& src) { return crack(s, src, Resolution::Medium); }
Decoded crack3(Staging& s, const Source& src) { return crack(s, src, Resolution::High); }

}  // namespace velmoric
