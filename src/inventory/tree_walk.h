// The one way in which every list reads the library's tree: adapters, their ports, each port's functions, in chain
// order. The order of all lists follows from it.
#pragma once

#include "inventory/tavik.h"

namespace merolt {

/// Calls the visitor with each adapter, port and function; ports and functions that hang from null lists are none.
template <class Visitor>
void forEachProtocolEntry(TAVIK_AdapterList* adapters, Visitor&& visitor) {
    for (TAVIK_AdapterEntry* adapter = adapters->first; adapter; adapter = adapter->next) {
        if (!adapter->phyPorts) continue;
        for (TAVIK_PhyPortEntry* port = adapter->phyPorts->first; port; port = port->next) {
            if (!port->protocols) continue;
            for (TAVIK_ProtocolEntry* entry = port->protocols->first; entry; entry = entry->next)
                visitor(*adapter, *port, *entry);
        }
    }
}

inline bool isStorageFunction(const TAVIK_ProtocolEntry& entry) {
    return entry.type == TAVIK_ProtocolFibreChannel || entry.type == TAVIK_ProtocolFCoE;
}

/// Calls the visitor with the device record of each storage function.
template <class Visitor>
void forEachStorageFunction(TAVIK_AdapterList* adapters, Visitor&& visitor) {
    forEachProtocolEntry(adapters, [&](TAVIK_AdapterEntry&, TAVIK_PhyPortEntry&, TAVIK_ProtocolEntry& entry) {
        if (isStorageFunction(entry)) visitor(&entry.storage.device);
    });
}

/// Calls the visitor with each Ethernet function.
template <class Visitor>
void forEachNicFunction(TAVIK_AdapterList* adapters, Visitor&& visitor) {
    forEachProtocolEntry(adapters, [&](TAVIK_AdapterEntry&, TAVIK_PhyPortEntry&, TAVIK_ProtocolEntry& entry) {
        if (entry.type == TAVIK_ProtocolNic) visitor(entry.nic);
    });
}

} // namespace merolt
