// The browser page's core: the desktop's own format table, decoders, staging
// arrays, inversion and texts, built to WebAssembly. It keeps one picture on
// show, as the window does: a failed open leaves it as it was, and the
// staging arrays carry from one open to the next, so an inversion of a 640 by
// 400 picture holds for the next such picture too.
#include <cstdint>
#include <string>
#include <vector>

#include "formats/formats.h"
#include "platform/picture.h"
#include "shell/opening.h"
#include "tools/inversion.h"

namespace {

using namespace velmoric;

struct Shown {
    std::vector<std::uint8_t> bitmap;  // the exact bytes a save writes
    std::vector<std::uint8_t> rgba;    // its pixels, top row first, for the canvas
    int width = 0, height = 0;
    int kind = 0;
};

Staging& staging() {
    static Staging* s = [] {
        auto* fresh = new Staging;
        fresh->buildTables();
        return fresh;
    }();
    return *s;
}

std::vector<std::uint8_t> input(kSourceLimit);
Shown shown;
std::string text;  // the caption after a success, the message after a failure

void show(std::vector<std::uint8_t> bitmap, int kind) {
    const Picture picture = Picture::fromBitmapBytes(bitmap);
    shown.rgba.clear();
    shown.rgba.reserve(std::size_t(picture.width()) * picture.height() * 4);
    for (const std::uint32_t rgb : picture.toRgb())
        for (const int shift : {16, 8, 0, 24}) shown.rgba.push_back(shift == 24 ? 255 : std::uint8_t(rgb >> shift));
    shown.width = picture.width();
    shown.height = picture.height();
    shown.bitmap = std::move(bitmap);
    shown.kind = kind;
}

}  // namespace

extern "C" {

// Where the page puts a file's bytes, and how many it may put there: the
// most that any decoder looks at.
std::uint8_t* vm_input() { return input.data(); }
std::size_t vm_source_limit() { return kSourceLimit; }

// Opens `size` bytes in the input as the file `name`, whose file part in
// capitals is `capitals`. Returns 1 when the picture is on show; 0 when the
// name has no row or the decoder rejects the file, with the picture on show
// left as it was and the failure text in vm_text.
int vm_open(const char* name, const char* capitals, std::size_t size) {
    const std::string extension = extensionOf(name);
    const Format* format = findFormat(extension);
    const Decoded decoded = format ? decodeWith(*format, staging(), Source{{input.data(), size}, size})
                                   : rejectedSource();
    if (decoded.rejected) {
        text = fileErrorText(extension, "");
        return 0;
    }
    show({decoded.bitmap.begin(), decoded.bitmap.end()}, decoded.kind);
    text = captionAfterOpen(capitals, decoded.caption);
    return 1;
}

// Swaps black and white in a mono picture on show; 0 and the message for
// any other.
int vm_invert() {
    if (!tools::isMonoKind(shown.kind)) {
        text = tools::kNotMonoText;
        return 0;
    }
    show(tools::invertedBitmap(staging(), shown.kind), shown.kind);
    return 1;
}

// The extensions of every row with a decoder, as the file chooser takes
// them: ".neo,.pi1,...".
const char* vm_extensions() {
    static const std::string list = [] {
        std::string names;
        for (const Format& f : formatTable())
            if (f.decode) names += (names.empty() ? "." : ",.") + std::string(f.lower);
        return names;
    }();
    return list.c_str();
}

const char* vm_text() { return text.c_str(); }
const std::uint8_t* vm_bitmap() { return shown.bitmap.data(); }
std::size_t vm_bitmap_size() { return shown.bitmap.size(); }
const std::uint8_t* vm_rgba() { return shown.rgba.data(); }
int vm_width() { return shown.width; }
int vm_height() { return shown.height; }
int vm_kind() { return shown.kind; }

}  // extern "C"
