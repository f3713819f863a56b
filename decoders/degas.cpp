// Uncompressed Degas and Neochrome pictures.
#include "decoders/decoder.h"

namespace velmoric {

Decoded degas1(Staging& s, const Source& src, int lastWord, int firstPaletteWord, int topRow, int bottomRow) {
    readWords(s, src, 0, 0, std::size_t(lastWord) + 1);
    s.convertPaletteFromSrcwords(std::size_t(firstPaletteWord), s.lowbmp.data());
    s.mergeLow(std::size_t(topRow), std::size_t(bottomRow));
    const std::string_view caption =
        firstPaletteWord == 2 ? " Neo 320*200 16 Colour" : " Degas 320*200 16 Colour";
    return {false, s.emitLow(), caption, 1};
}

}  // namespace velmoric
