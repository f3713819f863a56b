#include "platform/qt/commands.h"

namespace velmoric::qt {
namespace {

constexpr MenuItem kMenuItems[] = {
    {0, MenuArray::fmenu, 0, "&Open", "Ctrl+O"},
    {0, MenuArray::fmenu, 1, "Save &as", "Ctrl+S"},
    {0, MenuArray::fmenu, 2, "-", ""},
    {0, MenuArray::fmenu, 3, "&Print", "Ctrl+P"},
    {0, MenuArray::fmenu, 4, "-", ""},
    {0, MenuArray::fmenu, 5, "E&xit", ""},
    {1, MenuArray::mclip, 0, "&Copy", "Ctrl+C"},
    {2, MenuArray::medit, 0, "&Slide show", ""},
    {2, MenuArray::medit, 1, "-", ""},
    {2, MenuArray::medit, 2, "&Options", ""},
    {2, MenuArray::medit, 3, "-", ""},
    {2, MenuArray::medit, 4, "&Mono Invert", ""},
    {3, MenuArray::mhelp, 0, "&Help Pages", ""},
    {3, MenuArray::mhelp, 1, "-", ""},
    {3, MenuArray::mhelp, 2, "&About", ""},
};

constexpr ToolButton kToolButtons[] = {
    {"open", "Open Picture", 1},
    {"save", "Save Picture", 2},
    {"print", "Print", 3},
    {nullptr, nullptr, 0},
    {"copy", "Copy to Clipboard", 4},
    {nullptr, nullptr, 0},
    {"slide", "Slide Show", 6},
    {"pref", "Options", 7},
    {"invert", "Invert Mono Image", 8},
    {nullptr, nullptr, 0},
    {"help", "Help", 9},
};

}  // namespace

std::span<const MenuItem> menuItems() { return kMenuItems; }
std::span<const ToolButton> toolButtons() { return kToolButtons; }

}  // namespace velmoric::qt
