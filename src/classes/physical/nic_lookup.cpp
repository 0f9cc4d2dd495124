#include "classes/physical/nic_lookup.h"

#include "inventory/tree_walk.h"

#include <cstdint>
#include <cstring>
#include <optional>
#include <unordered_map>
#include <utility>

namespace merolt::physical {

namespace {

using MacValue = std::uint64_t;

MacValue macValueOf(const TAVIK_PortProperties& port) {
    static_assert(sizeof(port.macAddress) + sizeof(port.reserved14) == sizeof(MacValue));
    std::uint8_t bytes[sizeof(MacValue)];
    std::memcpy(bytes, port.macAddress, sizeof(port.macAddress));
    std::memcpy(bytes + sizeof(port.macAddress), port.reserved14, sizeof(port.reserved14));
    MacValue value = 0;
    std::memcpy(&value, bytes, sizeof(value));
    return value;
}

struct FoundFunction {
    TAVIK_AdapterEntry* adapter;
    TAVIK_PhyPortEntry* phyPort;
    TAVIK_ProtocolEntry* entry;
};

/// Ethernet functions of a tree in its order, read as far as one was looked for.
class NicFunctions {
public:
    explicit NicFunctions(const TAVIK_AdapterList* adapters) : list(adapters), walk(adapters) {}

    bool areOf(const TAVIK_AdapterList* adapters) const { return list == adapters; }

    /// The first of the value.
    std::optional<FoundFunction> find(MacValue value) {
        if (const auto known = passed.find(value); known != passed.end()) return known->second;
        while (walk.next()) {
            if (walk.atFunction().type != TAVIK_ProtocolNic) continue;
            const MacValue here = macValueOf(walk.atFunction().nic.port);
            const auto [place, isFirst] =
                passed.try_emplace(here, FoundFunction{&walk.atAdapter(), &walk.atPort(), &walk.atFunction()});
            if (here == value) return place->second;
        }
        return std::nullopt;
    }

private:
    const TAVIK_AdapterList* list;
    ProtocolEntryWalk walk;
    std::unordered_map<MacValue, FoundFunction> passed;
};

bool isInWalk = false;
bool wasSearched = false; ///< in this walk
std::optional<NicFunctions> kept;

/// The first of the value. Remembers nothing, which is less work where it is the only search.
std::optional<FoundFunction> findAlone(const TAVIK_AdapterList* adapters, MacValue value) {
    std::optional<FoundFunction> found;
    walkProtocolEntries(adapters, [&](TAVIK_AdapterEntry& a, TAVIK_PhyPortEntry& p, TAVIK_ProtocolEntry& e) {
        if (e.type == TAVIK_ProtocolNic && macValueOf(e.nic.port) == value) found = {&a, &p, &e};
        return !found;
    });
    return found;
}

std::optional<FoundFunction> findFunction(const TAVIK_AdapterList* adapters, MacValue value) {
    if (!isInWalk || !std::exchange(wasSearched, true)) return findAlone(adapters, value);
    if (!kept || !kept->areOf(adapters)) kept.emplace(adapters);
    return kept->find(value);
}

} // namespace

PortSearches::PortSearches() : isOutermost(!std::exchange(isInWalk, true)) {}

PortSearches::~PortSearches() {
    if (!isOutermost) return;
    isInWalk = wasSearched = false;
    kept.reset();
}

AdapterSerial adapterSerialOf(const TAVIK_AdapterEntry* adapter) {
    AdapterSerial text;
    text.assignField(adapter->serialNumber, sizeof(adapter->serialNumber));
    return text;
}

bool hasSameMacValue(const TAVIK_NicFunction& function, const CNAPort& port) {
    return macValueOf(function.port) == macValueOf(port.portProperties);
}

bool findAdapterForCNAPort(CNACard*, CNAPort* port, TAVIK_AdapterEntry** adapter, TAVIK_PhyPortEntry** phyPort,
                           TAVIK_ProtocolEntry** entry) {
    const TAVIK_AdapterList* adapters = TAVIK_GetAdapterList();
    if (!adapters) return false;
    const std::optional<FoundFunction> found = findFunction(adapters, macValueOf(port->portProperties));
    if (!found) return false;
    *adapter = found->adapter;
    *phyPort = found->phyPort;
    *entry = found->entry;
    return true;
}

std::optional<NicPlace> findNicPlace(CNAPort* port) {
    TAVIK_AdapterEntry* adapter = nullptr;
    TAVIK_PhyPortEntry* phyPort = nullptr;
    TAVIK_ProtocolEntry* entry = nullptr;
    if (!findAdapterForCNAPort(nullptr, port, &adapter, &phyPort, &entry)) return std::nullopt;
    return NicPlace{adapterSerialOf(adapter), phyPort};
}

} // namespace merolt::physical
