// What a server publishes of adapters, ports and modules, as plain facts: what people, rules and metrics are told is
// made of these. They come from the enumerations of published classes alone, so any server that has the classes will
// do.
#pragma once

#include "cimhost/broker/objects.h"
#include "optics/module.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace cimhost::monitoring {

/// Merolt_Adapter_Product.
struct Card {
    std::string serialNumber; ///< IdentifyingNumber
    std::string model;        ///< Name
    std::string version;
};

/// Merolt_Adapter_PhysicalPort: where a module can be plugged, whatever functions run over it.
struct Jack {
    std::string tag; ///< card's serial number and port number with an underscore
    std::string cardSerialNumber;
    unsigned number = 0;
};

/// Merolt_Adapter_PhysicalConnector: a module that answered.
struct Module {
    std::string tag;
    std::string jack; ///< tag of its jack
    std::string vendor, partNumber, serialNumber;
    bool isReadable = false; ///< SFPStatus: the card calls it a module that it can read
    bool hasPages = false;   ///< false where the server publishes texts alone: those of an Ethernet function
    optics::Module told;     ///< what its pages say
};

enum class LinkState { unknown, up, down, suspended, testing };

/// Merolt_FCHBA_FCPort, with what belongs to it.
struct FibreChannelPort {
    std::string id;                 ///< DeviceID
    std::string jack;               ///< tag of its jack; empty if none is published
    std::string portName, nodeName; ///< 16 digits
    std::string cardSerialNumber, model;
    LinkState state = LinkState::unknown;
    bool answers = false;                            ///< false where the card gives neither state nor type
    std::optional<std::uint64_t> speedBitsPerSecond; ///< absent if negotiated or untold
    std::optional<std::uint64_t> largestSpeedBitsPerSecond;
    bool isOverEthernet = false;
    std::size_t targets = 0;
    std::string interfaceName = {}; ///< "host7"; empty where the server tells none
};

/// Counters of Merolt_FCHBA_FCPortStatistics that tell of errors, by their names in the class.
struct PortCounters {
    std::string portName;
    struct Counter {
        std::string_view name;
        std::uint64_t value;
    };
    std::vector<Counter> errors;
};

/// Merolt_NIC_EthernetPort2 and Merolt_NIC_NetworkPort, which are two views of one port.
struct EthernetPort {
    std::string macAddress; ///< 12 digits
    std::string jack;
    std::string cardSerialNumber;
    LinkState state = LinkState::unknown;
    std::optional<std::uint64_t> speedMegabits;
    std::uint64_t mtuBytes = 0;
    std::string fcoePortName;       ///< FC_WWN, 16 digits; empty without a Fibre Channel side
    std::string interfaceName = {}; ///< "eth0"; empty where the server tells none
};

/// Merolt_FCHBA_SoftwareIdentity and Merolt_NIC_SoftwareIdentity.
struct Software {
    std::string cardSerialNumber;
    std::string owner; ///< port name of a Fibre Channel function, else empty
    std::string kind;  ///< "Driver", "DriverFirmware", "FlashFirmware", "BIOS", "FlashImage", "NetworkDriver"...
    std::string version;
    std::string model;
};

/// A class that the server did not answer for.
struct Failure {
    std::string className;
    std::string reason;
};

struct Snapshot {
    std::vector<Card> cards;
    std::vector<Jack> jacks;
    std::vector<Module> modules;
    std::vector<FibreChannelPort> fibreChannelPorts;
    std::vector<PortCounters> counters;
    std::vector<EthernetPort> ethernetPorts;
    std::vector<Software> software;
    std::vector<Failure> failures;
};

/// Enumerates the instances of a class and its subclasses, wherever they come from: the provider here, or a server.
/// Throws CimFailure if the question is refused, and any other exception if there is no answer. The instances live as
/// long as the caller of the functions below.
using Enumerate = std::function<std::vector<const InstanceObject*>(const char* className)>;

/// Everything. A refused question is one of the failures, and its facts are absent. Throws CimFailure if every question
/// is refused, and what the enumeration throws.
Snapshot readSnapshot(const Enumerate& enumerate);

/// Cards, jacks, modules and the ports at them; no targets, no counters and no software. Throws what the enumeration
/// throws.
Snapshot readModules(const Enumerate& enumerate);

/// The names by which clients know the host: those of Merolt_Adapter_ComputerSystem. None where that is refused.
std::vector<std::string> readSystemNames(const Enumerate& enumerate);

/// Counters alone, for a second look. Throws what the enumeration throws.
std::vector<PortCounters> readCounters(const Enumerate& enumerate);

/// Serial numbers of one card: some classes show those of one OEM without their first ten characters.
bool isSameCard(std::string_view left, std::string_view right);

const Jack* findJack(const Snapshot& snapshot, std::string_view tag);
const FibreChannelPort* fibreChannelAt(const Snapshot& snapshot, std::string_view jack);
const EthernetPort* ethernetAt(const Snapshot& snapshot, std::string_view jack);
const Module* moduleAt(const Snapshot& snapshot, std::string_view jack);

/// Names of the interfaces that run over a jack, where they are told: "eth2", "host8". Each once.
std::vector<std::string> interfacesAt(const Snapshot& snapshot, std::string_view jack);

} // namespace cimhost::monitoring
