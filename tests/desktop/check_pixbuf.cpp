// check_pixbuf PICTURES BROKEN: GdkPixbuf with the loader cache in
// GDK_PIXBUF_MODULE_FILE. A loader made for each picture's type, as Eye of
// GNOME makes one, and gdk_pixbuf_new_from_file where the first bytes do not
// send it to another format, read it through the installed module with the
// pixels of the converter's bitmap (lines doubled for medium
// resolution); every broken file fails both ways with an error.
#include <gdk-pixbuf/gdk-pixbuf.h>
#include <gio/gio.h>

#include <memory>

#include "check_common.h"

using vcheck::fail;

namespace {

using Pixbuf = std::unique_ptr<GdkPixbuf, decltype(&g_object_unref)>;

std::vector<char> bytesOf(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<char>(std::istreambuf_iterator<char>(in), {});
}

// A picture read by name, or by a loader made for `type`; null with the error.
Pixbuf read(const std::string& path, const char* type, std::string& error) {
    GError* e = nullptr;
    GdkPixbuf* p = nullptr;
    if (!type) {
        p = gdk_pixbuf_new_from_file(path.c_str(), &e);
    } else if (GdkPixbufLoader* loader = gdk_pixbuf_loader_new_with_mime_type(type, &e)) {
        const auto bytes = bytesOf(path);
        const auto* data = reinterpret_cast<const guchar*>(bytes.data());
        const bool written = bytes.empty() || gdk_pixbuf_loader_write(loader, data, bytes.size(), &e);
        if (gdk_pixbuf_loader_close(loader, e ? nullptr : &e) && written && gdk_pixbuf_loader_get_pixbuf(loader))
            p = GDK_PIXBUF(g_object_ref(gdk_pixbuf_loader_get_pixbuf(loader)));
        g_object_unref(loader);
    }
    if (e) error = e->message, g_error_free(e);
    return Pixbuf(p, g_object_unref);
}

std::uint32_t rgb(GdkPixbuf* p, int x, int y) {
    const guchar* at = gdk_pixbuf_get_pixels(p) + y * gdk_pixbuf_get_rowstride(p) + x * gdk_pixbuf_get_n_channels(p);
    return std::uint32_t(at[0]) << 16 | std::uint32_t(at[1]) << 8 | at[2];
}

// True when `image` shows the converter's bitmap: its pixels, every line
// doubled for medium resolution (640 by 200).
bool samePixels(GdkPixbuf* image, GdkPixbuf* bitmap) {
    const int w = gdk_pixbuf_get_width(bitmap), h = gdk_pixbuf_get_height(bitmap);
    const int repeat = w == 640 && h == 200 ? 2 : 1;
    if (gdk_pixbuf_get_width(image) != w || gdk_pixbuf_get_height(image) != h * repeat) return false;
    for (int y = 0; y < h * repeat; ++y)
        for (int x = 0; x < w; ++x)
            if (rgb(image, x, y) != rgb(bitmap, x, y / repeat)) return false;
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    const auto pictures = vcheck::readList(argv[1]), broken = vcheck::readList(argv[2]);
    std::size_t sniffed = 0, astray = 0;
    for (const auto& [picture, bitmap] : pictures) {
        const char* type = vcheck::rowOf(picture)->mimeType.data();
        // gdk_pixbuf_new_from_file takes the type the first bytes give, and
        // the name only where they give none. Formats with a signature are
        // typed by it; a picture whose bytes give another type goes astray.
        const auto bytes = bytesOf(picture);
        gboolean uncertain = FALSE;
        gchar* byContents = g_content_type_guess(nullptr, reinterpret_cast<const guchar*>(bytes.data()),
                                                 std::min<std::size_t>(bytes.size(), 4096), &uncertain);
        const bool own = !uncertain && g_content_type_equals(byContents, type);
        sniffed += !uncertain;
        astray += !uncertain && !own;
        if (!uncertain && !own) std::cout << "note: by its first bytes " << picture << " is " << byContents << "\n";
        g_free(byContents);
        std::string error;
        const Pixbuf reference = read(bitmap, nullptr, error);
        std::vector<const char*> ways = {type};
        if (uncertain || own) ways.push_back(nullptr);
        for (const char* how : ways) {
            const Pixbuf image = read(picture, how, error);
            if (!image || !reference || !samePixels(image.get(), reference.get()))
                fail(picture, std::string(how ? "by type: " : "by name: ") + (image ? "other pixels" : error));
        }
    }
    for (const auto& [file, unused] : broken)
        for (const char* how : {vcheck::rowOf(file)->mimeType.data(), static_cast<const char*>(nullptr)}) {
            std::string error;
            if (read(file, how, error) || error.empty()) fail(file, "read, or refused without an error");
        }
    if (astray * 20 > pictures.size()) fail(argv[1], "more pictures typed as another format than the odd one");
    std::cout << "GdkPixbuf: " << pictures.size() << " pictures (" << sniffed << " typed by their first bytes, "
              << astray << " as another format), "
              << broken.size() << " broken files, " << vcheck::failures << " failures\n";
    return vcheck::failures == 0 ? 0 : 1;
}
