#include "options/options.h"

#include <charconv>
#include <string>

#include "platform/platform.h"

namespace velmoric {

bool parseOptionValue(std::string_view text, std::int16_t& value) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    if (text.empty()) return false;
    int parsed = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), parsed);
    if (ec != std::errc() || end != text.data() + text.size() || parsed < -32768 || parsed > 32767) return false;
    value = std::int16_t(parsed);
    return true;
}

void readOptions(Platform& platform, Options& options) {
    for (const OptionKey& k : kOptionKeys) {
        std::int16_t v = k.fallback;
        if (auto text = platform.readSetting(std::string(kSettingsApp), std::string(kSettingsSection), std::string(k.key)))
            if (!parseOptionValue(*text, v)) v = k.fallback;
        options.*k.member = v;
    }
}

void writeOptions(Platform& platform, const Options& options) {
    for (const OptionKey& k : kOptionKeys)
        platform.writeSetting(std::string(kSettingsApp), std::string(kSettingsSection), std::string(k.key),
                              std::to_string(options.*k.member));
}

}  // namespace velmoric
