#include "decoders/planar.h"

#include <cstdlib>
#include <cstring>

#include "decoders/vector_clones.h"

#if defined(__x86_64__) && defined(__GNUC__)
#include <immintrin.h>
#define VELMORIC_MATRIX_KERNELS 1
#endif

namespace velmoric::planar {
namespace {

// ---- Everywhere: planesToNibbles group by group ------------------------
inline std::uint64_t load64(const std::uint8_t* p) {
    std::uint64_t v;
    std::memcpy(&v, p, 8);
    return v;
}

inline std::uint64_t load32(const std::uint8_t* p) {
    std::uint32_t v;
    std::memcpy(&v, p, 4);
    return v;
}

inline void store64(void* p, std::uint64_t v) { std::memcpy(p, &v, 8); }

VELMORIC_VECTOR_CLONES
void fourPlaneGroupsPortable(const std::uint8_t* src, std::uint8_t* dst, std::size_t groups) {
    for (std::size_t g = 0; g < groups; ++g) store64(dst + 8 * g, planesToNibbles(load64(src + 8 * g)));
}

VELMORIC_VECTOR_CLONES
void twoPlaneGroupsPortable(const std::uint8_t* src, std::uint8_t* dst, std::size_t groups) {
    for (std::size_t g = 0; g < groups; ++g) store64(dst + 8 * g, planesToNibbles(load32(src + 4 * g)));
}

VELMORIC_VECTOR_CLONES
void columnGroupsPortable(const std::uint16_t* const planes[4], std::uint16_t* lastRow, std::size_t rowWords,
                          std::size_t lines) {
    for (std::size_t y = 0; y < lines; ++y) {
        const std::uint64_t x = std::uint64_t(planes[0][y]) | std::uint64_t(planes[1][y]) << 16 |
                                std::uint64_t(planes[2][y]) << 32 | std::uint64_t(planes[3][y]) << 48;
        store64(lastRow - rowWords * y, planesToNibbles(x));
    }
}

#if defined(VELMORIC_MATRIX_KERNELS)
// ---- With AVX-512BW and GFNI: eight groups a step ------------------------

#define MATRIX_TARGET __attribute__((target("avx512f,avx512bw,gfni")))

// Eight groups, one per 64-bit lane, each with its bytes ordered as the
// rows of a bit matrix: the first bytes of planes 3, 2, 1, 0, then their
// second bytes. Multiplying a byte with a single bit k set by that matrix
// gathers bit k of every row: for k = 7 - 2i, pixel 2i's nibble high and
// pixel 8 + 2i's low; for k = 6 - 2i, the pixels one to the right. Shifting
// by four in the 16-bit lanes that need it and taking the high nibbles of
// the one and the low of the other leaves the bitmap bytes.
MATRIX_TARGET inline __m512i nibblesFromRows(__m512i rows) {
    const __m512i evenPixels = _mm512_gf2p8affine_epi64_epi8(_mm512_set1_epi64(0x0208208002082080), rows, 0);
    const __m512i oddPixels = _mm512_gf2p8affine_epi64_epi8(_mm512_set1_epi64(0x0104104001041040), rows, 0);
    // Bytes 0 to 3 of a lane come from the first bytes of the planes, 4 to 7
    // from the second.
    const __m512i high = _mm512_sllv_epi16(evenPixels, _mm512_set1_epi64(0x0004000400000000));
    const __m512i low = _mm512_srlv_epi16(oddPixels, _mm512_set1_epi64(0x0000000000040004));
    return _mm512_ternarylogic_epi64(high, low, _mm512_set1_epi8(char(0xF0)), 0xE4);  // high where F0, else low
}

// Matrix rows from groups in file order: plane p's bytes at 2p and 2p + 1
// of each lane (a negative index gives 0).
MATRIX_TARGET inline __m512i rowsFromGroups(__m512i groups) {
    // Per 128-bit lane: 6, 4, 2, 0, 7, 5, 3, 1, then the same 8 higher.
    const __m512i order = _mm512_set_epi64(0x090B0D0F080A0C0E, 0x0103050700020406, 0x090B0D0F080A0C0E,
                                           0x0103050700020406, 0x090B0D0F080A0C0E, 0x0103050700020406,
                                           0x090B0D0F080A0C0E, 0x0103050700020406);
    return _mm512_shuffle_epi8(groups, order);
}

MATRIX_TARGET inline __m512i rowsFromTwoPlaneGroups(__m512i groups) {
    // Per 128-bit lane: -1, -1, 2, 0, -1, -1, 3, 1, then the same 8 higher.
    const __m512i order = _mm512_set_epi64(
        0x090BFFFF080AFFFF, 0x0103FFFF0002FFFF, 0x090BFFFF080AFFFF, 0x0103FFFF0002FFFF,
        0x090BFFFF080AFFFF, 0x0103FFFF0002FFFF, 0x090BFFFF080AFFFF, 0x0103FFFF0002FFFF);
    return _mm512_shuffle_epi8(groups, order);
}

MATRIX_TARGET inline void fourPlaneBlock(const std::uint8_t* src, std::uint8_t* dst) {
    _mm512_storeu_si512(dst, nibblesFromRows(rowsFromGroups(_mm512_loadu_si512(src))));
}

MATRIX_TARGET void fourPlaneGroupsMatrix(const std::uint8_t* src, std::uint8_t* dst, std::size_t groups) {
    std::size_t g = 0;
    for (; g + 8 <= groups; g += 8) fourPlaneBlock(src + 8 * g, dst + 8 * g);
    // The rest as the last eight, overlapping the block before: same bytes again.
    if (g < groups) fourPlaneBlock(src + 8 * (groups - 8), dst + 8 * (groups - 8));
}

MATRIX_TARGET void twoPlaneGroupsMatrix(const std::uint8_t* src, std::uint8_t* dst, std::size_t groups) {
    for (std::size_t g = 0; g + 8 <= groups; g += 8) {
        const __m512i in = _mm512_maskz_cvtepu32_epi64(0xFF, _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src + 4 * g)));
        _mm512_storeu_si512(dst + 8 * g, nibblesFromRows(rowsFromTwoPlaneGroups(in)));
    }
}

MATRIX_TARGET inline __m128i loadLines(const std::uint16_t* words) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(words));
}

// Eight lines: plane p's eight words side by side in 128-bit lane p, then
// word i of every lane gathered into 64-bit lane i.
MATRIX_TARGET void columnGroupsMatrix(const std::uint16_t* const planes[4], std::uint16_t* lastRow,
                                      std::size_t rowWords, std::size_t lines) {
    const __m512i byLine = _mm512_setr_epi64(0x0018001000080000, 0x0019001100090001, 0x001A0012000A0002,
                                             0x001B0013000B0003, 0x001C0014000C0004, 0x001D0015000D0005,
                                             0x001E0016000E0006, 0x001F0017000F0007);
    for (std::size_t y = 0; y + 8 <= lines; y += 8) {
        __m512i planesOfLines = _mm512_castsi128_si512(loadLines(planes[0] + y));
        planesOfLines = _mm512_inserti32x4(planesOfLines, loadLines(planes[1] + y), 1);
        planesOfLines = _mm512_inserti32x4(planesOfLines, loadLines(planes[2] + y), 2);
        planesOfLines = _mm512_inserti32x4(planesOfLines, loadLines(planes[3] + y), 3);
        const __m512i groups = _mm512_permutexvar_epi16(byLine, planesOfLines);
        alignas(64) std::uint64_t pixels[8];
        _mm512_store_si512(pixels, nibblesFromRows(rowsFromGroups(groups)));
        for (std::size_t i = 0; i < 8; ++i) std::memcpy(lastRow - rowWords * (y + i), &pixels[i], 8);
    }
}

// VELMORIC_PORTABLE_MERGE set to anything holds the kernels back.
bool detectMatrixKernels() {
    if (std::getenv("VELMORIC_PORTABLE_MERGE")) return false;
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("gfni");
}

// Asked once; the answer does not change.
bool haveMatrixKernels() {
    static const bool have = detectMatrixKernels();
    return have;
}
#endif

}  // namespace

// The kernels take eight groups a step: four-plane rows of at least eight
// groups (the last step overlaps the one before), the others in whole steps.
void fourPlaneGroups(const std::uint8_t* src, std::uint8_t* dst, std::size_t groups) {
#if defined(VELMORIC_MATRIX_KERNELS)
    if (groups >= 8 && haveMatrixKernels()) return fourPlaneGroupsMatrix(src, dst, groups);
#endif
    fourPlaneGroupsPortable(src, dst, groups);
}

void twoPlaneGroups(const std::uint8_t* src, std::uint8_t* dst, std::size_t groups) {
#if defined(VELMORIC_MATRIX_KERNELS)
    if (groups % 8 == 0 && haveMatrixKernels()) return twoPlaneGroupsMatrix(src, dst, groups);
#endif
    twoPlaneGroupsPortable(src, dst, groups);
}

void columnGroups(const std::uint16_t* const planes[4], std::uint16_t* lastRow, std::size_t rowWords,
                  std::size_t lines) {
#if defined(VELMORIC_MATRIX_KERNELS)
    if (lines % 8 == 0 && haveMatrixKernels()) return columnGroupsMatrix(planes, lastRow, rowWords, lines);
#endif
    columnGroupsPortable(planes, lastRow, rowWords, lines);
}

}  // namespace velmoric::planar
