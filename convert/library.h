#pragma once
// Encoder libraries are opened when the first file of their kind is written,
// not when a program starts: most conversions write bitmaps, and loading an
// encoder with its compression library is a good part of a one-file run.
#include <dlfcn.h>

#include <stdexcept>
#include <string>

namespace velmoric {

// `what` names the work in the error ("cannot encode the GIF").
inline void* openLibrary(const char* soname, const std::string& what) {
    void* library = ::dlopen(soname, RTLD_NOW | RTLD_LOCAL);
    if (!library) throw std::runtime_error(what + ": " + ::dlerror());
    return library;
}

template <class F>
void bindSymbol(void* library, F& function, const char* name, const char* soname, const std::string& what) {
    function = reinterpret_cast<F>(::dlsym(library, name));
    if (!function) throw std::runtime_error(what + ": " + soname + " has no " + name);
}

}  // namespace velmoric
