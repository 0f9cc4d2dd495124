#include "tavik/host/fleet_mapping.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <string_view>

#include "inventory/fact_table.h"
#include "tavik/host/text_forms.h"
#include "tavik/vpd.h"

namespace tavik::host {

namespace {

constexpr std::uint32_t kindConverged = 0;
constexpr std::uint32_t kindFibreChannel = 1;
constexpr std::uint32_t protocolFibreChannel = 0;
constexpr std::uint32_t protocolFCoE = 1;
constexpr std::size_t mostFunctionItems = 30;
constexpr std::uint64_t largestUnitNumber = 0xFFFF;
constexpr std::size_t longestItemInBlock = 255;

struct CodeRow {
    std::string_view text; ///< as the kernel prints it
    std::uint32_t code;
};

constexpr CodeRow portTypes[] = {
    {"NPort (fabric via point-to-point)", 1},
    {"Point-To-Point (direct nport connection)", 1},
    {"NLPort (fabric via loop)", 2},
    {"LPort (private loop)", 2},
    {"Other", 7},
};
constexpr std::uint32_t portTypeUnknown = 0;

constexpr CodeRow portStates[] = {
    {"Online", PortOperational}, {"Offline", PortSuspended}, {"Blocked", PortSuspended},
    {"Bypassed", PortSuspended}, {"Linkdown", PortLoopDown},
};
constexpr std::uint32_t portStateUnknown = 0;

template <std::size_t size>
std::uint32_t findCode(const CodeRow (&rows)[size], const Attribute<std::string>& text, std::uint32_t otherwise) {
    for (const auto& row : rows)
        if (text && row.text == *text) return row.code;
    return otherwise;
}

/** "16 Gbit" gives 16. */
std::uint32_t speedCode(const Attribute<std::string>& speed) {
    const auto text = speed.valueOr({});
    if (text == "Not Negotiated") return speedAutoNegotiate;
    std::uint32_t gigabits = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), gigabits);
    return error == std::errc() && std::string_view(end) == " Gbit" ? gigabits : 0;
}

/** The numbers of "8.07.00", of which the third may be missing; nothing if the text is of another form or a number has
 *  more than a byte. */
template <std::size_t parts>
std::optional<std::array<std::uint8_t, parts>> versionNumbers(const Attribute<std::string>& version) {
    if (!version) return std::nullopt;
    std::array<std::uint8_t, parts> numbers{};
    const char* at = version->data();
    const char* end = at + version->size();
    for (std::size_t i = 0; i < parts; ++i) {
        if (i == 2 && at == end) break;
        if (i > 0 && (at == end || *at++ != '.')) return std::nullopt;
        const auto [behind, error] = std::from_chars(at, end, numbers[i]);
        if (error != std::errc()) return std::nullopt;
        at = behind;
    }
    return numbers;
}

const DeviceParent* firstParent(const HostPort& port) {
    if (port.networkDevice != nullptr) return port.networkDevice->parent ? &*port.networkDevice->parent : nullptr;
    for (const auto* host : port.fibreChannelHosts)
        if (host->parent) return &*host->parent;
    return nullptr;
}

struct CardIdentity {
    std::string manufacturer;
    std::string model;
};

CardIdentity identifyPci(const PciFunction& pci, const PciNames& names) {
    if (!pci.vendor || !pci.device) return {"unknown", "PCI function " + pci.address.text()};
    const auto suffix = pci.isVirtualFunction ? " (virtual function)" : "";
    return {names.vendor(*pci.vendor), names.device(*pci.vendor, *pci.device) + suffix};
}

CardIdentity identifyVirtual(const HostNetworkDevice& device) {
    const auto driver = device.driver.valueOr({}).driver;
    return {"Linux", driver.empty() ? "virtual Ethernet" : "virtual Ethernet (" + driver + ")"};
}

/** What the bus says of the card, before the card itself is asked. */
CardIdentity identifyByBus(const HostCard& card, const PciNames& names) {
    const auto& port = card.ports.front();
    const auto* parent = firstParent(port);
    if (parent == nullptr) return port.networkDevice != nullptr ? identifyVirtual(*port.networkDevice) : CardIdentity{};
    if (parent->pci) return identifyPci(*parent->pci, names);
    if (parent->usb) return {parent->usb->manufacturer.valueOr("unknown"), parent->usb->product.valueOr("USB adapter")};
    return {"unknown", parent->driver.valueOr(parent->bus.valueOr("unknown")) + " adapter"};
}

CardIdentity identify(const HostCard& card, const PciNames& names) {
    auto identity = identifyByBus(card, names);
    for (const auto& port : card.ports)
        for (const auto* host : port.fibreChannelHosts) {
            if (host->manufacturer) identity.manufacturer = *host->manufacturer;
            if (host->model && port.networkDevice == nullptr) identity.model = *host->model;
        }
    if (const auto* vpd = findVpd(card); vpd != nullptr && !vpd->productIdentifier.empty())
        identity.model = vpd->productIdentifier;
    return identity;
}

/** What all functions of a card share. */
struct CardContext {
    const HostCard& card;
    CardIdentity identity;
    std::uint32_t adapterId;
    std::vector<VpdItem> items;
};

std::vector<VpdItem> allItems(const HostCard& card) {
    const auto* vpd = findVpd(card);
    if (vpd == nullptr) return {};
    auto items = vpd->readOnly;
    items.insert(items.end(), vpd->writable.begin(), vpd->writable.end());
    return items;
}

/** The card's first MAC address stands for the card. */
MacAddress cardAddress(const HostCard& card) {
    for (const auto& port : card.ports)
        if (port.networkDevice != nullptr)
            if (const auto address = port.networkDevice->address()) return *address;
    return {};
}

/** Who made the card, as its functions tell beside their records. */
Facts makerFact(const CardContext& context) {
    static constexpr const auto* row = merolt::findFact("adapterMaker");
    const auto& maker = context.identity.manufacturer;
    if (!isFactText(maker) || maker == "unknown") return {};
    return {{row, maker}};
}

NicFunction describeNic(const HostPort& port, const CardContext& context) {
    const auto& device = *port.networkDevice;
    const auto driver = device.driver.valueOr({});
    NicFunction nic;
    nic.adapterId = context.adapterId;
    nic.card.wwn = cardAddress(context.card);
    nic.card.manufacturer = context.identity.manufacturer;
    nic.card.modelName = context.identity.model;
    nic.card.driverVersion = driver.version;
    nic.card.flashVersion = driver.firmwareVersion;
    nic.macAddress = device.address().valueOr({});
    nic.deviceName = device.name;
    nic.portId = port.number;
    nic.link = describeLink(device.link);
    nic.mtu = device.mtu.valueOr(0);
    nic.vpdItems = context.items;
    nic.vpdItems.resize(std::min(nic.vpdItems.size(), mostFunctionItems));
    if (device.ip) nic.ip = *device.ip;
    if (device.transceiver) nic.transceiver = *device.transceiver;
    nic.facts = makerFact(context);
    for (const auto* host : port.fibreChannelHosts)
        nic.fcoeLinkage.push_back(describeLinkage(host->link.portName, host->portId, device.currentAddress));
    return nic;
}

/** Readers take the serial number of a Fibre Channel card, and with it half of their keys, from its vital product
 *  data: a block that has it is made even where the card shows none. */
Bytes describeVpd(const CardContext& context) {
    auto items = context.items;
    const auto isSerialNumber = [](const VpdItem& item) { return item.keyword == "SN"; };
    items.erase(std::remove_if(items.begin(), items.end(), isSerialNumber), items.end());
    items.insert(items.begin(), {"SN", context.card.serialNumber});
    return encodeVpd(context.identity.model.substr(0, longestItemInBlock), items);
}

Lun describeUnit(const LogicalUnit& unit) {
    Lun lun;
    lun.number = static_cast<std::uint16_t>(unit.number);
    lun.vendorId = unit.vendor.valueOr({});
    lun.productId = unit.model.valueOr({});
    lun.productRevision = unit.revision.valueOr({});
    const auto identifier = unit.identifier.valueOr({});
    std::copy(identifier.begin(), identifier.end(), lun.identifier.begin());
    lun.identifierLength = identifier.size() == 16 ? 16 : 8;
    lun.blockSize = unit.blockSize.valueOr(0);
    if (unit.blockDevice) lun.osName = "/dev/" + *unit.blockDevice;
    return lun;
}

std::vector<Target> describeTargets(const std::vector<RemotePort>& ports) {
    std::vector<Target> targets;
    for (const auto& port : ports) {
        if (!port.isTarget() || !port.portName) continue;
        auto& target = targets.emplace_back();
        target.portName = *port.portName;
        for (const auto& unit : port.units)
            if (unit.number <= largestUnitNumber) target.luns.push_back(describeUnit(unit));
    }
    return targets;
}

void describePci(const Attribute<DeviceParent>& parent, StorageFunction& storage) {
    if (!parent || !parent->pci) return;
    storage.pciDeviceId = parent->pci->device.valueOr(0);
    storage.pciSubsystemVendorId = parent->pci->subsystemVendor.valueOr(0);
    storage.pciSubsystemDeviceId = parent->pci->subsystemDevice.valueOr(0);
}

/** Fibre Channel over Ethernet in software goes through the module of its interface. */
const Attribute<Transceiver>& moduleOf(const HostPort& port, const FibreChannelHost& host) {
    const bool isOverEthernet = host.networkInterface.present() && port.networkDevice != nullptr;
    return host.transceiver || !isOverEthernet ? host.transceiver : port.networkDevice->transceiver;
}

StorageFunction describeStorage(const HostPort& port, const FibreChannelHost& host, const CardContext& context) {
    StorageFunction storage;
    const auto& module = moduleOf(port, host);
    storage.protocolType = host.networkInterface ? protocolFCoE : protocolFibreChannel;
    storage.handle = handleOfHost(host.number);
    storage.deviceNumber = static_cast<std::uint16_t>(host.number);
    describePci(host.parent, storage);
    storage.nodeName = host.nodeName.valueOr({});
    storage.property = describePortProperty(host.link, module.present());
    storage.modelName = host.model.valueOr(context.identity.model);
    storage.driverVersion = host.driverVersion.valueOr({});
    storage.driverFirmwareVersion = host.firmwareVersion.valueOr({});
    storage.optionRom = {host.biosVersion.valueOr({}), versionNumbers<3>(host.firmwareVersion),
                         versionNumbers<2>(host.efiVersion), versionNumbers<3>(host.fcodeVersion)};
    if (port.networkDevice != nullptr && port.networkDevice->currentAddress)
        storage.eNodeMac = *port.networkDevice->currentAddress;
    storage.targets = describeTargets(host.remotePorts);
    storage.vpd = describeVpd(context);
    if (module) storage.transceiver = *module;
    storage.statistics = describeStatistics(host.counters);
    storage.facts = makerFact(context);
    return storage;
}

Port describePort(const HostPort& port, const CardContext& context) {
    Port described;
    described.number = port.number;
    for (const auto* host : port.fibreChannelHosts)
        described.functions->emplace_back(describeStorage(port, *host, context));
    if (port.networkDevice != nullptr) described.functions->emplace_back(describeNic(port, context));
    return described;
}

/** The firmware of its first function that tells one stands for the card's version. */
std::string cardVersion(const HostCard& card) {
    for (const auto& port : card.ports) {
        if (port.networkDevice != nullptr)
            if (const auto driver = port.networkDevice->driver.valueOr({}); !driver.firmwareVersion.empty())
                return driver.firmwareVersion;
        for (const auto* host : port.fibreChannelHosts)
            if (host->firmwareVersion) return *host->firmwareVersion;
    }
    return {};
}

Card describeCard(const HostCard& card, std::uint32_t adapterId, const PciNames& names) {
    const CardContext context{card, identify(card, names), adapterId, allItems(card)};
    const bool hasEthernet = std::any_of(card.ports.begin(), card.ports.end(),
                                         [](const HostPort& port) { return port.networkDevice != nullptr; });
    Card described;
    described.serialNumber = card.serialNumber;
    described.kind = hasEthernet ? kindConverged : kindFibreChannel;
    described.version = cardVersion(card);
    described.modelName = context.identity.model;
    for (const auto& port : card.ports)
        described.ports->push_back(describePort(port, context));
    return described;
}

} // namespace

Link describeLink(const HostLink& link) { return {link.speed.valueOr(0), link.state}; }

PortProperty describePortProperty(const FibreChannelLink& link, bool hasTransceiver) {
    PortProperty property;
    property.portName = link.portName.valueOr({});
    property.portType = static_cast<std::uint8_t>(findCode(portTypes, link.type, portTypeUnknown));
    property.state = static_cast<std::uint8_t>(findCode(portStates, link.state, portStateUnknown));
    property.speedCode = speedCode(link.speed);
    property.transceiverKind = hasTransceiver ? transceiverKindSfp : std::uint16_t{0};
    return property;
}

Statistics describeStatistics(const Counters& counters) {
    const auto count = [&](Counter counter) { return static_cast<std::uint32_t>(counters[counter].valueOr(0)); };
    Statistics statistics;
    statistics.ioCount = count(CounterInputRequests) + count(CounterOutputRequests) + count(CounterControlRequests);
    statistics.megabyteCount = count(CounterInputMegabytes) + count(CounterOutputMegabytes);
    statistics.lipCount = count(CounterLips);
    statistics.linkFailures = count(CounterLinkFailures);
    statistics.lossOfSync = count(CounterLossesOfSync);
    statistics.lossOfSignal = count(CounterLossesOfSignal);
    statistics.primitiveSequenceErrors = count(CounterPrimitiveSequenceErrors);
    statistics.invalidTransmissionWords = count(CounterInvalidWords);
    statistics.crcErrors = count(CounterCrcErrors);
    return statistics;
}

FCoELinkage describeLinkage(const Attribute<WorldWideName>& portName, const Attribute<std::uint32_t>& portId,
                            const Attribute<MacAddress>& interfaceAddress) {
    const auto id = portId.valueOr(0);
    return {portName.valueOr({}),
            {static_cast<std::uint8_t>(id >> 16), static_cast<std::uint8_t>(id >> 8), static_cast<std::uint8_t>(id)},
            interfaceAddress.valueOr({})};
}

Fleet describeFleet(const HostFacts& facts, const PciNames& names) {
    Fleet fleet;
    std::uint32_t adapterId = 0;
    for (const auto& card : groupCards(facts))
        fleet.cards->push_back(describeCard(card, ++adapterId, names));
    return fleet;
}

} // namespace tavik::host
