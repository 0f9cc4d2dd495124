#include "associations/storage/tree_position.h"

#include "classes/physical/nic_lookup.h"
#include "classes/physical/physical_connector.h"
#include "classes/physical/physical_port.h"
#include "classes/storage/fc_port.h"
#include "inventory/tree_walk.h"
#include "log/log.h"
#include "text/text.h"

#include <cstddef>
#include <cstring>
#include <vector>

namespace merolt::association {

using physical::g_physicalConnectorCount;
using physical::g_physicalConnectorList;
using physical::g_physicalPortCount;
using physical::g_physicalPortList;
using storage::g_fcPortCount;
using storage::g_fcPortList;

namespace {

bool sameName(const std::uint8_t* left, const std::uint8_t* right) { return std::memcmp(left, right, 8) == 0; }

struct Place {
    TAVIK_AdapterEntry* adapter = nullptr;
    TAVIK_PhyPortEntry* phyPort = nullptr;
    TAVIK_ProtocolEntry* protocol = nullptr; ///< null where the port is not in the tree
};

/// The first storage function of a tree with the device's port name and node name.
/// @param device of a port record, from the tree that was current when the record was made; null is found nowhere.
Place findTAVIKStructsForFCPort(TAVIK_AdapterList* adapters, const TAVIK_DeviceRecord* device) {
    Place place;
    if (!adapters || !device) return place;
    walkProtocolEntries(adapters, [&](TAVIK_AdapterEntry& card, TAVIK_PhyPortEntry& port, TAVIK_ProtocolEntry& entry) {
        if (!isStorageFunction(entry)) return true;
        const TAVIK_DeviceRecord& candidate = entry.storage.device;
        if (!sameName(device->portProperty.portName, candidate.portProperty.portName)) return true;
        if (!sameName(device->nodeName, candidate.nodeName)) return true;
        place = {&card, &port, &entry};
        return false;
    });
    return place;
}

/// Where the ports of the list are, each looked for once in a tree, so that an enumeration of many things with many
/// ports does not walk the tree for each pair. The library is asked for its tree each time all the same.
class KnownPlaces {
public:
    KnownPlaces() : places_(static_cast<std::size_t>(g_fcPortCount)) {}

    const Place& of(int port) {
        TAVIK_AdapterList* adapters = TAVIK_GetAdapterList();
        Known& known = places_[static_cast<std::size_t>(port)];
        if (!known.isFound || known.adapters != adapters)
            known = {true, adapters, findTAVIKStructsForFCPort(adapters, g_fcPortList[port].device)};
        return known.place;
    }

private:
    struct Known {
        bool isFound = false;
        TAVIK_AdapterList* adapters = nullptr;
        Place place;
    };
    std::vector<Known> places_;
};

/// Whether the tag of a thing is the one that it would have at the place of a storage port.
/// @param isLogged enumInstances tells what it compares.
bool isAtPlace(const TaggedList& things, int index, const Place& place, bool isLogged) {
    if (!place.protocol) {
        if (isLogged) DEBUG_LOG("Failed to find TAVIK structs");
        return false;
    }
    TagText tag;
    things.format(tag, index, physical::adapterSerialOf(place.adapter).text(), place.phyPort->portNumber);
    if (isLogged) {
        DEBUG_LOG("%s_Tag(%d) = %s", things.logName, index, things.tag(index));
        DEBUG_LOG("tmp_buf = %s", tag.text());
    }
    return equalsIgnoringCase(things.tag(index), tag.text());
}

/// Whether port and node name of the device are those in the header of the function.
bool isInHeaderOf(const TAVIK_DeviceRecord* device, const TAVIK_ProtocolEntry& entry) {
    return device && sameName(device->portProperty.portName, entry.storage.headerPortName) &&
           sameName(device->nodeName, entry.storage.headerNodeName);
}

} // namespace

constexpr TaggedList connectorsInTree = {
    .logName = "PHYSICALCONNECTOR",
    .count = &g_physicalConnectorCount,
    .tag = [](int index) { return g_physicalConnectorList[index].tag.text(); },
    .format =
        [](TagText& out, int index, const char* adapterSerial, int portNumber) {
            physical::formatPhysicalConnectorTag(out.data(), g_physicalConnectorList[index].sfp.SerialNumber.text(),
                                                 adapterSerial, portNumber);
        },
    .parse =
        [](const char* tag, AdapterToken& adapterSerial, std::uint32_t* portNumber) {
            char moduleSerial[sizeof(AdapterToken)] = {};
            physical::parsePhysicalConnectorTag(tag, moduleSerial, adapterSerial, portNumber);
        },
};

constexpr TaggedList jacksInTree = {
    .logName = "PHYSICALPORT",
    .count = &g_physicalPortCount,
    .tag = [](int index) { return g_physicalPortList[index].tag.text(); },
    .format = [](TagText& out, int, const char* adapterSerial,
                 int portNumber) { physical::formatPhysicalPortTag(out.data(), adapterSerial, portNumber); },
    .parse = [](const char* tag, AdapterToken& adapterSerial,
                std::uint32_t* portNumber) { physical::parsePhysicalPortTag(tag, adapterSerial, portNumber); },
};

void pairByPlace(const TaggedList& things, Enumeration enumeration, const PairVisitor& visit) {
    const bool isLogged = enumeration == Enumeration::instances;
    KnownPlaces places;
    for (int thing = 0; thing < *things.count; ++thing) {
        for (int port = 0; port < g_fcPortCount; ++port) {
            if (!isAtPlace(things, thing, places.of(port), isLogged)) continue;
            if (!visit({{.index = thing}, {.index = port}})) return;
        }
    }
}

void findThingOfPort(const TaggedList& things, const Source& source, const ObjectVisitor& visit) {
    KnownPlaces places;
    for (int thing = 0; thing < *things.count; ++thing) {
        for (int port = 0; port < g_fcPortCount; ++port) {
            if (!source.equals(0, g_fcPortList[port].deviceID.text())) continue;
            if (!isAtPlace(things, thing, places.of(port), false)) continue;
            visit({.index = thing});
            return;
        }
    }
}

void findPortsOfThing(const TaggedList& things, const Source& source, const ObjectVisitor& visit) {
    AdapterToken adapterSerial = {};
    std::uint32_t portNumber = 0;
    things.parse(source.text(0), adapterSerial, &portNumber);
    TAVIK_AdapterList* adapters = TAVIK_GetAdapterList();
    if (!adapters) return;
    walkProtocolEntries(adapters, [&](TAVIK_AdapterEntry& card, TAVIK_PhyPortEntry& port, TAVIK_ProtocolEntry& entry) {
        if (port.portNumber != portNumber || !isStorageFunction(entry)) return true;
        if (!equalsIgnoringCase(physical::adapterSerialOf(&card).text(), adapterSerial)) return true;
        for (int index = 0; index < g_fcPortCount; ++index) {
            if (isInHeaderOf(g_fcPortList[index].device, entry) && !visit({.index = index})) return false;
        }
        return true;
    });
}

} // namespace merolt::association
