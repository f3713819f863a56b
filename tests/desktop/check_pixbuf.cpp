// check_pixbuf LIST WORK: GdkPixbuf with the loader cache in
// GDK_PIXBUF_MODULE_FILE: GIO names every listed picture's type,
// gdk_pixbuf_new_from_file reads it through the installed loader with the
// pixels of the converter's bitmap (lines doubled for medium resolution), and
// every broken file fails with an error, by name and through a loader asked
// for its type.
#include <gdk-pixbuf/gdk-pixbuf.h>
#include <gio/gio.h>

#include <memory>

#include "check_common.h"

namespace {

struct Unref {
    void operator()(void* object) const { g_object_unref(object); }
};
using PixbufPtr = std::unique_ptr<GdkPixbuf, Unref>;

std::uint32_t rgbAt(GdkPixbuf* p, int x, int y) {
    const guchar* at = gdk_pixbuf_get_pixels(p) + std::size_t(y) * std::size_t(gdk_pixbuf_get_rowstride(p)) +
                       std::size_t(x) * std::size_t(gdk_pixbuf_get_n_channels(p));
    return std::uint32_t(at[0]) << 16 | std::uint32_t(at[1]) << 8 | at[2];
}

PixbufPtr load(const std::string& path, std::string& error) {
    GError* e = nullptr;
    PixbufPtr p(gdk_pixbuf_new_from_file(path.c_str(), &e));
    if (e) error = e->message, g_error_free(e);
    return p;
}

std::string difference(GdkPixbuf* image, GdkPixbuf* reference) {
    if (!reference) return "no reference bitmap";
    const int w = gdk_pixbuf_get_width(reference), h = gdk_pixbuf_get_height(reference);
    const int repeat = w == 640 && h == 200 ? 2 : 1;
    if (gdk_pixbuf_get_width(image) != w || gdk_pixbuf_get_height(image) != h * repeat)
        return "size " + std::to_string(gdk_pixbuf_get_width(image)) + "x" + std::to_string(gdk_pixbuf_get_height(image));
    for (int y = 0; y < h * repeat; ++y)
        for (int x = 0; x < w; ++x)
            if (rgbAt(image, x, y) != rgbAt(reference, x, y / repeat))
                return "pixel " + std::to_string(x) + "," + std::to_string(y);
    return {};
}

// The bytes through a loader made for the type: true when it gave a picture.
bool loadsByType(const std::string& type, const std::vector<char>& bytes, std::string& error) {
    GError* e = nullptr;
    GdkPixbufLoader* loader = gdk_pixbuf_loader_new_with_mime_type(type.c_str(), &e);
    bool ok = loader && (bytes.empty() || gdk_pixbuf_loader_write(loader, reinterpret_cast<const guchar*>(bytes.data()),
                                                                   bytes.size(), &e));
    ok = loader && gdk_pixbuf_loader_close(loader, e ? nullptr : &e) && ok;
    ok = ok && gdk_pixbuf_loader_get_pixbuf(loader);
    if (e) error = e->message, g_error_free(e);
    if (loader) g_object_unref(loader);
    return ok;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: check_pixbuf LIST WORK\n";
        return 2;
    }
    const auto list = vcheck::readList(argv[1]);
    vcheck::Failures failures;
    if (list.empty()) failures.add(argv[1], "no pictures listed");
    std::size_t sniffed = 0;

    for (const vcheck::Listed& l : list) {
        const velmoric::Format* row = vcheck::rowOf(l.picture);
        const std::vector<char> bytes = vcheck::bytesOf(l.picture);
        gchar* guessed = g_content_type_guess(l.picture.c_str(), reinterpret_cast<const guchar*>(bytes.data()),
                                              std::min<std::size_t>(bytes.size(), 4096), nullptr);
        if (!row || row->mimeType != guessed) failures.add(l.picture, std::string("GIO says ") + guessed);
        g_free(guessed);
        std::string error;
        if (!row || !loadsByType(std::string(row->mimeType), bytes, error)) failures.add(l.picture, "not read by type: " + error);
        // gdk_pixbuf_new_from_file asks GIO for a type by the contents first and
        // takes the name only when the contents say nothing; first bytes that
        // match another format's magic go to that format's loader.
        gboolean uncertain = FALSE;
        gchar* byContents = g_content_type_guess(nullptr, reinterpret_cast<const guchar*>(bytes.data()),
                                                 std::min<std::size_t>(bytes.size(), 4096), &uncertain);
        const bool sniffedAway = !uncertain;
        if (sniffedAway) std::cout << "note: " << l.picture << " looks like " << byContents << " by its first bytes\n";
        g_free(byContents);
        if (sniffedAway) {
            ++sniffed;
            continue;
        }
        GdkPixbufFormat* format = gdk_pixbuf_get_file_info(l.picture.c_str(), nullptr, nullptr);
        if (!format || "velmoric-" + std::string(row->lower) != gdk_pixbuf_format_get_name(format))
            failures.add(l.picture, "not given to its own module");
        const PixbufPtr image = load(l.picture, error);
        if (!image) {
            failures.add(l.picture, "not read: " + error);
            continue;
        }
        std::string ignored;
        if (const std::string d = difference(image.get(), load(l.bitmap, ignored).get()); !d.empty())
            failures.add(l.picture, d);
    }

    const auto broken = vcheck::writeBrokenFiles(list, std::string(argv[2]) + "/broken-pixbuf");
    for (const std::string& path : broken) {
        std::string byName, byType;
        if (load(path, byName) || byName.empty()) failures.add(path, "a broken file was read by name");
        const velmoric::Format* row = vcheck::rowOf(path);
        if (!row || loadsByType(std::string(row->mimeType), vcheck::bytesOf(path), byType) || byType.empty())
            failures.add(path, "a broken file was read by type");
    }
    std::cout << sniffed << " of " << list.size() << " pictures left to another loader by gdk_pixbuf_new_from_file's sniffing\n";
    if (sniffed * 20 > list.size()) failures.add(argv[1], "more pictures sniffed away than the odd one");
    return failures.finish("GdkPixbuf", list.size(), broken.size());
}
