// One GdkPixbuf module: the row of the table named by VELMORIC_PIXBUF_KEY.
#include "plugins/gdkpixbuf/loader.h"

namespace {

gpointer beginLoad(GdkPixbufModuleSizeFunc sizeFunc, GdkPixbufModulePreparedFunc preparedFunc,
                   GdkPixbufModuleUpdatedFunc updatedFunc, gpointer userData, GError** error) {
    return velmoric::pixbuf::beginLoad(VELMORIC_PIXBUF_KEY, sizeFunc, preparedFunc, updatedFunc, userData, error);
}

GdkPixbufAnimation* loadAnimation(FILE* file, GError** error) {
    return velmoric::pixbuf::loadAnimation(VELMORIC_PIXBUF_KEY, file, error);
}

}  // namespace

extern "C" {

G_MODULE_EXPORT void fill_vtable(GdkPixbufModule* module) {
    module->begin_load = beginLoad;
    module->load_increment = velmoric::pixbuf::loadIncrement;
    module->stop_load = velmoric::pixbuf::stopLoad;
    module->load_animation = loadAnimation;
}

G_MODULE_EXPORT void fill_info(GdkPixbufFormat* info) { velmoric::pixbuf::fillInfo(info, VELMORIC_PIXBUF_KEY); }

}  // extern "C"
