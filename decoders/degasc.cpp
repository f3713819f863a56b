// Run-length compressed Degas pictures. Each rebuilds the plain screen
// image at word 17 of srcwords, where the uncompressed decoders find it, and
// goes on as they do.
#include "decoders/decoder.h"

namespace velmoric {
namespace {

constexpr std::size_t kImageByte = 34;  // word 17: the screen starts here

// Each plane of a row is packed on its own. Its bytes lie in pairs, b and
// b + 1, one pair every `pairStride` bytes of the row, starting at byte
// 2p of the row for plane p.
struct PackedLayout {
    std::size_t rows;
    std::size_t rowBytes;
    std::size_t planes;
    std::size_t pairStride;
    constexpr std::size_t planeBytes() const { return rowBytes / pairStride * 2; }
    constexpr std::size_t imageBytes() const { return rows * rowBytes; }
    // A run is tested against the end of its plane only between runs, so
    // the last run of a plane may carry up to 127 bytes into the same plane
    // of the following rows. Only from these last rows can it reach past
    // the image.
    constexpr std::size_t rowsReachingPastTheEnd() const { return (127 + planeBytes() - 1) / planeBytes(); }
};

constexpr PackedLayout kPackedLow{200, 160, 4, 8};
constexpr PackedLayout kPackedMedium{200, 160, 2, 4};
constexpr PackedLayout kPackedMono{400, 80, 1, 2};

// What passes the end of the last row still lies inside srcwords.
static_assert(kImageByte + 32000 + 128 * 8 <= 2 * kSrcWordsExtent);

// A run is written 16 bytes at a time: the bytes behind its end hold
// anything until the next run or plane overwrites them. No run writes more
// than 128 bytes.
constexpr std::size_t kChunk = 16;
constexpr std::size_t kRunRoom = 128;
static_assert(kRunRoom % kChunk == 0);

// The source from the end of the header on; a read past its end yields 0.
class RunReader {
public:
    explicit RunReader(const Source& src) : data_(src.bytes.data()), size_(src.bytes.size()) {}

    // Reads one control byte n and its run into `to`, which has room for
    // kRunRoom bytes, and returns the run's length. Below 128 the next
    // n + 1 bytes are copied, above 128 the next byte is repeated 257 - n
    // times, 128 stands alone. Most runs are a few bytes long, and a copy
    // of one chunk is much cheaper than one of the run's own length.
    std::size_t run(std::uint8_t* to) {
        if (at_ + 1 + 128 > size_) return runNearTheEnd(to);
        const std::uint8_t* p = data_ + at_;
        const unsigned n = p[0];
        if (n < 128) {
            const std::size_t length = n + 1;
            std::size_t i = 0;
            do {
                std::memcpy(to + i, p + 1 + i, kChunk);
                i += kChunk;
            } while (i < length);
            at_ += length + 1;
            return length;
        }
        if (n > 128) {
            const std::size_t length = 257 - n;
            std::uint8_t fill[kChunk];
            std::memset(fill, p[1], kChunk);
            std::size_t i = 0;
            do {
                std::memcpy(to + i, fill, kChunk);
                i += kChunk;
            } while (i < length);
            at_ += 2;
            return length;
        }
        at_ += 1;
        return 0;
    }

private:
    std::uint8_t next() {
        const std::size_t at = at_++;
        return at < size_ ? data_[at] : 0;
    }

    std::size_t runNearTheEnd(std::uint8_t* to) {
        const unsigned n = next();
        if (n < 128) {
            for (unsigned i = 0; i <= n; ++i) to[i] = next();
            return n + 1;
        }
        if (n > 128) {
            std::memset(to, next(), 257 - n);
            return 257 - n;
        }
        return 0;
    }

    const std::uint8_t* data_;
    std::size_t size_;
    std::size_t at_ = kImageByte;
};

// Runs until the plane is full; the test comes only between runs, so the
// last run may carry on by up to 127 bytes. Returns how many bytes came.
template <PackedLayout l>
std::size_t collectPlane(RunReader& in, std::uint8_t* to) {
    std::size_t count = 0;
    do {
        count += in.run(to + count);
    } while (count < l.planeBytes());
    return count;
}

// The bytes of each plane of each row, one plane after the other. What a
// plane's last run carries on spills into the planes after it, which are
// decoded later and overwrite it, just as in the screen it would go to the
// same plane of the following rows and be overwritten there. A mono row
// is one plane, so there the image itself serves.
template <PackedLayout l>
struct PlaneImage {
    std::uint8_t bytes[l.planes == 1 ? 1 : l.imageBytes() + kRunRoom];
};

// One plane of one of the last rows: its first bytes go to the plane as
// usual; of what its last run carries on, byte k lands in the same plane
// k / planeBytes rows further down, and from the row behind the last one
// on it stays where it lands.
template <PackedLayout l>
void collectLastPlane(RunReader& in, std::uint8_t* plane, std::uint8_t* image, std::size_t y, std::size_t p) {
    std::uint8_t bytes[l.planeBytes() + kRunRoom];
    const std::size_t count = collectPlane<l>(in, bytes);
    std::memcpy(plane, bytes, l.planeBytes());
    const std::size_t start = y * l.rowBytes + 2 * p;
    for (std::size_t k = (l.rows - y) * l.planeBytes(); k < count; ++k)
        image[start + k / 2 * l.pairStride + k % 2] = bytes[k];
}

std::uint64_t pairAt(const std::uint8_t* plane, std::size_t g) {
    std::uint16_t v;
    std::memcpy(&v, plane + 2 * g, 2);
    return v;
}

// One row of the screen from its planes: group g of the row holds pair g
// of every plane in turn. The byte image of srcwords is the screen in file
// order, an even position the low half of its word.
template <PackedLayout l>
void interleaveRow(std::uint8_t* row, const std::uint8_t* planes) {
    constexpr std::size_t n = l.planeBytes();
    if constexpr (l.planes == 4) {
        for (std::size_t g = 0; g < n / 2; ++g) {
            const std::uint64_t v = pairAt(planes, g) | pairAt(planes + n, g) << 16 |
                                    pairAt(planes + 2 * n, g) << 32 | pairAt(planes + 3 * n, g) << 48;
            std::memcpy(row + 8 * g, &v, 8);
        }
    } else {
        static_assert(l.planes == 2);
        for (std::size_t g = 0; g < n / 2; ++g) {
            const std::uint32_t v = std::uint32_t(pairAt(planes, g) | pairAt(planes + n, g) << 16);
            std::memcpy(row + 4 * g, &v, 4);
        }
    }
}

// The header's 17 words, then the rows, plane by plane. Every plane starts
// at its own place, whatever the run before it did.
template <PackedLayout l>
void unpackScreen(Staging& s, const Source& src) {
    readWords(s, src, 0, 0, 17);
    std::uint8_t* image = reinterpret_cast<std::uint8_t*>(s.srcwords.data()) + kImageByte;
    PlaneImage<l> separate;
    std::uint8_t* planes = l.planes == 1 ? image : separate.bytes;
    RunReader in(src);
    constexpr std::size_t firstLastRow = l.rows - l.rowsReachingPastTheEnd();
    // In the image, what runs before the last rows write stays inside it.
    static_assert(l.planes > 1 || firstLastRow * l.rowBytes - 1 + kRunRoom <= l.imageBytes());
    for (std::size_t j = 0; j < firstLastRow * l.planes; ++j) collectPlane<l>(in, planes + j * l.planeBytes());
    for (std::size_t y = firstLastRow; y < l.rows; ++y)
        for (std::size_t p = 0; p < l.planes; ++p)
            collectLastPlane<l>(in, planes + (y * l.planes + p) * l.planeBytes(), image, y, p);
    if constexpr (l.planes > 1)
        for (std::size_t y = 0; y < l.rows; ++y) interleaveRow<l>(image + y * l.rowBytes, planes + y * l.rowBytes);
}

}  // namespace

Decoded degasc1(Staging& s, const Source& src) {
    unpackScreen<kPackedLow>(s, src);
    s.convertPaletteFromSrcwords(1, s.lowbmp.data());
    s.mergeLow(17, 15937);
    return {false, s.emitLow(), " Degas Comp 320*200 16 Colour", 1};
}

Decoded degasc2(Staging& s, const Source& src) {
    unpackScreen<kPackedMedium>(s, src);
    s.convertPaletteFromSrcwords(1, s.medbmp.data());
    s.mergeMedium(17, 15937);
    return {false, s.emitMedium(), " Degas Comp 640*200 4 Colour", 2};
}

Decoded degasc3(Staging& s, const Source& src) {
    unpackScreen<kPackedMono>(s, src);
    s.copyMono(17, 15977);
    return {false, s.emitMono(), " Degas Comp 640*400 Mono", 3};
}

}  // namespace velmoric
