#pragma once
// The slide show: the user picks a folder in Form3, and every picture file
// in it is shown in turn for `delay` seconds, from the first name to the
// last and again while `repeat` is 1, until a click on the picture stops
// it. One routine on the one thread: it yields once per file and sleeps in
// the event loop while a picture is on show, looking at the stop flag after
// every event.
#include <cstdint>
#include <functional>

#include "options/options.h"
#include "platform/platform.h"
#include "formats/formats.h"

namespace velmoric::tools {

inline constexpr const char* kShowCaption = "Slide show. Click on picture to stop.";
// The main window's own caption, back at the end of a show.
inline constexpr const char* kWindowCaption = "Velmoric Picture Viewer.";
inline constexpr const char* kNoPicturesText = "There are no Atari picture files in this directory.";
inline constexpr const char* kShowFileErrorText =
    "Sorry a file error has occured.\nProbably an incorrect file type or invalid picture file.";

// The main window as the show drives it: its state (flags are -1 for true
// and 0 for false) and the steps of an open that it shares.
struct ShowWindow {
    Platform& ui;
    Options& options;  // delay, repeat and the slide-show flag
    std::int16_t& kind;
    std::int16_t& saved;
    std::int16_t& nopicture;
    std::int16_t& badfile;
    std::int16_t& stop;  // false while the show runs; a click sets it true
    std::function<void()> menusoff;
    std::function<void()> menuson;
    std::function<void()> layout;  // Form_Resize
    // The decoder on the file named in CMDialog1.FileName: the temporary
    // bitmap, Label1 and the kind, or the bad-file flag.
    std::function<void(const Format&)> decode;
};

// Returns when the show has ended, or at once after "Cancel" or a folder
// without picture files.
void slideshow(ShowWindow& window);

}  // namespace velmoric::tools
