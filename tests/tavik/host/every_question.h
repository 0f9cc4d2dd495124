// Puts every question about a function to a source that does not write.
#pragma once

#include <variant>

#include "tavik/source.h"

namespace tavik::host::test {

inline void askEverything(Source& source, const Function& function) {
    if (const auto* nic = std::get_if<NicFunction>(&function)) {
        source.link(nic->deviceName);
        source.ipConfiguration(nic->deviceName);
        source.fcoeLinkage(nic->deviceName);
        source.nicTransceiver(nic->deviceName);
    } else if (const auto* storage = std::get_if<StorageFunction>(&function)) {
        source.portProperty(storage->handle);
        source.vpd(storage->handle);
        source.refreshStatistics(storage->handle);
        source.storageTransceiver(storage->handle);
    }
}

} // namespace tavik::host::test
