#include "plugins/gdkpixbuf/animation.h"

#include <algorithm>
#include <string>
#include <vector>

namespace velmoric::pixbuf {
namespace {

// What an animation and its iterators share.
struct Played {
    desktop::DesktopPicture picture;
    std::vector<long long> endsMs;  // when each frame of a period ends
    GdkPixbuf* still = nullptr;     // the first frame, referenced

    ~Played() {
        if (still) g_object_unref(still);
    }
};

struct Animation {
    GdkPixbufAnimation parent;
    Played* played;
};

struct Iter {
    GdkPixbufAnimationIter parent;
    Animation* animation;  // referenced
    gint64 startMs;
    long long positionMs;  // into the period, at the last advance
    std::size_t frame;
    GdkPixbuf* pixbuf;  // of `frame`, once asked for
    std::size_t pixbufFrame;
};

GObjectClass* animationParent = nullptr;
GObjectClass* iterParent = nullptr;

G_GNUC_BEGIN_IGNORE_DEPRECATIONS

gint64 millisecondsOf(const GTimeVal* time) {
    GTimeVal now;
    if (!time) g_get_current_time(&now), time = &now;
    return gint64(time->tv_sec) * 1000 + time->tv_usec / 1000;
}

// GObject wants every type name once in a process, and every module holds a
// copy of this code of its own: the names carry the module's format.
GType registerType(GType parent, const std::string& name, guint classSize, GClassInitFunc init, guint size) {
    return g_type_register_static_simple(parent, g_intern_string(name.c_str()), classSize, init, size, nullptr,
                                         GTypeFlags(0));
}

GType iterType(const char* key);

void animationFinalize(GObject* object) {
    delete reinterpret_cast<Animation*>(object)->played;
    animationParent->finalize(object);
}

void animationClassInit(gpointer klass, gpointer) {
    animationParent = G_OBJECT_CLASS(g_type_class_peek_parent(klass));
    G_OBJECT_CLASS(klass)->finalize = animationFinalize;
    auto* c = GDK_PIXBUF_ANIMATION_CLASS(klass);
    c->is_static_image = [](GdkPixbufAnimation*) -> gboolean { return FALSE; };
    c->get_static_image = [](GdkPixbufAnimation* a) { return reinterpret_cast<Animation*>(a)->played->still; };
    c->get_size = [](GdkPixbufAnimation* a, int* width, int* height) {
        const desktop::DesktopPicture& p = reinterpret_cast<Animation*>(a)->played->picture;
        if (width) *width = p.width;
        if (height) *height = p.height;
    };
    c->get_iter = [](GdkPixbufAnimation* a, const GTimeVal* start) {
        auto* iter = static_cast<Iter*>(g_object_new(iterType(nullptr), nullptr));
        iter->animation = reinterpret_cast<Animation*>(g_object_ref(a));
        iter->startMs = millisecondsOf(start);
        return &iter->parent;
    };
}

GType animationType(const char* key) {
    static const GType type = registerType(GDK_TYPE_PIXBUF_ANIMATION, std::string("VelmoricAnimation_") + key,
                                           sizeof(GdkPixbufAnimationClass), animationClassInit, sizeof(Animation));
    return type;
}

Iter* iterOf(GdkPixbufAnimationIter* i) { return reinterpret_cast<Iter*>(i); }

void iterFinalize(GObject* object) {
    Iter* iter = reinterpret_cast<Iter*>(object);
    if (iter->pixbuf) g_object_unref(iter->pixbuf);
    g_object_unref(iter->animation);
    iterParent->finalize(object);
}

void iterClassInit(gpointer klass, gpointer) {
    iterParent = G_OBJECT_CLASS(g_type_class_peek_parent(klass));
    G_OBJECT_CLASS(klass)->finalize = iterFinalize;
    auto* c = GDK_PIXBUF_ANIMATION_ITER_CLASS(klass);
    // What is left of the frame on show.
    c->get_delay_time = [](GdkPixbufAnimationIter* i) {
        const Iter* iter = iterOf(i);
        return int(iter->animation->played->endsMs[iter->frame] - iter->positionMs);
    };
    c->get_pixbuf = [](GdkPixbufAnimationIter* i) {
        Iter* iter = iterOf(i);
        if (!iter->pixbuf || iter->pixbufFrame != iter->frame) {
            const Played& played = *iter->animation->played;
            // A new pixbuf each time: whoever still holds the last one keeps its colours.
            GdkPixbuf* next = iter->frame == 0
                                  ? GDK_PIXBUF(g_object_ref(played.still))
                                  : pixbufOf(played.picture, played.picture.frames[iter->frame].palette);
            if (!next) return iter->pixbuf;  // out of memory: the last frame stays
            if (iter->pixbuf) g_object_unref(iter->pixbuf);
            iter->pixbuf = next;
            iter->pixbufFrame = iter->frame;
        }
        return iter->pixbuf;
    };
    c->on_currently_loading_frame = [](GdkPixbufAnimationIter*) -> gboolean { return FALSE; };
    c->advance = [](GdkPixbufAnimationIter* i, const GTimeVal* now) -> gboolean {
        Iter* iter = iterOf(i);
        const std::vector<long long>& ends = iter->animation->played->endsMs;
        iter->positionMs = std::max<gint64>(0, millisecondsOf(now) - iter->startMs) % ends.back();
        const std::size_t frame = std::size_t(std::upper_bound(ends.begin(), ends.end(), iter->positionMs) - ends.begin());
        const bool changed = frame != iter->frame;
        iter->frame = frame;
        return changed;
    };
}

G_GNUC_END_IGNORE_DEPRECATIONS

GType iterType(const char* key) {
    static const GType type = registerType(GDK_TYPE_PIXBUF_ANIMATION_ITER, std::string("VelmoricAnimationIter_") + key,
                                           sizeof(GdkPixbufAnimationIterClass), iterClassInit, sizeof(Iter));
    return type;
}

}  // namespace

GdkPixbuf* pixbufOf(const desktop::DesktopPicture& p, std::span<const std::uint32_t> colours) {
    GdkPixbuf* pixbuf = gdk_pixbuf_new(GDK_COLORSPACE_RGB, FALSE, 8, p.width, p.height);
    if (!pixbuf) return nullptr;
    guchar* pixels = gdk_pixbuf_get_pixels(pixbuf);
    const std::size_t stride = std::size_t(gdk_pixbuf_get_rowstride(pixbuf));
    const std::size_t width = std::size_t(p.width);
    std::vector<std::uint32_t> row(width);
    const auto indices = [&](int y) { return p.indices.data() + std::size_t(y) * width; };
    for (int y = 0; y < p.height; ++y) {
        guchar* out = pixels + std::size_t(y) * stride;
        // A medium-resolution picture shows each line twice: a row of the
        // same indices as the one above is the same bytes.
        if (y > 0 && p.paletted() && std::equal(indices(y), indices(y) + width, indices(y - 1))) {
            std::copy_n(out - stride, 3 * width, out);
            continue;
        }
        p.rowRgb(y, colours, row.data());
        for (const std::uint32_t c : row) {
            *out++ = guchar(c >> 16);
            *out++ = guchar(c >> 8);
            *out++ = guchar(c);
        }
    }
    return pixbuf;
}

GdkPixbufAnimation* newAnimation(const char* key, desktop::DesktopPicture picture, GdkPixbuf* still) {
    iterType(key);  // both types take the module's format in their names
    auto* played = new Played{std::move(picture), {}, still};
    long long end = 0;
    for (const desktop::DesktopFrame& f : played->picture.frames) played->endsMs.push_back(end += f.delayMs);
    auto* animation = static_cast<Animation*>(g_object_new(animationType(key), nullptr));
    animation->played = played;
    g_object_ref(still);
    return &animation->parent;
}

}  // namespace velmoric::pixbuf
