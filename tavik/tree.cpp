#include "tavik/tree.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace tavik {

namespace {

/** Copies as much of the text as leaves room for its terminator; the rest of the field is zero. */
template <std::size_t width>
void storeText(char (&field)[width], const std::string& text) {
    const std::size_t length = std::min(text.size(), width - 1);
    std::memcpy(field, text.data(), length);
    std::memset(field + length, 0, width - length);
}

/** Copies into a field that may be full to its last byte. */
template <typename Element, std::size_t width, typename Container>
void storeBytes(Element (&field)[width], const Container& bytes) {
    static_assert(sizeof(Element) == 1);
    const std::size_t length = std::min<std::size_t>(bytes.size(), width);
    if (length > 0) std::memcpy(field, bytes.data(), length);
}

std::uint32_t countOf(std::size_t size) {
    return static_cast<std::uint32_t>(std::min<std::size_t>(size, std::numeric_limits<std::uint32_t>::max()));
}

Bytes recordSerialNumber(const Card& card, const StorageFunction& function) {
    if (function.serialNumber) return *function.serialNumber;
    if (hasBinarySerialNumber(function.pciDeviceId)) return binarySerialNumber(card.serialNumber).value_or(Bytes());
    const auto length = std::min(card.serialNumber.size(), sizeof(TAVIK_DeviceRecord::serialNumber) - 1);
    return Bytes(card.serialNumber.begin(), card.serialNumber.begin() + static_cast<std::ptrdiff_t>(length));
}

void storeDevice(const Card& card, const StorageFunction& function, TAVIK_DeviceRecord& record) {
    record.handle = function.handle;
    record.deviceNumber = function.deviceNumber;
    record.pciDeviceId = function.pciDeviceId;
    record.pciSubsystemVendorId = function.pciSubsystemVendorId;
    record.pciSubsystemDeviceId = function.pciSubsystemDeviceId;
    storeBytes(record.nodeName, function.nodeName);
    storeText(record.modelName, function.modelName);
    storeBytes(record.serialNumber, recordSerialNumber(card, function));
    storeText(record.driverVersion, function.driverVersion);
    storeText(record.driverFirmwareVersion, function.driverFirmwareVersion);
    storeOptionRom(function.optionRom, record);
    record.transceiverReadable =
        function.transceiverReadable.value_or(static_cast<std::uint16_t>(function.transceiver ? 1 : 0));
    record.portProperty = makePortPropertyBlock(function.treeProperty.value_or(function.property));
    if (function.eNodeMac) storeBytes(record.eNodeMac, *function.eNodeMac);
}

void storeCard(const Card& card, const NicCard& texts, TAVIK_CardProperties& properties) {
    storeBytes(properties.wwn, texts.wwn);
    storeText(properties.manufacturer, texts.manufacturer);
    storeText(properties.modelName, texts.modelName);
    storeText(properties.serialNumber, texts.serialNumber.value_or(card.serialNumber));
    storeText(properties.driverVersion, texts.driverVersion);
    storeText(properties.defaultSoftwareVersion, texts.defaultSoftwareVersion);
    storeText(properties.flashVersion, texts.flashVersion);
    storeText(properties.defaultFruNumber, texts.defaultFruNumber);
}

#pragma pack(push, 1)
struct VpdItemRecord {
    char keyword[3];
    std::uint8_t reserved3;
    char value[209];
};

struct VpdItemBlock {
    std::uint32_t count;
    VpdItemRecord items[30];
};
#pragma pack(pop)

static_assert(sizeof(VpdItemRecord) == 213);
static_assert(sizeof(VpdItemBlock) <= sizeof(TAVIK_NicFunction::functionData));

void storeVpdItems(const NicFunction& function, std::uint8_t (&functionData)[6396]) {
    VpdItemBlock block{};
    const auto stored = std::min(function.vpdItems.size(), std::size(block.items));
    block.count = function.vpdItemCount.value_or(countOf(stored));
    for (std::size_t i = 0; i < stored; ++i) {
        storeText(block.items[i].keyword, function.vpdItems[i].keyword);
        storeText(block.items[i].value, function.vpdItems[i].value);
    }
    std::memcpy(functionData, &block, sizeof block);
}

void storePort(const NicFunction& function, TAVIK_PortProperties& port) {
    storeBytes(port.macAddress, function.macAddress);
    storeText(port.deviceName, function.deviceName);
    port.portId = function.portId;
    port.link = makeLinkProperties(function.link);
    port.mtu = function.mtu;
}

/** Chains what is made of each item. Packed records hold their pointers at odd offsets, where no pointer to a pointer
 *  may point, so a function takes the first entry; it is not called without items. */
template <typename Items, typename Make, typename SetFirst>
void chainUp(const Items& items, Make make, SetFirst setFirst) {
    decltype(make(*items.begin())) last = nullptr;
    for (const auto& item : items) {
        auto* entry = make(item);
        if (last)
            last->next = entry;
        else
            setFirst(entry);
        last = entry;
    }
}

template <typename Entry>
Entry* nth(Entry* entry, std::size_t place) {
    while (entry && place-- > 0)
        entry = entry->next;
    return entry;
}

std::optional<std::string> valueAt(const std::map<std::uint32_t, std::string>& texts, std::uint32_t number) {
    const auto found = texts.find(number);
    return found == texts.end() ? std::nullopt : std::optional(found->second);
}

} // namespace

Bytes binarySerialNumber(std::uint32_t number) {
    return {static_cast<std::uint8_t>(number >> 16), static_cast<std::uint8_t>(number),
            static_cast<std::uint8_t>(number >> 8)};
}

std::optional<Bytes> binarySerialNumber(const std::string& text) {
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    if (text.size() != 6 || text[0] < 'A' || text[0] > 'Z') return std::nullopt;
    if (!std::all_of(text.begin() + 1, text.end(), isDigit)) return std::nullopt;
    const auto hundredThousands = static_cast<std::uint32_t>(text[0] - 'A');
    return binarySerialNumber(hundredThousands * 100000 + static_cast<std::uint32_t>(std::stoul(text.substr(1))));
}

TAVIK_PortPropertyBlock makePortPropertyBlock(const PortProperty& property) {
    TAVIK_PortPropertyBlock block{};
    storeBytes(block.portName, property.portName);
    block.portType = property.portType;
    block.portState = property.state;
    block.speedCode = property.speedCode;
    block.transceiverKind = property.transceiverKind;
    return block;
}

TAVIK_LinkProperties makeLinkProperties(const Link& link) {
    TAVIK_LinkProperties properties{};
    properties.speed = link.speed;
    properties.state = link.state;
    return properties;
}

TAVIK_IPAddress makeIPAddress(const IPAddress& address) {
    TAVIK_IPAddress record{};
    storeBytes(record.address, address.bytes);
    record.family = address.family;
    return record;
}

TAVIK_FCoELinkage makeFCoELinkage(const FCoELinkage& linkage) {
    TAVIK_FCoELinkage record{};
    storeBytes(record.wwn, linkage.wwn);
    storeBytes(record.fcPortId, linkage.fcPortId);
    storeBytes(record.eNodeMac, linkage.eNodeMac);
    return record;
}

void storeOptionRom(const OptionRom& rom, TAVIK_DeviceRecord& record) {
    storeText(record.optionRomBiosVersion, rom.biosVersion);
    record.optionRomFlags = static_cast<std::uint8_t>((rom.firmware ? 1 : 0) | (rom.efi ? 2 : 0) | (rom.fcode ? 4 : 0));
    if (rom.firmware) storeBytes(record.firmwareVersion, *rom.firmware);
    if (rom.efi) storeBytes(record.efiVersion, *rom.efi);
    if (rom.fcode) storeBytes(record.fcodeVersion, *rom.fcode);
}

void storeStatistics(const Statistics& statistics, TAVIK_DeviceRecord& record) {
    record.ioCount = statistics.ioCount;
    record.megabyteCount = statistics.megabyteCount;
    record.lipCount = statistics.lipCount;
    record.linkFailures = statistics.linkFailures;
    record.lossOfSync = statistics.lossOfSync;
    record.lossOfSignal = statistics.lossOfSignal;
    record.primitiveSequenceErrors = statistics.primitiveSequenceErrors;
    record.invalidTransmissionWords = statistics.invalidTransmissionWords;
    record.crcErrors = statistics.crcErrors;
}

Tree::Tree(const Fleet& fleet) : fleetHasList_(fleet.cards.has_value()) {
    if (!fleetHasList_) return;
    auto& head = heads_.emplace_back();
    chainUp(
        *fleet.cards, [this](const Card& card) { return addCard(card); },
        [&head](TAVIK_AdapterEntry* first) { head.first = first; });
}

TAVIK_AdapterEntry* Tree::addCard(const Card& card) {
    auto& entry = adapters_.emplace_back();
    storeText(entry.serialNumber, card.serialNumber);
    entry.kind = card.kind;
    storeText(entry.version, card.version);
    storeText(entry.modelName, card.modelName);
    if (!card.ports) return &entry;

    entry.phyPorts = &portLists_.emplace_back();
    chainUp(
        *card.ports, [&](const Port& port) { return addPort(card, port); },
        [&entry](TAVIK_PhyPortEntry* first) { entry.phyPorts->first = first; });
    return &entry;
}

TAVIK_PhyPortEntry* Tree::addPort(const Card& card, const Port& port) {
    auto& entry = ports_.emplace_back();
    entry.portNumber = port.number;
    if (!port.functions) return &entry;

    entry.protocols = &functionLists_.emplace_back();
    chainUp(
        *port.functions,
        [&](const Function& function) {
            return std::visit([&](const auto& kind) { return addFunction(card, kind); }, function);
        },
        [&entry](TAVIK_ProtocolEntry* first) { entry.protocols->first = first; });
    return &entry;
}

TAVIK_ProtocolEntry* Tree::addFunction(const Card& card, const StorageFunction& function) {
    auto& entry = functions_.emplace_back();
    entry.type = function.protocolType;
    storeBytes(entry.storage.headerNodeName, function.headerNodeName.value_or(function.nodeName));
    storeBytes(entry.storage.headerPortName,
               function.headerPortName.value_or(function.treeProperty.value_or(function.property).portName));
    auto& record = entry.storage.device;
    storeDevice(card, function, record);
    devices_.emplace(function.handle, &record);
    storageCards_.emplace(function.handle, card.serialNumber);
    record.targetCount = function.targetCount.value_or(countOf(function.targets.size()));
    chainUp(
        function.targets, [this](const Target& target) { return addTarget(target); },
        [&record](TAVIK_TargetEntry* first) { record.firstTarget = first; });
    return &entry;
}

TAVIK_ProtocolEntry* Tree::addFunction(const Card& card, const NicFunction& function) {
    auto& entry = functions_.emplace_back();
    entry.type = function.protocolType;
    entry.nic.adapterId = function.adapterId;
    adapterCards_.emplace(function.adapterId, card.serialNumber);
    storeCard(card, function.card, entry.nic.card);
    storeVpdItems(function, entry.nic.functionData);
    storePort(function, entry.nic.port);
    return &entry;
}

TAVIK_TargetEntry* Tree::addTarget(const Target& target) {
    auto& entry = targets_.emplace_back();
    storeBytes(entry.portName, target.portName);
    entry.lunCount = target.lunCount.value_or(countOf(target.luns.size()));
    chainUp(
        target.luns, [this](const Lun& lun) { return addLun(lun); },
        [&entry](TAVIK_LunEntry* first) { entry.firstLun = first; });
    return &entry;
}

TAVIK_LunEntry* Tree::addLun(const Lun& lun) {
    auto& entry = luns_.emplace_back();
    entry.number = lun.number;
    storeBytes(entry.vendorId, lun.vendorId);
    storeBytes(entry.productId, lun.productId);
    storeText(entry.productRevision, lun.productRevision);
    storeBytes(entry.identifier, lun.identifier);
    entry.identifierLength = lun.identifierLength;
    entry.blockSize = lun.blockSize;
    storeText(entry.osName, lun.osName);
    return &entry;
}

TAVIK_AdapterEntry* Tree::adapter(std::size_t card) { return fleetHasList_ ? nth(list()->first, card) : nullptr; }

TAVIK_PhyPortEntry* Tree::port(std::size_t card, std::size_t port) {
    const auto* entry = adapter(card);
    return entry && entry->phyPorts ? nth(entry->phyPorts->first, port) : nullptr;
}

TAVIK_ProtocolEntry* Tree::function(std::size_t card, std::size_t port, std::size_t function) {
    const auto* entry = this->port(card, port);
    return entry && entry->protocols ? nth(entry->protocols->first, function) : nullptr;
}

TAVIK_DeviceRecord* Tree::device(std::uint32_t handle) {
    const auto found = devices_.find(handle);
    return found == devices_.end() ? nullptr : found->second;
}

std::optional<std::string> Tree::serialNumberOfStorage(std::uint32_t handle) const {
    return valueAt(storageCards_, handle);
}

std::optional<std::string> Tree::serialNumberOfAdapter(std::uint32_t adapterId) const {
    return valueAt(adapterCards_, adapterId);
}

} // namespace tavik
