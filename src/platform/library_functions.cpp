#include "platform/library_functions.h"

#include <dlfcn.h>

namespace merolt::platform {

void* functionBeside(const void* known, const char* name) {
    Dl_info place{};
    if (dladdr(known, &place) == 0 || !place.dli_fname) return nullptr;
    void* const library = dlopen(place.dli_fname, RTLD_LAZY | RTLD_NOLOAD);
    if (!library) return nullptr;
    void* const function = dlsym(library, name);
    // Whoever holds the known function holds the library.
    dlclose(library);
    return function;
}

} // namespace merolt::platform
