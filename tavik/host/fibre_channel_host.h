// Fibre Channel hosts of the machine with their remote ports, logical units and counters.
#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "tavik/host/attribute.h"
#include "tavik/host/device_parent.h"
#include "tavik/host/sys_tree.h"
#include "tavik/model.h"

namespace tavik::host {

/** Counters in the order of counterNames, each absent where the driver does not count it. */
enum Counter : std::uint8_t {
    CounterInputRequests,
    CounterOutputRequests,
    CounterControlRequests,
    CounterInputMegabytes,
    CounterOutputMegabytes,
    CounterLips,
    CounterLinkFailures,
    CounterLossesOfSync,
    CounterLossesOfSignal,
    CounterPrimitiveSequenceErrors,
    CounterInvalidWords,
    CounterCrcErrors,
    counterCount
};

/** The kernel's names of the counters. */
extern const std::array<const char*, counterCount> counterNames;

using Counters = std::array<Attribute<std::uint64_t>, counterCount>;

struct LogicalUnit {
    std::string address; ///< host:channel:target:unit
    std::uint64_t number = 0;
    Attribute<std::string> vendor;
    Attribute<std::string> model;
    Attribute<std::string> revision;
    Attribute<Bytes> identifier;        ///< binary world wide identifier, 8 or 16 bytes
    Attribute<std::string> blockDevice; ///< "sda"; absent without a driver for the unit
    Attribute<std::uint32_t> blockSize; ///< in bytes

    bool operator==(const LogicalUnit&) const = default;
};

struct RemotePort {
    std::string name; ///< rport-5:0-2
    Attribute<WorldWideName> portName;
    Attribute<WorldWideName> nodeName;
    Attribute<std::string> state;
    Attribute<std::string> roles;
    std::vector<LogicalUnit> units;

    bool isTarget() const { return roles.valueOr({}).find("FCP Target") != std::string::npos; }

    bool operator==(const RemotePort&) const = default;
};

/** What moves while the machine runs. */
struct FibreChannelLink {
    Attribute<WorldWideName> portName;
    Attribute<std::string> type;
    Attribute<std::string> state;
    Attribute<std::string> speed;

    bool operator==(const FibreChannelLink&) const = default;
};

struct FibreChannelHost {
    std::uint32_t number = 0; ///< of host5: 5
    Attribute<DeviceParent> parent;
    Attribute<std::string> networkInterface; ///< Fibre Channel over Ethernet in software: what it runs over
    Attribute<WorldWideName> nodeName;
    Attribute<std::uint32_t> portId; ///< the fabric's, 24 bits
    FibreChannelLink link;
    Attribute<std::string> manufacturer;
    Attribute<std::string> model;
    Attribute<std::string> serialNumber;
    Attribute<std::string> driverVersion;
    Attribute<std::string> firmwareVersion;
    Attribute<std::string> biosVersion;
    Attribute<std::string> efiVersion;
    Attribute<std::string> fcodeVersion;
    Counters counters;
    Attribute<Transceiver> transceiver;
    std::vector<RemotePort> remotePorts;

    bool operator==(const FibreChannelHost&) const = default;
};

/** The first 8 or 16 bytes world wide identifier that the kernel's text names: naa. or eui. and digits. */
Attribute<Bytes> parseUnitIdentifier(const std::string& text);

class FibreChannelReader {
public:
    explicit FibreChannelReader(const SysTree& tree) : tree_(tree) {}

    /** Numbers of the hosts that are ports of adapters, sorted. Virtual ports (NPIV) are not: they share a port. */
    std::vector<std::uint32_t> select() const;

    bool exists(std::uint32_t number) const;

    /** Everything. Slow: reads vital product data and transceiver. */
    FibreChannelHost read(std::uint32_t number) const;

    FibreChannelLink link(std::uint32_t number) const;
    /** The interface at the bottom of what the host runs over. */
    Attribute<std::string> networkInterface(std::uint32_t number) const;
    Attribute<std::uint32_t> portId(std::uint32_t number) const;
    Counters counters(std::uint32_t number) const;
    Attribute<Transceiver> transceiver(std::uint32_t number) const;
    /** @param mostUnits of all ports together, the first ones by address: some hosts have many thousands. */
    std::vector<RemotePort> remotePorts(std::uint32_t number,
                                        std::size_t mostUnits = std::numeric_limits<std::size_t>::max()) const;

private:
    Attribute<std::string> first(std::uint32_t number, const std::vector<const char*>& names) const;
    Attribute<std::string> devicePath(std::uint32_t number) const;
    RemotePort readRemotePort(const std::string& name) const;
    LogicalUnit readUnit(const std::string& address, std::uint64_t number) const;
    void addUnits(std::uint32_t number, std::vector<RemotePort>& ports, std::size_t most) const;

    const SysTree& tree_;
};

} // namespace tavik::host
