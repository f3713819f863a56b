#include "plugins/gdkpixbuf/loader.h"

#include <memory>
#include <new>
#include <string>

#include "desktop/desktopimage.h"

namespace velmoric::pixbuf {
namespace {

struct Load {
    const Format* format;
    GdkPixbufModuleSizeFunc sizeFunc;
    GdkPixbufModulePreparedFunc preparedFunc;
    GdkPixbufModuleUpdatedFunc updatedFunc;
    gpointer userData;
    desktop::SourceBytes source;
};

void setError(GError** error, GdkPixbufError code, const std::string& text) {
    g_set_error_literal(error, GDK_PIXBUF_ERROR, code, text.c_str());
}

GdkPixbuf* pixbufOf(const desktop::DesktopPicture& p) {
    GdkPixbuf* pixbuf = gdk_pixbuf_new(GDK_COLORSPACE_RGB, FALSE, 8, p.width, p.height);
    if (!pixbuf) return nullptr;
    guchar* pixels = gdk_pixbuf_get_pixels(pixbuf);
    const std::size_t stride = std::size_t(gdk_pixbuf_get_rowstride(pixbuf));
    for (int y = 0; y < p.height; ++y) {
        guchar* out = pixels + std::size_t(y) * stride;
        for (int x = 0; x < p.width; ++x) {
            const std::uint32_t c = p.pixels[std::size_t(y) * std::size_t(p.width) + std::size_t(x)];
            *out++ = guchar(c >> 16);
            *out++ = guchar(c >> 8);
            *out++ = guchar(c);
        }
    }
    return pixbuf;
}

}  // namespace

void fillInfo(GdkPixbufFormat* info, const char* key) {
    // GdkPixbuf keeps these for the life of the module, which holds one row.
    static GdkPixbufModulePattern noSignature[] = {{nullptr, nullptr, 0}};
    static std::string name, description;
    static gchar* mimeTypes[2] = {};
    static gchar* extensions[2] = {};
    const Format* format = desktop::formatForKey(key);
    if (!format) return;
    name = "velmoric-" + std::string(format->lower);
    description = typeComment(*format);
    // The table's texts are string literals, so each view ends in a zero.
    mimeTypes[0] = const_cast<gchar*>(format->mimeType.data());
    extensions[0] = const_cast<gchar*>(format->lower.data());
    info->name = name.data();
    info->signature = noSignature;
    info->description = description.data();
    info->mime_types = mimeTypes;
    info->extensions = extensions;
    info->flags = GDK_PIXBUF_FORMAT_THREADSAFE;
    info->license = const_cast<gchar*>("Other");
}

gpointer beginLoad(const char* key, GdkPixbufModuleSizeFunc sizeFunc, GdkPixbufModulePreparedFunc preparedFunc,
                   GdkPixbufModuleUpdatedFunc updatedFunc, gpointer userData, GError** error) {
    const Format* format = desktop::formatForKey(key);
    if (!format) {
        setError(error, GDK_PIXBUF_ERROR_UNKNOWN_TYPE, std::string("no Atari picture format '") + key + "'");
        return nullptr;
    }
    try {
        return new Load{format, sizeFunc, preparedFunc, updatedFunc, userData, {}};
    } catch (const std::bad_alloc&) {
        setError(error, GDK_PIXBUF_ERROR_INSUFFICIENT_MEMORY, "not enough memory to load the picture");
        return nullptr;
    }
}

gboolean loadIncrement(gpointer context, const guchar* buffer, guint size, GError** error) {
    try {
        desktop::SourceBytes& source = static_cast<Load*>(context)->source;
        source.append({buffer, size});
        if (source.length() <= desktop::kLongestFile) return TRUE;
        setError(error, GDK_PIXBUF_ERROR_CORRUPT_IMAGE, "the file is far longer than any Atari picture");
        return FALSE;
    } catch (const std::bad_alloc&) {
        setError(error, GDK_PIXBUF_ERROR_INSUFFICIENT_MEMORY, "not enough memory to load the picture");
        return FALSE;
    }
}

gboolean stopLoad(gpointer context, GError** error) {
    const std::unique_ptr<Load> load(static_cast<Load*>(context));
    if (!load) {
        setError(error, GDK_PIXBUF_ERROR_FAILED, "no load was begun");
        return FALSE;
    }
    desktop::DesktopPicture picture;
    try {
        picture = desktop::decodeForDesktop(*load->format, load->source.head(), load->source.length());
    } catch (const std::exception& e) {
        setError(error, GDK_PIXBUF_ERROR_FAILED, e.what());
        return FALSE;
    }
    if (!picture.ok) {
        setError(error, GDK_PIXBUF_ERROR_CORRUPT_IMAGE, typeComment(*load->format) + ": " + picture.error);
        return FALSE;
    }
    int width = picture.width, height = picture.height;
    if (load->sizeFunc) {
        load->sizeFunc(&width, &height, load->userData);
        if (width == 0 || height == 0) return TRUE;  // the caller wanted the size alone
    }
    GdkPixbuf* pixbuf = pixbufOf(picture);
    if (!pixbuf) {
        setError(error, GDK_PIXBUF_ERROR_INSUFFICIENT_MEMORY, "not enough memory for the picture");
        return FALSE;
    }
    if (load->preparedFunc) load->preparedFunc(pixbuf, nullptr, load->userData);
    if (load->updatedFunc) load->updatedFunc(pixbuf, 0, 0, picture.width, picture.height, load->userData);
    g_object_unref(pixbuf);
    return TRUE;
}

}  // namespace velmoric::pixbuf
