// velmoric: the picture viewer. Its command line is the file to open; it
// takes no switches and reads no environment variable of its own.
#include <QApplication>
#include <string>
#include <vector>

#include "platform/qt/form1.h"
#include "platform/xdg_association.h"

int main(int argc, char** argv) {
    // The arguments are the file to open, exactly as given: Qt sees none of
    // them, so none is taken for one of its own switches.
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    int qtArgc = 1;
    QApplication app(qtArgc, argv);
    // Wayland compositors match the window to its desktop entry by this name.
    QGuiApplication::setDesktopFileName(QString::fromLatin1(velmoric::xdg::kApplicationId));

    velmoric::qt::QtPlatform platform(arguments);
    velmoric::qt::Form1 form(platform);
    form.load();
    return app.exec();
}
