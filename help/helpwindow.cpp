#include "help/helpwindow.h"

namespace velmoric {
namespace {

const RotateButton* rotateButton(int number) {
    for (const RotateButton& b : kRotateButtons)
        if (b.number == number) return &b;
    return nullptr;
}

}  // namespace

void HelpWindow::Form_Load() {
    curpage = 0;
    const auto built = buildHelpPages();
    for (int n = 1; n <= kHelpPageCount; ++n) pages[std::size_t(n)] = built[std::size_t(n - 1)];
    text1 = pages[1];
    label2 = "Page 1";
    modellines = wireModel();
    rotflags = 0;
}

void HelpWindow::hideModel() {
    picture1Visible = false;
    // The buttons go with the box, so no mouse up can reach them any more.
    timer1 = false;
}

void HelpWindow::Command1_Click(int index) {
    if (index < 0 || index >= kHelpPageCount) return;
    hideModel();
    image3Visible = false;
    text1Visible = true;
    curpage = std::int16_t(index);
    text1 = pages[std::size_t(index + 1)];
    label2 = "Page " + std::to_string(index + 1);
}

void HelpWindow::Command11_Click() {
    if (unload) unload();
}

void HelpWindow::Image4_Click() {
    hideModel();
    image3Visible = true;
    text1Visible = false;
    label2.clear();
}

void HelpWindow::Image2_Click() {
    if (aboutBox) aboutBox();
}

void HelpWindow::Image1_Click() {
    projscale = 5000;
    projdist = 6000;
    anglex = angley = anglez = 0;
    rotflags = 0;
    picture1Visible = true;
    drawpic();
}

void HelpWindow::Command_MouseDown(int number) {
    const RotateButton* b = rotateButton(number);
    if (!b) return;
    rotflags = std::uint8_t((rotflags | b->sets) & ~b->clears);
    timer1 = true;
}

void HelpWindow::Command_MouseUp(int number) {
    const RotateButton* b = rotateButton(number);
    if (!b) return;
    // The direction bits stay; they count only beside a turning bit.
    rotflags = std::uint8_t(rotflags & ~b->turning);
    timer1 = false;
}

void HelpWindow::Timer1_Timer() {
    if (rotflags & kTurnX) anglex = stepAngle(anglex, rotflags & kRiseX);
    if (rotflags & kTurnZ) anglez = stepAngle(anglez, rotflags & kRiseZ);
    if (rotflags & kTurnY) angley = stepAngle(angley, rotflags & kRiseY);
    drawpic();
}

void HelpWindow::drawpic() {
    const Turn turn = turnFor(anglex, angley, anglez);
    for (int i = 0; i < kModelLineCount; ++i) {
        const ModelLine& m = modellines[std::size_t(i)];
        picture1[std::size_t(i)] = {placePoint(m.x1, m.y1, m.z1, turn, projscale, projdist),
                                    placePoint(m.x2, m.y2, m.z2, turn, projscale, projdist)};
    }
    ++frames;
}

}  // namespace velmoric
