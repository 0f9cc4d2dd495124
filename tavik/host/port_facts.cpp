#include "tavik/host/port_facts.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <limits>
#include <string_view>
#include <utility>

#include "inventory/fact_table.h"
#include "tavik/host/device_parent.h"
#include "tavik/host/relations.h"
#include "tavik/host/text_forms.h"

namespace tavik::host {

namespace {

constexpr std::uint64_t largestNumber = std::numeric_limits<std::uint64_t>::max();
constexpr std::uint64_t megabit = 1'000'000;
constexpr std::uint64_t gigabit = 1'000'000'000;

/** The row of that name. Names are checked when this is compiled. */
consteval const merolt::FactRow* rowOf(std::string_view name) {
    const std::size_t place = merolt::placeOfFact(name);
    if (place == std::size(merolt::fact_table::rows)) throw "no such fact";
    return &merolt::fact_table::rows[place];
}

struct CounterFact {
    const merolt::FactRow* row;
    const char* file; ///< below statistics/
};

constexpr CounterFact interfaceCounters[] = {
    {rowOf("totalReceivedBytes"), "rx_bytes"},     {rowOf("totalTransmittedBytes"), "tx_bytes"},
    {rowOf("totalReceivedPackets"), "rx_packets"}, {rowOf("totalTransmittedPackets"), "tx_packets"},
    {rowOf("totalReceiveErrors"), "rx_errors"},    {rowOf("totalTransmitErrors"), "tx_errors"},
    {rowOf("totalReceiveDrops"), "rx_dropped"},    {rowOf("totalTransmitDrops"), "tx_dropped"},
};

constexpr CounterFact fibreChannelCounters[] = {
    {rowOf("totalReceivedFrames"), "rx_frames"},
    {rowOf("totalTransmittedFrames"), "tx_frames"},
    {rowOf("totalReceivedWords"), "rx_words"},
    {rowOf("totalTransmittedWords"), "tx_words"},
    {rowOf("totalInputRequests"), "fcp_input_requests"},
    {rowOf("totalOutputRequests"), "fcp_output_requests"},
    {rowOf("totalControlRequests"), "fcp_control_requests"},
    {rowOf("totalInputMegabytes"), "fcp_input_megabytes"},
    {rowOf("totalOutputMegabytes"), "fcp_output_megabytes"},
    {rowOf("totalLips"), "lip_count"},
    {rowOf("totalNos"), "nos_count"},
    {rowOf("totalLinkFailures"), "link_failure_count"},
    {rowOf("totalSyncLosses"), "loss_of_sync_count"},
    {rowOf("totalSignalLosses"), "loss_of_signal_count"},
    {rowOf("totalProtocolErrors"), "prim_seq_protocol_err_count"},
    {rowOf("totalInvalidWords"), "invalid_tx_word_count"},
    {rowOf("totalCrcErrors"), "invalid_crc_count"},
    {rowOf("totalErrorFrames"), "error_frames"},
    {rowOf("totalDumpedFrames"), "dumped_frames"},
};

/** A number with a unit behind it: "8.0 GT/s PCIe" in units of gigabit gives 8000000000. */
Attribute<std::uint64_t> parseScaled(std::string_view text, std::string_view unit, std::uint64_t scale) {
    const Absence absence{"no speed: " + std::string(text)};
    const auto end = std::min(text.find(unit), text.find_first_not_of("0123456789."));
    if (text.substr(std::min(end, text.size())).substr(0, unit.size()) != unit) return absence;
    const auto dot = std::min(text.find('.'), end);
    const auto whole = parseNumber(text.substr(0, dot), 1'000'000);
    if (!whole) return absence;
    std::uint64_t value = *whole * scale;
    for (std::size_t place = dot + 1; place < end && scale % 10 == 0; ++place) {
        if (text[place] == '.') return absence;
        scale /= 10;
        value += scale * static_cast<std::uint64_t>(text[place] - '0');
    }
    return value;
}

Attribute<std::uint64_t> parsePcieSpeed(const std::string& text) { return parseScaled(text, " GT/s", gigabit); }

Attribute<std::uint64_t> parseFibreChannelSpeed(const std::string& text) { return parseScaled(text, " Gbit", gigabit); }

/** "4 Gbit, 8 Gbit, 16 Gbit". What is no speed among them is passed over. */
Attribute<std::vector<std::uint64_t>> parseFibreChannelSpeeds(const std::string& text) {
    std::vector<std::uint64_t> speeds;
    for (std::size_t begin = 0; begin < text.size();) {
        const auto end = std::min(text.find(',', begin), text.size());
        if (const auto speed = parseFibreChannelSpeed(text.substr(begin, end - begin))) speeds.push_back(*speed);
        begin = text.find_first_not_of(", ", end);
    }
    if (speeds.empty()) return Absence{"no speeds: " + text};
    return speeds;
}

Attribute<std::string> showFabricName(const WorldWideName& name) {
    const auto isOneByte = [&](std::uint8_t byte) {
        return std::all_of(name.begin(), name.end(), [byte](std::uint8_t other) { return other == byte; });
    };
    if (isOneByte(0) || isOneByte(0xFF)) return Absence{"no fabric login"};
    return showName(name);
}

/** Collects the facts of a port that are asked for. */
class Collector {
public:
    explicit Collector(std::uint32_t groups) : groups_(groups) {}

    bool wants(TavikFactGroup group) const { return (groups_ & group) != 0; }

    template <typename Value>
    void add(const merolt::FactRow* row, const Attribute<Value>& value) {
        facts_.push_back({row, value.then([](const Value& one) -> Attribute<std::vector<FactValue>> {
                              return std::vector<FactValue>{FactValue(one)};
                          })});
    }

    template <typename Value>
    void add(const merolt::FactRow* row, const Attribute<std::vector<Value>>& values) {
        facts_.push_back({row, values.then([](const std::vector<Value>& all) -> Attribute<std::vector<FactValue>> {
                              return std::vector<FactValue>(all.begin(), all.end());
                          })});
    }

    std::vector<HostFact> result() && { return std::move(facts_); }

private:
    std::uint32_t groups_;
    std::vector<HostFact> facts_;
};

/** The name that the machine gives to the slot of a card: 3, or "PCIe Slot 3". */
Attribute<std::string> slotName(const SysTree& tree, const PciAddress& address) {
    for (const auto& name : tree.names("sys/bus/pci/slots"))
        if (tree.text("sys/bus/pci/slots/" + name + "/address").valueOr({}) == address.slot) return name;
    return Absence{"no slot of the machine has this address"};
}

/** The PCI function behind a device. */
struct PciPlace {
    Attribute<PciAddress> address;
    std::string folder;
};

PciPlace pciPlaceOf(const SysTree& tree, const Attribute<std::string>& devicePath) {
    PciPlace place;
    place.address =
        devicePath.then([&](const std::string& path) -> Attribute<PciAddress> { return findPciAddress(tree, path); });
    if (place.address) place.folder = findPciPath(*devicePath);
    return place;
}

template <typename Value, typename Read>
Attribute<Value> onPci(const PciPlace& place, Read read) {
    return place.address.then([&](const PciAddress& address) -> Attribute<Value> { return read(address); });
}

Attribute<std::uint64_t> pciNumber(const SysTree& tree, const PciPlace& place, const char* name) {
    return onPci<std::uint64_t>(place,
                                [&](const PciAddress&) { return tree.number(place.folder + "/" + name, 0xFFFF); });
}

Attribute<std::uint64_t> pcieSpeed(const SysTree& tree, const PciPlace& place, const char* name) {
    return onPci<std::uint64_t>(
        place, [&](const PciAddress&) { return tree.text(place.folder + "/" + name).then(parsePcieSpeed); });
}

Attribute<std::string> driverOf(const SysTree& tree, const Attribute<std::string>& devicePath) {
    return devicePath.then([&](const std::string& path) { return tree.linkName(path + "/driver"); });
}

void addPciPlace(const SysTree& tree, const PciPlace& place, Collector& facts) {
    facts.add(rowOf("pciAddress"), onPci<std::string>(place, [](const PciAddress& address) { return address.text(); }));
    facts.add(rowOf("pciSlot"),
              onPci<std::string>(place, [&](const PciAddress& address) { return slotName(tree, address); }));
    const bool isOneNode = place.address && tree.text(place.folder + "/numa_node").valueOr({}) == "-1";
    facts.add(rowOf("numaNode"), isOneNode ? Absence{"the machine is one node"} : pciNumber(tree, place, "numa_node"));
}

void addPcieLink(const SysTree& tree, const PciPlace& place, Collector& facts) {
    facts.add(rowOf("pcieLanes"), pciNumber(tree, place, "current_link_width"));
    facts.add(rowOf("maxPcieLanes"), pciNumber(tree, place, "max_link_width"));
    facts.add(rowOf("pcieLaneSpeed"), pcieSpeed(tree, place, "current_link_speed"));
    facts.add(rowOf("maxPcieLaneSpeed"), pcieSpeed(tree, place, "max_link_speed"));
}

template <std::size_t count>
void addCounters(const SysTree& tree, const std::string& folder, const CounterFact (&counters)[count],
                 Collector& facts) {
    for (const auto& counter : counters) {
        auto number = tree.number(folder + "/statistics/" + counter.file, largestNumber);
        // All ones is the kernel's word for a counter that the driver does not have.
        if (number && *number == largestNumber) number = Absence{"not counted by the driver"};
        facts.add(counter.row, number);
    }
}

using Speeds = std::vector<std::uint64_t>;

void addSpeeds(const Attribute<Speeds>& speeds, Collector& facts) {
    facts.add(rowOf("maxLinkSpeed"), speeds.then([](const Speeds& all) -> Attribute<std::uint64_t> {
        return *std::max_element(all.begin(), all.end());
    }));
    facts.add(rowOf("supportedLinkSpeeds"), speeds);
}

/** The part of some settings that a member holds. */
template <typename Settings, typename Part>
Attribute<Part> partOf(const Attribute<Settings>& settings, Part Settings::*member) {
    return settings.then([member](const Settings& all) -> Attribute<Part> { return all.*member; });
}

Attribute<Speeds> supportedSpeeds(const LinkSettings& settings) {
    auto speeds = speedsOf(settings.supported);
    if (speeds.empty()) return Absence{"no speeds among the link modes"};
    return speeds;
}

Attribute<Lines> showFec(std::uint32_t bits) {
    auto names = fecNames(bits);
    if (names.empty()) return Absence{"none told"};
    return names;
}

void addLinkSettings(KernelQueries& queries, const std::string& interface, Collector& facts) {
    const auto link = queries.linkSettings(interface);
    const auto fec = queries.fecSettings(interface);
    const auto pause = queries.pauseSettings(interface);
    addSpeeds(link.then(supportedSpeeds), facts);
    facts.add(rowOf("autoNegotiation"), partOf(link, &LinkSettings::autonegotiation));
    facts.add(rowOf("duplexMode"), partOf(link, &LinkSettings::duplex).then(duplexName));
    facts.add(rowOf("activeFecModes"), partOf(fec, &FecSettings::active).then(showFec));
    facts.add(rowOf("configuredFecModes"), partOf(fec, &FecSettings::configured).then(showFec));
    facts.add(rowOf("pauseAutoNegotiation"), partOf(pause, &PauseSettings::autonegotiation));
    facts.add(rowOf("receivePause"), partOf(pause, &PauseSettings::receive));
    facts.add(rowOf("transmitPause"), partOf(pause, &PauseSettings::transmit));
}

Attribute<Lines> showNeighbours(const std::vector<Neighbour>& neighbours) {
    Lines lines;
    for (const auto& neighbour : neighbours)
        if (auto line = showNeighbour(neighbour); !line.empty()) lines.push_back(std::move(line));
    if (lines.empty()) return Absence{"none told"};
    return lines;
}

void addFabricLink(const SysTree& tree, const std::string& folder, Collector& facts) {
    facts.add(rowOf("linkSpeed"), tree.text(folder + "/speed").then(parseFibreChannelSpeed));
    addSpeeds(tree.text(folder + "/supported_speeds").then(parseFibreChannelSpeeds), facts);
    facts.add(rowOf("fabricPortId"), tree.number(folder + "/port_id", 0xFFFFFF).then([](std::uint64_t id) {
        return showPortId(static_cast<std::uint32_t>(id));
    }));
    facts.add(rowOf("fabricName"), tree.text(folder + "/fabric_name").then(parseWorldWideName).then(showFabricName));
    facts.add(rowOf("symbolicName"), tree.text(folder + "/symbolic_name"));
}

} // namespace

Facts presentFacts(const std::vector<HostFact>& facts) {
    Facts present;
    for (const auto& fact : facts) {
        if (!fact.values) continue;
        for (const auto& value : *fact.values) {
            const auto* text = std::get_if<std::string>(&value);
            if (text == nullptr || isFactText(*text)) present.push_back({fact.row, value});
        }
    }
    return present;
}

std::vector<HostFact> PortFactReader::ofInterface(const std::string& name, std::uint32_t groups) const {
    Collector facts(groups);
    const auto place = pciPlaceOf(tree_, network_.devicePath(name));
    if (facts.wants(TavikFactsOfAdapter)) {
        facts.add(rowOf("interfaceName"), Attribute<std::string>(name));
        addPciPlace(tree_, place, facts);
        const auto told = partOf(queries_.driverInfo(name), &DriverInfo::driver);
        facts.add(rowOf("driverName"), told ? told : driverOf(tree_, network_.devicePath(name)));
    }
    if (facts.wants(TavikFactsOfLink)) {
        addPcieLink(tree_, place, facts);
        const auto bitsPerSecond = [](std::uint32_t megabits) -> Attribute<std::uint64_t> {
            return megabits * megabit;
        };
        facts.add(rowOf("linkSpeed"), network_.link(name).speed.then(bitsPerSecond));
        addLinkSettings(queries_, name, facts);
    }
    if (facts.wants(TavikFactsOfCounters)) addCounters(tree_, "sys/class/net/" + name, interfaceCounters, facts);
    if (facts.wants(TavikFactsOfRelations)) {
        const auto lines = [&](const PciAddress&) { return virtualFunctionsOf(tree_, place.folder); };
        const auto line = [&](const PciAddress&) { return physicalFunctionOf(tree_, place.folder); };
        facts.add(rowOf("virtualFunctions"), onPci<Lines>(place, lines));
        facts.add(rowOf("virtualFunctionOf"), onPci<std::string>(place, line));
        facts.add(rowOf("usedBy"), usersOf(tree_, name));
        facts.add(rowOf("lldpNeighbors"), queries_.neighbours(name).then(showNeighbours));
    }
    return std::move(facts).result();
}

std::vector<HostFact> PortFactReader::ofFibreChannelHost(std::uint32_t number, std::uint32_t groups) const {
    Collector facts(groups);
    const auto name = "host" + std::to_string(number);
    const auto folder = "sys/class/fc_host/" + name;
    const auto device = tree_.resolve(folder + "/device").then([](const std::string& path) -> Attribute<std::string> {
        return parentPath(path);
    });
    const auto place = pciPlaceOf(tree_, device);
    if (facts.wants(TavikFactsOfAdapter)) {
        facts.add(rowOf("interfaceName"), Attribute<std::string>(name));
        addPciPlace(tree_, place, facts);
        facts.add(rowOf("driverName"), driverOf(tree_, device));
    }
    if (facts.wants(TavikFactsOfLink)) {
        addPcieLink(tree_, place, facts);
        addFabricLink(tree_, folder, facts);
    }
    if (facts.wants(TavikFactsOfCounters)) addCounters(tree_, folder, fibreChannelCounters, facts);
    if (facts.wants(TavikFactsOfRelations)) {
        // One unit more than is shown tells that there are more.
        const auto ports = fibreChannel_.remotePorts(number, mostLines + 1);
        facts.add(rowOf("remotePorts"), showRemotePorts(tree_, ports));
        facts.add(rowOf("logicalUnits"), showUnits(tree_, ports));
    }
    return std::move(facts).result();
}

} // namespace tavik::host
