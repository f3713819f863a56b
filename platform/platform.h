#pragma once
// The one interface between the viewer's core and the outside world. The core
// (decoders, the current picture, opening, layout, start-up and commands)
// calls nothing else; a Qt implementation drives real windows and a headless
// one keeps plain data for tests and batch use.
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/files.h"
#include "platform/folders.h"
#include "platform/picture.h"

namespace velmoric {

enum class Buttons { Ok, YesNo };
enum class Icon { None, Exclamation, Question, Information };
enum class Answer { Ok, Yes, No };

enum class WindowState { Normal = 0, Minimised = 1, Maximised = 2 };

// What the open dialog is asked to show.
struct FileSelector {
    int flags = 0;
    std::string filter;  // "Description|pattern;pattern|Description|pattern..."
    int filterIndex = 1;
    std::string title;
};

// What the save dialog is asked to show.
struct SaveDialogSettings {
    int flags = 0;  // 2 ask before overwriting, 4 hide the read-only box, 0x800 the path must exist
    std::string filter;
    int filterIndex = 1;
    std::string fileName;          // the name it starts with
    std::string defaultExtension;  // added to a name chosen without one
    std::string title;
};

// What the print dialog is asked to show.
struct PrintDialogSettings {
    int flags = 0;
    int orientation = 1;  // 1 portrait, 2 landscape
};

// Bytes that every file of a type holds at a fixed place.
struct ContentMatch {
    std::uint32_t offset;
    std::string bytes;
};
// The file association: which types the viewer opens and how it is started.
struct AssociationType {
    std::string extension;  // small letters, without dot: "neo"
    std::string mimeType;   // "image/x-neochrome"
    std::string comment;    // what the desktop calls a file of the type: "Neochrome picture"
    std::vector<ContentMatch> matches;  // any one tells the type by content; empty when only the name does
};
struct Association {
    std::string className;  // "velmoric"
    std::string comment;    // "Velmoric file"
    std::string command;    // program folder + "/velmoric %f"
    std::vector<AssociationType> types;
};

class Platform {
public:
    virtual ~Platform() = default;

    // ---- Files and process ----------------------------------------------
    virtual std::string programFolder() = 0;
    virtual std::string commandLine() = 0;
    // Where the temporary bitmap of an open lives, in a folder of this process
    // alone; throws PlatformError when that folder cannot be made.
    virtual std::string temporaryBitmapPath() = 0;
    virtual SourceData readSource(const std::string& path, std::size_t limit) = 0;
    // Creates the file anew, exclusively and never through a link.
    virtual void writeFile(const std::string& path, std::span<const std::uint8_t> bytes) = 0;
    virtual void deleteFile(const std::string& path) = 0;
    virtual void closeAllFiles() = 0;
    virtual Picture loadPicture(const std::string& path) = 0;

    // ---- User interface ---------------------------------------------------
    virtual Answer messageBox(const std::string& text, const std::string& title, Buttons buttons,
                              Icon icon) = 0;
    virtual void yield() = 0;
    virtual void repaint() = 0;
    // Runs the open dialog; leaves the chosen path in fileName(), or "" on cancel.
    virtual void runFileSelector(const FileSelector& settings) = 0;
    virtual std::string fileName() = 0;  // CMDialog1.FileName
    virtual void setFileName(const std::string& name) = 0;
    virtual Picture picture() = 0;  // Image1.Picture
    virtual void setPicture(const Picture& picture) = 0;
    virtual std::string caption() = 0;  // Label1.Caption
    virtual void setCaption(const std::string& text) = 0;
    // Top-level menus 0 to 3 of mfile, and Toolbar1.
    virtual void setMenuEnabled(int index, bool enabled) = 0;
    virtual void setToolbarEnabled(bool enabled) = 0;
    virtual void setTimerEnabled(bool enabled) = 0;  // Timer1
    virtual void showWindow() = 0;

    // ---- Slide show -----------------------------------------------------------
    // Form3, modal: the user picks a folder, which becomes the process's
    // current folder. "Start" sets `slideshowFlag` false; every other way
    // of closing leaves it.
    virtual void runSlideDialog(std::int16_t& slideshowFlag) = 0;
    // The normal files of the current folder, sorted bytewise by name.
    virtual files::FolderListing listFolder() = 0;
    // Seconds with a fraction from a fixed start; never goes back, whatever
    // the wall clock does.
    virtual double clock() = 0;
    // Lets waiting events run; when none is waiting, sleeps until one comes
    // or the clock reaches `deadline`.
    virtual void yieldUntil(double deadline) = 0;
    virtual void setWindowCaption(const std::string& text) = 0;  // Form1's caption

    // ---- Window measures: outer in twips, client and controls in pixels --
    virtual WindowState windowState() = 0;
    virtual int outerWidth() = 0;
    virtual int outerHeight() = 0;
    virtual void setOuterWidth(int twips) = 0;
    virtual void setOuterHeight(int twips) = 0;
    virtual int clientWidth() = 0;
    virtual int clientHeight() = 0;
    virtual int pixelsToTwips(int pixels) = 0;
    virtual int imageTop() = 0;
    virtual void setImageSize(int width, int height) = 0;
    virtual void setLabelWidth(int width) = 0;

    // ---- Output: save dialog, clipboard, printer ---------------------------
    // Runs the save dialog; leaves the chosen path in fileName(), or the
    // settings' file name when the user cancels.
    virtual void runSaveDialog(const SaveDialogSettings& settings) = 0;
    // Writes the picture's bitmap bytes to a file the user chose, in one
    // step: a failure leaves no damaged file under the name.
    virtual void savePicture(const Picture& picture, const std::string& path) = 0;
    virtual void clearClipboard() = 0;
    virtual void setClipboardPicture(const Picture& picture) = 0;
    // Runs the print dialog and keeps the printer chosen; false when the
    // user cancelled. Other failures throw.
    virtual bool runPrintDialog(const PrintDialogSettings& settings) = 0;
    // The page of that printer in its own units.
    virtual int printerWidth() = 0;
    virtual int printerHeight() = 0;
    // Draws the whole picture scaled into the rectangle, without smoothing.
    virtual void printPicture(const Picture& picture, int left, int top, double width, double height) = 0;
    // Ends the document, which sends the page.
    virtual void endDocument() = 0;

    // ---- Settings store ---------------------------------------------------
    virtual std::optional<std::string> readSetting(const std::string& app, const std::string& section,
                                                   const std::string& key) = 0;
    virtual void writeSetting(const std::string& app, const std::string& section, const std::string& key,
                              const std::string& value) = 0;

    // ---- File association (the registry's part) --------------------------
    // True when some program has already registered the extension.
    virtual bool extensionRegistered(const std::string& extension) = 0;
    virtual void registerAssociation(const Association& association) = 0;

    // ---- Hand-over of files between copies of the program ----------------
    // Whether a copy of this program already holds the hand-over channel. A
    // copy that finds none holds it from then on: of copies that ask at the
    // same moment exactly one finds none.
    virtual bool earlierCopy() = 0;
    // Hands a command text to the copy that holds the channel and waits a
    // bounded time for it to be taken; false when no copy took it.
    virtual bool sendCommand(const std::string& command) = 0;
    // The topic on which the window answers commands: "Form1" at first,
    // "cmdLine" for the copy that takes the files of later copies.
    virtual void setLinkTopic(const std::string& topic) = 0;
    // Where commands that arrive on the topic "cmdLine" go; they arrive as
    // events, also inside a yield.
    virtual void setCommandHandler(std::function<void(const std::string&)> handler) = 0;
    // Ends the process at once: no close of the window, no option written.
    virtual void endProcess() = 0;

    // The file part of a name in capitals, by the platform's rules for file
    // names and text.
    virtual std::string fileNameCapitals(const std::string& filePart) = 0;
    // In native mode every picture pixel of Image1 is the same whole number
    // of device pixels; otherwise the picture is stretched to the control.
    virtual void setImageNative(bool native) = 0;
};

// Joins a folder and a file name with the platform's separator.
std::string joinPath(const std::string& folder, const std::string& name);
inline constexpr char kPathSeparator =
#ifdef _WIN32
    '\\';
#else
    '/';
#endif

}  // namespace velmoric
