// Network interfaces of the host: which of them are adapters, and everything the kernel says about one.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tavik/host/attribute.h"
#include "tavik/host/device_parent.h"
#include "tavik/host/held_attributes.h"
#include "tavik/host/kernel_queries.h"
#include "tavik/host/sys_tree.h"
#include "tavik/model.h"

namespace tavik::host {

/** State of a link of which the kernel says nothing that the library has a word for. */
inline constexpr std::uint32_t linkUnknown = 0;

struct HostLink {
    Attribute<std::string> operationalState; ///< "up", "down", "lowerlayerdown", "unknown", ...
    Attribute<bool> carrier;                 ///< absent while the interface is administratively down
    Attribute<std::uint32_t> speed;          ///< megabits per second
    std::uint32_t state = linkUnknown;       ///< a LinkState or linkUnknown

    bool operator==(const HostLink&) const = default;
};

struct HostNetworkDevice {
    std::string name;
    Attribute<std::uint32_t> index;
    Attribute<DeviceParent> parent; ///< absent: a virtual interface
    Attribute<DriverInfo> driver;
    Attribute<MacAddress> permanentAddress;
    Attribute<MacAddress> currentAddress;
    Attribute<std::uint32_t> devicePort; ///< port on its PCI function, counted from 0
    Attribute<std::uint32_t> mtu;        ///< in bytes
    HostLink link;
    Attribute<IPConfiguration> ip;
    Attribute<Transceiver> transceiver;

    /** Permanent where the driver or a bond keeps one, else current. The ports of a bond share their current address.
     */
    Attribute<MacAddress> address() const { return permanentAddress ? permanentAddress : currentAddress; }

    bool operator==(const HostNetworkDevice&) const = default;
};

/** An interface that is not shown as an adapter. */
struct LeftOutInterface {
    std::string name;
    std::string reason;

    bool operator==(const LeftOutInterface&) const = default;
};

/** The interfaces of the host, sorted by name. */
struct InterfaceSelection {
    std::vector<std::string> shown;
    std::vector<LeftOutInterface> leftOut;

    bool operator==(const InterfaceSelection&) const = default;
};

/** Addresses of one interface in the order in which callers read them: of several, the first one counts.
 *  IPv4: the first address that is not secondary, of the widest scope. IPv6: global before link-local, and in both
 *  the lasting before the temporary and deprecated ones. Absent if the kernel could
 *  not be asked; empty if the interface has no address. */
Attribute<IPConfiguration> selectAddresses(const Attribute<std::vector<InterfaceAddress>>& all,
                                           const Attribute<std::uint32_t>& interfaceIndex);

/** The state that HostLink has of the interface, from the kernel's answer about all of them. */
std::uint32_t linkStateOf(const InterfaceLink& link);

/** Reads interfaces; keeps nothing but references to its two sources. */
class NetworkDeviceReader {
public:
    NetworkDeviceReader(const SysTree& tree, KernelQueries& queries) : tree_(tree), queries_(queries) {}

    /** Cheap: reads nothing from the cards. The rules stand in docs/host-source.md. */
    InterfaceSelection select() const;

    /** All interfaces, sorted. */
    std::vector<std::string> names() const;
    /** Why an interface is no adapter, or nothing. */
    std::optional<std::string> reasonAgainst(const std::string& name) const;

    /** Everything. Slow: reads vital product data and transceiver. @param addresses of all interfaces. */
    HostNetworkDevice read(const std::string& name, const Attribute<std::vector<InterfaceAddress>>& addresses) const;

    bool exists(const std::string& name) const;
    Attribute<std::uint32_t> index(const std::string& name) const;
    Attribute<MacAddress> currentAddress(const std::string& name) const;
    /** That of the driver, else the one that the interface had when it became a port of a bond. */
    Attribute<MacAddress> permanentAddress(const std::string& name) const;
    Attribute<std::string> devicePath(const std::string& name) const;
    HostLink link(const std::string& name) const;
    bool exists(const std::string& name, HeldAttributes& held) const;
    /** State and speed alone, as often as anybody likes. */
    HostLink link(const std::string& name, HeldAttributes& held) const;
    Attribute<Transceiver> transceiver(const std::string& name) const;

private:
    std::optional<std::string> reasonAgainstPhysical(const std::string& name) const;
    std::optional<std::string> reasonAgainstVirtual(const std::string& name) const;
    std::optional<std::string> reasonOfKind(const std::string& name) const;
    bool hasRoutedAddress(const std::string& name) const;

    static std::string place(const std::string& name, const char* attribute);
    Attribute<std::uint32_t> number(const std::string& name, const char* attribute) const;

    const SysTree& tree_;
    KernelQueries& queries_;
};

} // namespace tavik::host
