// The one way in which every list reads the library's tree: adapters, their ports, each port's functions, in chain
// order. The order of all lists follows from it.
#pragma once

#include "inventory/tavik.h"

namespace merolt {

/// Calls the visitor with each port of the adapter; one without a port list has none.
template <class Visitor>
void forEachPhyPort(TAVIK_AdapterEntry& adapter, Visitor&& visitor) {
    if (!adapter.phyPorts) return;
    for (TAVIK_PhyPortEntry* port = adapter.phyPorts->first; port; port = port->next)
        visitor(*port);
}

/// Calls the visitor with each function of the port; one without a function list has none.
template <class Visitor>
void forEachFunction(TAVIK_PhyPortEntry& port, Visitor&& visitor) {
    if (!port.protocols) return;
    for (TAVIK_ProtocolEntry* entry = port.protocols->first; entry; entry = entry->next)
        visitor(*entry);
}

inline std::int32_t countPhyPorts(TAVIK_AdapterList* adapters) {
    std::int32_t count = 0;
    for (TAVIK_AdapterEntry* adapter = adapters->first; adapter; adapter = adapter->next)
        forEachPhyPort(*adapter, [&](TAVIK_PhyPortEntry&) { ++count; });
    return count;
}

/// Calls the visitor with each function, its port and its adapter, until it returns false.
template <class Visitor>
void walkProtocolEntries(TAVIK_AdapterList* adapters, Visitor&& visitor) {
    for (TAVIK_AdapterEntry* adapter = adapters->first; adapter; adapter = adapter->next) {
        TAVIK_PhyPortEntry* port = adapter->phyPorts ? adapter->phyPorts->first : nullptr;
        for (; port; port = port->next) {
            TAVIK_ProtocolEntry* entry = port->protocols ? port->protocols->first : nullptr;
            for (; entry; entry = entry->next)
                if (!visitor(*adapter, *port, *entry)) return;
        }
    }
}

/// Calls the visitor with each function, its port and its adapter.
template <class Visitor>
void forEachProtocolEntry(TAVIK_AdapterList* adapters, Visitor&& visitor) {
    walkProtocolEntries(adapters,
                        [&](TAVIK_AdapterEntry& adapter, TAVIK_PhyPortEntry& port, TAVIK_ProtocolEntry& entry) {
                            visitor(adapter, port, entry);
                            return true;
                        });
}

inline std::int32_t countAdapters(const TAVIK_AdapterList* adapters) {
    std::int32_t count = 0;
    for (const TAVIK_AdapterEntry* adapter = adapters->first; adapter; adapter = adapter->next)
        ++count;
    return count;
}

inline bool isStorageFunction(const TAVIK_ProtocolEntry& entry) {
    return entry.type == TAVIK_ProtocolFibreChannel || entry.type == TAVIK_ProtocolFCoE;
}

/// A storage or an Ethernet function; entries of other types are passed over everywhere.
inline bool isKnownFunction(const TAVIK_ProtocolEntry& entry) {
    return isStorageFunction(entry) || entry.type == TAVIK_ProtocolNic;
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
