// check_pixbuf PICTURES BROKEN: GdkPixbuf with the loader cache in
// GDK_PIXBUF_MODULE_FILE. A loader made for each picture's type, as Eye of
// GNOME makes one, and gdk_pixbuf_new_from_file where the first bytes do not
// send it to another format, read it through the installed module with the
// pixels of the converter's bitmap (lines doubled for medium resolution);
// every broken file fails both ways with an error. A picture whose colours
// cycle loads as an animation, both ways, whose frames are the converter's
// bitmap with the core's palettes, with their delays, looping.
#include <gdk-pixbuf/gdk-pixbuf.h>
#include <gio/gio.h>

#include <memory>

#include "check_common.h"

using vcheck::fail;

namespace {

using Pixbuf = std::unique_ptr<GdkPixbuf, decltype(&g_object_unref)>;

// A picture read by a loader made for `type`, as Eye of GNOME makes one, or
// by name where `type` is null; a null image with the error where it fails.
struct Loaded { Pixbuf image{nullptr, g_object_unref}; bool animated = false; std::string error; };

Loaded load(const std::vector<std::uint8_t>& bytes, const char* type) {
    Loaded out;
    GError* e = nullptr;
    if (GdkPixbufLoader* loader = gdk_pixbuf_loader_new_with_mime_type(type, &e)) {
        const bool written = bytes.empty() || gdk_pixbuf_loader_write(loader, bytes.data(), bytes.size(), &e);
        if (gdk_pixbuf_loader_close(loader, e ? nullptr : &e) && written && gdk_pixbuf_loader_get_pixbuf(loader)) {
            out.image.reset(GDK_PIXBUF(g_object_ref(gdk_pixbuf_loader_get_pixbuf(loader))));
            out.animated = !gdk_pixbuf_animation_is_static_image(gdk_pixbuf_loader_get_animation(loader));
        }
        g_object_unref(loader);
    }
    if (e) out.error = e->message, g_error_free(e);
    return out;
}

Loaded read(const std::string& path, const char* type) {
    if (type) return load(vcheck::bytesOf(path), type);
    Loaded out;
    GError* e = nullptr;
    out.image.reset(gdk_pixbuf_new_from_file(path.c_str(), &e));
    if (e) out.error = e->message, g_error_free(e);
    return out;
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

// gdk_pixbuf_animation_new_from_file against the core: a still picture is
// static; the frames of one that cycles are its bitmap with each palette of
// the period in turn, each for its delay, and then the first again.
G_GNUC_BEGIN_IGNORE_DEPRECATIONS
void checkAnimation(const std::string& picture, const vcheck::Expected& expected) {
    GdkPixbufAnimation* animation = gdk_pixbuf_animation_new_from_file(picture.c_str(), nullptr);
    if (!animation) return fail(picture, "no animation");
    const auto& frames = expected.animation.frames;
    if (!expected.animation.animated()) {
        if (!gdk_pixbuf_animation_is_static_image(animation)) fail(picture, "a still picture as an animation");
        return g_object_unref(animation);
    }
    const std::vector<int> delays = velmoric::cycles::delaysIn(expected.animation.frames, 1000);
    GTimeVal time{1000, 0};
    GdkPixbufAnimationIter* iter = gdk_pixbuf_animation_get_iter(animation, &time);
    for (std::size_t i = 0; i <= frames.size(); ++i) {
        const std::size_t want = i % frames.size();
        auto bitmap = expected.bitmap;
        velmoric::cycles::putPalette(bitmap, frames[want].palette);
        const Pixbuf reference = load(bitmap, "image/bmp").image;
        if (gdk_pixbuf_animation_is_static_image(animation) || !reference ||
            !samePixels(gdk_pixbuf_animation_iter_get_pixbuf(iter), reference.get()) ||
            gdk_pixbuf_animation_iter_get_delay_time(iter) != delays[want])
            fail(picture, "frame " + std::to_string(i) + " is not the bitmap with the core's palette for its time");
        g_time_val_add(&time, delays[want] * 1000L);
        if (!gdk_pixbuf_animation_iter_advance(iter, &time)) fail(picture, "the frame did not change in time");
    }
    g_object_unref(iter);
    g_object_unref(animation);
}
G_GNUC_END_IGNORE_DEPRECATIONS

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    const auto pictures = vcheck::readList(argv[1]), broken = vcheck::readList(argv[2]);
    std::size_t sniffed = 0, astray = 0, animated = 0;
    for (const auto& [picture, bitmap] : pictures) {
        const char* type = vcheck::rowOf(picture)->mimeType.data();
        // gdk_pixbuf_new_from_file takes the type the first bytes give, and
        // the name only where they give none. Formats with a signature are
        // typed by it; a picture whose bytes give another type goes astray.
        const auto bytes = vcheck::bytesOf(picture);
        gboolean uncertain = FALSE;
        gchar* byContents =
            g_content_type_guess(nullptr, bytes.data(), std::min<std::size_t>(bytes.size(), 4096), &uncertain);
        const bool own = !uncertain && g_content_type_equals(byContents, type);
        sniffed += !uncertain;
        astray += !uncertain && !own;
        if (!uncertain && !own) std::cout << "note: by its first bytes " << picture << " is " << byContents << "\n";
        g_free(byContents);
        const Loaded reference = read(bitmap, nullptr);
        std::vector<const char*> ways = {type};
        if (uncertain || own) ways.push_back(nullptr);
        for (const char* how : ways) {
            const Loaded got = read(picture, how);
            if (!got.image || !reference.image || !samePixels(got.image.get(), reference.image.get()))
                fail(picture, std::string(how ? "by type: " : "by name: ") + (got.image ? "other pixels" : got.error));
        }
        if (!uncertain) continue;  // typed otherwise by name too
        const vcheck::Expected expected = vcheck::expectedOf(picture);
        animated += expected.animation.animated();
        checkAnimation(picture, expected);
        if (read(picture, type).animated != expected.animation.animated())
            fail(picture, "a loader for its type does not animate it as the core does");
    }
    for (const auto& [file, unused] : broken)
        for (const char* how : {vcheck::rowOf(file)->mimeType.data(), static_cast<const char*>(nullptr)})
            if (const Loaded got = read(file, how); got.image || got.error.empty())
                fail(file, "read, or refused without an error");
    if (astray * 20 > pictures.size()) fail(argv[1], "more pictures typed as another format than the odd one");
    std::cout << "GdkPixbuf: " << pictures.size() << " pictures (" << sniffed << " typed by their first bytes, "
              << astray << " as another format, " << animated << " animated), "
              << broken.size() << " broken files, " << vcheck::failures << " failures\n";
    return vcheck::failures == 0 ? 0 : 1;
}
