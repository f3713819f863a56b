#pragma once
// The rules of the help window `Form2`: ten pages of text, a fixed picture
// and the turning wire model share the centre of the window, and the routines
// below switch between them. The Qt window holds one HelpWindow, forwards its
// events here and then shows what the members say; tests drive it directly.
#include <array>
#include <cstdint>
#include <functional>
#include <string>

#include "help/pages.h"
#include "help/wiremodel.h"

namespace velmoric {

// Bits of `rotflags`: which axes turn, and which way.
inline constexpr std::uint8_t kTurnX = 0x01, kTurnZ = 0x02, kTurnY = 0x04;
inline constexpr std::uint8_t kRiseX = 0x10, kRiseZ = 0x20, kRiseY = 0x40;

// The six buttons of the rotating view. A plus button makes its angle fall
// and a minus button makes it rise.
struct RotateButton {
    int number;           // 2 to 7: Command2 to Command7
    const char* caption;
    int left;             // twips
    std::uint8_t sets;    // bits a mouse down sets
    std::uint8_t clears;  // bits a mouse down clears
    std::uint8_t turning; // the bit a mouse up clears
};
inline constexpr std::array<RotateButton, 6> kRotateButtons = {{
    {3, "Rotate +X", 2280, kTurnX, kRiseX, kTurnX},
    {6, "Rotate -X", 3360, kTurnX | kRiseX, 0, kTurnX},
    {2, "Rotate +Y", 4440, kTurnY, kRiseY, kTurnY},
    {5, "Rotate -Y", 5520, kTurnY | kRiseY, 0, kTurnY},
    {4, "Rotate +Z", 6600, kTurnZ, kRiseZ, kTurnZ},
    {7, "Rotate -Z", 7680, kTurnZ | kRiseZ, 0, kTurnZ},
}};

// One line of the model as drawpic placed it on Picture1, in twips.
struct PlacedLine {
    PlacedPoint from, to;
};

class HelpWindow {
public:
    // ---- Members of Form2 ------------------------------------------------
    std::array<std::string, kHelpPageCount + 1> pages;  // 1 to 10
    std::int16_t curpage = 0;                           // the page button pressed last, 0 to 9
    ModelLines modellines{};
    float projscale = 0, projdist = 0;
    float anglex = 0, angley = 0, anglez = 0;
    std::uint8_t rotflags = 0;

    // ---- What the controls show --------------------------------------------
    std::string text1;   // Text1, lines joined by CR LF
    std::string label2;  // Label2's caption
    bool text1Visible = true;
    bool image3Visible = false;
    bool picture1Visible = false;  // Picture1 and Command2 to Command7 together
    bool timer1 = false;           // Timer1, 25 ms
    // The frame drawpic drew last, and how many frames it has drawn.
    std::array<PlacedLine, kModelLineCount> picture1{};
    int frames = 0;

    // Set by the window: the About box, and unloading the window.
    std::function<void()> aboutBox;
    std::function<void()> unload;

    void Form_Load();
    void Command1_Click(int index);  // page button index + 1
    void Command11_Click();          // "Exit"
    void Image1_Click();             // first disk icon: the wire model
    void Image2_Click();             // second disk icon: the About box
    void Image4_Click();             // bin icon: the fixed picture
    // Command2 to Command7 by number; keys and clicks do nothing.
    void Command_MouseDown(int number);
    void Command_MouseUp(int number);
    void Timer1_Timer();
    void drawpic();

private:
    void hideModel();
};

}  // namespace velmoric
