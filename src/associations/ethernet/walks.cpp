#include "associations/ethernet/walks.h"

#include "classes/physical/nic_lookup.h"
#include "text/text.h"

#include <cstdlib>
#include <cstring>

namespace merolt::association::nic {

bool hasCards() { return g_CNAList != nullptr; }

void eachPort(const Source&, const ObjectVisitor& visit) {
    const physical::PortSearches searches;
    for (CNACard* card = g_CNAList; card; card = card->next) {
        for (CNAPort* port = card->ports; port; port = port->next) {
            if (!visit({.card = card, .port = port})) return;
        }
    }
}

void eachCard(const Source&, const ObjectVisitor& visit) {
    for (CNACard* card = g_CNAList; card; card = card->next) {
        if (!visit({.card = card})) return;
    }
}

void eachIdentity(const Source& source, const ObjectVisitor& visit) {
    eachCard(source, [&](const Object& object) {
        return visit({.card = object.card, .softwareType = ethernet::nicNetworkDriver}) &&
               visit({.card = object.card, .softwareType = ethernet::nicFlashFirmware});
    });
}

const char* macTextOf(const Object& object) {
    return ethernet::calcMACAddress_NetworkPort(object.card, object.port, nullptr);
}

const char* networkPortIDOf(const Object& object) {
    return ethernet::calcDeviceID_NetworkPort(object.card, object.port, nullptr);
}

const char* portControllerIDOf(const Object& card) {
    return calcDeviceID_NICPortController(card.card->properties.serialNumber);
}

void findFirstPortOfEachCard(const Source& source, std::size_t key, const ObjectVisitor& visit) {
    const CNACard* found = nullptr;
    eachPort(source, [&](const Object& object) {
        if (object.card == found || !source.equals(key, macTextOf(object))) return true;
        found = object.card;
        return visit(object);
    });
}

IdentityKey cutIdentityKey(const char* instanceID) {
    IdentityKey key{};
    const char* end = std::strchr(instanceID, '_');
    if (!end) return key;
    // The number ends at the underscore by itself.
    key.type = static_cast<std::uint8_t>(std::strtol(instanceID, nullptr, 10));
    key.rest.assign(end + 1);
    return key;
}

void eachCardOfIdentity(const Source& source, const ObjectVisitor& visit) {
    const IdentityKey key = cutIdentityKey(source.text(0));
    if (!key.isKnownType()) return;
    eachCard(source, [&](const Object& object) {
        return !equalsIgnoringCase(key.rest.text(), object.card->properties.serialNumber) || visit(object);
    });
}

} // namespace merolt::association::nic
