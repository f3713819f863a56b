#pragma once
// The core of the main window: the current picture, the road from a file
// name to a picture on show, the switch of the commands, start-up, layout,
// commands and quitting. The Qt window holds one Viewer and forwards its
// events here; tests drive it with the headless platform.
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "cycles/cycles.h"
#include "decoders/staging.h"
#include "options/options.h"
#include "platform/platform.h"
#include "formats/formats.h"
#include "shell/opening.h"
#include "tools/errorbox.h"

namespace velmoric {

inline constexpr std::int16_t kTrue = -1;
inline constexpr std::int16_t kFalse = 0;

inline constexpr const char* kAppCaption = "Velmoric Picture Viewer.";
inline constexpr const char* kOpenFilter =
    "Atari Pictures|*.NEO;*.PI?;*.PC?;*.TN?;*.SPU;*.SPC;*.SPS;*.CA?;*.MAC|Neochrome Files (*.NEO)|*.NEO|"
    "Degas Files (*.PI?)|*.PI?|Degas Compressed (*.PC?)|*.PC?|Spectrum (*.SPU)|*.SPU|"
    "Spectrum Compressed (*.SPC)|*.SPC|Spectrum Smooshed (*.SPS)|*.SPS|Crack Art (*.CA?)|*.CA?|"
    "Mac Paint (*.MAC)|*.MAC";

// The name the command line gives: the last dot at position 9 or higher and
// the three characters behind it end the name.
std::string commandLineName(const std::string& cmd);

class Viewer {
public:
    explicit Viewer(Platform& platform);
    ~Viewer();
    Viewer(const Viewer&) = delete;
    Viewer& operator=(const Viewer&) = delete;

    Platform& ui;
    std::unique_ptr<Staging> staging;  // large: kept off the stack
    Options options;                   // the option variables

    // State of the current picture; flags are -1 for true and 0 for false.
    std::int16_t kind = 0;
    std::int16_t saved = 0;
    std::int16_t nopicture = 0;
    std::int16_t badfile = 0;
    std::int16_t stop = 0;
    std::int16_t openmode = 0;

    // The colour cycles of the picture on show, read when it was decoded;
    // none after an inversion. The window plays them only when asked.
    cycles::Animation animation;

    // Start-up: first-run question, options, tables, state.
    void Form_Load();
    // The first tick of Timer1: hand the command line to an earlier copy and
    // end, or take the hand-over topic, show the window and open the file.
    void Timer1_Timer();
    // A command text from a later copy: the name of a file to open as it stands.
    void Form_LinkExecute(const std::string& command);
    // A drag over Image1: the effect allowed, copy (1) for a list of files
    // and none (0) for anything else.
    static int Image1_OLEDragOver(bool filesOnOffer, int effect) { return filesOnOffer ? (effect & 1) : 0; }
    // A drop on Image1: opens the first file of the list; an empty list is
    // no list of files.
    void Image1_OLEDragDrop(const std::vector<std::string>& files);
    void openpic();
    void menusoff();
    void menuson();
    void Image1_Click() { stop = kTrue; }
    void Form_Resize();
    // Returns true when the close is refused.
    bool Form_QueryUnload();

    // Commands by menu index or toolbar key; indexes and keys without a
    // command do nothing.
    void fmenu_Click(int index);
    void medit_Click(int index);
    void mhelp_Click(int index);
    void mclip_Click() { copypic(); }
    void toolbarClick(const std::string& key);
    void showAbout();
    // What is done with the picture on show.
    void savepic();
    void printpic();
    void copypic();
    void monoinvert();
    // The slide show over a folder chosen in Form3; returns when it has ended.
    void slideshow();

    // Set by the window to carry out what the core cannot do alone: unload
    // the main window, show the options dialog, show the help window
    // modally. Null means not available.
    std::function<void()> unloadRequest;
    std::function<void()> optionsDialog;
    std::function<void()> helpDialog;
    // Stops the play of colour cycles and shows the decoded picture again.
    // Every command calls it first, so that it works on that picture.
    std::function<void()> stopCycles;

private:
    // Reads the source, runs the decoder and leaves the bitmap in the
    // temporary file, the caption in Label1 and the kind; or sets badfile.
    void runDecoder(const Format& format);
    void showErrorBox(const std::string& systemText);
    void stopPlaying() {
        if (stopCycles) stopCycles();
    }
};

}  // namespace velmoric
