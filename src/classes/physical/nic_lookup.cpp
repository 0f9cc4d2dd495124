#include "classes/physical/nic_lookup.h"

#include "inventory/tree_walk.h"

#include <cstring>

namespace merolt::physical {

namespace {

constexpr std::size_t macValueSize = 8;
static_assert(sizeof(TAVIK_PortProperties::macAddress) + sizeof(TAVIK_PortProperties::reserved14) == macValueSize);

} // namespace

AdapterSerial adapterSerialOf(const TAVIK_AdapterEntry* adapter) {
    AdapterSerial text;
    text.assignField(adapter->serialNumber, sizeof(adapter->serialNumber));
    return text;
}

bool hasSameMacValue(const TAVIK_NicFunction& function, const CNAPort& port) {
    const TAVIK_PortProperties& properties = port.portProperties;
    return std::memcmp(function.port.macAddress, properties.macAddress, sizeof(properties.macAddress)) == 0 &&
           std::memcmp(function.port.reserved14, properties.reserved14, sizeof(properties.reserved14)) == 0;
}

bool findAdapterForCNAPort(CNACard*, CNAPort* port, TAVIK_AdapterEntry** adapter, TAVIK_PhyPortEntry** phyPort,
                           TAVIK_ProtocolEntry** entry) {
    TAVIK_AdapterList* adapters = TAVIK_GetAdapterList();
    if (!adapters) return false;
    bool found = false;
    walkProtocolEntries(adapters, [&](TAVIK_AdapterEntry& a, TAVIK_PhyPortEntry& p, TAVIK_ProtocolEntry& e) {
        if (e.type != TAVIK_ProtocolNic || !hasSameMacValue(e.nic, *port)) return true;
        *adapter = &a;
        *phyPort = &p;
        *entry = &e;
        found = true;
        return false;
    });
    return found;
}

std::optional<NicPlace> findNicPlace(CNAPort* port) {
    TAVIK_AdapterEntry* adapter = nullptr;
    TAVIK_PhyPortEntry* phyPort = nullptr;
    TAVIK_ProtocolEntry* entry = nullptr;
    if (!findAdapterForCNAPort(nullptr, port, &adapter, &phyPort, &entry)) return std::nullopt;
    return NicPlace{adapterSerialOf(adapter), phyPort};
}

} // namespace merolt::physical
