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

HeadlessPlatform::~HeadlessPlatform() {
    // A process that ends leaves the channel free, however it ends.
    if (bus && bus->owner == this) bus->owner = nullptr;
}

void HeadlessPlatform::yield() {
    ++yields;
    runEvents();
    if (onYield) onYield();
}

void HeadlessPlatform::runSlideDialog(std::int16_t& slideshowFlag) {
    ++slideDialogs;
    const std::string folder = slideFolders.empty() ? std::string() : slideFolders.front();
    if (!slideFolders.empty()) slideFolders.pop_front();
    if (folder.empty()) return;
    files::changeFolder(folder);
    slideshowFlag = 0;
}

void HeadlessPlatform::yieldUntil(double deadline) {
    deadlines.push_back(deadline);
    yield();
    clockNow = std::max(clockNow, deadline);
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

void HeadlessPlatform::runSaveDialog(const SaveDialogSettings& settings) {
    saveRuns.push_back(settings);
    fileNameText = settings.fileName;
    if (saveAnswers.empty()) return;
    fileNameText = saveAnswers.front();
    saveAnswers.pop_front();
}

bool HeadlessPlatform::runPrintDialog(const PrintDialogSettings& settings) {
    printRuns.push_back(settings);
    if (!printFailure.empty()) throw PlatformError("printer", printFailure);
    return !printCancels;
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

bool HeadlessPlatform::earlierCopy() {
    if (!bus) return false;
    if (bus->owner && bus->owner != this) return true;
    bus->owner = this;
    return false;
}

bool HeadlessPlatform::sendCommand(const std::string& command) {
    sent.push_back(commandForEarlierCopy(command));
    HeadlessPlatform* owner = bus ? bus->owner : nullptr;
    if (!owner || owner == this || !owner->answering || owner->linkTopic != "cmdLine") return false;
    owner->incoming.push_back(sent.back());
    return true;
}

void HeadlessPlatform::setLinkTopic(const std::string& topic) {
    linkTopic = topic;
    if (topic == "cmdLine" && bus && !bus->owner) bus->owner = this;
}

void HeadlessPlatform::runEvents() {
    while (!incoming.empty()) {
        const std::string command = incoming.front();
        incoming.pop_front();
        if (commandHandler_) commandHandler_(command);
    }
}

std::string HeadlessPlatform::fileNameCapitals(const std::string& filePart) {
    std::string capitals = filePart;
    for (char& c : capitals)
        if (c >= 'a' && c <= 'z') c = char(c - 'a' + 'A');
    return capitals;
}

bool HeadlessPlatform::allCommandsEnabled() const {
    return toolbarEnabled && std::all_of(std::begin(menuEnabled), std::end(menuEnabled), [](bool b) { return b; });
}

bool HeadlessPlatform::allCommandsDisabled() const {
    return !toolbarEnabled && std::none_of(std::begin(menuEnabled), std::end(menuEnabled), [](bool b) { return b; });
}

}  // namespace velmoric
