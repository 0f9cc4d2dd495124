// What a server publishes of adapters, ports and modules, as plain facts for people, rules and metrics. All facts come
// from enumerations of published classes, so any server that has these classes can be asked.
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

/// Merolt_Adapter_PhysicalPort: a place for a module, whatever functions run over it.
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
    bool isReadable = false; ///< SFPStatus: the card says that it can read the module
    bool hasPages = false;   ///< false if the server publishes texts alone, as for an Ethernet function
    optics::Module told;     ///< the content of its pages
};

enum class LinkState { unknown, up, down, suspended, testing };

/// Merolt_FCHBA_FCPort, with what belongs to it.
struct FibreChannelPort {
    std::string id;                 ///< DeviceID
    std::string jack;               ///< tag of its jack; empty if none is published
    std::string portName, nodeName; ///< 16 digits
    std::string cardSerialNumber, model;
    LinkState state = LinkState::unknown;
    bool answers = false;                            ///< false if the card gives neither state nor type
    std::optional<std::uint64_t> speedBitsPerSecond; ///< absent if it is unknown or still being negotiated
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

/// A class whose enumeration the server refused.
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

/// Enumerates the instances of a class and its subclasses, by the provider here or by a server. Throws CimFailure if
/// the question is refused, and another exception if there is no answer. The instances live until the function below
/// that calls it returns.
using Enumerate = std::function<std::vector<const InstanceObject*>(const char* className)>;

/// Reads everything. A question that is refused becomes one of the failures, and its facts are absent. Throws
/// CimFailure if every question is refused, and any other exception of the enumeration.
Snapshot readSnapshot(const Enumerate& enumerate);

/// Reads cards, jacks, modules and the ports at them, without targets, counters and software. Throws what the
/// enumeration throws.
Snapshot readModules(const Enumerate& enumerate);

/// The names by which clients know the host: those of Merolt_Adapter_ComputerSystem. None if that question is refused.
std::vector<std::string> readSystemNames(const Enumerate& enumerate);

/// Reads the counters alone, for a comparison with an earlier snapshot. Throws what the enumeration throws.
std::vector<PortCounters> readCounters(const Enumerate& enumerate);

/// Whether two serial numbers are those of one card. Some classes leave out the first ten characters of one OEM's.
bool isSameCard(std::string_view left, std::string_view right);

// Each is null if there is none. The result lives as long as the snapshot.

const Jack* findJack(const Snapshot& snapshot, std::string_view tag);
const FibreChannelPort* fibreChannelAt(const Snapshot& snapshot, std::string_view jack);
const EthernetPort* ethernetAt(const Snapshot& snapshot, std::string_view jack);
const Module* moduleAt(const Snapshot& snapshot, std::string_view jack);

/// The known names of the interfaces that run over a jack, each once: "eth2", "host8".
std::vector<std::string> interfacesAt(const Snapshot& snapshot, std::string_view jack);

} // namespace cimhost::monitoring
