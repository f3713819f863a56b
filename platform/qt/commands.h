#pragma once
// The one place that names the window's commands: the menu tree with its
// captions, access letters and shortcuts, and the toolbar's buttons with
// their keys, tool tips and pictures. The window builds both from these
// tables and routes every click back to the core by array and index or by key.
#include <array>
#include <span>

namespace velmoric::qt {

// The menu arrays whose items carry commands.
enum class MenuArray { fmenu, mclip, medit, mhelp };

// The four top-level menus of `mfile`, in order.
inline constexpr std::array<const char*, 4> kTopMenuCaptions = {"&File", "&Edit", "&Tools", "&Help"};

struct MenuItem {
    int top;          // index in `mfile` of the menu that holds the item
    MenuArray array;  // the array the item belongs to
    int index;        // its index in that array (0 for the single `mclip`)
    const char* caption;  // "-" is a separator
    const char* shortcut;  // "" when the item has none
};

std::span<const MenuItem> menuItems();

struct ToolButton {
    const char* key;      // null for a separator
    const char* toolTip;
    int picture;          // 1-based number in the image list
};

std::span<const ToolButton> toolButtons();

// The keys of the image list's pictures, picture 1 first.
inline constexpr std::array<const char*, 9> kImageListKeys = {"open", "save",  "print",  "copy", "paste",
                                                              "slide", "pref", "invert", "help"};

inline bool isSeparator(const MenuItem& item) { return item.caption[0] == '-' && item.caption[1] == '\0'; }

}  // namespace velmoric::qt
