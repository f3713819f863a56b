#include "tools/monoinvert.h"

#include <exception>
#include <utility>
#include <vector>

#include "tools/errorbox.h"

namespace velmoric::tools {
namespace {

constexpr std::size_t kMacRows = 720;
constexpr std::size_t kMacRowBytes = 72;

// The two palette entries of `monobmp`, bytes 54 to 57 and 58 to 61, are
// words 27 and 28 and words 29 and 30: swapped whole, reserved bytes too.
// No decoder writes them, so every later mono picture opens this way.
std::span<const std::uint8_t> invertMono(Staging& s) {
    std::swap(s.monobmp[27], s.monobmp[29]);
    std::swap(s.monobmp[28], s.monobmp[30]);
    return s.emitMono();
}

// `pixbytes` goes out as it stands and is complemented on the way, so the
// array is always one inversion ahead of the picture on show: `hmac` wrote
// the complement, the first inversion writes the bytes themselves.
std::vector<std::uint8_t> invertMac(Staging& s) {
    std::vector<std::uint8_t> bitmap;
    bitmap.reserve(kMacBmpSize);
    for (std::size_t i = 0; i < kMacHeaderSize; ++i) bitmap.push_back(s.macbmp[i]);
    for (std::size_t r = kMacRows; r-- > 0;) {
        for (std::size_t j = 0; j < kMacRowBytes; ++j) {
            std::uint8_t& b = s.pixbytes[kMacRowBytes * r + j];
            bitmap.push_back(b);
            b = std::uint8_t(~b);
        }
    }
    return bitmap;
}

}  // namespace

void monoinvert(Platform& ui, Staging& s, std::int16_t kind, std::int16_t& saved) {
    if (kind != 3 && kind != 4) {
        ui.messageBox("Must be a Mono picture.", "Alert.", Buttons::Ok, Icon::Exclamation);
        return;
    }
    std::string temporary;
    try {
        temporary = ui.temporaryBitmapPath();
        if (kind == 3) {
            ui.writeFile(temporary, invertMono(s));
        } else {
            const std::vector<std::uint8_t> bitmap = invertMac(s);
            ui.writeFile(temporary, bitmap);
        }
        const Picture picture = ui.loadPicture(temporary);
        ui.setPicture(picture);
        ui.closeAllFiles();
    } catch (const std::exception& e) {
        // Image1 and the saved flag stay; the swap or the complement stays
        // done, as the arrays have no way back.
        showErrorBox(ui, e.what());
        return;
    }
    // The picture is on show; a temporary file that will not go now goes
    // with the private folder when the program ends.
    try {
        ui.deleteFile(temporary);
    } catch (const std::exception&) {
    }
    saved = 0;  // false
}

}  // namespace velmoric::tools
