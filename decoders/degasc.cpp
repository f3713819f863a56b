// Run-length compressed Degas pictures. Each rebuilds the plain screen
// image at word 17 of srcwords, where the uncompressed decoders find it, and
// goes on as they do.
#include "decoders/decoder.h"
#include "decoders/vector_clones.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

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

// No run writes more than 128 bytes.
constexpr std::size_t kRunRoom = 128;

// The source from the end of the header on; a read past its end yields 0.
class RunReader {
public:
    explicit RunReader(const Source& src) : data_(src.bytes.data()), size_(src.bytes.size()) {}

    // Reads one control byte n and its run into `to`, which has room for
    // kRunRoom bytes, and returns the run's length. Below 128 the next
    // n + 1 bytes are copied, above 128 the next byte is repeated 257 - n
    // times, 128 stands alone.
    std::size_t run(std::uint8_t* to) {
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

    std::size_t at() const { return at_; }
    void moveTo(std::size_t at) { at_ = at; }
    const std::uint8_t* data() const { return data_; }
    std::size_t size() const { return size_; }

private:
    std::uint8_t next() {
        const std::size_t at = at_++;
        return at < size_ ? data_[at] : 0;
    }

    const std::uint8_t* data_;
    std::size_t size_;
    std::size_t at_ = kImageByte;
};

// Where the unpacking stands: the next control byte in the source and the
// next byte of the planes, which lie one after the other.
struct PlaneCursor {
    std::size_t at;
    std::size_t count;
};

// The planes all have one length, and a plane is full once a run reaches
// or passes its end; the next plane starts at its own place, whatever the
// run carried on. Seen from the bytes, runs follow one another, and only a
// run that passes a plane's end needs a correction. Testing for that apart
// from the count keeps the count's own update to one addition, and the
// test rarely comes true, so its branch is predicted.
class PlaneSplit {
public:
    explicit PlaneSplit(std::size_t planeBytes)
        : planeBytes_(planeBytes), reciprocal_(((std::uint64_t(1) << 32) + planeBytes - 1) / planeBytes) {}

    std::size_t after(std::size_t count, std::size_t length) const {
        const std::size_t end = count + length;
        if (length != 0 && plane(end - 1) != plane(count)) [[unlikely]]
            return (plane(count) + 1) * planeBytes_;
        return end;
    }

private:
    // count / planeBytes for any count below 65536, by a multiplication.
    std::size_t plane(std::size_t count) const { return std::size_t((count * reciprocal_) >> 32); }

    std::size_t planeBytes_;
    std::uint64_t reciprocal_;
};

using Chunk = std::uint8_t __attribute__((vector_size(32)));

// The bulk of the runs, while the source has a whole run left behind the
// control byte and the planes up to `lastPlaneEnd` are being filled. Each
// run writes a block of 32 bytes, and a longer one all 128 it may need:
// the bytes behind its end belong to this plane or later ones, which are
// written later, as the caller keeps 128 bytes of room behind
// `lastPlaneEnd`. Copy and repeat keep their branch: packed pictures
// mostly alternate them, which the predictor follows, and a choice without
// a branch would put more work between one control byte and the next.
VELMORIC_VECTOR_CLONES
PlaneCursor unpackBulk(const std::uint8_t* data, std::size_t size, std::uint8_t* planes, PlaneCursor c,
                       const PlaneSplit& split, std::size_t lastPlaneEnd) {
    while (c.count < lastPlaneEnd && c.at + 1 + kRunRoom <= size) {
        const std::uint8_t* p = data + c.at;
        const std::size_t n = p[0];
        if (n == 128) [[unlikely]] {
            c.at += 1;
            continue;
        }
        std::uint8_t* to = planes + c.count;
        std::size_t length;
        if (n < 128) {
            length = n + 1;
            std::memcpy(to, p + 1, sizeof(Chunk));
            if (length > sizeof(Chunk)) [[unlikely]]
                std::memcpy(to, p + 1, kRunRoom);
            c.at += n + 2;
        } else {
            length = 257 - n;
            const Chunk fill = Chunk{} + p[1];
            std::memcpy(to, &fill, sizeof fill);
            if (length > sizeof fill) [[unlikely]]
                for (std::size_t i = sizeof fill; i < kRunRoom; i += sizeof fill) std::memcpy(to + i, &fill, sizeof fill);
            c.at += 2;
        }
        c.count = split.after(c.count, length);
    }
    return c;
}

// The same with checked reads, for the runs near the end of the source.
void unpackExact(RunReader& in, std::uint8_t* planes, PlaneCursor& c, const PlaneSplit& split,
                 std::size_t lastPlaneEnd) {
    in.moveTo(c.at);
    while (c.count < lastPlaneEnd) c.count = split.after(c.count, in.run(planes + c.count));
    c.at = in.at();
}

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

// One row of the screen from its planes: group g of the row holds pair g
// of every plane in turn. The byte image of srcwords is the screen in file
// order, an even position the low half of its word.
template <PackedLayout l>
void interleaveRowByPairs(std::uint8_t* row, const std::uint8_t* planes) {
    constexpr std::size_t n = l.planeBytes();
    for (std::size_t g = 0; g < n / 2; ++g)
        for (std::size_t p = 0; p < l.planes; ++p) std::memcpy(row + 2 * (g * l.planes + p), planes + p * n + 2 * g, 2);
}

#if defined(__SSE2__)
// Eight pairs of each plane at a time, as 16-bit lanes: unpacking the
// lanes of two planes, and for four planes those results once more, lays
// them side by side. A row's 20 or 40 pairs are taken in blocks of eight,
// the last block of a low row overlapping the one before it.
template <PackedLayout l>
void interleaveRow(std::uint8_t* row, const std::uint8_t* planes) {
    constexpr std::size_t n = l.planeBytes();
    auto load = [&](std::size_t p, std::size_t g) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(planes + p * n + 2 * g));
    };
    auto store = [&](std::size_t at, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(row + at), v); };
    if constexpr (l.planes == 4) {
        static_assert(n == 40);
        for (std::size_t g : {0, 8, 12}) {
            const __m128i p0 = load(0, g), p1 = load(1, g), p2 = load(2, g), p3 = load(3, g);
            const __m128i a = _mm_unpacklo_epi16(p0, p1), b = _mm_unpackhi_epi16(p0, p1);
            const __m128i c = _mm_unpacklo_epi16(p2, p3), d = _mm_unpackhi_epi16(p2, p3);
            store(8 * g, _mm_unpacklo_epi32(a, c));
            store(8 * g + 16, _mm_unpackhi_epi32(a, c));
            store(8 * g + 32, _mm_unpacklo_epi32(b, d));
            store(8 * g + 48, _mm_unpackhi_epi32(b, d));
        }
    } else {
        static_assert(l.planes == 2 && n == 80);
        for (std::size_t g = 0; g < 40; g += 8) {
            const __m128i p0 = load(0, g), p1 = load(1, g);
            store(4 * g, _mm_unpacklo_epi16(p0, p1));
            store(4 * g + 16, _mm_unpackhi_epi16(p0, p1));
        }
    }
}
#else
template <PackedLayout l>
void interleaveRow(std::uint8_t* row, const std::uint8_t* planes) {
    interleaveRowByPairs<l>(row, planes);
}
#endif

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
    constexpr std::size_t lastPlaneEnd = firstLastRow * l.rowBytes;
    // In the image, what runs before the last rows write stays inside it.
    static_assert(l.planes > 1 || lastPlaneEnd - 1 + kRunRoom <= l.imageBytes());
    const PlaneSplit split(l.planeBytes());
    PlaneCursor c{kImageByte, 0};
    c = unpackBulk(in.data(), in.size(), planes, c, split, lastPlaneEnd);
    unpackExact(in, planes, c, split, lastPlaneEnd);
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
