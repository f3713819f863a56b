#pragma once
// A picture whose colours cycle as a GdkPixbufAnimation: the frames are the
// palettes of one period over the same pixels, looping for ever. Each frame's
// pixbuf is made when an iterator first shows it.
#include "plugins/gdkpixbuf/loader.h"

#include "desktop/desktopimage.h"

namespace velmoric::pixbuf {

// The picture with a palette: its own or a frame's.
GdkPixbuf* pixbufOf(const desktop::DesktopPicture& p, std::span<const std::uint32_t> colours);

// An animation of an animated picture, whose first frame is `still`
// (taken over with a reference of its own); the key names the module's format.
GdkPixbufAnimation* newAnimation(const char* key, desktop::DesktopPicture picture, GdkPixbuf* still);

}  // namespace velmoric::pixbuf
