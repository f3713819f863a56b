// check_pixbuf PICTURES BROKEN: GdkPixbuf with the loader cache in
// GDK_PIXBUF_MODULE_FILE. GIO names each picture's type; a loader made for
// that type, as Eye of GNOME makes one, and gdk_pixbuf_new_from_file read it
// through the installed module with the pixels of the converter's bitmap
// (lines doubled for medium resolution); every broken file fails both ways
// with an error.
#include <gdk-pixbuf/gdk-pixbuf.h>
#include <gio/gio.h>

#include "check_common.h"

using vcheck::fail;

namespace {

// A picture read by name, or by a loader made for `type`; null with the error.
GdkPixbuf* read(const std::string& path, const char* type, std::string& error) {
    GError* e = nullptr;
    GdkPixbuf* p = nullptr;
    if (!type) {
        p = gdk_pixbuf_new_from_file(path.c_str(), &e);
    } else if (GdkPixbufLoader* loader = gdk_pixbuf_loader_new_with_mime_type(type, &e)) {
        const auto bytes = vcheck::bytesOf(path);
        const bool written = bytes.empty() || gdk_pixbuf_loader_write(loader, reinterpret_cast<const guchar*>(bytes.data()), bytes.size(), &e);
        if (gdk_pixbuf_loader_close(loader, e ? nullptr : &e) && written && gdk_pixbuf_loader_get_pixbuf(loader))
            p = GDK_PIXBUF(g_object_ref(gdk_pixbuf_loader_get_pixbuf(loader)));
        g_object_unref(loader);
    }
    if (e) error = e->message, g_error_free(e);
    return p;
}

std::uint32_t rgb(GdkPixbuf* p, int x, int y) {
    const guchar* at = gdk_pixbuf_get_pixels(p) + y * gdk_pixbuf_get_rowstride(p) + x * gdk_pixbuf_get_n_channels(p);
    return std::uint32_t(at[0]) << 16 | std::uint32_t(at[1]) << 8 | at[2];
}

bool samePixels(GdkPixbuf* image, GdkPixbuf* reference) {
    const int w = gdk_pixbuf_get_width(reference), h = gdk_pixbuf_get_height(reference);
    const int repeat = w == 640 && h == 200 ? 2 : 1;
    if (gdk_pixbuf_get_width(image) != w || gdk_pixbuf_get_height(image) != h * repeat) return false;
    for (int y = 0; y < h * repeat; ++y)
        for (int x = 0; x < w; ++x)
            if (rgb(image, x, y) != rgb(reference, x, y / repeat)) return false;
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    const auto pictures = vcheck::readList(argv[1]), broken = vcheck::readList(argv[2]);
    std::size_t sniffed = 0;
    for (const auto& [picture, bitmap] : pictures) {
        const std::string type(vcheck::rowOf(picture)->mimeType);
        const auto bytes = vcheck::bytesOf(picture);
        const auto* head = reinterpret_cast<const guchar*>(bytes.data());
        const std::size_t size = std::min<std::size_t>(bytes.size(), 4096);
        gboolean uncertain = FALSE;
        gchar* byName = g_content_type_guess(picture.c_str(), head, size, nullptr);
        gchar* byContents = g_content_type_guess(nullptr, head, size, &uncertain);
        if (type != byName) fail(picture, std::string("typed ") + byName);
        // gdk_pixbuf_new_from_file takes the type the first bytes give, and
        // the name only where they give none.
        const bool byNameToo = uncertain;
        if (!byNameToo) ++sniffed, std::cout << "note: " << picture << " looks like " << byContents << " by its first bytes\n";
        g_free(byName), g_free(byContents);
        std::string error, ignored;
        GdkPixbuf* reference = read(bitmap, nullptr, ignored);
        std::vector<const char*> ways = {type.c_str()};
        if (byNameToo) ways.push_back(nullptr);
        for (const char* how : ways) {
            GdkPixbuf* image = read(picture, how, error);
            if (!image || !reference || !samePixels(image, reference))
                fail(picture, std::string(how ? "by type: " : "by name: ") + (image ? "pixels other than the converter's" : error));
            if (image) g_object_unref(image);
        }
        if (reference) g_object_unref(reference);
    }
    for (const auto& [file, unused] : broken) {
        std::string byName, byType;
        GdkPixbuf* a = read(file, nullptr, byName);
        GdkPixbuf* b = read(file, vcheck::rowOf(file)->mimeType.data(), byType);
        if (a || b || byName.empty() || byType.empty()) fail(file, "a broken file was read");
        if (a) g_object_unref(a);
        if (b) g_object_unref(b);
    }
    if (sniffed * 20 > pictures.size()) fail(argv[1], "more pictures typed by their first bytes than the odd one");
    std::cout << "GdkPixbuf: " << pictures.size() << " pictures (" << sniffed << " left by gdk_pixbuf_new_from_file to "
              << "another loader by their first bytes), " << broken.size() << " broken files, " << vcheck::failures
              << " failures\n";
    return vcheck::failures == 0 ? 0 : 1;
}
