// The provider's shared library as a foreign server holds it: opened, asked for its factories, closed.
#pragma once

#include "cmpift.h"

#include <dlfcn.h>
#include <stdexcept>
#include <string>

class ProviderLibrary {
public:
    explicit ProviderLibrary(const char* file) : path(file), handle(dlopen(file, RTLD_LAZY | RTLD_GLOBAL)) {
        if (!handle) throw std::runtime_error(dlerror());
    }
    ~ProviderLibrary() {
        if (handle) dlclose(handle);
    }
    ProviderLibrary(const ProviderLibrary&) = delete;
    ProviderLibrary& operator=(const ProviderLibrary&) = delete;

    template <class Interface>
    using Factory = Interface* (*)(const CMPIBroker*, const CMPIContext*, CMPIStatus*);

    /// @param kind as in the factory's name.
    template <class Interface>
    Factory<Interface> factory(const char* kind) const {
        const std::string name = std::string("Merolt_CNA_Provider_Create_") + kind + "MI";
        void* const found = dlsym(handle, name.c_str());
        if (!found) throw std::runtime_error(dlerror());
        return reinterpret_cast<Factory<Interface>>(found);
    }

    /// For look-ups of other names.
    void* get() const { return handle; }

    void close() {
        if (handle && dlclose(handle) != 0) throw std::runtime_error(dlerror());
        handle = nullptr;
    }

    /// Whether the loader still has it, whoever holds it.
    bool isLoaded() const {
        void* const loaded = dlopen(path.c_str(), RTLD_LAZY | RTLD_NOLOAD);
        if (loaded) dlclose(loaded);
        return loaded != nullptr;
    }

private:
    std::string path;
    void* handle;
};
