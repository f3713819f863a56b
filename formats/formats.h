#pragma once
// The one table of picture formats. It drives the dispatch of an open, the
// converter's help, the MIME types, the desktop entry, the image plugins and
// the thumbnailer.
#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "decoders/decoder.h"

namespace velmoric {

struct DecoderArgs {
    std::array<int, 4> values{};
};

using DecodeFn = Decoded (*)(Staging&, const Source&, const DecoderArgs&);

// Bytes that a file of a format holds at a fixed place. Only formats whose
// files carry such bytes have them; the others are known by name alone.
struct Signature {
    std::uint32_t offset;
    std::string_view bytes;
};

// Where a format's files keep colour cycles, if they do.
enum class CycleStore {
    none,
    neochrome,        // two words at 48
    degasElite,       // 32 bytes behind the 32034 bytes of a plain file
    degasCompressed,  // 32 bytes behind the compressed screen
    tiny,             // four bytes behind a first byte above 2
};

struct Format {
    std::string_view upper;        // "NEO": the name must end in these three letters...
    std::string_view lower;        // "neo": ...or in these
    std::string_view routine;      // the decoder's name
    DecoderArgs args;              // only degas1 takes arguments
    DecodeFn decode;               // null while a decoder is not built
    std::string_view description;  // "Neochrome", for help texts and MIME comments
    int kind;                      // 1 to 4; 0 when the file itself decides (Tiny)
    std::string_view mimeType;     // named after the format, so that any program's loader for it shares the type
    std::span<const Signature> signatures;  // a file matching any one is of the format by content
    CycleStore cycles;
};

// All 18 rows in dispatch order, built or not.
std::span<const Format> formatTable();

// The last three characters of a name (a shorter name whole).
std::string extensionOf(std::string_view name);

// The row whose capitals or small letters equal the extension exactly, among
// the rows whose decoder is built; null when there is none.
const Format* findFormat(std::string_view extension);

// Whether the first bytes of a file match one of the format's signatures.
bool matchesSignature(const Format& format, std::span<const std::uint8_t> head);

// The first row, among those with a built decoder, whose signature the first
// bytes of a file match; null when none does.
const Format* findFormatByContent(std::span<const std::uint8_t> head);

// How many first bytes of a file every signature test needs at the most.
std::size_t signatureExtent();

// The native size in pixels of a picture of each kind (1 to 4).
struct NativeSize {
    int width, height;
};
inline constexpr NativeSize nativeSizeOfKind(int kind) {
    constexpr NativeSize sizes[] = {{320, 200}, {640, 200}, {640, 400}, {576, 720}};
    return sizes[(kind >= 1 && kind <= 4) ? kind - 1 : 0];
}

// The largest source a decoder looks at: the extent of srcbytes.
inline constexpr std::size_t kSourceLimit = kSrcBytesExtent;

// What the desktop calls a file of the format: "Neochrome picture".
inline std::string typeComment(const Format& format) { return std::string(format.description) + " picture"; }

inline Decoded decodeWith(const Format& format, Staging& s, const Source& src) {
    return format.decode(s, src, format.args);
}

}  // namespace velmoric
