#include "convert/gif.h"

#include <gif_lib.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "convert/colours.h"
#include "convert/library.h"

namespace velmoric {
namespace {

const std::string kWhat = "cannot encode the GIF";

struct Giflib {
    decltype(&EGifOpen) open;
    decltype(&EGifCloseFile) close;
    decltype(&EGifSetGifVersion) setVersion;
    decltype(&EGifPutScreenDesc) putScreen;
    decltype(&EGifPutImageDesc) putImage;
    decltype(&EGifPutLine) putLine;
    decltype(&EGifPutExtensionLeader) putLeader;
    decltype(&EGifPutExtensionBlock) putBlock;
    decltype(&EGifPutExtensionTrailer) putTrailer;
    decltype(&EGifPutExtension) putExtension;
    decltype(&EGifGCBToExtension) controlBlock;
    decltype(&GifMakeMapObject) makeMap;
    decltype(&GifFreeMapObject) freeMap;
    decltype(&GifErrorString) errorString;
};

Giflib loadGiflib() {
    void* library = openLibrary(VELMORIC_GIF_SONAME, kWhat);
    auto bind = [&](auto& function, const char* name) { bindSymbol(library, function, name, VELMORIC_GIF_SONAME, kWhat); };
    Giflib api{};
    bind(api.open, "EGifOpen");
    bind(api.close, "EGifCloseFile");
    bind(api.setVersion, "EGifSetGifVersion");
    bind(api.putScreen, "EGifPutScreenDesc");
    bind(api.putImage, "EGifPutImageDesc");
    bind(api.putLine, "EGifPutLine");
    bind(api.putLeader, "EGifPutExtensionLeader");
    bind(api.putBlock, "EGifPutExtensionBlock");
    bind(api.putTrailer, "EGifPutExtensionTrailer");
    bind(api.putExtension, "EGifPutExtension");
    bind(api.controlBlock, "EGifGCBToExtension");
    bind(api.makeMap, "GifMakeMapObject");
    bind(api.freeMap, "GifFreeMapObject");
    bind(api.errorString, "GifErrorString");
    return api;
}

const Giflib& gif() {
    static const Giflib api = loadGiflib();
    return api;
}

struct MapFree {
    void operator()(ColorMapObject* map) const { gif().freeMap(map); }
};
using ColourMap = std::unique_ptr<ColorMapObject, MapFree>;

// A colour map of 2 to the power of `bits` entries, as GIF wants, the
// entries past the palette black.
ColourMap colourMap(const std::vector<std::uint32_t>& palette, int bits) {
    std::vector<GifColorType> colours(std::size_t(1) << bits, GifColorType{0, 0, 0});
    for (std::size_t i = 0; i < palette.size() && i < colours.size(); ++i)
        colours[i] = {GifByteType(palette[i] >> 16), GifByteType(palette[i] >> 8), GifByteType(palette[i])};
    ColourMap map(gif().makeMap(int(colours.size()), colours.data()));
    if (!map) throw std::runtime_error(kWhat + ": out of memory");
    return map;
}

int appendBytes(GifFileType* file, const GifByteType* bytes, int length) {
    auto* out = static_cast<std::vector<std::uint8_t>*>(file->UserData);
    out->insert(out->end(), bytes, bytes + length);
    return length;
}

// Writes a GIF into a byte vector, and closes it however the writing ends.
class GifWriter {
public:
    explicit GifWriter(std::vector<std::uint8_t>& out) {
        int error = 0;
        file_ = gif().open(&out, appendBytes, &error);
        if (!file_) fail(error);
        gif().setVersion(file_, true);
    }
    ~GifWriter() {
        if (file_) gif().close(file_, nullptr);
    }
    void finish() {
        int error = 0;
        GifFileType* file = file_;
        file_ = nullptr;
        if (gif().close(file, &error) == GIF_ERROR) fail(error);
    }
    void check(int result) {
        if (result == GIF_ERROR) fail(file_->Error);
    }
    GifFileType* operator->() { return file_; }
    GifFileType* get() { return file_; }

private:
    [[noreturn]] static void fail(int error) {
        const char* text = gif().errorString(error);
        throw std::runtime_error(kWhat + ": " + (text ? text : "error " + std::to_string(error)));
    }
    GifFileType* file_ = nullptr;
};

// The Netscape block that makes a viewer play the frames again for ever.
void putLoopForever(GifWriter& w) {
    static const GifByteType name[] = {'N', 'E', 'T', 'S', 'C', 'A', 'P', 'E', '2', '.', '0'};
    static const GifByteType loops[] = {1, 0, 0};  // sub-block 1: a loop count of 0, for ever
    w.check(gif().putLeader(w.get(), APPLICATION_EXT_FUNC_CODE));
    w.check(gif().putBlock(w.get(), sizeof name, name));
    w.check(gif().putBlock(w.get(), sizeof loops, loops));
    w.check(gif().putTrailer(w.get()));
}

void putDelay(GifWriter& w, int hundredths) {
    GraphicsControlBlock control{};
    control.DisposalMode = DISPOSE_DO_NOT;
    control.DelayTime = hundredths;
    control.TransparentColor = NO_TRANSPARENT_COLOR;
    GifByteType block[4];
    const std::size_t length = gif().controlBlock(&control, block);
    w.check(gif().putExtension(w.get(), GRAPHICS_EXT_FUNC_CODE, int(length), block));
}

void putPixels(GifWriter& w, const IndexedPicture& picture, int width, int height, const ColorMapObject* local) {
    w.check(gif().putImage(w.get(), 0, 0, width, height, false, local));
    std::vector<GifPixelType> row(std::size_t(width), 0);
    for (int y = 0; y < height; ++y) {
        std::copy_n(picture.indices.begin() + std::ptrdiff_t(y) * width, width, row.begin());
        w.check(gif().putLine(w.get(), row.data(), width));
    }
}

}  // namespace

std::vector<std::uint8_t> encodeGif(const Picture& picture, const std::vector<cycles::Frame>& frames) {
    if (picture.empty()) throw std::runtime_error("cannot encode an empty picture");
    const auto indexed = indexedPicture(picture);
    if (!indexed) throw std::runtime_error("the picture has more than 256 colours, more than a GIF can hold");
    const int bits = indexed->bits;
    const bool animated = frames.size() > 1;
    std::vector<std::uint8_t> out;
    GifWriter w(out);
    const ColourMap global = colourMap(animated ? cycles::rgbOf(frames[0].palette) : indexed->palette, bits);
    w.check(gif().putScreen(w.get(), picture.width(), picture.height(), bits, 0, global.get()));
    if (!animated) {
        putPixels(w, *indexed, picture.width(), picture.height(), nullptr);
    } else {
        putLoopForever(w);
        const std::vector<int> delays = cycles::delaysIn(frames, 100);  // GIF delays are hundredths
        for (std::size_t i = 0; i < frames.size(); ++i) {
            putDelay(w, delays[i]);
            const ColourMap local = i == 0 ? nullptr : colourMap(cycles::rgbOf(frames[i].palette), bits);
            putPixels(w, *indexed, picture.width(), picture.height(), local.get());
        }
    }
    w.finish();
    return out;
}

}  // namespace velmoric
