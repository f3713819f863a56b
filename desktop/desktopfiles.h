#pragma once
// The files that tell the desktop about the formats, all made from the one
// table of formats: the MIME package, the desktop entry, the metadata of the
// Qt image plugin and the thumbnailer entry. The build writes them with
// velmoric-desktop-files; the first run of the viewer writes the first two
// with the same functions.
#include <string>

namespace velmoric::desktop {

// The program the thumbnailer entry starts, and the name of the entry.
inline constexpr const char* kThumbnailerProgram = "velmoric-thumbnailer";

// MIME package and desktop entry as installed: the entry starts `velmoric` from PATH.
std::string installedMimePackage();
std::string installedDesktopEntry();
// {"Keys": [...], "MimeTypes": [...]}: one key, the extension in small
// letters as Qt asks for it, and one type for each row.
std::string qtPluginMetadata();
// A freedesktop [Thumbnailer Entry] for every type.
std::string thumbnailerEntry();

}  // namespace velmoric::desktop
