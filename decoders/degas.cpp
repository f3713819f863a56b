// Uncompressed Degas and Neochrome pictures.
#include "decoders/decoder.h"

namespace velmoric {

Decoded degas1(Staging& s, const Source& src, int lastWord, int firstPaletteWord, int topRow, int bottomRow) {
    readWords(s, src, 0, 0, std::size_t(lastWord) + 1);
    s.convertPaletteFromSrcwords(std::size_t(firstPaletteWord), s.lowbmp.data());
    s.mergeLow(std::size_t(topRow), std::size_t(bottomRow));
    const std::string_view caption =
        firstPaletteWord == 2 ? " Neo 320*200 16 Colour" : " Degas 320*200 16 Colour";
    return {false, s.emitLow(), caption, 1, 2 * std::uint64_t(lastWord + 1)};
}

// PI2 and PI3 share one layout: a resolution word, 16 colour words, then
// 32000 bytes of screen from word 17 on. Nothing behind it is read.
namespace {
constexpr std::size_t kDegasWords = 16017;
}  // namespace

Decoded degas2(Staging& s, const Source& src) {
    readWords(s, src, 0, 0, kDegasWords);
    s.convertPaletteFromSrcwords(1, s.medbmp.data());
    s.mergeMedium(17, 15937);
    return {false, s.emitMedium(), " Degas 640*200 4 Colour", 2, 2 * kDegasWords};
}

// The colour words of a PI3 file are read but play no part: the mono
// bitmap keeps its own two-entry palette.
Decoded degas3(Staging& s, const Source& src) {
    readWords(s, src, 0, 0, kDegasWords);
    s.copyMono(17, 15977);
    return {false, s.emitMono(), " Degas 640*400 Mono", 3, 2 * kDegasWords};
}

}  // namespace velmoric
