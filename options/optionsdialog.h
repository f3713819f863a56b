#pragma once
// The rules of the options dialog `Form4`: which control shows which option
// when it opens, what closing stores, and where the print preview puts the
// picture on its miniature sheet. The window that shows the controls
// implements OptionsControls and forwards its events to OptionsDialog.
#include <array>
#include <string>

#include "options/options.h"
#include "platform/picture.h"

namespace velmoric {

class Platform;

// `delay` of each `Option1` index. Index 4 (15 seconds) stands above index 3
// on the screen.
inline constexpr std::array<int, 5> kDelayByOption1 = {0, 2, 5, 10, 15};

// The `Option1` index for a delay; every value without a button of its own
// selects "2 Seconds".
int option1IndexFor(int delay);

// The miniature sheet in twips: the same width in both orientations.
inline constexpr int kSheetWidth = 1325;
inline constexpr int kPortraitSheetHeight = 1875;
inline constexpr int kLandscapeSheetHeight = 936;

// A float measure becomes whole twips by rounding to the nearest number,
// halves to the even one, as a float is converted to a whole number.
int wholeTwips(float twips);

// Where the preview picture lies on a sheet, in whole twips.
struct PreviewPlace {
    int left = 0, top = 0, width = 0, height = 0;
    bool operator==(const PreviewPlace&) const = default;
};
// `printscale` percent of the sheet's width, 0.625 as high as wide, centred;
// in 32-bit floats.
PreviewPlace previewPlace(int printscale, int sheetWidth, int sheetHeight);

// The controls of `Form4` as the rules use them. Setting a value that the
// control already shows changes nothing and raises no event; a change raises
// the control's event (Option2_Click, HScroll1_Change) before the call returns.
class OptionsControls {
public:
    virtual ~OptionsControls() = default;
    // Check1 to Check4 by number: 0 unchecked, 1 checked.
    virtual int checkValue(int number) = 0;
    virtual void setCheckValue(int number, int value) = 0;
    virtual bool option1Selected(int index) = 0;
    virtual void selectOption1(int index) = 0;
    virtual bool option2Selected(int index) = 0;
    virtual void selectOption2(int index) = 0;
    // HScroll1, 5 to 100; a value outside is taken as the nearer end.
    virtual int scrollValue() = 0;
    virtual void setScrollValue(int value) = 0;
    virtual void setLabel3(const std::string& text) = 0;
    // Picture1, the sheet, in twips.
    virtual int sheetWidth() = 0;
    virtual int sheetHeight() = 0;
    virtual void setSheetSize(int width, int height) = 0;
    // Image1 of the dialog, in twips from the corner of Picture1.
    virtual void setPreviewTop(int top) = 0;
    virtual void setPreviewLeft(int left) = 0;
    virtual void setPreviewSize(int width, int height) = 0;
    virtual void setPreviewPicture(const Picture& picture) = 0;
    // Closes the dialog; closing runs Form_Unload.
    virtual void unload() = 0;
};

class OptionsDialog {
public:
    // `options` are the viewer's option variables; `platform` holds the
    // settings store and the picture on show in the main window.
    OptionsDialog(Platform& platform, Options& options, OptionsControls& controls)
        : platform_(platform), options_(options), controls_(controls) {}

    void Form_Load();
    void Form_Unload();
    void Command1_Click() { controls_.unload(); }
    void HScroll1_Change();
    void Option2_Click(int index);
    void simage();

private:
    Platform& platform_;
    Options& options_;
    OptionsControls& controls_;
};

}  // namespace velmoric
