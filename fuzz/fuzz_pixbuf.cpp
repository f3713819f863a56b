// The GdkPixbuf loader's entry points as GdkPixbuf calls them: the first
// input byte picks the module's format, the second the size of the pieces
// the rest arrives in. A load ends with a picture of its kind's size and no
// error, or with an error and no picture.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "plugins/gdkpixbuf/loader.h"
#include "formats/formats.h"

namespace {

void prepared(GdkPixbuf* pixbuf, GdkPixbufAnimation*, gpointer result) {
    *static_cast<GdkPixbuf**>(result) = GDK_PIXBUF(g_object_ref(pixbuf));
}

void updated(GdkPixbuf*, int, int, int, int, gpointer) {}

bool sizeOfAKind(int width, int height) {
    return (width == 320 && height == 200) || (width == 640 && height == 400) || (width == 576 && height == 720);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const auto table = velmoric::formatTable();
    const std::string key(table[data[0] % table.size()].lower);
    GdkPixbufFormat info{};
    velmoric::pixbuf::fillInfo(&info, key.c_str());
    if (!info.mime_types || std::string(info.mime_types[0]) != table[data[0] % table.size()].mimeType) std::abort();

    GdkPixbuf* result = nullptr;
    GError* error = nullptr;
    gpointer load = velmoric::pixbuf::beginLoad(key.c_str(), nullptr, prepared, updated, &result, &error);
    if (!load) std::abort();
    const std::size_t piece = size > 1 ? 1 + std::size_t(data[1]) * 97 : 1;
    for (std::size_t at = 2; at < size; at += piece)
        if (!velmoric::pixbuf::loadIncrement(load, data + at, guint(std::min(piece, size - at)), &error)) std::abort();
    const bool ok = velmoric::pixbuf::stopLoad(load, &error);
    if (ok != (result != nullptr) || ok == (error != nullptr)) std::abort();
    if (result && !sizeOfAKind(gdk_pixbuf_get_width(result), gdk_pixbuf_get_height(result))) std::abort();
    if (result) g_object_unref(result);
    if (error) g_error_free(error);
    return 0;
}
