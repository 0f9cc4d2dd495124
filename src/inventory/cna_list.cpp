#include "inventory/cna_list.h"

#include "inventory/poll_thread_context.h"
#include "inventory/tree_walk.h"
#include "log/log.h"
#include "text/text.h"

#include <cstdio>
#include <cstring>
#include <unordered_map>

namespace merolt {

CNACard* g_CNAList = nullptr;

namespace {

constexpr std::uint32_t transceiverBufferSize = 1024;
constexpr std::uint32_t linkUp = 1;

template <class Record>
Record* allocateRecord() {
    return static_cast<Record*>(CoreAlloc(sizeof(Record)));
}

void readTransceiver(CNAPort& port) {
    std::uint8_t buffer[transceiverBufferSize] = {};
    std::uint32_t size = transceiverBufferSize;
    if (TAVIK_GetTransceiverDMIData(port.portProperties.deviceName, &size, buffer) != 0) {
        port.transceiverPresent = 0;
        DEBUG_LOG("No Transceiver on portID %u", port.portProperties.portId);
        return;
    }
    port.transceiverPresent = 1;
    Parse_Transceiver_Data(buffer, size, port.sfp);
    logTransceiverTexts(port.sfp);
    DEBUG_LOG("Transceiver on portID %u", port.portProperties.portId);
}

/// The most entries that a list of one port can have. A number above it is none, and its list is not read.
constexpr std::uint32_t mostListEntries = 1U << 12;

bool isListCount(std::uint32_t count, const char* entries) {
    if (count <= mostListEntries) return true;
    ERROR_LOG("Error: TAVIK tells %u %s for one port; none is taken", count, entries);
    return false;
}

/// Our own copy of an array of the library; null if memory is short.
template <class Entry>
Entry* copyArray(const Entry* array, std::uint32_t count) {
    const std::size_t size = std::size_t{count} * sizeof(Entry);
    auto* copy = static_cast<Entry*>(CoreAlloc(size));
    if (copy) std::memcpy(copy, array, size);
    return copy;
}

void copyLinkage(CNAPort& port) {
    TAVIK_FCoELinkage* linkage = nullptr;
    std::uint32_t count = 0;
    if (TAVIK_GetFCoELinkage(port.portProperties.deviceName, &linkage, &count) != 0 || count == 0 || !linkage) return;
    if (isListCount(count, "FCoE linkages")) {
        port.fcoeLinkage = copyArray(linkage, count);
        if (port.fcoeLinkage) {
            port.fcoeLinkageCount = count;
        } else {
            DEBUG_LOG("Memory allocation for FCoE linkage failed!");
        }
    }
    TAVIK_FreeMem(linkage);
}

void Initialize_CNA_Port(const TAVIK_NicFunction& function, CNAPort& port) {
    std::memcpy(port.portExtension, function.portExtension, sizeof(port.portExtension));
    copyLinkage(port);
    readTransceiver(port);
    std::memcpy(port.functionData, function.functionData, sizeof(port.functionData));
}

/// Our own copy of a list of the library; null if there is none, the list is empty or memory is short.
TAVIK_IPAddress* copyAddresses(const TAVIK_IPAddress* list, std::uint32_t count) {
    if (count == 0 || !list || !isListCount(count, "addresses")) return nullptr;
    return copyArray(list, count);
}

void copyIPProperties(CNAPort& port) {
    if (std::strlen(port.portProperties.deviceName) <= 1) return;
    TAVIK_IPProperties* properties = nullptr;
    if (TAVIK_GetIPProperties(port.portProperties.deviceName, &properties) != 0 || !properties) {
        DEBUG_LOG("Error getting port IP Info\n");
        return;
    }
    DEBUG_LOG("About to copy IPProperties\n");
    port.ipProperties = *properties;
    port.ipProperties.firstList = copyAddresses(properties->firstList, properties->firstCount);
    port.ipProperties.secondList = copyAddresses(properties->secondList, properties->secondCount);
    port.ipProperties.thirdList = copyAddresses(properties->thirdList, properties->thirdCount);
    DEBUG_LOG("Finished copying IPProperties\n");
    TAVIK_FreeMem(properties);
    DEBUG_LOG("After TAVIK_FreeMem");
}

template <std::size_t N>
void terminate(char (&field)[N]) {
    field[N - 1] = '\0';
}

// A card may deliver texts without terminator; every reader of the copies relies on one.
void terminateTexts(TAVIK_CardProperties& card) {
    terminate(card.manufacturer);
    terminate(card.modelName);
    terminate(card.serialNumber);
    terminate(card.driverVersion);
    terminate(card.defaultSoftwareVersion);
    terminate(card.flashVersion);
    terminate(card.defaultFruNumber);
}

/// Appends functions to the list. It knows where each card's ports end, so that a host with many cards and ports is not
/// walked for each of them.
class ListMaker {
public:
    ListMaker() {
        for (; *end; end = &(*end)->next)
            know(**end);
    }

    void append(const TAVIK_NicFunction& function) {
        Place* place = findOrAppendCard(function.adapterId);
        if (!place) return;
        place->card->properties = function.card;
        terminateTexts(place->card->properties);
        auto* port = allocateRecord<CNAPort>();
        if (!port) return;
        *place->portsEnd = port; // first, so that it goes with the card whatever becomes of the rest
        place->portsEnd = &port->next;
        port->portProperties = function.port;
        terminate(port->portProperties.deviceName);
        Initialize_CNA_Port(function, *port);
        copyIPProperties(*port);
    }

private:
    struct Place {
        CNACard* card;
        CNAPort** portsEnd;
    };

    /// The first card of an identity stands for it.
    Place& know(CNACard& card) {
        CNAPort** portsEnd = &card.ports;
        while (*portsEnd)
            portsEnd = &(*portsEnd)->next;
        return places.try_emplace(card.adapterId, Place{&card, portsEnd}).first->second;
    }

    /// The card of that identity, appended if it is new; null if memory is short.
    Place* findOrAppendCard(std::uint32_t adapterId) {
        if (const auto known = places.find(adapterId); known != places.end()) return &known->second;
        auto* card = allocateRecord<CNACard>();
        if (!card) {
            DEBUG_LOG("Allocating memory for new adapter failed\n");
            return nullptr;
        }
        card->adapterId = adapterId;
        *end = card;
        end = &card->next;
        return &know(*card);
    }

    CNACard** end = &g_CNAList;
    std::unordered_map<std::uint32_t, Place> places;
};

void updateLink(CNAPort& port, Merolt_CNA_Provider* provider, CNACard& card, LinkAlert alert) {
    TAVIK_LinkProperties link{};
    const std::uint32_t result = TAVIK_GetLinkProperties(port.portProperties.deviceName, &link);
    if (result != 0) {
        ERROR_LOG("Get Link Properties Failed (%d)", static_cast<int>(result));
        return;
    }
    // Only the state is compared, so a new speed in the same state stays unseen.
    if (link.state == port.portProperties.link.state) return;
    port.portProperties.link = link;
    const bool isUp = link.state == linkUp;
    DEBUG_LOG("%s", isUp ? "Generate LINK_UP event" : "Generate LINK_DOWN event");
    if (alert) alert(provider, isUp ? alarmLinkUp : alarmLinkDown, &card, &port);
}

void updatePort(CNAPort& port, Merolt_CNA_Provider* provider, CNACard& card, LinkAlert alert) {
    const std::uint8_t* mac = port.portProperties.macAddress;
    DEBUG_LOG("Update_CNA_List looking at port %lu %2.2x-%2.2x-%2.2x-%2.2x-%2.2x-%2.2x\n",
              static_cast<unsigned long>(port.portProperties.portId), mac[0], mac[1], mac[2], mac[3], mac[4], mac[5]);
    updateLink(port, provider, card, alert);
    readTransceiver(port);
}

void freeIfPresent(void* block) {
    if (block) CoreFree(block);
}

void freePort(CNAPort* port) {
    freeIfPresent(port->fcoeLinkage);
    freeIfPresent(port->ipProperties.firstList);
    freeIfPresent(port->ipProperties.secondList);
    freeIfPresent(port->ipProperties.thirdList);
    CoreFree(port);
}

} // namespace

void Initialize_CNA_List() {
    DEBUG_LOG("Entered Initialize_CNA_List()");
    if (TAVIK_AdapterList* adapters = TAVIK_GetAdapterList()) {
        ListMaker list;
        forEachNicFunction(adapters, [&](const TAVIK_NicFunction& function) { list.append(function); });
    }
    DEBUG_LOG("Exiting Initialize_CNA_List()");
}

void Update_CNA_List(PollThreadContext* record, LinkAlert alert) {
    // Clients rely on which ports are polled: for each card of the list it is the first card's ports.
    for (CNACard* card = g_CNAList; card; card = card->next) {
        for (CNAPort* port = g_CNAList->ports; port; port = port->next)
            updatePort(*port, record->provider, *card, alert);
    }
}

void Clear_CNA_List() {
    DEBUG_LOG("Entering Clear_CNA_List()");
    for (CNACard* card = g_CNAList; card;) {
        for (CNAPort* port = card->ports; port;) {
            CNAPort* next = port->next;
            freePort(port);
            port = next;
        }
        CNACard* next = card->next;
        CoreFree(card);
        card = next;
    }
    g_CNAList = nullptr;
    DEBUG_LOG("Exiting Clear_CNA_List()");
}

const char* calcDeviceID_NICPortController(const char* serialNumber) {
    static FixedText<256> deviceID;
    deviceID.format("%s_NIC", serialNumber);
    return deviceID.text();
}

CNACard* FindCNAFromSerialNumber(const char* key) {
    for (CNACard* card = g_CNAList; card; card = card->next) {
        const char* serialNumber = card->properties.serialNumber;
        if (equalsIgnoringCase(key, serialNumber)) return card;
        if (equalsIgnoringCase(key, calcDeviceID_NICPortController(serialNumber))) return card;
    }
    return nullptr;
}

} // namespace merolt
