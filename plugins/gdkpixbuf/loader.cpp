#include "plugins/gdkpixbuf/loader.h"

#include <memory>
#include <new>
#include <string>
#include <vector>

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

// The picture with a palette of its own colours (for a paletted picture,
// the picture's palette or the one of a frame).
GdkPixbuf* pixbufOf(const desktop::DesktopPicture& p, std::span<const std::uint32_t> colours) {
    GdkPixbuf* pixbuf = gdk_pixbuf_new(GDK_COLORSPACE_RGB, FALSE, 8, p.width, p.height);
    if (!pixbuf) return nullptr;
    guchar* pixels = gdk_pixbuf_get_pixels(pixbuf);
    const std::size_t stride = std::size_t(gdk_pixbuf_get_rowstride(pixbuf));
    std::vector<std::uint32_t> row(std::size_t(p.width));
    for (int y = 0; y < p.height; ++y) {
        p.rowRgb(y, colours, row.data());
        guchar* out = pixels + std::size_t(y) * stride;
        for (const std::uint32_t c : row) {
            *out++ = guchar(c >> 16);
            *out++ = guchar(c >> 8);
            *out++ = guchar(c);
        }
    }
    return pixbuf;
}

// The table's signatures as GdkPixbuf matches them: the bytes from the
// start of the file, with a mask that passes over the bytes before the
// signature ('x') and asks zero bytes, which a C string cannot hold, to be
// zero ('z'). A signature that an earlier row of the table shares ranks
// lower, so that the first row wins when the contents alone decide, as in
// the Qt plugin.
struct Patterns {
    std::vector<std::string> prefixes, masks;
    std::vector<GdkPixbufModulePattern> list;
};

bool earlierRowHas(const Format& format, const Signature& sig) {
    for (const Format& f : formatTable()) {
        if (&f == &format) return false;
        for (const Signature& other : f.signatures)
            if (other.offset == sig.offset && other.bytes == sig.bytes) return true;
    }
    return false;
}

void makePatterns(const Format& format, Patterns& out) {
    out = Patterns{};
    for (const Signature& sig : format.signatures) {
        std::string prefix(sig.offset, 'x'), mask(sig.offset, 'x');
        for (const char c : sig.bytes) {
            prefix += c == 0 ? 'z' : c;
            mask += c == 0 ? 'z' : ' ';
        }
        out.prefixes.push_back(prefix);
        out.masks.push_back(mask);
    }
    for (std::size_t i = 0; i < out.prefixes.size(); ++i)
        out.list.push_back({out.prefixes[i].data(), out.masks[i].data(),
                            earlierRowHas(format, format.signatures[i]) ? 50 : 100});
    out.list.push_back({nullptr, nullptr, 0});
}

}  // namespace

void fillInfo(GdkPixbufFormat* info, const char* key) {
    // GdkPixbuf keeps these for the life of the module, which holds one row.
    static Patterns patterns;
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
    makePatterns(*format, patterns);
    info->signature = patterns.list.data();
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
    GdkPixbuf* pixbuf = pixbufOf(picture, picture.palette);
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
