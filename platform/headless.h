#pragma once
// A platform without a screen: every user-interface operation is a plain data
// holder. Message boxes are recorded and answered from a queue, the open
// dialog is answered from a queue, and the window is a model of measures.
// Files are real files.
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <set>

#include "platform/localfiles.h"

namespace velmoric {

class HeadlessPlatform;

// The session bus of copies of the program in one test: which copy holds the
// hand-over channel.
struct HeadlessBus {
    HeadlessPlatform* owner = nullptr;
};

class HeadlessPlatform : public LocalFilesPlatform {
public:
    ~HeadlessPlatform() override;

    struct Message {
        std::string text, title;
        Buttons buttons;
        Icon icon;
    };

    // ---- what tests set -----------------------------------------------------
    std::string commandLineText;
    std::deque<Answer> answers;             // for message boxes; empty: OK or No
    std::deque<std::string> selectorAnswers;  // for the open dialog; empty: cancel
    std::map<std::string, std::string> settings;  // "app/section/key" -> text
    std::set<std::string> registeredExtensions;
    std::function<void()> onResize;  // called when a set changes the outer size
    std::function<void()> onYield;
    std::deque<std::string> slideFolders;  // Form3: the folder chosen, then "Start"; "" or none: Cancel
    double clockNow = 0;                   // seconds
    std::shared_ptr<HeadlessBus> bus;  // null: no session bus, every copy alone
    bool answering = true;             // false: holds the channel but never answers

    std::deque<std::string> saveAnswers;  // for the save dialog; empty: cancel
    // The printer: a dialog that is cancelled or fails with a text, and its page.
    bool printCancels = false;
    std::string printFailure;  // not empty: the dialog fails with this text
    int pageWidth = 4960, pageHeight = 7016;

    // ---- what tests read ------------------------------------------------------
    struct Printed {
        Picture picture;
        int left, top;
        double width, height;
    };
    std::vector<SaveDialogSettings> saveRuns;
    std::optional<Picture> clipboard;  // empty when cleared
    int clipboardClears = 0;
    std::vector<PrintDialogSettings> printRuns;
    std::vector<Printed> printed;
    int documentsEnded = 0;
    std::vector<Message> messages;
    std::vector<FileSelector> selectorRuns;
    std::vector<Association> associationsWritten;
    std::vector<std::string> settingsWritten;  // keys in the order written
    int yields = 0;
    int repaints = 0;
    bool menuEnabled[4] = {true, true, true, true};
    bool toolbarEnabled = true;
    bool timerEnabled = false;
    bool shown = false;
    std::string fileNameText;
    Picture image;
    std::string label;
    int slideDialogs = 0;
    std::vector<double> deadlines;  // of every yieldUntil
    std::string windowCaption;
    std::string linkTopic = "Form1";
    std::deque<std::string> incoming;  // commands taken, run at the next yield
    std::vector<std::string> sent;
    bool ended = false;
    bool imageNative = false;

    // The window: outer measures in twips, a frame of fixed pixel size.
    WindowState state = WindowState::Normal;
    int outerW = 6600 + 15 * 16;
    int outerH = 5205 + 15 * 70;
    int frameW = 16;   // pixels taken by the borders left and right
    int frameH = 70;   // pixels taken by title, menu bar and borders
    int imageTopPx = 56;
    int imageW = 440, imageH = 272, labelW = 439;

    // ---- Platform -------------------------------------------------------------
    std::string commandLine() override { return commandLineText; }
    Answer messageBox(const std::string& text, const std::string& title, Buttons buttons, Icon icon) override;
    void yield() override;
    void repaint() override { ++repaints; }
    void runFileSelector(const FileSelector& settings) override;
    std::string fileName() override { return fileNameText; }
    void setFileName(const std::string& name) override { fileNameText = name; }
    Picture picture() override { return image; }
    void setPicture(const Picture& picture) override { image = picture; }
    std::string caption() override { return label; }
    void setCaption(const std::string& text) override { label = text; }
    void setMenuEnabled(int index, bool enabled) override;
    void setToolbarEnabled(bool enabled) override { toolbarEnabled = enabled; }
    void setTimerEnabled(bool enabled) override { timerEnabled = enabled; }
    void showWindow() override { shown = true; }
    void runSlideDialog(std::int16_t& slideshowFlag) override;
    double clock() override { return clockNow; }
    // A yield; as no event comes while the model sleeps, the clock then
    // stands at the deadline.
    void yieldUntil(double deadline) override;
    void setWindowCaption(const std::string& text) override { windowCaption = text; }

    WindowState windowState() override { return state; }
    int outerWidth() override { return outerW; }
    int outerHeight() override { return outerH; }
    void setOuterWidth(int twips) override;
    void setOuterHeight(int twips) override;
    int clientWidth() override;
    int clientHeight() override;
    int pixelsToTwips(int pixels) override { return pixels * 15; }
    int imageTop() override { return imageTopPx; }
    void setImageSize(int width, int height) override { imageW = width, imageH = height; }
    void setLabelWidth(int width) override { labelW = width; }

    std::optional<std::string> readSetting(const std::string& app, const std::string& section,
                                           const std::string& key) override;
    void writeSetting(const std::string& app, const std::string& section, const std::string& key,
                      const std::string& value) override;

    void runSaveDialog(const SaveDialogSettings& settings) override;
    void clearClipboard() override {
        clipboard.reset();
        ++clipboardClears;
    }
    void setClipboardPicture(const Picture& picture) override { clipboard = picture; }
    bool runPrintDialog(const PrintDialogSettings& settings) override;
    int printerWidth() override { return pageWidth; }
    int printerHeight() override { return pageHeight; }
    void printPicture(const Picture& picture, int left, int top, double width, double height) override {
        printed.push_back({picture, left, top, width, height});
    }
    void endDocument() override { ++documentsEnded; }

    bool extensionRegistered(const std::string& extension) override;
    void registerAssociation(const Association& association) override;

    bool earlierCopy() override;
    bool sendCommand(const std::string& command) override;
    void setLinkTopic(const std::string& topic) override;
    void setCommandHandler(std::function<void(const std::string&)> handler) override {
        commandHandler_ = std::move(handler);
    }
    void endProcess() override { ended = true; }
    // Small letters a to z only.
    std::string fileNameCapitals(const std::string& filePart) override;
    void setImageNative(bool native) override { imageNative = native; }
    // Runs the commands that have arrived, as the event loop would.
    void runEvents();

    bool allCommandsEnabled() const;
    bool allCommandsDisabled() const;

private:
    std::function<void(const std::string&)> commandHandler_;
};

}  // namespace velmoric
