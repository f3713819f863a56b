#include "plugins/gdkpixbuf/loader.h"

#include <cstdio>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "desktop/desktopimage.h"
#include "plugins/gdkpixbuf/animation.h"

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

// The picture of the bytes gathered, or false with the reason in `error`.
bool decode(const Format& format, const desktop::SourceBytes& source, desktop::DesktopPicture& picture,
            GError** error) {
    try {
        picture = desktop::decodeForDesktop(format, source.head(), source.length());
    } catch (const std::exception& e) {
        setError(error, GDK_PIXBUF_ERROR_FAILED, e.what());
        return false;
    }
    if (picture.ok) return true;
    setError(error, GDK_PIXBUF_ERROR_CORRUPT_IMAGE, typeComment(format) + ": " + picture.error);
    return false;
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
    if (!decode(*load->format, load->source, picture, error)) return FALSE;
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
    const int shownWidth = picture.width, shownHeight = picture.height;
    // A picture whose colours cycle comes as an animation too, for the
    // programs that play one; the still picture is its first frame.
    GdkPixbufAnimation* animation =
        picture.animated() ? newAnimation(load->format->lower.data(), std::move(picture), pixbuf) : nullptr;
    if (load->preparedFunc) load->preparedFunc(pixbuf, animation, load->userData);
    if (load->updatedFunc) load->updatedFunc(pixbuf, 0, 0, shownWidth, shownHeight, load->userData);
    if (animation) g_object_unref(animation);
    g_object_unref(pixbuf);
    return TRUE;
}

GdkPixbufAnimation* loadAnimation(const char* key, FILE* file, GError** error) {
    const Format* format = desktop::formatForKey(key);
    desktop::SourceBytes source;
    desktop::DesktopPicture picture;
    try {
        guchar buffer[16384];
        for (std::size_t n; source.length() <= desktop::kLongestFile && (n = std::fread(buffer, 1, sizeof buffer, file)) > 0;)
            source.append({buffer, n});
    } catch (const std::bad_alloc&) {
        setError(error, GDK_PIXBUF_ERROR_INSUFFICIENT_MEMORY, "not enough memory to load the picture");
        return nullptr;
    }
    if (!format) {
        setError(error, GDK_PIXBUF_ERROR_UNKNOWN_TYPE, std::string("no Atari picture format '") + key + "'");
        return nullptr;
    }
    if (std::ferror(file)) {
        setError(error, GDK_PIXBUF_ERROR_FAILED, "the file cannot be read");
        return nullptr;
    }
    if (!decode(*format, source, picture, error)) return nullptr;
    GdkPixbuf* still = pixbufOf(picture, picture.palette);
    if (!still) {
        setError(error, GDK_PIXBUF_ERROR_INSUFFICIENT_MEMORY, "not enough memory for the picture");
        return nullptr;
    }
    GdkPixbufAnimation* animation = picture.animated() ? newAnimation(key, std::move(picture), still)
                                                       : gdk_pixbuf_non_anim_new(still);
    g_object_unref(still);
    return animation;
}

}  // namespace velmoric::pixbuf
