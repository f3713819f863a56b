// velmoric-desktop-files OUTDIR: writes, from the table of formats, the files
// the build installs for the desktop (under OUTDIR/data, laid out as below the
// data folder) and the Qt plugin's metadata (OUTDIR/velmoric.json).
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include "desktop/desktopfiles.h"
#include "desktop/icon.h"
#include "platform/xdg_association.h"

namespace fs = std::filesystem;
using namespace velmoric;

namespace {

void write(const fs::path& path, std::string_view text) {
    fs::create_directories(path.parent_path());
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(text.data(), std::streamsize(text.size()));
    if (!out.flush()) throw std::runtime_error(path.string() + ": cannot write");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: velmoric-desktop-files OUTDIR\n";
        return 2;
    }
    try {
        const fs::path out = argv[1], data = out / "data";
        const std::string id = xdg::kApplicationId;
        write(data / "mime/packages/velmoric.xml", desktop::installedMimePackage());
        write(data / "applications" / (id + ".desktop"), desktop::installedDesktopEntry());
        write(data / "thumbnailers/velmoric.thumbnailer", desktop::thumbnailerEntry());
        for (int size : {16, 32, 48, 128, 256}) {
            const auto png = desktop::encodeRgbaPng(desktop::drawIcon(size));
            const std::string folder = std::to_string(size) + "x" + std::to_string(size);
            write(data / "icons/hicolor" / folder / "apps" / (id + ".png"),
                  std::string_view(reinterpret_cast<const char*>(png.data()), png.size()));
        }
        write(out / "velmoric.json", desktop::qtPluginMetadata());
    } catch (const std::exception& e) {
        std::cerr << "velmoric-desktop-files: " << e.what() << "\n";
        return 1;
    }
    return 0;
}
