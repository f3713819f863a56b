#pragma once
// The platform on Qt Widgets: the window `Form1` and its controls, message
// boxes, the open dialog, the settings store on QSettings and the file
// association of the Linux desktop. Files come from LocalFilesPlatform.
#include <QSize>
#include <QStringList>
#include <QTimer>
#include <functional>
#include <memory>
#include <vector>

#include "platform/localfiles.h"

namespace velmoric::qt {

class Form1;
class Handover;
class PrintJob;

// Turns "Description|pattern;pattern|Description|pattern" into the name
// filters of a file dialog. Every letter of a pattern matches in either case,
// as names do on the platform the filter string was written for.
QStringList nameFiltersFor(const std::string& filter);
QString caseInsensitivePattern(const QString& pattern);

// Twips to pixels at 15 twips a pixel, to the nearest pixel.
int twipsToPixels(int twips);

class QtPlatform : public LocalFilesPlatform {
public:
    // `arguments`: the program's arguments behind its name, as given.
    explicit QtPlatform(std::vector<std::string> arguments);
    ~QtPlatform() override;

    // The window whose measures and controls this platform drives.
    void attach(Form1* form) { form_ = form; }

    std::string commandLine() override;

    Answer messageBox(const std::string& text, const std::string& title, Buttons buttons, Icon icon) override;
    void yield() override;
    void repaint() override;
    void runFileSelector(const FileSelector& settings) override;
    std::string fileName() override { return fileName_; }
    void setFileName(const std::string& name) override { fileName_ = name; }
    Picture picture() override;
    void setPicture(const Picture& picture) override;
    std::string caption() override;
    void setCaption(const std::string& text) override;
    void setMenuEnabled(int index, bool enabled) override;
    void setToolbarEnabled(bool enabled) override;
    void setTimerEnabled(bool enabled) override;
    void showWindow() override;
    void runSlideDialog(std::int16_t& slideshowFlag) override;
    double clock() override;
    void yieldUntil(double deadline) override;
    void setWindowCaption(const std::string& text) override;

    WindowState windowState() override;
    int outerWidth() override;
    int outerHeight() override;
    void setOuterWidth(int twips) override;
    void setOuterHeight(int twips) override;
    int clientWidth() override;
    int clientHeight() override;
    int pixelsToTwips(int pixels) override { return pixels * 15; }
    int imageTop() override;
    void setImageSize(int width, int height) override;
    void setLabelWidth(int width) override;

    std::optional<std::string> readSetting(const std::string& app, const std::string& section,
                                           const std::string& key) override;
    void writeSetting(const std::string& app, const std::string& section, const std::string& key,
                      const std::string& value) override;

    // The save dialog, the clipboard and the printer (output.cpp).
    void runSaveDialog(const SaveDialogSettings& settings) override;
    void clearClipboard() override;
    void setClipboardPicture(const Picture& picture) override;
    bool runPrintDialog(const PrintDialogSettings& settings) override;
    int printerWidth() override;
    int printerHeight() override;
    void printPicture(const Picture& picture, int left, int top, double width, double height) override;
    void endDocument() override;

    bool extensionRegistered(const std::string& extension) override;
    void registerAssociation(const Association& association) override;

    bool earlierCopy() override;
    bool sendCommand(const std::string& command) override;
    void setLinkTopic(const std::string& topic) override;
    void setCommandHandler(std::function<void(const std::string&)> handler) override;
    void endProcess() override;
    std::string fileNameCapitals(const std::string& filePart) override;
    void setImageNative(bool native) override;

    // ---- Reports from the window -------------------------------------------
    // The window system reports the size it gave the window: it confirms the
    // sizes asked for up to that one. A size asked for earlier than the last
    // one is stale: it only echoes a step on the way.
    void windowSystemReported(QSize size);
    // The window's resize event: false when the layout must not run on its
    // size, because it is a stale echo of an earlier request.
    bool windowSizeReported(QSize size);
    // The window was minimised, maximised or restored: sizes asked for before
    // no longer count.
    void windowStateChanged() { forgetRequests(); }
    // Back from maximised: asks for the size the window had before.
    void windowRestored(QSize size) { requestWindowSize(size); }
    // True when every size asked for has been confirmed by the window system.
    bool settled() const { return requested_.empty(); }

private:
    int storeCopies_ = 0;  // copies of the settings store made so far
    // A copy of the settings store at `path` in the private folder, for QSettings; its name.
    std::string copyOfStore(const std::string& path, bool throughLink);
    // The size of the window without its frame: the last one asked for until
    // the window system confirms it, then the window's own.
    QSize windowSize() const;
    // Pixels that the window manager's frame adds around the window.
    QSize frameSize() const;
    void requestWindowSize(QSize size);
    void forgetRequests();
    void requestsExpired();

    std::vector<std::string> arguments_;
    std::unique_ptr<Handover> handover_;  // made at the first use, on the session bus
    std::function<void(const std::string&)> commandHandler_;
    std::string lastFolder_;  // where the open dialog starts
    Form1* form_ = nullptr;
    std::string fileName_;  // CMDialog1.FileName
    std::vector<QSize> requested_;  // asked for, not yet confirmed, oldest first
    QSize staleSize_;               // the window system's last report, when stale
    bool resizing_ = false;         // inside a resize this platform asked for
    QSize refused_;
    QTimer expiry_;
    // The printer chosen in the print dialog, until its document ends.
    std::shared_ptr<PrintJob> printJob_;
};

}  // namespace velmoric::qt
