// Run-length compressed Degas pictures. Each rebuilds the plain screen
// image at word 17 of srcwords, where the uncompressed decoders find it, and
// goes on as they do.
#include "decoders/decoder.h"

namespace velmoric {
namespace {

// How the screen of one resolution is packed: a row holds `planes` planes,
// and each plane's bytes lie in pairs b, b + 1, one pair for every group of
// 16 pixels, so that after the odd byte of a pair the next byte of the same
// plane lies 2 * planes - 1 bytes on.
struct PackedLayout {
    int rows;
    int rowBytes;
    int planes;
};

constexpr PackedLayout kPackedLow{200, 160, 4};
constexpr PackedLayout kPackedMedium{200, 160, 2};
constexpr PackedLayout kPackedMono{400, 80, 1};

constexpr std::size_t kImageWord = 17;  // the screen starts at byte 34

// Byte b of the screen goes into the low half of its word for even b and
// into the high half for odd b, so the byte image of srcwords is the screen
// in file order.
void storeScreenByte(Staging& s, int b, std::uint8_t v) {
    const std::size_t i = kImageWord + std::size_t(b) / 2;
    const std::uint16_t w = s.srcwords.get(i);
    s.srcwords.put(i, b % 2 == 0 ? std::uint16_t((w & 0xFF00) | v) : std::uint16_t((w & 0x00FF) | v << 8));
}

// The header's 17 words, then the rows, plane by plane, from offset 34,
// each byte stored at its place in the screen; nothing leaves srcwords.
// Gives the offset behind the last run. A file that ends early reads as
// zeros, each a control byte that copies one zero, so the picture is always
// finished. A plane ends only between runs: a run that passes its end
// carries on in the same plane of the rows below, which are decoded later
// and overwrite it, and the next plane still starts at its own place. A run
// stores at most 128 bytes.
std::size_t unpackScreen(Staging& s, const Source& src, const PackedLayout& l) {
    readWords(s, src, 0, 0, kImageWord);
    std::size_t at = 2 * kImageWord;
    for (int y = 0; y < l.rows; ++y) {
        for (int p = 0; p < l.planes; ++p) {
            int b = y * l.rowBytes + 2 * p;
            const int end = b + l.rowBytes;
            auto put = [&](std::uint8_t v) {
                storeScreenByte(s, b, v);
                b += b % 2 == 0 ? 1 : 2 * l.planes - 1;
            };
            do {
                const int n = src.byte(at++);
                if (n < 128) {
                    for (int i = 0; i <= n; ++i) put(src.byte(at++));
                } else if (n > 128) {
                    const std::uint8_t v = src.byte(at++);
                    for (int i = 0; i < 257 - n; ++i) put(v);
                }
            } while (b < end);
        }
    }
    return at;
}

}  // namespace

Decoded degasc1(Staging& s, const Source& src) {
    const std::size_t end = unpackScreen(s, src, kPackedLow);
    s.convertPaletteFromSrcwords(1, s.lowbmp.data());
    s.mergeLow(17, 15937);
    return {false, s.emitLow(), " Degas Comp 320*200 16 Colour", 1, end};
}

Decoded degasc2(Staging& s, const Source& src) {
    const std::size_t end = unpackScreen(s, src, kPackedMedium);
    s.convertPaletteFromSrcwords(1, s.medbmp.data());
    s.mergeMedium(17, 15937);
    return {false, s.emitMedium(), " Degas Comp 640*200 4 Colour", 2, end};
}

Decoded degasc3(Staging& s, const Source& src) {
    const std::size_t end = unpackScreen(s, src, kPackedMono);
    s.copyMono(17, 15977);
    return {false, s.emitMono(), " Degas Comp 640*400 Mono", 3, end};
}

}  // namespace velmoric
