// The one way in which every list reads the library's tree: adapters, their ports, each port's functions, in chain
// order. The order of all lists follows from it.
#pragma once

#include "inventory/chain.h"
#include "inventory/tavik.h"

namespace merolt {

/// One walk over the tree. What it visits is bounded as a whole, whatever the chains in it do.
class TreeWalk {
public:
    explicit TreeWalk(const TAVIK_AdapterList* adapters) : list(adapters) {}
    TreeWalk(const TreeWalk&) = delete;
    TreeWalk& operator=(const TreeWalk&) = delete;

    Chain<TAVIK_AdapterEntry> adapters() { return {list->first, adaptersLeft}; }
    /// An adapter without a port list has none.
    Chain<TAVIK_PhyPortEntry> portsOf(const TAVIK_AdapterEntry& adapter) {
        return {adapter.phyPorts ? adapter.phyPorts->first : nullptr, portsLeft};
    }
    /// A port without a function list has none.
    Chain<TAVIK_ProtocolEntry> functionsOf(const TAVIK_PhyPortEntry& port) {
        return {port.protocols ? port.protocols->first : nullptr, functionsLeft};
    }
    Chain<TAVIK_TargetEntry> targetsOf(const TAVIK_DeviceRecord& device) { return {device.firstTarget, targetsLeft}; }
    Chain<TAVIK_LunEntry> unitsOf(const TAVIK_TargetEntry& target) { return {target.firstLun, unitsLeft}; }

private:
    const TAVIK_AdapterList* list;
    ChainAllowance adaptersLeft{ChainKind::adapters};
    ChainAllowance portsLeft{ChainKind::ports};
    ChainAllowance functionsLeft{ChainKind::functions};
    ChainAllowance targetsLeft{ChainKind::targets};
    ChainAllowance unitsLeft{ChainKind::logicalUnits};
};

/// Calls the visitor with each port and its adapter.
template <class Visitor>
void forEachPhyPort(const TAVIK_AdapterList* adapters, Visitor&& visitor) {
    TreeWalk walk(adapters);
    for (TAVIK_AdapterEntry& adapter : walk.adapters()) {
        for (TAVIK_PhyPortEntry& port : walk.portsOf(adapter))
            visitor(adapter, port);
    }
}

inline std::int32_t countPhyPorts(const TAVIK_AdapterList* adapters) {
    std::int32_t count = 0;
    forEachPhyPort(adapters, [&](TAVIK_AdapterEntry&, TAVIK_PhyPortEntry&) { ++count; });
    return count;
}

/// Calls the visitor with each function, its port and its adapter, until it returns false.
template <class Visitor>
void walkProtocolEntries(TreeWalk& walk, Visitor&& visitor) {
    for (TAVIK_AdapterEntry& adapter : walk.adapters()) {
        for (TAVIK_PhyPortEntry& port : walk.portsOf(adapter)) {
            for (TAVIK_ProtocolEntry& entry : walk.functionsOf(port))
                if (!visitor(adapter, port, entry)) return;
        }
    }
}

template <class Visitor>
void walkProtocolEntries(const TAVIK_AdapterList* adapters, Visitor&& visitor) {
    TreeWalk walk(adapters);
    walkProtocolEntries(walk, visitor);
}

/// The same walk in steps, for one that goes on later where it stopped.
class ProtocolEntryWalk {
public:
    explicit ProtocolEntryWalk(const TAVIK_AdapterList* adapters) : walk(adapters) {}

    /// Goes to the first function, then from each to the next. @return false behind the last one.
    bool next() {
        if (!function.isAtEnd()) ++function;
        while (function.isAtEnd()) {
            if (!nextPort()) return false;
            function = walk.functionsOf(*port).begin();
        }
        return true;
    }

    TAVIK_AdapterEntry& atAdapter() const { return *adapter; }
    TAVIK_PhyPortEntry& atPort() const { return *port; }
    TAVIK_ProtocolEntry& atFunction() const { return *function; }

private:
    bool nextPort() {
        if (!port.isAtEnd()) ++port;
        while (port.isAtEnd()) {
            if (!nextAdapter()) return false;
            port = walk.portsOf(*adapter).begin();
        }
        return true;
    }

    bool nextAdapter() {
        if (!adapter.isAtEnd()) {
            ++adapter;
        } else if (!hasBegun) {
            hasBegun = true;
            adapter = walk.adapters().begin();
        }
        return !adapter.isAtEnd();
    }

    TreeWalk walk;
    Chain<TAVIK_AdapterEntry>::Iterator adapter;
    Chain<TAVIK_PhyPortEntry>::Iterator port;
    Chain<TAVIK_ProtocolEntry>::Iterator function;
    bool hasBegun = false;
};

/// Calls the visitor with each function, its port and its adapter.
template <class Visitor>
void forEachProtocolEntry(const TAVIK_AdapterList* adapters, Visitor&& visitor) {
    walkProtocolEntries(adapters,
                        [&](TAVIK_AdapterEntry& adapter, TAVIK_PhyPortEntry& port, TAVIK_ProtocolEntry& entry) {
                            visitor(adapter, port, entry);
                            return true;
                        });
}

/// Calls the visitor with each adapter.
template <class Visitor>
void forEachAdapter(const TAVIK_AdapterList* adapters, Visitor&& visitor) {
    TreeWalk walk(adapters);
    for (TAVIK_AdapterEntry& adapter : walk.adapters())
        visitor(adapter);
}

inline std::int32_t countAdapters(const TAVIK_AdapterList* adapters) {
    std::int32_t count = 0;
    forEachAdapter(adapters, [&](const TAVIK_AdapterEntry&) { ++count; });
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
void forEachStorageFunction(TreeWalk& walk, Visitor&& visitor) {
    walkProtocolEntries(walk, [&](TAVIK_AdapterEntry&, TAVIK_PhyPortEntry&, TAVIK_ProtocolEntry& entry) {
        if (isStorageFunction(entry)) visitor(&entry.storage.device);
        return true;
    });
}

template <class Visitor>
void forEachStorageFunction(const TAVIK_AdapterList* adapters, Visitor&& visitor) {
    TreeWalk walk(adapters);
    forEachStorageFunction(walk, visitor);
}

/// Calls the visitor with each Ethernet function.
template <class Visitor>
void forEachNicFunction(const TAVIK_AdapterList* adapters, Visitor&& visitor) {
    forEachProtocolEntry(adapters, [&](TAVIK_AdapterEntry&, TAVIK_PhyPortEntry&, TAVIK_ProtocolEntry& entry) {
        if (entry.type == TAVIK_ProtocolNic) visitor(entry.nic);
    });
}

} // namespace merolt
