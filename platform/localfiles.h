#pragma once
// The file half of the platform, on the local file system. Both the Qt and
// the headless platform inherit it, so files behave the same in tests and in
// the viewer.
#include "platform/platform.h"

namespace velmoric {

class LocalFilesPlatform : public Platform {
public:
    std::string programFolder() override;
    std::string temporaryBitmapPath() override;
    SourceData readSource(const std::string& path, std::size_t limit) override;
    void writeFile(const std::string& path, std::span<const std::uint8_t> bytes) override;
    void deleteFile(const std::string& path) override;
    void closeAllFiles() override {}
    Picture loadPicture(const std::string& path) override;
    void savePicture(const Picture& picture, const std::string& path) override;
    files::FolderListing listFolder() override { return lister_.list(); }

    // Tests point the program folder elsewhere.
    void setProgramFolder(std::string folder) { programFolderOverride_ = std::move(folder); }

protected:
    // The command line as a copy that runs elsewhere must read it: a name
    // relative to this process's working folder goes over made absolute
    // against it; whatever follows the name is left as it stands.
    static std::string commandForEarlierCopy(const std::string& command);
    // The folder of this process alone that holds the temporary bitmap.
    const std::string& privateFolder() { return private_.path(); }

private:
    std::string programFolderOverride_;
    files::PrivateFolder private_;  // holds the temporary bitmap
    files::FolderLister lister_;
};

// The name of the temporary bitmap, in a folder of the running process alone:
// no other user can plant a link there, and two viewers never share it.
inline constexpr const char* kTemporaryBitmapName = "tmp~~~$$.BMP";

}  // namespace velmoric
