#pragma once
// The GdkPixbuf loader: Atari pictures for every GTK program (Eye of GNOME,
// the file chooser's previews). A GdkPixbuf module declares one format and
// learns no file name, so each row of the table gets a module of its own
// (module.cpp built once for each extension); they share this code.
#define GDK_PIXBUF_ENABLE_BACKEND
#include <gdk-pixbuf/gdk-pixbuf.h>
#undef GDK_PIXBUF_ENABLE_BACKEND

#include <cstdio>

namespace velmoric::pixbuf {

// What fill_info gives for the row of `key`: its type, its extension, its
// description, and the signatures of its files, where they have any.
void fillInfo(GdkPixbufFormat* info, const char* key);

// The incremental load: bytes are gathered until the end, then decoded.
gpointer beginLoad(const char* key, GdkPixbufModuleSizeFunc sizeFunc, GdkPixbufModulePreparedFunc preparedFunc,
                   GdkPixbufModuleUpdatedFunc updatedFunc, gpointer userData, GError** error);
gboolean loadIncrement(gpointer context, const guchar* buffer, guint size, GError** error);
gboolean stopLoad(gpointer context, GError** error);
// The whole file at once, for gdk_pixbuf_animation_new_from_file: an
// animation for a picture whose colours cycle, else the still picture.
GdkPixbufAnimation* loadAnimation(const char* key, FILE* file, GError** error);

}  // namespace velmoric::pixbuf
