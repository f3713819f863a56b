#pragma once
// Colour cycling: the animation that Neochrome, Degas Elite and Tiny pictures
// keep in a few header bytes. A channel turns a range of palette entries one
// place every few ticks of 1/60 s; only the palette moves, never a pixel, and
// the picture at tick 0 is the decoded picture exactly.
#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "decoders/decoder.h"
#include "formats/formats.h"

namespace velmoric::cycles {

inline constexpr int kTicksPerSecond = 60;

// One period is cut off after this many distinct palettes: a few channels of
// unlike lengths and speeds can take hours to come round again.
inline constexpr std::size_t kMaxFrames = 256;

enum class Direction { left, right };

struct Channel {
    int left;             // first palette entry of the range
    int right;            // last palette entry, above left
    Direction direction;  // left: entry i takes the colour of entry i + 1
    int ticks;            // one step every `ticks` ticks, 1 or more
};

// A palette entry as a bitmap holds it: blue, green, red, 0.
using Colour = std::array<std::uint8_t, 4>;
using Palette = std::vector<Colour>;

struct Frame {
    Palette palette;
    int ticks;  // how long it shows
};

// What a picture plays: its channels in the order they apply, and the
// distinct palettes of one period. A picture without a playing channel has
// no channels and one frame, its own palette.
struct Animation {
    std::vector<Channel> channels;
    std::vector<Frame> frames;
    bool animated() const { return !channels.empty(); }
    // How long one period lasts in ticks.
    long long periodTicks() const;
};

// How many palette entries a picture of each kind refers to: 16, 4 or 2
// (0 for a kind without a palette that moves).
int coloursOfKind(int kind);

// The channels of a source that play on the picture its decoder gave, in
// the order they apply. Formats without cycles, and rejected sources, give
// none.
std::vector<Channel> readChannels(const Format& format, const Source& src, const Decoded& decoded);

// The palette a bitmap file holds (2 or 16 entries), and the same bitmap with
// another palette of that length put in.
Palette paletteOf(std::span<const std::uint8_t> bitmap);
void putPalette(std::span<std::uint8_t> bitmap, const Palette& palette);
// A palette as 0xRRGGBB, the way the image libraries take colours.
std::vector<std::uint32_t> rgbOf(const Palette& palette);

// The palette `tick` ticks after the start. At each tick the channels due
// then step in order, each on the palette the one before it left.
Palette paletteAt(const Palette& start, std::span<const Channel> channels, long long tick);

// The distinct palettes of one whole period in order, each with how long it
// shows, at most kMaxFrames.
std::vector<Frame> framesOfPeriod(const Palette& start, std::span<const Channel> channels);

// How long each frame shows in units of 1/unitsPerSecond s (100 for a GIF,
// 1000 for milliseconds): each frame lasts from its first tick's time,
// rounded, to the next one's, so the rounding never adds up over a period.
std::vector<int> delaysIn(std::span<const Frame> frames, int unitsPerSecond);

// Everything above for one decoded picture.
Animation animationOf(const Format& format, const Source& src, const Decoded& decoded);

}  // namespace velmoric::cycles
