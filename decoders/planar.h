#pragma once
// Bit planes into 4-bit pixels, for every decoder of planar pictures.
//
// A group of 16 pixels is four plane words, each as it lies in the file:
// first the byte of pixels 0 to 7, leftmost pixel in bit 7, then the byte
// of pixels 8 to 15. In the bitmap the same pixels are 8 bytes of two
// nibbles each, the left pixel high, a nibble's bit p from plane p.
#include <cstddef>
#include <cstdint>

namespace velmoric::planar {

// Loaded as a little-endian 64-bit number, a group holds bit j of plane p
// at bit 16p + j; the bitmap bytes want it at bit 4 * (j XOR 6) + p. That
// is a rotation of the 6-bit bit index by two places, done as four swaps
// of index bits, followed by flipping index bits 3 and 4, which reverses
// the bytes within each 32-bit half. No lookups and no branches, so loops
// over groups vectorise.
struct DeltaSwap {
    unsigned shift;
    std::uint64_t mask;
};

// Swapping index bits a > b exchanges the bits at positions with (a, b) =
// (0, 1) and their partners 2^a - 2^b higher.
constexpr DeltaSwap indexBitSwap(unsigned a, unsigned b) {
    std::uint64_t mask = 0;
    for (unsigned i = 0; i < 64; ++i)
        if (((i >> b) & 1) && !((i >> a) & 1)) mask |= std::uint64_t(1) << i;
    return {(1u << a) - (1u << b), mask};
}

inline constexpr DeltaSwap kRotateByTwo[4] = {indexBitSwap(4, 2), indexBitSwap(2, 0), indexBitSwap(5, 3),
                                              indexBitSwap(3, 1)};

inline std::uint64_t planesToNibbles(std::uint64_t x) {
    for (const DeltaSwap& s : kRotateByTwo) {
        const std::uint64_t t = ((x >> s.shift) ^ x) & s.mask;
        x ^= t ^ (t << s.shift);
    }
    x = ((x >> 8) & 0x00FF00FF00FF00FFull) | ((x & 0x00FF00FF00FF00FFull) << 8);
    return ((x >> 16) & 0x0000FFFF0000FFFFull) | ((x & 0x0000FFFF0000FFFFull) << 16);
}

// Many groups at a time: by bit-matrix kernels where the processor has
// AVX-512BW and GFNI, else by planesToNibbles in loops the compiler
// vectorises. Both give the same bytes. VELMORIC_PORTABLE_MERGE set in the
// environment holds the kernels back, so the loops can be tested anywhere.
//
// `groups` groups of four plane words, 8 bytes each, into 8 bitmap bytes
// each.
void fourPlaneGroups(const std::uint8_t* src, std::uint8_t* dst, std::size_t groups);
// `groups` groups of two plane words, 4 bytes each; the missing planes
// count as 0.
void twoPlaneGroups(const std::uint8_t* src, std::uint8_t* dst, std::size_t groups);
// A column of groups whose planes lie in separate arrays, one word for
// each of `lines` lines. Line y's group goes to lastRow - rowWords * y.
void columnGroups(const std::uint16_t* const planes[4], std::uint16_t* lastRow, std::size_t rowWords,
                  std::size_t lines);

}  // namespace velmoric::planar
