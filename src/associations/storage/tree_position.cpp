#include "associations/storage/tree_position.h"

#include "associations/storage/text_index.h"
#include "classes/physical/nic_lookup.h"
#include "classes/physical/physical_connector.h"
#include "classes/physical/physical_port.h"
#include "classes/storage/fc_port.h"
#include "inventory/tree_walk.h"
#include "log/log.h"
#include "text/fixed_text.h"
#include "text/text.h"

#include <cstddef>
#include <cstring>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <strings.h>
#include <utility>
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

/// What a tag has behind its start: the adapter's serial number and the number of the port.
class PlaceText {
public:
    PlaceText() = default;
    explicit PlaceText(std::string_view text) : lower(lowered(text)), hash(std::hash<std::string>()(lower)) {}

    /// In any letter case.
    bool equals(const PlaceText& other) const { return hash == other.hash && lower == other.lower; }

private:
    std::string lower;
    std::size_t hash = 0;
};

struct KnownPlace {
    bool isInTree = false;
    MeasuredText<64> shown; ///< room for all
    PlaceText text;
};

KnownPlace placeIn(TAVIK_AdapterList* adapters, const TAVIK_DeviceRecord* device) {
    const Place place = findTAVIKStructsForFCPort(adapters, device);
    KnownPlace made;
    if (!place.protocol) return made;
    made.isInTree = true;
    made.shown.join(
        {physical::adapterSerialOf(place.adapter).view(), "_", formatNumber(place.phyPort->portNumber).view()});
    made.text = PlaceText(made.shown.view());
    return made;
}

/// Where ports of the list are, each looked for once in a tree, so that a walk over many things and many ports does
/// not walk the tree for each pair. The library is asked for its tree each time all the same.
class KnownPlaces {
public:
    /// @param ofPorts those that can be asked for, by their index in the list; the places are asked for by the index
    /// in that one.
    explicit KnownPlaces(std::vector<int> ofPorts) : ports_(std::move(ofPorts)), places_(ports_.size()) {}

    std::size_t count() const { return ports_.size(); }
    int port(std::size_t index) const { return ports_[index]; }

    const KnownPlace& of(std::size_t index) {
        TAVIK_AdapterList* adapters = TAVIK_GetAdapterList();
        Known& known = places_[index];
        if (!known.isFound || known.adapters != adapters)
            known = {true, adapters, placeIn(adapters, g_fcPortList[ports_[index]].device)};
        return known.place;
    }

private:
    struct Known {
        bool isFound = false;
        TAVIK_AdapterList* adapters = nullptr;
        KnownPlace place;
    };

    std::vector<int> ports_;
    std::vector<Known> places_;
};

/// A thing of a list, and what of its tag tells where it is.
class Thing {
public:
    Thing(const TaggedList& things, int index) : tag(things.tag(index)), start(things.start(index)) {
        const std::size_t startLength = std::strlen(start.text);
        const std::size_t separatorLength = std::strlen(start.separator);
        const bool hasStart = strncasecmp(tag, start.text, startLength) == 0 &&
                              std::strncmp(tag + startLength, start.separator, separatorLength) == 0;
        if (hasStart) place.emplace(tag + startLength + separatorLength);
    }

    /// Whether its tag is the one that it would have there.
    bool isAt(const KnownPlace& known) const { return place && known.isInTree && place->equals(known.text); }

    const char* const tag;
    const TagStart start;

private:
    std::optional<PlaceText> place; ///< none for a tag that does not begin as it would anywhere
};

/// What enumInstances tells of a pair.
void logComparison(const TaggedList& things, int index, const Thing& thing, const KnownPlace& known) {
    if (!known.isInTree) {
        DEBUG_LOG("Failed to find TAVIK structs");
        return;
    }
    DEBUG_LOG("%s_Tag(%d) = %s", things.logName, index, thing.tag);
    DEBUG_LOG("tmp_buf = %s%s%s", thing.start.text, thing.start.separator, known.shown.text());
}

std::vector<int> portsWhere(const std::function<bool(int port)>& isWanted) {
    std::vector<int> ports;
    for (int port = 0; port < g_fcPortCount; ++port) {
        if (isWanted(port)) ports.push_back(port);
    }
    return ports;
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
    .start = [](int index) -> TagStart {
        return {g_physicalConnectorList[index].sfp.SerialNumber.text(), "_"};
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
    .start = [](int) -> TagStart {
        return {"", ""};
    },
    .parse = [](const char* tag, AdapterToken& adapterSerial,
                std::uint32_t* portNumber) { physical::parsePhysicalPortTag(tag, adapterSerial, portNumber); },
};

void pairByPlace(const TaggedList& things, Enumeration enumeration, const PairVisitor& visit) {
    const bool isLogged = enumeration == Enumeration::instances && gDebugLog;
    KnownPlaces places(portsWhere([](int) { return true; }));
    for (int index = 0; index < *things.count; ++index) {
        const Thing thing(things, index);
        for (std::size_t port = 0; port < places.count(); ++port) {
            const KnownPlace& place = places.of(port);
            if (isLogged) logComparison(things, index, thing, place);
            if (thing.isAt(place) && !visit({{.index = index}, {.index = places.port(port)}})) return;
        }
    }
}

void findThingOfPort(const TaggedList& things, const Source& source, const ObjectVisitor& visit) {
    KnownPlaces places(portsWhere([&](int port) { return source.equals(0, g_fcPortList[port].deviceID.text()); }));
    for (int index = 0; index < *things.count; ++index) {
        const Thing thing(things, index);
        for (std::size_t port = 0; port < places.count(); ++port) {
            if (!thing.isAt(places.of(port))) continue;
            visit({.index = index});
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
