#include "options/optionsdialog.h"

#include <cmath>

#include "platform/platform.h"

namespace velmoric {

int option1IndexFor(int delay) {
    switch (delay) {
    case 0: return 0;
    case 5: return 2;
    case 10: return 3;
    case 15: return 4;
    default: return 1;
    }
}

int wholeTwips(float twips) {
    const float below = std::floor(twips);
    const float rest = twips - below;
    const bool up = rest > 0.5f || (rest == 0.5f && std::fmod(below, 2.0f) != 0.0f);
    return int(up ? below + 1.0f : below);
}

PreviewPlace previewPlace(int printscale, int sheetWidth, int sheetHeight) {
    const float width = float(sheetWidth);
    const float height = float(sheetHeight);
    const float iw = float(printscale) * width / 100.0f;
    const float ih = 0.625f * iw;
    return {wholeTwips((width - iw) / 2.0f), wholeTwips((height - ih) / 2.0f), wholeTwips(iw), wholeTwips(ih)};
}

// A check box shows an option as checked only when it is exactly 1, the value
// by which the quit warning, the sizing and the slide show recognise "on".
static int checkFor(std::int16_t option) { return option == 1 ? 1 : 0; }

void OptionsDialog::Form_Load() {
    readOptions(platform_, options_);
    controls_.setCheckValue(1, checkFor(options_.save));
    controls_.setCheckValue(2, checkFor(options_.size));
    controls_.setCheckValue(3, checkFor(options_.repeat));
    controls_.setCheckValue(4, checkFor(options_.single));
    controls_.selectOption2(options_.orientation == 0 ? 0 : 1);
    // A stored value the controls cannot show (an orientation other than 0
    // or 1, a scale outside the bar) becomes what they show, so that the
    // preview draws what closing will store.
    options_.orientation = controls_.option2Selected(0) ? 0 : 1;
    controls_.setScrollValue(options_.printscale);
    options_.printscale = std::int16_t(controls_.scrollValue());
    simage();
    controls_.selectOption1(option1IndexFor(options_.delay));
}

void OptionsDialog::Form_Unload() {
    options_.save = std::int16_t(controls_.checkValue(1));
    options_.size = std::int16_t(controls_.checkValue(2));
    options_.repeat = std::int16_t(controls_.checkValue(3));
    options_.single = std::int16_t(controls_.checkValue(4));
    for (int i = 0; i < int(kDelayByOption1.size()); ++i)
        if (controls_.option1Selected(i)) options_.delay = std::int16_t(kDelayByOption1[std::size_t(i)]);
    for (int i = 0; i < 2; ++i)
        if (controls_.option2Selected(i)) options_.orientation = std::int16_t(i);
    options_.printscale = std::int16_t(controls_.scrollValue());
    writeOptions(platform_, options_);
}

void OptionsDialog::HScroll1_Change() {
    const int value = controls_.scrollValue();
    controls_.setLabel3(std::to_string(value));
    options_.printscale = std::int16_t(value);
    simage();
}

void OptionsDialog::Option2_Click(int index) {
    options_.orientation = std::int16_t(index);
    simage();
}

void OptionsDialog::simage() {
    if (options_.orientation == 1)
        controls_.setSheetSize(kSheetWidth, kPortraitSheetHeight);
    else
        controls_.setSheetSize(kSheetWidth, kLandscapeSheetHeight);
    const PreviewPlace place = previewPlace(options_.printscale, controls_.sheetWidth(), controls_.sheetHeight());
    controls_.setPreviewTop(place.top);
    controls_.setPreviewLeft(place.left);
    controls_.setPreviewSize(place.width, place.height);
    controls_.setPreviewPicture(platform_.picture());
}

}  // namespace velmoric
