#include "platform/headless.h"

#include <algorithm>

namespace velmoric {

Answer HeadlessPlatform::messageBox(const std::string& text, const std::string& title, Buttons buttons,
                                    Icon icon) {
    messages.push_back({text, title, buttons, icon});
    if (!answers.empty()) {
        const Answer a = answers.front();
        answers.pop_front();
        return a;
    }
    return buttons == Buttons::Ok ? Answer::Ok : Answer::No;
}

void HeadlessPlatform::yield() {
    ++yields;
    if (onYield) onYield();
}

void HeadlessPlatform::runFileSelector(const FileSelector& settings) {
    selectorRuns.push_back(settings);
    if (selectorAnswers.empty()) {
        fileNameText.clear();
        return;
    }
    fileNameText = selectorAnswers.front();
    selectorAnswers.pop_front();
}

void HeadlessPlatform::setMenuEnabled(int index, bool enabled) {
    if (index >= 0 && index < 4) menuEnabled[index] = enabled;
}

void HeadlessPlatform::setOuterWidth(int twips) {
    if (twips == outerW) return;
    outerW = twips;
    if (onResize) onResize();
}

void HeadlessPlatform::setOuterHeight(int twips) {
    if (twips == outerH) return;
    outerH = twips;
    if (onResize) onResize();
}

int HeadlessPlatform::clientWidth() { return std::max(0, outerW / 15 - frameW); }
int HeadlessPlatform::clientHeight() { return std::max(0, outerH / 15 - frameH); }

std::optional<std::string> HeadlessPlatform::readSetting(const std::string& app, const std::string& section,
                                                         const std::string& key) {
    auto it = settings.find(app + "/" + section + "/" + key);
    if (it == settings.end()) return std::nullopt;
    return it->second;
}

void HeadlessPlatform::writeSetting(const std::string& app, const std::string& section, const std::string& key,
                                    const std::string& value) {
    settings[app + "/" + section + "/" + key] = value;
    settingsWritten.push_back(key);
}

bool HeadlessPlatform::extensionRegistered(const std::string& extension) {
    return registeredExtensions.count(extension) != 0;
}

void HeadlessPlatform::registerAssociation(const Association& association) {
    associationsWritten.push_back(association);
    for (const auto& t : association.types) registeredExtensions.insert(t.extension);
}

bool HeadlessPlatform::allCommandsEnabled() const {
    return toolbarEnabled && std::all_of(std::begin(menuEnabled), std::end(menuEnabled), [](bool b) { return b; });
}

bool HeadlessPlatform::allCommandsDisabled() const {
    return !toolbarEnabled && std::none_of(std::begin(menuEnabled), std::end(menuEnabled), [](bool b) { return b; });
}

}  // namespace velmoric
