#include "hostile_tree.h"

#include "tavik/vpd.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace {

tavik::WorldWideName worldWideName(std::uint8_t last) { return {0x20, 0x00, 0x00, 0x02, 0xC9, 0x00, 0x00, last}; }

tavik::StorageFunction storageFunction(std::uint32_t number, std::uint16_t pciDeviceId) {
    tavik::StorageFunction function;
    function.handle = number;
    function.deviceNumber = static_cast<std::uint16_t>(number);
    function.pciDeviceId = pciDeviceId;
    function.nodeName = worldWideName(static_cast<std::uint8_t>(0xF0 + number));
    function.property.portName = worldWideName(static_cast<std::uint8_t>(number));
    function.modelName = "Model";
    function.transceiverReadable = 1;
    for (std::uint8_t last = 1; last <= 3; ++last) {
        tavik::Target target;
        target.portName = worldWideName(static_cast<std::uint8_t>(0xA0 + last));
        for (std::uint16_t unit = 0; unit < 2; ++unit) {
            tavik::Lun lun;
            lun.number = unit;
            lun.osName = "/dev/sd";
            target.luns.push_back(lun);
        }
        function.targets.push_back(std::move(target));
    }
    return function;
}

tavik::NicFunction nicFunction(std::uint32_t adapterId, std::uint32_t portId) {
    tavik::NicFunction function;
    function.adapterId = adapterId;
    function.portId = portId;
    function.deviceName = "eth" + std::to_string(portId);
    function.macAddress = {0x02, 0, 0, 0, 0, static_cast<std::uint8_t>(portId)};
    function.vpdItems = {{"YU", "uuid"}, {"FN", "fru"}};
    return function;
}

/// Two converged cards of two ports; each port has a storage function of its own chip and an Ethernet function.
tavik::Fleet smallFleet() {
    tavik::Fleet fleet;
    std::uint32_t number = 0;
    for (const char* serialNumber : {"S1", "S2"}) {
        tavik::Card card;
        card.serialNumber = serialNumber;
        for (std::uint8_t portNumber = 0; portNumber < 2; ++portNumber) {
            ++number;
            tavik::Port port;
            port.number = portNumber;
            port.functions->push_back(storageFunction(number, portNumber == 0 ? 0xA107 : 0xA121));
            port.functions->push_back(nicFunction(number / 3, number));
            card.ports->push_back(std::move(port));
        }
        fleet.cards->push_back(std::move(card));
    }
    return fleet;
}

template <class Entry>
Entry* pick(const std::vector<Entry*>& entries, Choices& choices) {
    return entries[choices.below(entries.size())];
}

/// The chosen entry leads to another chosen one of whatever chain.
template <class Entry>
void relink(const std::vector<Entry*>& entries, Choices& choices) {
    pick(entries, choices)->next = pick(entries, choices);
}

/// The last entry of a chain leads back to the first, unless the chain has no end already.
template <class Entry>
void closeChain(Entry* first) {
    constexpr int mostSteps = 1000;
    Entry* last = first;
    for (int step = 0; last && last->next && step < mostSteps; ++step)
        last = last->next;
    if (last && !last->next) last->next = first;
}

void circleAdapters(HostileTree& tree, Choices& choices) {
    if (!choices.isOver()) return relink(tree.adapters, choices);
    closeChain(tree.list()->first);
}

void circlePorts(HostileTree& tree, Choices& choices) {
    if (!choices.isOver()) return relink(tree.ports, choices);
    for (TAVIK_AdapterEntry* adapter : tree.adapters)
        if (adapter->phyPorts) closeChain(adapter->phyPorts->first);
}

void circleFunctions(HostileTree& tree, Choices& choices) {
    if (!choices.isOver()) return relink(tree.functions, choices);
    for (TAVIK_PhyPortEntry* port : tree.ports)
        if (port->protocols) closeChain(port->protocols->first);
}

void circleTargets(HostileTree& tree, Choices& choices) {
    if (!choices.isOver()) return relink(tree.targets, choices);
    for (TAVIK_ProtocolEntry* entry : tree.storageFunctions)
        closeChain(entry->storage.device.firstTarget);
}

void circleUnits(HostileTree& tree, Choices& choices) {
    if (!choices.isOver()) return relink(tree.units, choices);
    for (TAVIK_TargetEntry* target : tree.targets)
        closeChain(target->firstLun);
}

void circleAll(HostileTree& tree, Choices& choices) {
    circleUnits(tree, choices);
    circleTargets(tree, choices);
    circleFunctions(tree, choices);
    circlePorts(tree, choices);
    circleAdapters(tree, choices);
}

std::uint32_t wildNumber(Choices& choices) {
    constexpr std::uint32_t numbers[] = {0xFFFFFFFF, 0x80000000, 0x7FFFFFFF, 0x10000, 0x1001, 0x1000, 100, 2, 1, 0};
    return numbers[choices.below(std::size(numbers))];
}

/// As many as the choices say; all when they are over.
template <class Entry, class Change>
void changeSome(const std::vector<Entry*>& entries, Choices& choices, Change change) {
    const std::size_t spared = choices.below(entries.size());
    for (std::size_t index = 0; index + spared < entries.size(); ++index)
        change(*entries[index]);
}

template <std::size_t N>
void fill(char (&field)[N], const char* pattern) {
    const std::size_t length = std::strlen(pattern);
    for (std::size_t index = 0; index < N; ++index)
        field[index] = pattern[index % length];
}

/// Every text field to its last byte.
void fillTexts(HostileTree& tree, const char* pattern) {
    for (TAVIK_AdapterEntry* adapter : tree.adapters) {
        fill(adapter->serialNumber, pattern);
        fill(adapter->version, pattern);
        fill(adapter->modelName, pattern);
    }
    for (TAVIK_ProtocolEntry* entry : tree.storageFunctions) {
        TAVIK_DeviceRecord& device = entry->storage.device;
        fill(device.modelName, pattern);
        fill(device.serialNumber, pattern);
        fill(device.driverVersion, pattern);
        fill(device.driverFirmwareVersion, pattern);
        fill(device.optionRomBiosVersion, pattern);
    }
    for (TAVIK_ProtocolEntry* entry : tree.nicFunctions) {
        TAVIK_CardProperties& card = entry->nic.card;
        fill(card.manufacturer, pattern);
        fill(card.modelName, pattern);
        fill(card.serialNumber, pattern);
        fill(card.driverVersion, pattern);
        fill(card.defaultSoftwareVersion, pattern);
        fill(card.flashVersion, pattern);
        fill(card.defaultFruNumber, pattern);
        fill(entry->nic.port.deviceName, pattern);
    }
    for (TAVIK_LunEntry* unit : tree.units) {
        fill(unit->vendorId, pattern);
        fill(unit->productId, pattern);
        fill(unit->productRevision, pattern);
        fill(unit->osName, pattern);
    }
}

/// Chosen bytes over a span that holds no pointer.
void scribbleOver(void* start, std::size_t size, Choices& choices) {
    auto* bytes = static_cast<std::uint8_t*>(start);
    const std::size_t count = 1 + choices.below(64);
    const std::size_t place = choices.below(size);
    for (std::size_t index = 0; index < count && place + index < size; ++index)
        bytes[place + index] = choices.isOver() ? std::uint8_t{0xFF} : choices.byte();
}

void scribble(HostileTree& tree, Choices& choices) {
    switch (choices.below(5)) {
    case 0: {
        TAVIK_DeviceRecord& device = pick(tree.storageFunctions, choices)->storage.device;
        scribbleOver(&device, offsetof(TAVIK_DeviceRecord, firstTarget), choices);
        break;
    }
    case 1:
        scribbleOver(&pick(tree.nicFunctions, choices)->nic, sizeof(TAVIK_NicFunction), choices);
        break;
    case 2:
        scribbleOver(pick(tree.adapters, choices), offsetof(TAVIK_AdapterEntry, phyPorts), choices);
        break;
    case 3:
        scribbleOver(pick(tree.units, choices), offsetof(TAVIK_LunEntry, next), choices);
        break;
    default:
        scribbleOver(pick(tree.targets, choices), offsetof(TAVIK_TargetEntry, firstLun), choices);
        break;
    }
}

/// Every adapter has the ports of the chosen one, and so on down to the logical units.
void shareParts(HostileTree& tree, Choices& choices) {
    const TAVIK_AdapterEntry* adapter = pick(tree.adapters, choices);
    for (TAVIK_AdapterEntry* other : tree.adapters)
        other->phyPorts = adapter->phyPorts;
    const TAVIK_PhyPortEntry* port = pick(tree.ports, choices);
    for (TAVIK_PhyPortEntry* other : tree.ports)
        other->protocols = port->protocols;
    const TAVIK_DeviceRecord& device = pick(tree.storageFunctions, choices)->storage.device;
    for (TAVIK_ProtocolEntry* other : tree.storageFunctions)
        other->storage.device.firstTarget = device.firstTarget;
    const TAVIK_TargetEntry* target = pick(tree.targets, choices);
    for (TAVIK_TargetEntry* other : tree.targets)
        other->firstLun = target->firstLun;
}

void removeLists(HostileTree& tree, Choices& choices) {
    switch (choices.below(5)) {
    case 0:
        changeSome(tree.storageFunctions, choices, [](auto& entry) { entry.storage.device.firstTarget = nullptr; });
        changeSome(tree.targets, choices, [](TAVIK_TargetEntry& target) { target.firstLun = nullptr; });
        break;
    case 1:
        changeSome(tree.ports, choices, [](TAVIK_PhyPortEntry& port) { port.protocols = nullptr; });
        break;
    case 2:
        changeSome(tree.adapters, choices, [](TAVIK_AdapterEntry& adapter) { adapter.phyPorts = nullptr; });
        break;
    case 3:
        changeSome(tree.adapters, choices, [](TAVIK_AdapterEntry& adapter) {
            if (adapter.phyPorts) adapter.phyPorts->first = nullptr;
        });
        break;
    default:
        tree.list()->first = nullptr;
        break;
    }
}

/// An Ethernet function is none any more, a storage function may become one. The other way round its bytes would be
/// pointers.
void changeTypes(HostileTree& tree, Choices& choices) {
    changeSome(tree.nicFunctions, choices, [&](TAVIK_ProtocolEntry& entry) { entry.type = 3 + choices.byte(); });
    changeSome(tree.storageFunctions, choices, [&](TAVIK_ProtocolEntry& entry) {
        entry.type = choices.byte() % 2 == 0 ? std::uint32_t{TAVIK_ProtocolNic} : 0xFFFFFFFF;
    });
}

// clang-format off
const std::vector<Trick> tricks = {
    {"circle-of-adapters",       circleAdapters},
    {"circle-of-ports",          circlePorts},
    {"circle-of-functions",      circleFunctions},
    {"circle-of-targets",        circleTargets},
    {"circle-of-units",          circleUnits},
    {"all-circles",              circleAll},
    {"shared-parts",             shareParts},
    {"wild-target-counts",       [](HostileTree& tree, Choices& choices) {
         changeSome(tree.storageFunctions, choices, [&](TAVIK_ProtocolEntry& entry) { entry.storage.device.targetCount = wildNumber(choices); }); }},
    {"wild-unit-counts",         [](HostileTree& tree, Choices& choices) {
         changeSome(tree.targets, choices, [&](TAVIK_TargetEntry& target) { target.lunCount = wildNumber(choices); }); }},
    {"wild-item-counts",         [](HostileTree& tree, Choices& choices) {
         changeSome(tree.nicFunctions, choices, [&](TAVIK_ProtocolEntry& entry) {
             const std::uint32_t count = wildNumber(choices);
             std::memcpy(entry.nic.functionData, &count, sizeof(count)); }); }},
    {"wild-list-counts",         [](HostileTree& tree, Choices&) { tree.answers.hasWildCounts = true; }},
    {"counts-without-lists",     [](HostileTree& tree, Choices&) { tree.answers.hasNoLists = true; }},
    {"texts-without-end",        [](HostileTree& tree, Choices&) { fillTexts(tree, "X"); tree.answers.hasTextsWithoutEnd = true; }},
    {"texts-of-controls",        [](HostileTree& tree, Choices&) { fillTexts(tree, "a\n\x1b[2J\xff%s_"); }},
    {"missing-lists",            removeLists},
    {"no-adapter-list",          [](HostileTree& tree, Choices&) { tree.answers.hasNoList = true; }},
    {"nulls-on-success",         [](HostileTree& tree, Choices&) { tree.answers.isNullOnSuccess = true; }},
    {"odd-types",                changeTypes},
    {"scribbled-records",        scribble},
    {"growing-chains",           [](HostileTree& tree, Choices&) { tree.answers.growsAndShrinks = true; }},
    {"alarms",                   [](HostileTree& tree, Choices&) { tree.answers.raisesAlarms = true; }},
    {"slow-calls",               [](HostileTree& tree, Choices& choices) {
         // A fuzzer has no time for it.
         if (choices.isOver()) tree.answers.delayMilliseconds = 1; }},
    {"all-calls-fail",           [](HostileTree& tree, Choices&) { tree.answers.failing.insert("all"); }},
    {"failing-port-property",    [](HostileTree& tree, Choices&) { tree.answers.failing.insert("TAVIK_GetHbaDevicePortProperty"); }},
    {"failing-vpd",              [](HostileTree& tree, Choices&) { tree.answers.failing.insert("TAVIK_GetVpd"); }},
    {"failing-uuid",             [](HostileTree& tree, Choices&) { tree.answers.failing.insert("TAVIK_GetUUIDFromI2CVPD"); }},
    {"failing-statistics",       [](HostileTree& tree, Choices&) { tree.answers.failing.insert("TAVIK_RefreshDeviceStats"); }},
    {"failing-sfp",              [](HostileTree& tree, Choices&) { tree.answers.failing.insert("TAVIK_GetSFPData"); }},
    {"failing-os-name",          [](HostileTree& tree, Choices&) { tree.answers.failing.insert("TAVIK_GetOSName"); }},
    {"failing-link",             [](HostileTree& tree, Choices&) { tree.answers.failing.insert("TAVIK_GetLinkProperties"); }},
    {"failing-ip",               [](HostileTree& tree, Choices&) { tree.answers.failing.insert("TAVIK_GetIPProperties"); }},
    {"failing-linkage",          [](HostileTree& tree, Choices&) { tree.answers.failing.insert("TAVIK_GetFCoELinkage"); }},
    {"failing-transceiver",      [](HostileTree& tree, Choices&) { tree.answers.failing.insert("TAVIK_GetTransceiverDMIData"); }},
    {"failing-version",          [](HostileTree& tree, Choices&) { tree.answers.failing.insert("TAVIK_GetMBIVersionString"); }},
    {"failing-flash",            [](HostileTree& tree, Choices&) { tree.answers.failing.insert("TAVIK_UpdateFlash"); tree.answers.failing.insert("TAVIK_doOptionROMUpdate"); }},
};
// clang-format on

constexpr const char* seedPrefix = "seed:";
constexpr std::size_t bytesOfSeed = 200;

} // namespace

HostileTree::HostileTree() : tree(smallFleet()) {
    for (TAVIK_AdapterEntry* adapter = tree.list()->first; adapter; adapter = adapter->next) {
        adapters.push_back(adapter);
        for (TAVIK_PhyPortEntry* port = adapter->phyPorts->first; port; port = port->next) {
            ports.push_back(port);
            for (TAVIK_ProtocolEntry* entry = port->protocols->first; entry; entry = entry->next)
                functions.push_back(entry);
        }
    }
    for (TAVIK_ProtocolEntry* entry : functions) {
        (entry->type == TAVIK_ProtocolNic ? nicFunctions : storageFunctions).push_back(entry);
        if (entry->type == TAVIK_ProtocolNic) continue;
        for (TAVIK_TargetEntry* target = entry->storage.device.firstTarget; target; target = target->next) {
            targets.push_back(target);
            for (TAVIK_LunEntry* unit = target->firstLun; unit; unit = unit->next)
                units.push_back(unit);
        }
    }
}

template <class Visitor>
void HostileTree::forEachKind(Visitor&& visit) {
    visit(adapters, adapterLinks);
    visit(ports, portLinks);
    visit(functions, functionLinks);
    visit(targets, targetLinks);
    visit(units, unitLinks);
}

void HostileTree::cutChains() {
    forEachKind([](const auto& entries, auto& links) {
        for (auto* entry : entries) {
            auto* const next = entry->next; // packed: no reference may be bound to it
            links.push_back(next);
            entry->next = nullptr;
        }
    });
}

void HostileTree::beginReading() {
    changes = 0;
    forEachKind([](const auto& entries, auto& links) {
        for (std::size_t index = 0; index < links.size(); ++index)
            entries[index]->next = links[index];
        links.clear();
    });
}

void HostileTree::breathe() {
    if (changes == answers.mostChanges) return;
    if (++changes == answers.mostChanges) return cutChains();
    const bool isLong = ++breaths % 2 == 0;
    adapters.front()->next = isLong ? adapters.back() : nullptr;
    ports.front()->next = isLong ? ports.back() : nullptr;
    functions.front()->next = isLong ? functions.back() : nullptr;
    targets.front()->next = isLong ? targets.back() : nullptr;
    units.front()->next = isLong ? units.back() : nullptr;
}

const std::vector<Trick>& allTricks() { return tricks; }

std::unique_ptr<HostileTree> hostileTree(const std::string& scenario) {
    if (scenario.rfind(seedPrefix, 0) == 0) {
        const auto seed = static_cast<std::uint32_t>(std::stoul(scenario.substr(std::strlen(seedPrefix))));
        return hostileTree(Choices::ofSeed(seed, bytesOfSeed));
    }
    auto tree = std::make_unique<HostileTree>();
    if (scenario.empty()) return tree;
    const auto trick =
        std::find_if(tricks.begin(), tricks.end(), [&](const Trick& row) { return row.name == scenario; });
    if (trick == tricks.end()) throw std::invalid_argument("there is no scenario " + scenario);
    Choices plain;
    trick->play(*tree, plain);
    return tree;
}

std::unique_ptr<HostileTree> hostileTree(Choices choices) {
    auto tree = std::make_unique<HostileTree>();
    while (!choices.isOver())
        tricks[choices.byte() % tricks.size()].play(*tree, choices);
    return tree;
}
