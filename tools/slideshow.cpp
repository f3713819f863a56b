#include "tools/slideshow.h"

#include <algorithm>
#include <exception>

#include "tools/errorbox.h"

namespace velmoric::tools {
namespace {

constexpr std::int16_t kTrue = -1;
constexpr std::int16_t kFalse = 0;

// A picture file is a name with a row in the dispatch table.
bool isPicture(const std::string& name) { return findFormat(extensionOf(name)) != nullptr; }

// The dialog, then a look for one picture file before anything is shown.
// False when there is nothing to show.
bool chooseFolder(ShowWindow& w) {
    w.options.slideshowFlag = kTrue;
    w.ui.runSlideDialog(w.options.slideshowFlag);
    if (w.options.slideshowFlag != kFalse) return false;
    const files::FolderListing names = w.ui.listFolder();
    if (std::any_of(names->begin(), names->end(), isPicture)) return true;
    w.ui.messageBox(kNoPicturesText, "No Pictures.", Buttons::Ok, Icon::Exclamation);
    return false;
}

void deleteQuietly(Platform& ui, const std::string& path) {
    // A temporary file that will not go now goes with the private folder
    // when the program ends.
    try {
        ui.deleteFile(path);
    } catch (const std::exception&) {
    }
}

// The decoded picture on show, as an open shows it. On a failure the kind
// and Label1 go back to the picture still on show, and the error goes on.
void showDecoded(ShowWindow& w, const std::string& name, std::int16_t kindBefore, const std::string& captionBefore) {
    Platform& ui = w.ui;
    const std::string temporary = ui.temporaryBitmapPath();
    bool laidOut = false;
    try {
        w.layout();
        laidOut = true;
        ui.setPicture(ui.loadPicture(temporary));
        ui.closeAllFiles();
    } catch (const std::exception&) {
        ui.closeAllFiles();
        deleteQuietly(ui, temporary);
        w.kind = kindBefore;
        ui.setCaption(captionBefore);
        if (laidOut) w.layout();
        throw;
    }
    deleteQuietly(ui, temporary);
    // The name has no folder part: the show reads from the current folder.
    ui.setCaption(ui.fileNameCapitals(name) + " " + ui.caption());
}

// One file of the show. False when the show ends here.
bool showFile(ShowWindow& w, const std::string& name) {
    Platform& ui = w.ui;
    const std::int16_t kindBefore = w.kind;
    const std::string captionBefore = ui.caption();
    w.badfile = kFalse;
    ui.setFileName(name);
    const Format* format = findFormat(extensionOf(name));
    if (format) w.decode(*format);
    ui.setWindowCaption(kShowCaption);
    ui.yield();
    if (!format) return w.stop == kFalse;  // no time is spent on other files
    if (w.badfile != kFalse) {
        ui.messageBox(kShowFileErrorText, "Error.", Buttons::Ok, Icon::Exclamation);
        return false;
    }
    showDecoded(w, name, kindBefore, captionBefore);
    // Asleep in the event loop until an event or the end of the wait; the
    // stop flag is looked at after every wake-up.
    const double end = ui.clock() + w.options.delay;
    do {
        ui.yieldUntil(end);
        if (w.stop != kFalse) return false;
    } while (ui.clock() < end);
    w.saved = kFalse;
    w.nopicture = kFalse;
    return true;
}

// Pass after pass over the folder's files in the order of their names. The
// next name is the one after the current name in the listing as it stands
// now, so files that come or go during the show count from the next file on.
void runPasses(ShowWindow& w) {
    do {
        files::FolderListing names = w.ui.listFolder();
        if (names->empty()) return;
        std::string current = names->front();
        for (;;) {
            if (!showFile(w, current)) return;
            names = w.ui.listFolder();
            auto at = std::lower_bound(names->begin(), names->end(), current);
            if (at == names->end() || *at != current)
                throw PlatformError(current, "the file has left the folder during the slide show");
            if (++at == names->end()) break;
            current = *at;
        }
    } while (w.options.repeat == 1);
}

}  // namespace

void slideshow(ShowWindow& w) {
    bool running = false;
    try {
        w.menusoff();
        if (chooseFolder(w)) {
            w.stop = kFalse;  // the main window refuses to close from here on
            running = true;
            runPasses(w);
        }
    } catch (const std::exception& e) {
        showErrorBox(w.ui, e.what());
    }
    // The one end of every show, however it ended; the picture on show, its
    // caption and the chosen folder stay.
    if (running) {
        w.ui.setWindowCaption(kWindowCaption);
        w.stop = kTrue;
    }
    w.menuson();
}

}  // namespace velmoric::tools
