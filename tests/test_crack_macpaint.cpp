// Crack Art: a packed stream lays the same screen as the unpacked form of
// the file, at every resolution. What a short Crack Art or MacPaint file
// reads behind its end is tested with the other decoders in test_staging.
#include <array>
#include <tuple>

#include "support.h"

using vtest::Bytes;

namespace {

// "CA", the compression byte, a resolution byte and the palette bytes up
// to where the pixels or the packing fields begin, then `body`.
Bytes crackFile(std::size_t bodyAt, std::uint8_t compression, const Bytes& body) {
    Bytes file = {'C', 'A', compression, 0};
    file.resize(bodyAt, 0x12);
    file.insert(file.end(), body.begin(), body.end());
    return file;
}

constexpr std::uint8_t E = 0xE5, I = 0x3C;

TEST(Crack, PackedStreamsLayTheScreenOfTheUnpackedFile) {
    using Stored = std::array<std::size_t, 4>;  // first position, count, step, value; the rest keeps I
    // A name; escape, initial byte, offset and stream; the bytes stored.
    const std::tuple<const char*, Bytes, std::vector<Stored>> cases[] = {
        {"each command", {E, I, 0, 1, 5, E, E, E, 0, 2, 9, E, 1, 0, 1, 8, E, 3, 7, E, 2, 0},
         {{0, 1, 1, 5}, {1, 1, 1, E}, {2, 3, 1, 9}, {5, 2, 1, 8}, {7, 4, 1, 7}}},
        {"escape 0: 0,0 is a literal", {0, I, 0, 1, 0, 0, 0, 3, 4, 0, 2, 0}, {{0, 1, 1, 0}, {1, 4, 1, 4}}},
        {"a skip into the next pass", {E, I, 0, 160, E, 2, 1, 0, 5, E, 2, 0}, {{1 + 57 * 160, 1, 1, 5}}},
        {"top bit; run into next pass", {E, I, 0x80, 0xA0, E, 0, 200, 5, E, 2, 0}, {{0, 200, 160, 5}, {1, 1, 1, 5}}},
        {"the last pass ends a run", {E, I, 0, 2, E, 1, 0x7C, 0xFE, 7, E, 0, 4, 9},
         {{0, 16000, 2, 7}, {1, 15999, 2, 7}, {31999, 1, 1, 9}}},
        {"a skip ends the picture", {E, I, 0, 1, E, 1, 0x7C, 0xFE, 7, E, 2, 1, 0, 3, 3}, {{0, 31999, 1, 7}}},
        {"stride 32767: a byte a pass", {E, I, 0x7F, 0xFF, 1, 2, E, 2, 0}, {{0, 1, 1, 1}, {1, 1, 1, 2}}}};
    for (const auto& [name, fields, stored] : cases) {
        Bytes screen(32000, I);
        for (const auto& [first, count, step, value] : stored)
            for (std::size_t i = 0; i < count; ++i) screen[first + i * step] = std::uint8_t(value);
        // Where the file's pixels or packing fields begin, and the bitmap's pixels: a CA2's
        // bitmap has 12 palette entries more, read from what follows its four colours.
        for (const auto& [ext, bodyAt, pixelsAt] : {std::tuple{"CA1", 36, 118}, {"CA2", 12, 118}, {"CA3", 4, 62}}) {
            const Bytes a = vtest::decodeFresh(crackFile(bodyAt, 0, screen), ext);
            const Bytes b = vtest::decodeFresh(crackFile(bodyAt, 1, fields), ext);
            EXPECT_EQ(Bytes(a.begin() + pixelsAt, a.end()), Bytes(b.begin() + pixelsAt, b.end()))
                << ext << ": " << name;
        }
    }
}

// The packed picture starts at 512 only when header bytes 1 and 2 are both
// 0. From 512 the file gives runs of C1 first; from 640 only runs of 00. The
// bitmap ends with the complement of the top row's first bytes.
TEST(MacPaint, ThePictureStartsAt640WhenEitherHeaderByteIsNotZero) {
    for (const auto& [one, two] : {std::pair{0, 0}, {0, 7}, {7, 0}, {7, 7}}) {
        Bytes file(512, 0);
        file[1] = std::uint8_t(one), file[2] = std::uint8_t(two);
        file.insert(file.end(), 128, 0xC1);
        for (int run = 0; run < 405; ++run) file.insert(file.end(), {0x81, 0x00});
        EXPECT_EQ(vtest::decodeFresh(file, "MAC").back(), one == 0 && two == 0 ? 0x3E : 0xFF) << one << " " << two;
    }
}

}  // namespace
