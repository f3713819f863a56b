#pragma once
// The seven persistent options and their store. The table below is the one
// place that names them, their defaults and their order.
#include <array>
#include <cstdint>
#include <string_view>

namespace velmoric {

class Platform;

struct Options {
    std::int16_t delay = 0;
    std::int16_t save = 0;
    std::int16_t size = 0;
    std::int16_t repeat = 0;
    std::int16_t slideshowFlag = 0;  // not an option: "no show is to run" while true; never stored
    std::int16_t orientation = 0;
    std::int16_t printscale = 0;
    std::int16_t single = 0;
};

struct OptionKey {
    std::string_view key;
    std::int16_t Options::*member;
    std::int16_t fallback;
};

// Read and written in this order.
inline constexpr std::array<OptionKey, 7> kOptionKeys = {{
    {"delay", &Options::delay, 2},
    {"save", &Options::save, 0},
    {"size", &Options::size, 0},
    {"repeat", &Options::repeat, 1},
    {"orientation", &Options::orientation, 1},
    {"printscale", &Options::printscale, 100},
    {"single", &Options::single, 0},
}};

inline constexpr std::string_view kSettingsApp = "velmoric";
inline constexpr std::string_view kSettingsSection = "options";

// A stored text counts only when it is a decimal number that fits 16 bits;
// anything else reads as missing.
bool parseOptionValue(std::string_view text, std::int16_t& value);

void readOptions(Platform& platform, Options& options);
void writeOptions(Platform& platform, const Options& options);

}  // namespace velmoric
