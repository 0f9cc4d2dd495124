// The plain description of a host's adapters that every source yields and from which the packed tree is built. It
// also holds what the calls deliver beside the tree, so that one description answers everything.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

#include "tavik/facts.h"

namespace tavik {

using Bytes = std::vector<std::uint8_t>;
using WorldWideName = std::array<std::uint8_t, 8>;
using MacAddress = std::array<std::uint8_t, 6>;

/** A status of the library: 0 is success. The numbers of our own failures stand in status.h. */
using Status = std::uint32_t;

struct Lun {
    std::uint16_t number = 0;
    std::string vendorId;        ///< at most 8 characters; what is longer is cut, here and in all texts below
    std::string productId;       ///< at most 16
    std::string productRevision; ///< at most 4
    std::array<std::uint8_t, 16> identifier{};
    std::uint8_t identifierLength = 8; ///< 16: all of the identifier counts; any other value: its first 8 bytes
    std::uint32_t blockSize = 512;     ///< in bytes
    std::string osName;                ///< the operating system's name of the unit, for example /dev/sda

    bool operator==(const Lun&) const = default;
};

struct Target {
    WorldWideName portName{};
    std::vector<Lun> luns;
    std::optional<std::uint32_t> lunCount; ///< what the library counts, if that is not the number of luns

    bool operator==(const Target&) const = default;
};

enum PortState : std::uint8_t {
    PortOperational = 1,
    PortSuspended = 2,
    PortLoopDown = 3,
};

/** Speed code of a port that negotiates its speed; the other codes are gigabits per second. */
inline constexpr std::uint32_t speedAutoNegotiate = 3;
/** Kind of transceiver that stands for a readable SFP. */
inline constexpr std::uint16_t transceiverKindSfp = 6;

struct PortProperty {
    WorldWideName portName{};
    std::uint8_t portType = 1;                    ///< 1 N, 2 NL, 3 F/NL, 4 Nx, 5 F, 6 FL, 7 other, 8 E, 9 B
    std::uint8_t state = PortOperational;         ///< a PortState or a number without a name
    std::uint32_t speedCode = speedAutoNegotiate; ///< 1, 2, 4, 8, 10, 16 or speedAutoNegotiate
    std::uint16_t transceiverKind = 0;            ///< transceiverKindSfp or any other number

    bool operator==(const PortProperty&) const = default;
};

struct Statistics {
    std::uint32_t ioCount = 0;
    std::uint32_t megabyteCount = 0;
    std::uint32_t lipCount = 0;
    std::uint32_t linkFailures = 0;
    std::uint32_t lossOfSync = 0;
    std::uint32_t lossOfSignal = 0;
    std::uint32_t primitiveSequenceErrors = 0;
    std::uint32_t invalidTransmissionWords = 0;
    std::uint32_t crcErrors = 0;

    bool operator==(const Statistics&) const = default;
};

/** All counters, for whoever treats them alike. */
inline constexpr std::uint32_t Statistics::*statisticsCounters[] = {
    &Statistics::ioCount,
    &Statistics::megabyteCount,
    &Statistics::lipCount,
    &Statistics::linkFailures,
    &Statistics::lossOfSync,
    &Statistics::lossOfSignal,
    &Statistics::primitiveSequenceErrors,
    &Statistics::invalidTransmissionWords,
    &Statistics::crcErrors,
};

/** The two memory pages of a transceiver (SFF-8472), each at most 256 bytes; see transceiver.h for making them. */
struct Transceiver {
    Bytes pageA0; ///< serial ID
    Bytes pageA2; ///< diagnostics, empty if the module has none

    bool operator==(const Transceiver&) const = default;
};

/** Versions in the option ROM; what is absent has its valid bit cleared. */
struct OptionRom {
    std::string biosVersion;                             ///< at most 31 characters
    std::optional<std::array<std::uint8_t, 3>> firmware; ///< major, minor, sub-minor
    std::optional<std::array<std::uint8_t, 2>> efi;      ///< major, minor
    std::optional<std::array<std::uint8_t, 3>> fcode;    ///< major, minor, sub-minor

    bool operator==(const OptionRom&) const = default;
};

/** Statuses with which the calls on a storage function fail; 0: the call works. */
struct StorageFailures {
    Status portProperty = 0;
    Status vpd = 0;
    Status uuid = 0;
    Status statistics = 0;
    Status transceiver = 0;
    Status multiBootVersion = 0;
    Status flashUpdate = 0;
    Status facts = 0;

    bool operator==(const StorageFailures&) const = default;
};

/** A Fibre Channel or FCoE function of a port. */
struct StorageFunction {
    std::uint32_t protocolType = 0; ///< 0 Fibre Channel, 1 FCoE; an entry of a number above 2 is passed over by readers
    std::uint32_t handle = 0;       ///< unique over the fleet
    std::uint16_t deviceNumber = 0; ///< unique over the fleet
    std::uint16_t pciDeviceId = 0;
    std::uint16_t pciSubsystemVendorId = 0;
    std::uint16_t pciSubsystemDeviceId = 0;
    WorldWideName nodeName{};
    PortProperty property;                       ///< what the call for the current property delivers
    std::optional<PortProperty> treeProperty;    ///< what stands in the tree, if that is not the same
    std::optional<WorldWideName> headerNodeName; ///< in front of the record, if that is not nodeName
    std::optional<WorldWideName> headerPortName; ///< in front of the record, if that is not the tree's port name
    std::string modelName;                       ///< at most 31 characters
    std::optional<Bytes> serialNumber;           ///< of the record, at most 32 bytes; absent: made from the card's
    std::string driverVersion;                   ///< at most 31 characters
    std::string driverFirmwareVersion;           ///< at most 31 characters
    OptionRom optionRom;
    std::optional<MacAddress> eNodeMac; ///< converged functions only
    std::vector<Target> targets;
    std::optional<std::uint32_t> targetCount;         ///< what the library counts, if that is not the number of targets
    std::optional<std::uint16_t> transceiverReadable; ///< absent: 1 with a transceiver, 0 without

    std::optional<Bytes> vpd;                    ///< tagged block, see vpd.h; absent: the call fails
    std::optional<std::string> uuid;             ///< absent: the call fails; so below
    std::optional<std::string> multiBootVersion; ///< for example V:2.01.37,D:09142012,A:Y,T:M
    std::optional<Transceiver> transceiver;
    Statistics statistics;
    Statistics statisticsPerRefresh; ///< added at every refresh after the first
    Facts facts;                     ///< what the source knows of them when it loads
    StorageFailures failures;

    bool operator==(const StorageFunction&) const = default;
};

enum LinkState : std::uint32_t {
    LinkUp = 1,
    LinkDown = 2,
    LinkTesting = 3,
};

struct Link {
    std::uint64_t speed = 0;        ///< megabits per second: 10000 stands for ten gigabit
    std::uint32_t state = LinkDown; ///< a LinkState; any other number is unknown

    bool operator==(const Link&) const = default;
};

enum AddressFamily : std::uint8_t {
    AddressNone = 0,
    AddressIPv4 = 1,
    AddressIPv6 = 2,
};

struct IPAddress {
    std::array<std::uint8_t, 16> bytes{}; ///< network byte order; IPv4 uses the first four
    std::uint8_t family = AddressNone;

    bool operator==(const IPAddress&) const = default;
};

struct IPConfiguration {
    IPAddress ipv4;
    IPAddress ipv4Mask;
    std::vector<IPAddress> firstList; ///< IPv6 addresses
    std::vector<IPAddress> secondList;
    std::vector<IPAddress> thirdList;

    bool operator==(const IPConfiguration&) const = default;
};

struct FCoELinkage {
    WorldWideName wwn{};
    std::array<std::uint8_t, 3> fcPortId{};
    MacAddress eNodeMac{};

    bool operator==(const FCoELinkage&) const = default;
};

/** A vital product data item: a keyword of two characters and its text. */
struct VpdItem {
    std::string keyword;
    std::string value;

    bool operator==(const VpdItem&) const = default;
};

/** The card as its Ethernet function tells it. Texts are at most as long as their fields in TAVIK_CardProperties. */
struct NicCard {
    MacAddress wwn{}; ///< world wide identifier bytes of the adapter
    std::string manufacturer;
    std::string modelName;
    std::optional<std::string> serialNumber; ///< absent: the card's
    std::string driverVersion;
    std::string defaultSoftwareVersion;
    std::string flashVersion;
    std::string defaultFruNumber;

    bool operator==(const NicCard&) const = default;
};

/** Statuses with which the calls on an Ethernet function fail; 0: the call works. */
struct NicFailures {
    Status link = 0;
    Status ip = 0;
    Status fcoeLinkage = 0;
    Status transceiver = 0;
    Status flashUpdate = 0;
    Status facts = 0;

    bool operator==(const NicFailures&) const = default;
};

/** The Ethernet function of a port. */
struct NicFunction {
    std::uint32_t protocolType = 2;
    std::uint32_t adapterId = 0; ///< functions of one card share it
    NicCard card;
    MacAddress macAddress{};
    std::string deviceName; ///< handle of the per-port calls, unique over the fleet
    std::uint32_t portId = 0;
    Link link;                                 ///< what the call delivers, and what stands in the tree when it is built
    std::uint32_t mtu = 1500;                  ///< in bytes
    std::vector<VpdItem> vpdItems;             ///< at most 30
    std::optional<std::uint32_t> vpdItemCount; ///< the count in front of the items, if that is not their number

    std::optional<IPConfiguration> ip; ///< absent: the call fails
    std::vector<FCoELinkage> fcoeLinkage;
    std::optional<Transceiver> transceiver; ///< absent: the call fails, the port has none
    Facts facts;                            ///< what the source knows of them when it loads
    NicFailures failures;

    bool operator==(const NicFunction&) const = default;
};

using Function = std::variant<StorageFunction, NicFunction>;

/** A physical port: the jack and the functions that run over it. */
struct Port {
    std::uint8_t number = 0;
    std::optional<std::vector<Function>> functions = std::vector<Function>(); ///< absent: a null list in the tree

    bool operator==(const Port&) const = default;
};

struct Card {
    std::string serialNumber; ///< at most 31 characters
    std::uint32_t kind = 0;   ///< 1, 2, 3: storage-only kinds; any other number: a converged adapter
    std::string version;      ///< at most 31 characters
    std::string modelName;
    std::optional<std::vector<Port>> ports = std::vector<Port>(); ///< absent: a null list in the tree

    bool operator==(const Card&) const = default;
};

struct Fleet {
    std::optional<std::vector<Card>> cards = std::vector<Card>(); ///< absent: the library has no list at all

    bool operator==(const Fleet&) const = default;
};

/** Calls the visitor with every function of the card, in the order of the tree; const with a const card. */
template <typename AnyCard, typename Visitor>
void forEachFunction(AnyCard& card, Visitor visitor) {
    if (!card.ports) return;
    for (auto& port : *card.ports) {
        if (!port.functions) continue;
        for (auto& function : *port.functions)
            std::visit(visitor, function);
    }
}

/** The storage functions of the card, in the order of the tree. */
inline std::vector<const StorageFunction*> storageFunctions(const Card& card) {
    std::vector<const StorageFunction*> found;
    forEachFunction(card, [&found](const auto& function) {
        if constexpr (std::is_same_v<std::decay_t<decltype(function)>, StorageFunction>) found.push_back(&function);
    });
    return found;
}

inline bool hasStorage(const Card& card, std::uint32_t handle) {
    bool has = false;
    for (const StorageFunction* function : storageFunctions(card))
        has = has || function->handle == handle;
    return has;
}

inline bool hasAdapter(const Card& card, std::uint32_t adapterId) {
    bool has = false;
    forEachFunction(card, [&has, adapterId](const auto& function) {
        if constexpr (std::is_same_v<std::decay_t<decltype(function)>, NicFunction>)
            has = has || function.adapterId == adapterId;
    });
    return has;
}

/** True if the chips of this PCI device ID hold their serial number as three bytes in the record. */
constexpr bool hasBinarySerialNumber(std::uint16_t pciDeviceId) {
    return pciDeviceId >= 0xA100 && pciDeviceId <= 0xA107;
}

/** The record's three serial number bytes for a number from 0 to 0xFFFFFF: high, low, middle. */
Bytes binarySerialNumber(std::uint32_t number);

/** The bytes for a text of a letter and five digits (A12345 gives 12345, B00000 gives 100000), or nothing for a text
 *  of another form. */
std::optional<Bytes> binarySerialNumber(const std::string& text);

} // namespace tavik
