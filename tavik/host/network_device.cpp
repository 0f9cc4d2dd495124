#include "tavik/host/network_device.h"

#include <algorithm>
#include <limits>
#include <tuple>

#include <linux/if_addr.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <net/if_arp.h>

#include "tavik/host/module_translation.h"
#include "tavik/host/text_forms.h"

namespace tavik::host {

namespace {

struct KindRow {
    std::string_view kind; ///< DEVTYPE of the interface, or the name of its driver
    const char* reason;
};

/** Software devices that carry other interfaces or tunnel through them, told even while nothing is under them. */
constexpr KindRow leftOutKinds[] = {
    {"bridge", "a bridge over other interfaces"},
    {"bond", "a bond of other interfaces"},
    {"bonding", "a bond of other interfaces"},
    {"team", "a team of other interfaces"},
    {"openvswitch", "a switch over other interfaces"},
    {"batadv", "a mesh over other interfaces"},
    {"batman-adv", "a mesh over other interfaces"},
    {"vrf", "a routing domain of other interfaces"},
    {"hsr", "a ring over other interfaces"},
    {"vxlan", "a tunnel"},
    {"geneve", "a tunnel"},
    {"gretap", "a tunnel"},
    {"ip6gretap", "a tunnel"},
    {"erspan", "a tunnel"},
    {"l2tpeth", "a tunnel"},
};

struct StateRow {
    std::string_view operationalState;
    std::uint32_t state;
};

constexpr StateRow stateRows[] = {
    {"up", LinkUp},           {"down", LinkDown},       {"lowerlayerdown", LinkDown},
    {"notpresent", LinkDown}, {"testing", LinkTesting},
};

/** Drivers that do not keep the operational state leave it at "unknown"; then the carrier tells. */
std::uint32_t linkState(const std::string& operationalState, const Attribute<bool>& carrier) {
    for (const auto& row : stateRows)
        if (row.operationalState == operationalState) return row.state;
    if (operationalState != "unknown" || !carrier) return linkUnknown;
    return *carrier ? LinkUp : LinkDown;
}

Attribute<std::uint32_t> parseSpeed(const std::string& text) {
    // Older kernels print the unknown speed as a large number in place of -1.
    if (text == "-1" || text == "0" || text == "4294967295") return Absence{"unknown to the driver"};
    return parseNumber(text, std::numeric_limits<std::int32_t>::max())
        .then([](std::uint64_t speed) -> Attribute<std::uint32_t> { return static_cast<std::uint32_t>(speed); });
}

/** Port name that a switch in the card gives to its end of a virtual function: pf0vf3, pf1sf88, c1pf0vf2. */
bool isSwitchEnd(const std::string& portName) {
    const auto function = portName.find("pf");
    return function != std::string::npos &&
           (portName.find("vf", function) != std::string::npos || portName.find("sf", function) != std::string::npos);
}

IPAddress maskOf(std::uint8_t prefixLength) {
    IPAddress mask;
    mask.family = AddressIPv4;
    for (std::size_t bit = 0; bit < std::min<std::size_t>(prefixLength, 32); ++bit)
        mask.bytes[bit / 8] = static_cast<std::uint8_t>(mask.bytes[bit / 8] | 0x80U >> bit % 8);
    return mask;
}

// IFA_F_TEMPORARY is the same bit as IFA_F_SECONDARY: the one of IPv6, the other of IPv4.
auto rank(const InterfaceAddress& entry) {
    const bool isPassing = (entry.flags & (IFA_F_SECONDARY | IFA_F_DEPRECATED | IFA_F_TENTATIVE)) != 0;
    return std::make_tuple(entry.scope, isPassing);
}

void add(const InterfaceAddress& entry, IPConfiguration& configuration) {
    if (entry.address.family == AddressIPv6) configuration.firstList.push_back(entry.address);
    if (entry.address.family != AddressIPv4 || configuration.ipv4.family != AddressNone) return;
    configuration.ipv4 = entry.address;
    configuration.ipv4Mask = maskOf(entry.prefixLength);
}

} // namespace

Attribute<IPConfiguration> selectAddresses(const Attribute<std::vector<InterfaceAddress>>& all,
                                           const Attribute<std::uint32_t>& interfaceIndex) {
    if (!all) return all.absence();
    if (!interfaceIndex) return interfaceIndex.absence();
    std::vector<InterfaceAddress> own;
    std::copy_if(all->begin(), all->end(), std::back_inserter(own),
                 [&](const InterfaceAddress& entry) { return entry.interfaceIndex == *interfaceIndex; });
    std::stable_sort(own.begin(), own.end(), [](const auto& a, const auto& b) { return rank(a) < rank(b); });
    IPConfiguration configuration;
    for (const auto& entry : own)
        add(entry, configuration);
    return configuration;
}

std::string NetworkDeviceReader::place(const std::string& name, const char* attribute) {
    return "sys/class/net/" + name + "/" + attribute;
}

Attribute<std::uint32_t> NetworkDeviceReader::number(const std::string& name, const char* attribute) const {
    return tree_.number(place(name, attribute), std::numeric_limits<std::uint32_t>::max())
        .then([](std::uint64_t value) -> Attribute<std::uint32_t> { return static_cast<std::uint32_t>(value); });
}

bool NetworkDeviceReader::exists(const std::string& name) const {
    return isInterfaceName(name) && tree_.exists("sys/class/net/" + name);
}

bool NetworkDeviceReader::exists(const std::string& name, HeldAttributes& held) const {
    return isInterfaceName(name) && held.exists("sys/class/net/" + name);
}

Attribute<std::uint32_t> NetworkDeviceReader::index(const std::string& name) const { return number(name, "ifindex"); }

Attribute<MacAddress> NetworkDeviceReader::currentAddress(const std::string& name) const {
    return tree_.text(place(name, "address")).then([](const std::string& text) -> Attribute<MacAddress> {
        auto address = parseMac(text);
        if (address && *address == MacAddress{}) return Absence{"all zeros"};
        return address;
    });
}

// A bond gives its ports one address and keeps what each had; some drivers keep nothing.
Attribute<MacAddress> NetworkDeviceReader::permanentAddress(const std::string& name) const {
    const auto ofDriver = queries_.permanentAddress(name);
    if (ofDriver) return ofDriver;
    const auto ofBond = tree_.text(place(name, "bonding_slave/perm_hwaddr")).then(parseMac);
    return ofBond ? ofBond : ofDriver;
}

Attribute<std::string> NetworkDeviceReader::devicePath(const std::string& name) const {
    const auto link = place(name, "device");
    auto path = tree_.resolve(link);
    if (!path && !tree_.exists(link)) return Absence{"virtual: no device link"};
    if (!path) return Absence{"virtual: the device link leads nowhere (" + path.absence().reason + ")"};
    return path;
}

bool NetworkDeviceReader::hasRoutedAddress(const std::string& name) const {
    const auto own = index(name);
    const auto addresses = queries_.addresses();
    if (!own || !addresses) return false;
    return std::any_of(addresses->begin(), addresses->end(), [&](const InterfaceAddress& entry) {
        return entry.interfaceIndex == *own && entry.scope < RT_SCOPE_LINK;
    });
}

std::uint32_t linkStateOf(const InterfaceLink& link) {
    // Like /sys, which tells no carrier of an interface that is administratively down.
    const bool isUp = (link.flags & IFF_UP) != 0;
    return linkState(operationalStateName(link.operationalState),
                     isUp ? Attribute<bool>(link.carrier) : Attribute<bool>(Absence{"down"}));
}

std::vector<std::string> NetworkDeviceReader::names() const {
    auto names = tree_.names("sys/class/net");
    std::erase_if(names, [](const std::string& name) {
        // The second is a file of the bonding driver that stands among the interfaces.
        return !isInterfaceName(name) || name == "bonding_masters";
    });
    return names;
}

InterfaceSelection NetworkDeviceReader::select() const {
    InterfaceSelection selection;
    for (const auto& name : names()) {
        if (auto reason = reasonAgainst(name))
            selection.leftOut.push_back({name, std::move(*reason)});
        else
            selection.shown.push_back(name);
    }
    return selection;
}

std::optional<std::string> NetworkDeviceReader::reasonAgainst(const std::string& name) const {
    const auto type = number(name, "type");
    if (!type) return "link type: " + type.absence().reason;
    if (*type == ARPHRD_LOOPBACK) return "loopback";
    if (*type != ARPHRD_ETHER) return "link type " + std::to_string(*type) + " is not Ethernet";
    return devicePath(name) ? reasonAgainstPhysical(name) : reasonAgainstVirtual(name);
}

std::optional<std::string> NetworkDeviceReader::reasonAgainstPhysical(const std::string& name) const {
    if (isSwitchEnd(tree_.text(place(name, "phys_port_name")).valueOr({})))
        return "an end of the switch in the card, not a port";
    // A virtual function under the paravirtual interface of the same network is that interface's fast path, with the
    // same address; a bond or bridge as master is no device and leaves its ports their own.
    const auto above = tree_.linkName(place(name, "master"));
    if (above && devicePath(*above)) return "a path of " + *above;
    return std::nullopt;
}

std::optional<std::string> NetworkDeviceReader::reasonAgainstVirtual(const std::string& name) const {
    if (auto reason = reasonOfKind(name)) return reason;
    for (const auto& entry : tree_.names("sys/class/net/" + name))
        if (entry.starts_with("lower_")) return "stacked on " + entry.substr(6);
    if (const auto above = tree_.linkName(place(name, "master"))) return "a port of " + *above;
    const auto flags = number(name, "flags");
    // The kernel gives every interface a link-local address; what only redirects packets has no other.
    if (flags && (*flags & IFF_NOARP) != 0 && !hasRoutedAddress(name)) return "no neighbours and no address";
    return std::nullopt;
}

std::optional<std::string> NetworkDeviceReader::reasonOfKind(const std::string& name) const {
    const auto event = tree_.text(place(name, "uevent")).valueOr({});
    const auto driver = queries_.driverInfo(name).valueOr({}).driver;
    for (const auto& row : leftOutKinds) {
        const auto line = "DEVTYPE=" + std::string(row.kind) + "\n";
        if (driver == row.kind || (event + "\n").find(line) != std::string::npos) return row.reason;
    }
    return std::nullopt;
}

HostLink NetworkDeviceReader::link(const std::string& name) const {
    HostLink link;
    link.operationalState = tree_.text(place(name, "operstate"));
    link.carrier = tree_.number(place(name, "carrier"), 1).then([](std::uint64_t carrier) -> Attribute<bool> {
        return carrier == 1;
    });
    link.speed = tree_.text(place(name, "speed")).then(parseSpeed);
    link.state = linkState(link.operationalState.valueOr("unknown"), link.carrier);
    return link;
}

HostLink NetworkDeviceReader::link(const std::string& name, HeldAttributes& held) const {
    HostLink link;
    link.operationalState = held.text(place(name, "operstate"));
    const auto state = link.operationalState.valueOr("unknown");
    if (state == "unknown")
        link.carrier = held.text(place(name, "carrier")).then([](const std::string& carrier) -> Attribute<bool> {
            return carrier == "1";
        });
    link.speed = held.text(place(name, "speed")).then(parseSpeed);
    link.state = linkState(state, link.carrier);
    return link;
}

Attribute<Transceiver> NetworkDeviceReader::transceiver(const std::string& name) const {
    return queries_.moduleMemory(name).then(translateModule);
}

HostNetworkDevice NetworkDeviceReader::read(const std::string& name,
                                            const Attribute<std::vector<InterfaceAddress>>& addresses) const {
    HostNetworkDevice device;
    device.name = name;
    device.index = index(name);
    device.parent = devicePath(name).then(
        [this](const std::string& path) -> Attribute<DeviceParent> { return readDeviceParent(tree_, path); });
    device.driver = queries_.driverInfo(name);
    device.permanentAddress = permanentAddress(name);
    device.currentAddress = currentAddress(name);
    device.devicePort = number(name, "dev_port");
    device.mtu = number(name, "mtu");
    device.link = link(name);
    device.ip = selectAddresses(addresses, device.index);
    device.transceiver = transceiver(name);
    return device;
}

} // namespace tavik::host
