#pragma once
// The file association as the Linux desktop keeps it: a shared-mime-info
// package that names the types, a desktop entry that opens them, and the
// user's default-application lines. Plain C++ and POSIX, no Qt, so that the
// pieces can be tested without a screen.
#include <string>
#include <string_view>
#include <vector>

#include "platform/platform.h"

namespace velmoric::xdg {

// The desktop's name for the viewer: the desktop entry is <id>.desktop and
// its icon is <id> in the icon theme, as installed and as the first run writes them.
inline constexpr const char* kApplicationId = "org.velmoric.Velmoric";

// True when a glob "*.<extension>" is known to the user's or the system's MIME database.
bool globKnown(const std::string& extension);
// Writes the MIME package, the desktop entry and the default-application lines, then runs the update tools.
void writeAssociation(const Association& association);

// ---- The pieces behind the two calls above ---------------------------------

// The base folders of the desktop, from XDG_DATA_HOME, XDG_DATA_DIRS and
// XDG_CONFIG_HOME with their usual defaults. A value that is not an absolute
// path is ignored, as the desktop itself ignores it.
struct Folders {
    std::string dataHome;               // the user's: ~/.local/share
    std::vector<std::string> dataDirs;  // the system's: /usr/local/share, /usr/share
    std::string configHome;             // ~/.config
};
Folders foldersFromEnvironment();

// True when a line of a globs2 text ("weight:type:glob[:flags]") has the
// glob "*.<extension>", in any case.
bool globsTextHas(std::string_view globs2, std::string_view extension);
// True when a MIME package text has a glob pattern "*.<extension>", in any case.
bool packageTextHas(std::string_view xml, std::string_view extension);
// The same tests over the mime/globs2 file of the user's folder and of every
// system folder, and over the packages in the user's mime/packages.
bool globKnownIn(const Folders& folders, std::string_view extension);

// The whole text of <className>.xml: one MIME type for each extension.
std::string mimePackageText(const Association& association);
// The whole text of <kApplicationId>.desktop.
std::string desktopEntryText(const Association& association);
// The Exec value for a command "program %f": the program quoted where the
// desktop's rules ask for it, a literal % doubled.
std::string execValue(const std::string& command);
// The text of mimeapps.list after making the viewer the default for every
// type of the association; every other line and group stays as it was.
std::string mergedMimeApps(std::string_view existing, const Association& association);

// Where writeAssociation puts its three files.
std::string mimePackagePath(const Folders& folders, const Association& association);
std::string desktopEntryPath(const Folders& folders, const Association& association);
std::string mimeAppsPath(const Folders& folders);

// Writes the three files, without running any tool.
void writeAssociationFiles(const Folders& folders, const Association& association);
// Runs update-mime-database and update-desktop-database on the user's folders
// where they are installed; their results are not looked at.
void runUpdateTools(const Folders& folders);

// Replaces a file's content in one step: a crash leaves the old file or the
// new one, never half of it. Creates missing folders; follows a symbolic link
// to the file it names. Throws PlatformError.
void replaceFile(const std::string& path, std::string_view text);
// The full path of an executable program found on PATH, or "" when there is none.
std::string findOnPath(const std::string& program);

}  // namespace velmoric::xdg
