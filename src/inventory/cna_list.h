// The list of converged cards and their Ethernet ports: a copy of what the management library tells, from which every
// Ethernet class answers. Only link states and transceivers change after the build.
#pragma once

#include "inventory/tavik.h"
#include "inventory/transceiver.h"

#include <cstdint>

struct PollThreadContext;
class Merolt_CNA_Provider;

namespace merolt {

struct CNAPort {
    TAVIK_PortProperties portProperties; ///< its link record follows the polls, the rest is as built
    std::uint8_t portExtension[960];
    TAVIK_IPProperties ipProperties; ///< its three lists are the list's own; all zero if it could not be read
    TAVIK_FCoELinkage* fcoeLinkage;  ///< the list's own; null if the port has none
    std::uint32_t fcoeLinkageCount;
    std::uint8_t transceiverPresent; ///< 1 after the last successful read, 0 after a failed one
    SFPField sfp;                    ///< keeps its text when the transceiver is gone
    CNAPort* next;
    std::uint8_t functionData[6396]; ///< vital product data items of the function
};

struct CNACard {
    std::uint32_t adapterId; ///< the card's identity in the list, and the handle of its flash
    TAVIK_CardProperties properties;
    CNAPort* ports;
    CNACard* next;
};

/// First card, in the order of the tree; null while there is none. Read and changed under provider_lock.
extern CNACard* g_CNAList;

constexpr int alarmLinkUp = 1;
constexpr int alarmLinkDown = 2;

/// Raises a link indication. @param alarmType alarmLinkUp or alarmLinkDown.
using LinkAlert = void (*)(Merolt_CNA_Provider* provider, int alarmType, CNACard* card, CNAPort* port);

/// Appends every Ethernet function of the tree. Does not clear first: call it on an empty list.
void Initialize_CNA_List();

/// Re-reads link states and transceivers, and raises an alert for each link state that changed. With several cards
/// the first card's ports are polled once per card, and those of the others never.
/// @param alert may be null: changes are then only stored and logged.
void Update_CNA_List(PollThreadContext* record, LinkAlert alert);

void Clear_CNA_List();

/// The first card whose serial number, alone or with "_NIC" behind it, equals the key in any letter case; or null.
CNACard* FindCNAFromSerialNumber(const char* key);

/// "%s_NIC" of the serial number: the DeviceID of the card's Ethernet controller, in a buffer that the next call
/// overwrites.
const char* calcDeviceID_NICPortController(const char* serialNumber);

} // namespace merolt
