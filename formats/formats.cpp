#include "formats/formats.h"

#include <algorithm>

namespace velmoric {
namespace {

Decoded runDegas1(Staging& s, const Source& src, const DecoderArgs& a) {
    return degas1(s, src, a.values[0], a.values[1], a.values[2], a.values[3]);
}

template <Decoded (*F)(Staging&, const Source&)>
Decoded plain(Staging& s, const Source& src, const DecoderArgs&) {
    return F(s, src);
}

using namespace std::string_view_literals;

// Spectrum compressed and smooshed files start with "SP" and a zero word;
// Crack Art with "CA", the compression byte (0 or 1) and the resolution;
// a MacPaint file that still has its MacBinary header names its type at 65.
constexpr Signature kSpectrumPacked[] = {{0, "SP\0\0"sv}};
constexpr Signature kCrackLow[] = {{0, "CA\0\0"sv}, {0, "CA\1\0"sv}};
constexpr Signature kCrackMedium[] = {{0, "CA\0\1"sv}, {0, "CA\1\1"sv}};
constexpr Signature kCrackHigh[] = {{0, "CA\0\2"sv}, {0, "CA\1\2"sv}};
constexpr Signature kMacBinaryPaint[] = {{65, "PNTG"sv}};

// Dispatch order. The four numbers of degas1 are the last word, the first
// palette word, the top row and the bottom row.
constexpr Format kFormats[] = {
    {"NEO", "neo", "degas1", {{16063, 2, 64, 15984}}, runDegas1, "Neochrome", 1, "image/x-neochrome", {}, CycleStore::neochrome},
    {"PI1", "pi1", "degas1", {{16016, 1, 17, 15937}}, runDegas1, "Degas low resolution", 1, "image/x-degas-pi1", {}, CycleStore::degasElite},
    {"PI2", "pi2", "degas2", {}, plain<degas2>, "Degas medium resolution", 2, "image/x-degas-pi2", {}, CycleStore::degasElite},
    {"PI3", "pi3", "degas3", {}, plain<degas3>, "Degas high resolution", 3, "image/x-degas-pi3", {}, CycleStore::degasElite},
    {"PC1", "pc1", "degasc1", {}, plain<degasc1>, "Degas compressed low resolution", 1, "image/x-degas-pc1", {}, CycleStore::degasCompressed},
    {"PC2", "pc2", "degasc2", {}, plain<degasc2>, "Degas compressed medium resolution", 2, "image/x-degas-pc2", {}, CycleStore::degasCompressed},
    {"PC3", "pc3", "degasc3", {}, plain<degasc3>, "Degas compressed high resolution", 3, "image/x-degas-pc3", {}, CycleStore::degasCompressed},
    {"TNY", "tny", "tiny", {}, plain<tiny>, "Tiny", 0, "image/x-tiny-tny", {}, CycleStore::tiny},
    {"TN1", "tn1", "tiny", {}, plain<tiny>, "Tiny low resolution", 0, "image/x-tiny-tn1", {}, CycleStore::tiny},
    {"TN2", "tn2", "tiny", {}, plain<tiny>, "Tiny medium resolution", 0, "image/x-tiny-tn2", {}, CycleStore::tiny},
    {"TN3", "tn3", "tiny", {}, plain<tiny>, "Tiny high resolution", 0, "image/x-tiny-tn3", {}, CycleStore::tiny},
    {"SPU", "spu", "spec", {}, plain<spec>, "Spectrum 512", 1, "image/x-spectrum512-spu", {}, CycleStore::none},
    {"SPC", "spc", "specc", {}, plain<specc>, "Spectrum 512 compressed", 1, "image/x-spectrum512-spc", kSpectrumPacked, CycleStore::none},
    {"SPS", "sps", "specs", {}, plain<specs>, "Spectrum 512 smooshed", 1, "image/x-spectrum512-sps", kSpectrumPacked, CycleStore::none},
    {"CA1", "ca1", "crack1", {}, plain<crack1>, "Crack Art low resolution", 1, "image/x-crack-art-ca1", kCrackLow, CycleStore::none},
    {"CA2", "ca2", "crack2", {}, plain<crack2>, "Crack Art medium resolution", 2, "image/x-crack-art-ca2", kCrackMedium, CycleStore::none},
    {"CA3", "ca3", "crack3", {}, plain<crack3>, "Crack Art high resolution", 3, "image/x-crack-art-ca3", kCrackHigh, CycleStore::none},
    {"MAC", "mac", "hmac", {}, plain<hmac>, "MacPaint", 4, "image/x-macpaint", kMacBinaryPaint, CycleStore::none},
};

}  // namespace

std::span<const Format> formatTable() { return kFormats; }

std::string extensionOf(std::string_view name) {
    return std::string(name.size() <= 3 ? name : name.substr(name.size() - 3));
}

const Format* findFormat(std::string_view extension) {
    for (const Format& f : kFormats)
        if (f.decode && (extension == f.upper || extension == f.lower)) return &f;
    return nullptr;
}

bool matchesSignature(const Format& format, std::span<const std::uint8_t> head) {
    for (const Signature& sig : format.signatures) {
        if (head.size() < sig.offset + sig.bytes.size()) continue;
        if (std::equal(sig.bytes.begin(), sig.bytes.end(), head.begin() + sig.offset,
                       [](char want, std::uint8_t got) { return std::uint8_t(want) == got; }))
            return true;
    }
    return false;
}

const Format* findFormatByContent(std::span<const std::uint8_t> head) {
    for (const Format& f : kFormats)
        if (f.decode && matchesSignature(f, head)) return &f;
    return nullptr;
}

std::size_t signatureExtent() {
    std::size_t extent = 0;
    for (const Format& f : kFormats)
        for (const Signature& sig : f.signatures) extent = std::max(extent, sig.offset + sig.bytes.size());
    return extent;
}

}  // namespace velmoric
