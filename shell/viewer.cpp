#include "shell/viewer.h"

#include <algorithm>

#include "options/association.h"
#include "tools/monoinvert.h"
#include "tools/printpic.h"
#include "tools/savepic.h"
#include "tools/slideshow.h"

namespace velmoric {

std::string commandLineName(const std::string& cmd) {
    const int length = int(cmd.size());
    int i = length;
    if (length >= 9) {
        for (i = length; i >= 9; --i)
            if (cmd[std::size_t(i) - 1] == '.') break;
    }
    if (i == 9) return {};
    return cmd.substr(0, std::min<std::size_t>(std::size_t(i) + 3, cmd.size()));
}

Viewer::Viewer(Platform& platform) : ui(platform), staging(std::make_unique<Staging>()) {
    ui.setCommandHandler([this](const std::string& command) { Form_LinkExecute(command); });
}

Viewer::~Viewer() { ui.setCommandHandler(nullptr); }

void Viewer::Form_Load() {
    ui.setTimerEnabled(false);
    if (!ui.extensionRegistered(kFirstRunExtension)) {
        const Answer a = ui.messageBox(
            "Welcome to the Velmoric picture viewer.\rDo you wish to register the Atari picture files to this program.",
            "Register Files", Buttons::YesNo, Icon::None);
        if (a == Answer::Yes) ui.registerAssociation(buildAssociation(ui.programFolder()));
    }
    ui.setTimerEnabled(true);
    readOptions(ui, options);
    staging->buildTables();
    saved = kTrue;
    nopicture = kTrue;
    kind = 1;
    stop = kTrue;
}

void Viewer::Timer1_Timer() {
    if (options.single == 0) {
        // A copy that holds the channel but does not take the command in
        // time counts as none: this copy then goes on alone.
        if (ui.earlierCopy() && ui.sendCommand(ui.commandLine())) {
            ui.endProcess();
            return;
        }
        ui.setLinkTopic("cmdLine");
    }
    ui.showWindow();
    ui.setTimerEnabled(false);
    if (!ui.commandLine().empty()) {
        openmode = 1;
        openpic();
    }
    openmode = 0;
}

void Viewer::Form_LinkExecute(const std::string& command) {
    if (!command.empty()) {
        ui.setFileName(command);
        openmode = 2;
        openpic();
    }
    openmode = 0;
}

void Viewer::Image1_OLEDragDrop(const std::vector<std::string>& files) {
    if (files.empty()) return;
    ui.setFileName(files.front());
    openmode = 2;
    openpic();
    openmode = 0;
}

void Viewer::menusoff() {
    for (int i = 0; i < 4; ++i) ui.setMenuEnabled(i, false);
    ui.setToolbarEnabled(false);
}

void Viewer::menuson() {
    for (int i = 0; i < 4; ++i) ui.setMenuEnabled(i, true);
    ui.setToolbarEnabled(true);
}

void Viewer::showErrorBox(const std::string& systemText) {
    velmoric::showErrorBox(ui, systemText);
}

void Viewer::runDecoder(const Format& format) {
    const SourceData data = ui.readSource(ui.fileName(), kSourceLimit);
    const Decoded result = decodeWith(format, *staging, Source{data.bytes, data.length});
    if (result.rejected) {
        badfile = kTrue;
        return;
    }
    ui.writeFile(ui.temporaryBitmapPath(), result.bitmap);
    ui.setCaption(std::string(result.caption));
    kind = result.kind;
    animation = cycles::animationOf(format, Source{data.bytes, data.length}, result);
}

void Viewer::openpic() {
    stopPlaying();
    ui.yield();
    if (openmode == 0) {
        ui.runFileSelector(FileSelector{6148, kOpenFilter, 1, "Select Picture File."});
    } else if (openmode == 1) {
        ui.setFileName(commandLineName(ui.commandLine()));
    }
    const std::string name = ui.fileName();
    if (name.empty()) return;
    const std::string extension = extensionOf(name);
    badfile = kFalse;
    bool dispatched = false;
    menusoff();
    ui.yield();
    ui.repaint();

    // What an error must leave as it was: the decoder sets the caption and
    // the kind before the picture is loaded.
    const std::int16_t kindBefore = kind;
    cycles::Animation animationBefore = animation;
    const std::string captionBefore = ui.caption();
    std::string temporary;
    bool laidOut = false;
    bool written = false;
    try {
        if (const Format* format = findFormat(extension)) {
            temporary = ui.temporaryBitmapPath();
            dispatched = true;
            runDecoder(*format);
            written = badfile == kFalse;
        }
        if (!dispatched || badfile != kFalse) {
            ui.messageBox(fileErrorText(extension, ui.commandLine()), "Error.", Buttons::Ok, Icon::Exclamation);
            menuson();
            return;
        }
        Form_Resize();
        laidOut = true;
        const Picture picture = ui.loadPicture(temporary);
        ui.setPicture(picture);
        ui.closeAllFiles();
    } catch (const PlatformError& e) {
        ui.closeAllFiles();
        if (written) {
            try {
                ui.deleteFile(temporary);
            } catch (const PlatformError&) {
            }
        }
        kind = kindBefore;
        animation = std::move(animationBefore);
        ui.setCaption(captionBefore);
        if (laidOut) Form_Resize();
        showErrorBox(e.what());
        menuson();
        return;
    }
    // The picture is on show; a temporary file that will not go now goes
    // with the private folder when the program ends.
    try {
        ui.deleteFile(temporary);
    } catch (const PlatformError&) {
    }

    // The name as it stands now: a command or a drop that arrived in a yield
    // has opened its own file and left its name, which the decoder read too.
    const std::string shown = ui.fileName();
    const std::size_t slash = shown.find_last_of(kPathSeparator);
    const std::string filePart = slash == std::string::npos ? shown : shown.substr(slash + 1);
    ui.setCaption(captionAfterOpen(ui.fileNameCapitals(filePart), ui.caption()));
    nopicture = kFalse;
    saved = kFalse;
    menuson();
}

bool Viewer::Form_QueryUnload() {
    stopPlaying();
    if (stop == kFalse) return true;
    bool refuse = false;
    if (saved == kFalse && options.save == 1) {
        const Answer a = ui.messageBox("Picture has not been saved do you wish to quit?", "Warning.",
                                       Buttons::YesNo, Icon::Question);
        if (a == Answer::No) refuse = true;
    }
    writeOptions(ui, options);
    return refuse;
}

void Viewer::showAbout() {
    ui.messageBox(std::string(kAppCaption) + "\nVersion 0.1, copyright the Velmoric developers.\n" +
                      "Contact: the project's issue tracker.",
                  "About.", Buttons::Ok, Icon::Information);
}

void Viewer::savepic() {
    stopPlaying();
    tools::savepic(ui, nopicture, saved);
}

void Viewer::printpic() {
    stopPlaying();
    tools::printpic(ui, options.orientation, options.printscale);
}

void Viewer::copypic() {
    stopPlaying();
    tools::copypic(ui);
}

void Viewer::monoinvert() {
    stopPlaying();
    menusoff();
    tools::monoinvert(ui, *staging, kind, saved);
    // The cycles belong to the decoded picture, not to its inverse.
    if (kind == 3 || kind == 4) animation = {};
    menuson();
}

void Viewer::slideshow() {
    stopPlaying();
    tools::ShowWindow window{ui,
                             options,
                             kind,
                             saved,
                             nopicture,
                             badfile,
                             stop,
                             [this] { menusoff(); },
                             [this] { menuson(); },
                             [this] { Form_Resize(); },
                             [this](const Format& format) { runDecoder(format); }};
    tools::slideshow(window);
}

void Viewer::fmenu_Click(int index) {
    switch (index) {
    case 0: openpic(); break;
    case 1: savepic(); break;
    case 3: printpic(); break;
    case 5:
        if (unloadRequest) unloadRequest();
        break;
    default: break;
    }
}

void Viewer::medit_Click(int index) {
    if (index == 0) {
        slideshow();
    } else if (index == 2) {
        stopPlaying();
        if (optionsDialog) optionsDialog();
        // `size` may have changed in the dialog.
        Form_Resize();
    } else if (index == 4) {
        monoinvert();
    }
}

void Viewer::mhelp_Click(int index) {
    if (index == 0) {
        if (helpDialog) helpDialog();
    } else if (index == 2) {
        showAbout();
    }
}

void Viewer::toolbarClick(const std::string& key) {
    if (key == "open") {
        openpic();
    } else if (key == "save") {
        savepic();
    } else if (key == "print") {
        printpic();
    } else if (key == "copy") {
        copypic();
    } else if (key == "invert") {
        monoinvert();
    } else if (key == "slide") {
        slideshow();
    } else if (key == "pref") {
        medit_Click(2);
    } else if (key == "help") {
        mhelp_Click(0);
    }
}

}  // namespace velmoric
