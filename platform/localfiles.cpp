#include "platform/localfiles.h"

#include <filesystem>
#include <stdexcept>

namespace velmoric {

std::string joinPath(const std::string& folder, const std::string& name) {
    if (!folder.empty() && folder.back() == kPathSeparator) return folder + name;
    return folder + kPathSeparator + name;
}

std::string LocalFilesPlatform::programFolder() {
    return programFolderOverride_.empty() ? files::programFolder() : programFolderOverride_;
}

std::string LocalFilesPlatform::commandForEarlierCopy(const std::string& command) {
    if (command.empty() || command.front() == kPathSeparator) return command;
    std::error_code ec;
    const std::string folder = std::filesystem::current_path(ec).string();
    return ec ? command : joinPath(folder, command);
}

std::string LocalFilesPlatform::temporaryBitmapPath() { return joinPath(private_.path(), kTemporaryBitmapName); }

SourceData LocalFilesPlatform::readSource(const std::string& path, std::size_t limit) {
    return files::readSource(path, limit);
}

void LocalFilesPlatform::writeFile(const std::string& path, std::span<const std::uint8_t> bytes) {
    files::writeNew(path, bytes);
}

void LocalFilesPlatform::deleteFile(const std::string& path) { files::remove(path); }

// Far above the largest bitmap a decoder writes (192 KB).
constexpr std::size_t kBitmapLimit = 1 << 20;

Picture LocalFilesPlatform::loadPicture(const std::string& path) {
    try {
        return Picture::fromBitmapBytes(files::readWhole(path, kBitmapLimit));
    } catch (const std::invalid_argument& e) {
        throw PlatformError(path, std::string("cannot load picture: ") + e.what());
    }
}

// The bytes the picture was loaded from: a 16-colour picture stays a 4-bit
// bitmap, and an inverted one leaves inverted.
void LocalFilesPlatform::savePicture(const Picture& picture, const std::string& path) {
    if (picture.empty()) throw PlatformError(path, "there is no picture to save");
    files::replaceAtomically(path, picture.bytes());
}

}  // namespace velmoric
