// The library as a program meets it: loaded by its file, called by its exported names.
#pragma once

#include <stdexcept>
#include <string>

#include <dlfcn.h>

#include "inventory/tavik.h"

namespace tavik::test {

template <typename Call>
Call exportedCall(const char* name) {
    static void* const library = dlopen(TAVIK_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    if (!library) throw std::runtime_error(dlerror());
    void* const address = dlsym(library, name);
    if (!address) throw std::runtime_error(dlerror());
    return reinterpret_cast<Call>(address);
}

#define TAVIK_CALL(name) const decltype(&TAVIK_##name) name = exportedCall<decltype(&TAVIK_##name)>("TAVIK_" #name)

/** Every call of the interface; making one fails if the library lacks any. */
struct LoadedLibrary {
    TAVIK_CALL(Initialize);
    TAVIK_CALL(Uninitialize);
    TAVIK_CALL(GetAdapterList);
    TAVIK_CALL(DidConfigChange);
    TAVIK_CALL(ResetConfigChange);
    TAVIK_CALL(UpdateBackupAdapterList);
    TAVIK_CALL(SwapBackupToMainAdapterList);
    TAVIK_CALL(RegisterAlarmNotificationCallback);
    TAVIK_CALL(UnRegisterAlarmNotificationCallback);
    TAVIK_CALL(GetHbaDevicePortProperty);
    TAVIK_CALL(GetVpd);
    TAVIK_CALL(GetUUIDFromI2CVPD);
    TAVIK_CALL(RefreshDeviceStats);
    TAVIK_CALL(GetSFPData);
    TAVIK_CALL(GetOSName);
    TAVIK_CALL(GetLinkProperties);
    TAVIK_CALL(GetIPProperties);
    TAVIK_CALL(GetFCoELinkage);
    TAVIK_CALL(GetTransceiverDMIData);
    TAVIK_CALL(GetMBIVersionString);
    TAVIK_CALL(UpdateFlash);
    TAVIK_CALL(doOptionROMUpdate);
    TAVIK_CALL(FreeMem);
};

#undef TAVIK_CALL

} // namespace tavik::test
