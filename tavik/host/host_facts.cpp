#include "tavik/host/host_facts.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <map>
#include <set>
#include <tuple>
#include <utility>

#include <linux/if_addr.h>

#include "tavik/host/text_forms.h"

namespace tavik::host {

namespace {

constexpr std::size_t longestSerialNumber = 31;

enum KeyRank : std::uint8_t { RankPci, RankDevice, RankVirtual };
using CardKey = std::pair<KeyRank, std::string>;

/** A virtual function is a card of its own: who carved it out decides where it is used. */
CardKey deviceKey(const Attribute<DeviceParent>& parent, const std::string& otherwise) {
    if (!parent) return {RankVirtual, otherwise};
    if (!parent->pci) return {RankDevice, parent->path};
    const auto& pci = *parent->pci;
    return {RankPci, pci.isVirtualFunction ? pci.address.text() : pci.address.slot};
}

std::uint32_t pciFunction(const Attribute<DeviceParent>& parent) {
    return parent && parent->pci ? parent->pci->address.function : 0;
}

/** The number that a port keeps whatever happens to the others, or one that no port can have. */
std::uint32_t wantedNumber(const HostNetworkDevice& device) {
    return pciFunction(device.parent) + 8 * std::min(device.devicePort.valueOr(0), 1000U);
}

std::uint8_t takeNumber(std::uint32_t wanted, std::set<std::uint8_t>& taken) {
    constexpr std::uint32_t largest = std::numeric_limits<std::uint8_t>::max();
    const auto isFree = [&](std::uint32_t number) {
        return number <= largest && !taken.contains(static_cast<std::uint8_t>(number));
    };
    if (!isFree(wanted))
        for (wanted = 0; wanted < largest && !isFree(wanted);)
            ++wanted;
    taken.insert(static_cast<std::uint8_t>(wanted));
    return static_cast<std::uint8_t>(wanted);
}

struct Members {
    std::vector<const HostNetworkDevice*> networkDevices;
    std::vector<const FibreChannelHost*> fibreChannelHosts;
};

HostPort* findPort(std::vector<HostPort>& ports, const Attribute<std::string>& interface) {
    const auto runsOver = [&](const HostPort& port) {
        return interface && port.networkDevice != nullptr && port.networkDevice->name == *interface;
    };
    const auto port = std::find_if(ports.begin(), ports.end(), runsOver);
    return port == ports.end() ? nullptr : &*port;
}

std::vector<HostPort> makePorts(Members members) {
    std::vector<HostPort> ports;
    std::set<std::uint8_t> taken;
    std::stable_sort(members.networkDevices.begin(), members.networkDevices.end(), [](const auto* a, const auto* b) {
        return std::make_tuple(wantedNumber(*a), a->name) < std::make_tuple(wantedNumber(*b), b->name);
    });
    for (const auto* device : members.networkDevices)
        ports.push_back({takeNumber(wantedNumber(*device), taken), device, {}});
    for (const auto* host : members.fibreChannelHosts) {
        auto* port = findPort(ports, host->networkInterface);
        if (port == nullptr) port = &ports.emplace_back(HostPort{takeNumber(pciFunction(host->parent), taken), {}, {}});
        port->fibreChannelHosts.push_back(host);
    }
    std::stable_sort(ports.begin(), ports.end(), [](const auto& a, const auto& b) { return a.number < b.number; });
    return ports;
}

/** Calls for the parent of each function of the card, port by port. */
void forEachParent(const HostCard& card, const std::function<void(const DeviceParent&)>& call) {
    for (const auto& port : card.ports) {
        if (port.networkDevice != nullptr && port.networkDevice->parent) call(*port.networkDevice->parent);
        for (const auto* host : port.fibreChannelHosts)
            if (host->parent) call(*host->parent);
    }
}

std::string plainMac(const MacAddress& address) { return formatHex(address.data(), address.size()); }

std::vector<std::string> serialNumberCandidates(const HostCard& card) {
    std::vector<std::string> candidates;
    if (const auto* vpd = findVpd(card)) candidates.push_back(vpd->find("SN"));
    forEachParent(card, [&](const DeviceParent& parent) {
        if (parent.pci) candidates.push_back(parent.pci->deviceSerialNumber.valueOr({}));
        if (parent.usb) candidates.push_back(parent.usb->serialNumber.valueOr({}));
    });
    for (const auto& port : card.ports)
        for (const auto* host : port.fibreChannelHosts)
            candidates.push_back(host->serialNumber.valueOr({}));
    for (const auto& port : card.ports)
        if (port.networkDevice != nullptr)
            if (const auto address = port.networkDevice->address()) candidates.push_back(plainMac(*address));
    for (const auto& port : card.ports)
        for (const auto* host : port.fibreChannelHosts)
            if (host->link.portName) candidates.push_back(formatWorldWideName(*host->link.portName));
    candidates.push_back(card.key);
    return candidates;
}

std::string chooseSerialNumber(const HostCard& card, std::set<std::string>& taken) {
    auto candidates = serialNumberCandidates(card);
    for (auto& candidate : candidates) {
        candidate = candidate.substr(0, longestSerialNumber);
        if (!candidate.empty() && taken.insert(candidate).second) return candidate;
    }
    for (std::size_t number = 2;; ++number) {
        const auto suffix = "-" + std::to_string(number);
        auto candidate = candidates.back().substr(0, longestSerialNumber - suffix.size()) + suffix;
        if (taken.insert(candidate).second) return candidate;
    }
}

void addInterface(const NetworkDeviceReader& reader, const Attribute<std::vector<InterfaceAddress>>& addresses,
                  const std::string& name, std::vector<std::string>& lines) {
    const auto mac = reader.currentAddress(name);
    const auto index = reader.index(name);
    const auto start = "interface " + name + " " + std::to_string(index.valueOr(0));
    lines.push_back(start + " at " + reader.devicePath(name).valueOr("no device") + " " +
                    (mac ? formatMac(*mac) : "no address"));
    if (!addresses || !index) return;
    for (const auto& entry : *addresses) {
        // Privacy addresses come and go every few hours, and a tentative address becomes another one's in a second.
        const bool isPassing = entry.address.family == AddressIPv6 &&
                               (entry.flags & (IFA_F_TEMPORARY | IFA_F_TENTATIVE | IFA_F_DEPRECATED)) != 0;
        if (entry.interfaceIndex == *index && !isPassing)
            lines.push_back(start + " has " + formatIPAddress(entry.address) + "/" +
                            std::to_string(entry.prefixLength));
    }
}

void addHost(const FibreChannelReader& reader, std::uint32_t number, std::vector<std::string>& lines) {
    const auto start = "fc_host " + std::to_string(number);
    const auto link = reader.link(number);
    lines.push_back(start + " " + (link.portName ? formatWorldWideName(*link.portName) : "no port name"));
    for (const auto& port : reader.remotePorts(number)) {
        if (!port.isTarget()) continue;
        lines.push_back(start + " target " + (port.portName ? formatWorldWideName(*port.portName) : port.name));
        for (const auto& unit : port.units)
            lines.push_back(start + " unit " + unit.address + " " + unit.blockDevice.valueOr("no block device"));
    }
}

} // namespace

HostFacts readHostFacts(const SysTree& whole, KernelQueries& wholeQueries) {
    const SysTree tree = whole.forOneLook();
    const auto ownQueries = wholeQueries.forOneLook();
    KernelQueries& queries = ownQueries ? *ownQueries : wholeQueries;
    HostFacts facts;
    const NetworkDeviceReader network(tree, queries);
    const FibreChannelReader fibreChannel(tree);
    const auto addresses = queries.addresses();
    for (const auto& name : network.names()) {
        if (auto reason = network.reasonAgainst(name))
            facts.leftOut.push_back({name, std::move(*reason)});
        else
            facts.networkDevices.push_back(network.read(name, addresses));
    }
    for (const auto number : fibreChannel.select())
        facts.fibreChannelHosts.push_back(fibreChannel.read(number));
    return facts;
}

void addPortFacts(HostFacts& facts, const SysTree& tree, KernelQueries& queries) {
    constexpr auto everything = std::numeric_limits<std::uint32_t>::max();
    const PortFactReader reader(tree, queries);
    for (const auto& device : facts.networkDevices)
        facts.interfaceFacts.push_back(reader.ofInterface(device.name, everything));
    for (const auto& host : facts.fibreChannelHosts)
        facts.hostFacts.push_back(reader.ofFibreChannelHost(host.number, everything));
}

std::vector<HostCard> groupCards(const HostFacts& facts) {
    std::map<CardKey, Members> members;
    std::map<std::string, CardKey> keyOfInterface;
    for (const auto& device : facts.networkDevices) {
        const auto key = deviceKey(device.parent, device.name);
        keyOfInterface[device.name] = key;
        members[key].networkDevices.push_back(&device);
    }
    for (const auto& host : facts.fibreChannelHosts) {
        const auto below = keyOfInterface.find(host.networkInterface.valueOr({}));
        const auto own = deviceKey(host.parent, "host" + std::to_string(host.number));
        members[below == keyOfInterface.end() ? own : below->second].fibreChannelHosts.push_back(&host);
    }
    std::vector<HostCard> cards;
    std::set<std::string> taken;
    for (auto& [key, content] : members) {
        HostCard card{key.second, {}, makePorts(std::move(content))};
        card.serialNumber = chooseSerialNumber(card, taken);
        cards.push_back(std::move(card));
    }
    return cards;
}

const PciVpd* findVpd(const HostCard& card) {
    const PciVpd* found = nullptr;
    forEachParent(card, [&](const DeviceParent& parent) {
        if (found == nullptr && parent.pci && parent.pci->vpd) found = &*parent.pci->vpd;
    });
    return found;
}

std::vector<std::string> interfaceFingerprint(const SysTree& whole, KernelQueries& queries,
                                              const Attribute<std::vector<InterfaceAddress>>& addresses) {
    const SysTree tree = whole.forOneLook();
    std::vector<std::string> lines;
    const NetworkDeviceReader network(tree, queries);
    for (const auto& name : network.names())
        if (!network.reasonAgainst(name)) addInterface(network, addresses, name, lines);
    return lines;
}

std::vector<std::string> fibreChannelFingerprint(const SysTree& whole) {
    const SysTree tree = whole.forOneLook();
    std::vector<std::string> lines;
    const FibreChannelReader fibreChannel(tree);
    for (const auto number : fibreChannel.select())
        addHost(fibreChannel, number, lines);
    return lines;
}

std::vector<std::string> fingerprint(const SysTree& tree, KernelQueries& queries) {
    auto lines = interfaceFingerprint(tree, queries, queries.addresses());
    const auto more = fibreChannelFingerprint(tree);
    lines.insert(lines.end(), more.begin(), more.end());
    std::sort(lines.begin(), lines.end());
    return lines;
}

} // namespace tavik::host
