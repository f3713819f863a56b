// The browser page's core: the desktop's own format table, decoders, staging
// arrays, inversion and texts, built to WebAssembly. It keeps one picture on
// show, as the window does: a failed open leaves it as it was, and the
// staging arrays carry from one open to the next, so an inversion of a 640 by
// 400 picture holds for the next such picture too.
#include <cstdint>
#include <string>
#include <vector>

#include "cycles/cycles.h"
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
    // Its colour cycles, when they play: the palette of each frame as RGBA
    // entries one after another, how many ticks each shows, and the palette
    // index of every pixel, top row first.
    std::vector<std::uint8_t> palettes;
    std::vector<std::int32_t> ticks;
    std::vector<std::uint8_t> indices;
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

// The frames of a picture's cycles, for the page to paint; none for a still one.
void keepCycles(const Picture& picture, const cycles::Animation& animation) {
    shown.palettes.clear();
    shown.ticks.clear();
    shown.indices.clear();
    if (!animation.animated()) return;
    for (const cycles::Frame& f : animation.frames) {
        for (const cycles::Colour& c : f.palette) shown.palettes.insert(shown.palettes.end(), {c[2], c[1], c[0], 255});
        shown.ticks.push_back(f.ticks);
    }
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x) shown.indices.push_back(std::uint8_t(picture.paletteIndex(x, y)));
}

void show(std::vector<std::uint8_t> bitmap, int kind, const cycles::Animation& animation = {}) {
    const Picture picture = Picture::fromBitmapBytes(bitmap);
    keepCycles(picture, animation);
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
    const Source source{{input.data(), size}, size};
    const Decoded decoded = format ? decodeWith(*format, staging(), source) : rejectedSource();
    if (decoded.rejected) {
        text = fileErrorText(extension, "");
        return 0;
    }
    show({decoded.bitmap.begin(), decoded.bitmap.end()}, decoded.kind, cycles::animationOf(*format, source, decoded));
    text = captionAfterOpen(capitals, decoded.caption);
    return 1;
}

// Swaps black and white in a mono picture on show; 0 and the message for
// any other. The cycles belong to the decoded picture, not to its inverse.
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
// The colour cycles of the picture on show: 0 frames when it has none.
std::size_t vm_frame_count() { return shown.ticks.size(); }
const std::int32_t* vm_frame_ticks() { return shown.ticks.data(); }
const std::uint8_t* vm_frame_palettes() { return shown.palettes.data(); }
std::size_t vm_frame_palettes_size() { return shown.palettes.size(); }
const std::uint8_t* vm_indices() { return shown.indices.data(); }

}  // extern "C"
