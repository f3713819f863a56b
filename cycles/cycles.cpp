#include "cycles/cycles.h"

#include <algorithm>
#include <numeric>

namespace velmoric::cycles {
namespace {

constexpr std::size_t kPaletteAt = 54;  // behind the two bitmap headers
constexpr std::size_t kBitsPerPixelAt = 28;
// Steps that leave the palette as it was (a range of one colour) still
// count here, so a period is also cut off after this many steps; no frame
// then shows longer than a minute.
constexpr long long kMaxSteps = 1 << 16;
constexpr long long kMaxFrameTicks = 60 * kTicksPerSecond;

// A channel as the file describes it, kept only if it plays on a picture of
// `colours` colours: a range that really is one, inside the colours the
// picture refers to, and a speed.
void keepIfPlaying(std::vector<Channel>& out, int colours, int left, int right, Direction direction, int ticks) {
    if (left < right && right < colours && ticks > 0) out.push_back({left, right, direction, ticks});
}

// Neochrome: "valid" in bit 15 of the word at 48, the range in its low byte;
// "on" in bit 15 of the word at 50, a signed speed in its low byte. Bits 8 to
// 14 of both carry junk in real files.
void readNeochrome(std::vector<Channel>& out, const Source& src, int colours) {
    const std::uint16_t range = src.bigEndian16(48), speed = src.bigEndian16(50);
    if (!(range & 0x8000) || !(speed & 0x8000)) return;
    const int step = std::int8_t(speed & 0xFF);
    keepIfPlaying(out, colours, (range >> 4) & 0xF, range & 0xF, step < 0 ? Direction::left : Direction::right,
                  std::abs(step));
}

// Degas Elite: four words of left ends, four of right ends, four of
// directions (0 left, 1 off, 2 right) and four delays kept as 128 - ticks.
void readDegasBlock(std::vector<Channel>& out, const Source& src, std::uint64_t at, int colours) {
    if (src.length < at + 32) return;
    const auto block = std::size_t(at);
    for (std::size_t c = 0; c < 4; ++c) {
        const int left = src.bigEndian16(block + 2 * c), right = src.bigEndian16(block + 8 + 2 * c);
        const int direction = src.bigEndian16(block + 16 + 2 * c);
        const int ticks = 128 - std::int16_t(src.bigEndian16(block + 24 + 2 * c));
        if (direction != 0 && direction != 2) continue;
        if (ticks < 1 || ticks > 128) continue;
        keepIfPlaying(out, colours, left, right, direction == 0 ? Direction::left : Direction::right, ticks);
    }
}

// Tiny: a first byte above 2 is followed by the range (left in the high
// half), a signed speed and a duration that is ignored: the cycle loops.
void readTiny(std::vector<Channel>& out, const Source& src, int colours) {
    if (src.byte(0) <= 2) return;
    const int range = src.byte(1), step = std::int8_t(src.byte(2));
    keepIfPlaying(out, colours, range >> 4, range & 0xF, step < 0 ? Direction::left : Direction::right,
                  std::abs(step));
}

void stepChannel(Palette& p, const Channel& c) {
    const auto first = p.begin() + c.left, last = p.begin() + c.right + 1;
    if (c.direction == Direction::left)
        std::rotate(first, first + 1, last);
    else
        std::rotate(first, last - 1, last);
}

// The tick of the next step of any channel after `tick`.
long long nextStep(std::span<const Channel> channels, long long tick) {
    long long next = -1;
    for (const Channel& c : channels) {
        const long long t = (tick / c.ticks + 1) * c.ticks;
        if (next < 0 || t < next) next = t;
    }
    return next;
}

void stepChannelsDueAt(Palette& p, std::span<const Channel> channels, long long tick) {
    for (const Channel& c : channels)
        if (tick % c.ticks == 0) stepChannel(p, c);
}

bool disjoint(std::span<const Channel> channels) {
    for (std::size_t i = 0; i < channels.size(); ++i)
        for (std::size_t j = i + 1; j < channels.size(); ++j)
            if (channels[i].left <= channels[j].right && channels[j].left <= channels[i].right) return false;
    return true;
}

// The ticks after which every channel has come round to where it started,
// were each to run alone; overlapping channels may need a multiple of it.
long long roundTicks(std::span<const Channel> channels) {
    long long l = 1;
    for (const Channel& c : channels) l = std::lcm(l, (long long)c.ticks * (c.right - c.left + 1));
    return l;
}

}  // namespace

long long Animation::periodTicks() const {
    long long total = 0;
    for (const Frame& f : frames) total += f.ticks;
    return total;
}

int coloursOfKind(int kind) { return kind == 1 ? 16 : kind == 2 ? 4 : kind == 3 ? 2 : 0; }

std::vector<Channel> readChannels(const Format& format, const Source& src, const Decoded& decoded) {
    std::vector<Channel> out;
    if (decoded.rejected) return out;
    const int colours = coloursOfKind(decoded.kind);
    switch (format.cycles) {
        case CycleStore::none: break;
        case CycleStore::neochrome: readNeochrome(out, src, colours); break;
        case CycleStore::degasElite:
            if (src.length >= 32066) readDegasBlock(out, src, 32034, colours);
            break;
        case CycleStore::degasCompressed: readDegasBlock(out, src, decoded.sourceEnd, colours); break;
        case CycleStore::tiny: readTiny(out, src, colours); break;
    }
    return out;
}

std::vector<std::uint32_t> rgbOf(const Palette& palette) {
    std::vector<std::uint32_t> out;
    for (const Colour& c : palette) out.push_back(std::uint32_t(c[2]) << 16 | std::uint32_t(c[1]) << 8 | c[0]);
    return out;
}

Palette paletteOf(std::span<const std::uint8_t> bitmap) {
    if (bitmap.size() <= kBitsPerPixelAt) return {};
    const std::size_t entries = std::size_t(1) << std::min<int>(bitmap[kBitsPerPixelAt], 8);
    if (bitmap[kBitsPerPixelAt] > 8 || bitmap.size() < kPaletteAt + 4 * entries) return {};
    Palette p(entries);
    for (std::size_t i = 0; i < entries; ++i) std::copy_n(bitmap.begin() + kPaletteAt + 4 * i, 4, p[i].begin());
    return p;
}

void putPalette(std::span<std::uint8_t> bitmap, const Palette& palette) {
    for (std::size_t i = 0; i < palette.size() && kPaletteAt + 4 * i + 4 <= bitmap.size(); ++i)
        std::copy(palette[i].begin(), palette[i].end(), bitmap.begin() + kPaletteAt + 4 * i);
}

Palette paletteAt(const Palette& start, std::span<const Channel> channels, long long tick) {
    Palette p = start;
    if (channels.empty()) return p;
    // Channels that share no entry are all back where they began after a
    // whole round; overlapping ones are followed step by step from the start.
    if (disjoint(channels)) tick %= roundTicks(channels);
    for (long long t = nextStep(channels, 0); t <= tick; t = nextStep(channels, t)) stepChannelsDueAt(p, channels, t);
    return p;
}

std::vector<Frame> framesOfPeriod(const Palette& start, std::span<const Channel> channels) {
    std::vector<Frame> frames{{start, 0}};
    if (channels.empty()) {
        frames.back().ticks = 1;
        return frames;
    }
    const long long round = roundTicks(channels);
    Palette p = start;
    long long shown = 0;  // the tick the last frame began
    long long steps = 0;
    for (long long t = nextStep(channels, 0);; t = nextStep(channels, t)) {
        stepChannelsDueAt(p, channels, t);
        const bool home = t % round == 0 && p == start;
        const bool cut = ++steps == kMaxSteps;
        if (home || cut || p != frames.back().palette) {
            frames.back().ticks = int(std::min<long long>(t - shown, kMaxFrameTicks));
            if (home || cut || frames.size() == kMaxFrames) break;
            frames.push_back({p, 0});
            shown = t;
        }
    }
    return frames;
}

std::vector<int> delaysIn(std::span<const Frame> frames, int unitsPerSecond) {
    const auto unitsAt = [&](long long tick) { return (tick * unitsPerSecond + kTicksPerSecond / 2) / kTicksPerSecond; };
    std::vector<int> delays;
    long long tick = 0;
    for (const Frame& f : frames) {
        delays.push_back(int(unitsAt(tick + f.ticks) - unitsAt(tick)));
        tick += f.ticks;
    }
    return delays;
}

Animation animationOf(const Format& format, const Source& src, const Decoded& decoded) {
    Animation a;
    if (decoded.rejected) return a;
    a.channels = readChannels(format, src, decoded);
    a.frames = framesOfPeriod(paletteOf(decoded.bitmap), a.channels);
    return a;
}

}  // namespace velmoric::cycles
