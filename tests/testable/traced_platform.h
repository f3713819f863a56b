#pragma once
// For tests of real processes (VELMORIC_TRACE=1, test build only): the Qt platform that also
// prints, one line each, when the window shows, when a command from a later
// copy arrives, when Label1 changes and when a message box comes. Boxes are
// then answered at once with their default (OK, or No) instead of waiting
// for a person. Without the variable it is the Qt platform as it stands.
#include <cstdio>
#include <string>

#include "platform/qt/qtplatform.h"

namespace velmoric::qt {

class TracedPlatform : public QtPlatform {
public:
    TracedPlatform(std::vector<std::string> arguments, bool tracing)
        : QtPlatform(std::move(arguments)), tracing_(tracing) {}

    void showWindow() override {
        line("shown", "");
        QtPlatform::showWindow();
    }
    void setCommandHandler(std::function<void(const std::string&)> handler) override {
        if (tracing_ && handler)
            handler = [this, inner = std::move(handler)](const std::string& command) {
                line("command: ", command);
                inner(command);
            };
        QtPlatform::setCommandHandler(std::move(handler));
    }
    void setCaption(const std::string& text) override {
        line("caption: ", text);
        QtPlatform::setCaption(text);
    }
    Answer messageBox(const std::string& text, const std::string& title, Buttons buttons, Icon icon) override {
        if (!tracing_) return QtPlatform::messageBox(text, title, buttons, icon);
        std::string flat = text;
        for (char& c : flat)
            if (c == '\n' || c == '\r') c = '|';
        line("box: " + title + " ", flat);
        return buttons == Buttons::Ok ? Answer::Ok : Answer::No;
    }

private:
    void line(const std::string& what, const std::string& text) {
        if (!tracing_) return;
        std::printf("%s%s\n", what.c_str(), text.c_str());
        std::fflush(stdout);
    }
    bool tracing_;
};

}  // namespace velmoric::qt
