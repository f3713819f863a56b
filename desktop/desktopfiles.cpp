#include "desktop/desktopfiles.h"

#include "options/association.h"
#include "platform/xdg_association.h"
#include "formats/formats.h"

namespace velmoric::desktop {
namespace {

Association installedAssociation() {
    Association a = buildAssociation("");
    a.command = "velmoric %f";
    return a;
}

std::string jsonList(std::string_view Format::*field) {
    std::string out = "[";
    for (const Format& f : formatTable()) {
        if (out.size() > 1) out += ", ";
        out += "\"" + std::string(f.*field) + "\"";
    }
    return out + "]";
}

}  // namespace

std::string installedMimePackage() { return xdg::mimePackageText(installedAssociation()); }

std::string installedDesktopEntry() { return xdg::desktopEntryText(installedAssociation()); }

std::string qtPluginMetadata() {
    return "{\n  \"Keys\": " + jsonList(&Format::lower) + ",\n  \"MimeTypes\": " + jsonList(&Format::mimeType) +
           "\n}\n";
}

std::string thumbnailerEntry() {
    std::string types;
    for (const Format& f : formatTable()) types += std::string(f.mimeType) + ";";
    // %i is the local path of the file, %o where the PNG goes, %s its largest side.
    return "[Thumbnailer Entry]\n"
           "TryExec=" + std::string(kThumbnailerProgram) + "\n"
           "Exec=" + kThumbnailerProgram + " -s %s %i %o\n"
           "MimeType=" + types + "\n";
}

}  // namespace velmoric::desktop
