#include "help/pages.h"

#include <initializer_list>
#include <string_view>

namespace velmoric {
namespace {

// A title, its row of dashes, then the body. A body line of its own is
// either one hand-laid row of a list or one paragraph that Text1 wraps.
std::string page(std::string_view title, std::size_t dashes, std::initializer_list<std::string_view> body) {
    std::string text(title);
    text += "\r\n";
    text.append(dashes, '-');
    for (std::string_view line : body) {
        text += "\r\n";
        text += line;
    }
    return text;
}

}  // namespace

std::array<std::string, kHelpPageCount> buildHelpPages() {
    std::array<std::string, kHelpPageCount> pages;
    pages[0] = page("Introduction.", 13,
                    {"Thanks for using the Velmoric picture viewer. I have produced this program to enable easy "
                     "viewing of these files on the PC.",
                     "This program can display the following formats:-",
                     "Neochrome               NEO     Low rez.",
                     "Tiny                    TN?     All rez.",
                     "Degas, Degas compressed PI? PC? All rez.",
                     "Crack Art               CA?     All rez.",
                     "Spectrum 512            SPU",
                     "Spectrum 512 Compressed SPC",
                     "Spectrum Smooshed       SPS     (Some files!)",
                     "Mac Paint               MAC     Not an Atari format."});
    pages[1] = page("Contents.", 9,
                    {"Introduction.    Page 1",
                     "Contents.        Page 2",
                     "File Menu.       Page 3",
                     "Edit Menu.       Page 4",
                     "Tool Menu.       Page 5",
                     "Help Menu.       Page 6",
                     "Options Window.  Page 7",
                     "Misc.            Page 8",
                     "More Misc.       Page 9",
                     "Contact.         Page 10",
                     "",
                     "Press a numbered button to turn to its page."});
    pages[2] = page("File Menu.", 9,
                    {"",
                     "Open.      Choose an ST picture file with the",
                     "           standard file selector and it is shown.",
                     "           Short cut Ctrl+O.",
                     "Save as.   Save the current picture as a Windows",
                     "           bitmap (BMP) file. The standard file",
                     "           selector is used again to choose the",
                     "           folder and name. Short cut Ctrl+S.",
                     "Print.     Print the current picture, with the",
                     "           orientation and size set in the Options",
                     "           window. Short cut Ctrl+P.",
                     "Exit.      Close Velmoric."});
    pages[3] = page("Edit Menu.", 9,
                    {"",
                     "Copy.        Copies the current picture to the",
                     "             clipboard, from where it can be",
                     "             pasted into other programs.",
                     "             Short cut Ctrl+C."});
    pages[4] = page("Tool Menu.", 9,
                    {"",
                     "Slide show.  Choose a directory with the selector,",
                     "             and all the ST picture files in it",
                     "             are shown in sequence, each for the",
                     "             delay set in the Options window.",
                     "             Click  anywhere on the picture to stop",
                     "             the show.",
                     "Options.     Set the options. See the Options",
                     "             Window page.",
                     "Mono invert. Reverse the colours in a monochrome",
                     "             picture: black becomes white and",
                     "             white becomes black."});
    pages[5] = page("Help Menu.", 9,
                    {"",
                     "Help pages.  Your here. These help pages.",
                     "",
                     "About.       Shows the version of Velmoric and",
                     "             how to contact the author."});
    pages[6] = page("Options Window.", 15,
                    {"Printer.     Orientation prints the picture",
                     "             portrait or landscape. Size sets",
                     "             the printout from 5 to 100 percent.",
                     "Slide Show.  Delay is the time each picture is",
                     "             shown: none, 2, 5, 10 or 15 seconds.",
                     "             Repeat starts it again at its end.",
                     "Warning.     Warn at exit of an unsaved picture.",
                     "Resolution.  Display pictures at true resolution.",
                     "             Medium resolution pictures will be",
                     "             displayed elongated.",
                     "Multiple.    A new instance of Velmoric for each",
                     "             picture opened from the file manager."});
    pages[7] = page("Misc.", 4,
                    {"The toolbar below the menus has buttons for Open, Save, Print, Copy, Slide show, Options, "
                     "Mono invert and Help. Rest the mouse on a button to see its name.",
                     "",
                     "When true resolution is off in the Options window, the window can be resized and the picture "
                     "keeps its aspect ratio.",
                     "",
                     "The program supports file association, so clicking on a supported picture file in the file "
                     "manager will start Velmoric and display the picture. Drag and drop is also supported."});
    pages[8] = page("More Misc.", 9,
                    {"",
                     "Velmoric is copyright the Velmoric developers. It is free: copy it and give it away as you "
                     "like, so long as nobody is asked to pay for it.",
                     "",
                     "Thanks to everyone who wrote down how the ST picture formats work, and to the artists whose "
                     "pictures made this viewer worth writing."});
    pages[9] = page("Contact.", 8,
                    {"",
                     "To report a fault or ask for a format, write to the author on the project's issue tracker.",
                     "Please name the picture file and say what you saw."});
    return pages;
}

}  // namespace velmoric
