// What Ethernet families share: walks over the CNA list, the texts by which its records are found, the host at one end.
#pragma once

#include "associations/ethernet_classes.h"
#include "text/fixed_text.h"

#include <cstdint>

namespace merolt::association::nic {

/// Without cards every enumeration and search is over before it begins.
bool hasCards();

/// Each port of each card.
void eachPort(const Source& source, const ObjectVisitor& visit);
/// Each card.
void eachCard(const Source& source, const ObjectVisitor& visit);
/// The two identities of each card: network driver, then flash firmware.
void eachIdentity(const Source& source, const ObjectVisitor& visit);
/// Both ends of a row are made of the same card or port.
template <void (*walk)(const Source&, const ObjectVisitor&)>
void bothEndsOf(Enumeration, const PairVisitor& visit) {
    walk({}, [&](const Object& object) {
        return visit({object, object, object.softwareType == ethernet::nicFlashFirmware ? 1 : 0});
    });
}

/// A text by which a record is found, in a buffer that the next such call overwrites.
using KeyText = const char* (*)(const Object& object);
const char* macTextOf(const Object& object);        ///< of EthernetPort, LANEndPoint and both IP classes
const char* networkPortIDOf(const Object& object);  ///< "%s_%u" of serial number and port ID
const char* portControllerIDOf(const Object& card); ///< "%s_NIC"

/// Each port, or each card, whose text equals the source's first key.
template <KeyText text>
void eachPortWith(const Source& source, const ObjectVisitor& visit) {
    eachPort(source, [&](const Object& object) { return !source.equals(0, text(object)) || visit(object); });
}
template <KeyText text>
void eachCardWith(const Source& source, const ObjectVisitor& visit) {
    eachCard(source, [&](const Object& object) { return !source.equals(0, text(object)) || visit(object); });
}

/// Ends behind the first object of a search.
template <void (*find)(const Source&, const ObjectVisitor&)>
void firstOf(const Source& source, const ObjectVisitor& visit) {
    find(source, [&](const Object& object) {
        visit(object);
        return false;
    });
}

/// The one object of the far side, once for each object of a search.
template <void (*find)(const Source&, const ObjectVisitor&)>
void theObjectForEach(const Source& source, const ObjectVisitor& visit) {
    find(source, [&](const Object&) { return visit({}); });
}

/// Of each card the first port whose MAC text equals the source's key.
void findFirstPortOfEachCard(const Source& source, std::size_t key, const ObjectVisitor& visit);
template <std::size_t key>
void firstPortOfEachCardWithMac(const Source& source, const ObjectVisitor& visit) {
    findFirstPortOfEachCard(source, key, visit);
}

/// The InstanceID of a software identity, taken apart at its first underscore.
struct IdentityKey {
    std::uint8_t type; ///< low eight bits of the number in front; 0 without underscore
    FixedText<256> rest;
    bool isKnownType() const { return type == ethernet::nicNetworkDriver || type == ethernet::nicFlashFirmware; }
};
IdentityKey cutIdentityKey(const char* instanceID);
/// Each card with the serial number of the identity that the first key names, if that is of a known type.
void eachCardOfIdentity(const Source& source, const ObjectVisitor& visit);

} // namespace merolt::association::nic
