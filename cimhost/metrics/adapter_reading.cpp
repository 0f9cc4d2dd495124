#include "cimhost/metrics/adapter_reading.h"

#include "cimhost/metrics/module_metrics.h"
#include "cimhost/monitoring/published_classes.h"

#include <optional>
#include <set>
#include <string_view>
#include <unordered_map>

namespace cimhost::metrics {

namespace {

using monitoring::LinkState;
using monitoring::Snapshot;

/// Places of what is plugged: jacks by their tags.
class Places {
public:
    explicit Places(const Snapshot& snapshot) {
        for (const monitoring::Jack& jack : snapshot.jacks)
            jacks.emplace(jack.tag, &jack);
    }

    /// Card and number of the jack; where none is published the card and name given.
    [[nodiscard]] Labels labelsAt(std::string_view tag, std::string_view card, std::string_view name) const {
        const auto place = jacks.find(tag);
        if (tag.empty() || place == jacks.end()) return Labels().add("serial", card).add("port", name);
        const monitoring::Jack& jack = *place->second;
        return Labels().add("serial", jack.cardSerialNumber).add("port", std::to_string(jack.number));
    }

private:
    std::unordered_map<std::string_view, const monitoring::Jack*> jacks;
};

/// One port of either side, as it is told.
struct Port {
    Labels labels; // with the kind
    std::string_view name;
    std::string_view interfaceName; // empty where it is not told
    std::string_view model;
    LinkState state;
    bool answers;
    std::optional<double> bytesPerSecond;
    std::optional<double> mostBytesPerSecond;
    std::optional<std::uint64_t> targets;
    std::optional<std::uint64_t> mtuBytes;
};

/// Leaves out what would have the labels of another one.
class Unlike {
public:
    bool isNew(const Labels& labels) { return seen.insert(labels.text()).second; }

private:
    std::set<std::string> seen;
};

std::optional<double> bytesOf(const std::optional<std::uint64_t>& bits, double unit) {
    constexpr double bitsOfByte = 8;
    if (!bits) return std::nullopt;
    return static_cast<double>(*bits) * unit / bitsOfByte;
}

std::vector<Port> fibreChannelPorts(const Snapshot& snapshot, const Places& places) {
    std::vector<Port> ports;
    Unlike unlike;
    for (const monitoring::FibreChannelPort& port : snapshot.fibreChannelPorts) {
        Labels labels = places.labelsAt(port.jack, port.cardSerialNumber, port.portName);
        labels.add("kind", "fibre_channel");
        if (!unlike.isNew(labels)) continue;
        ports.push_back({labels, port.portName, port.interfaceName, port.model, port.state, port.answers,
                         bytesOf(port.speedBitsPerSecond, 1), bytesOf(port.largestSpeedBitsPerSecond, 1), port.targets,
                         std::nullopt});
    }
    return ports;
}

std::vector<Port> ethernetPorts(const Snapshot& snapshot, const Places& places) {
    constexpr double mega = 1e6;
    std::vector<Port> ports;
    Unlike unlike;
    for (const monitoring::EthernetPort& port : snapshot.ethernetPorts) {
        Labels labels = places.labelsAt(port.jack, port.cardSerialNumber, port.macAddress);
        labels.add("kind", "ethernet");
        if (!unlike.isNew(labels)) continue;
        ports.push_back({labels,
                         port.macAddress,
                         port.interfaceName,
                         {},
                         port.state,
                         port.state != LinkState::unknown,
                         bytesOf(port.speedMegabits, mega),
                         std::nullopt,
                         std::nullopt,
                         port.mtuBytes});
    }
    return ports;
}

void writeCounts(Exposition& out, const Found& found) {
    const Snapshot& snapshot = found.snapshot;
    out.family("merolt_cna_reading_duration_seconds", Type::gauge, "How long it took to read the adapters.")
        .sample({}, found.duration.count());
    out.family("merolt_cna_reading_failed_classes", Type::gauge, "Classes that the provider did not answer for.")
        .sample({}, std::uint64_t{snapshot.failures.size()});
    out.family("merolt_cna_cards", Type::gauge, "Adapters.").sample({}, std::uint64_t{snapshot.cards.size()});
    out.family("merolt_cna_ports", Type::gauge, "Ports by their kind.");
    out.sample(Labels().add("kind", "fibre_channel"), std::uint64_t{snapshot.fibreChannelPorts.size()});
    out.sample(Labels().add("kind", "ethernet"), std::uint64_t{snapshot.ethernetPorts.size()});
    out.family("merolt_cna_modules", Type::gauge, "Transceiver modules that answer.")
        .sample({}, std::uint64_t{snapshot.modules.size()});
}

void writeCards(Exposition& out, const Snapshot& snapshot) {
    constexpr std::uint64_t one = 1;
    Unlike unlike;
    out.family("merolt_cna_card", Type::info, "An adapter and its model.");
    for (const monitoring::Card& card : snapshot.cards) {
        const Labels labels = Labels().add("serial", card.serialNumber).add("model", card.model);
        if (unlike.isNew(labels)) out.sample(labels, one);
    }
    out.family("merolt_cna_software", Type::info, "A version of software: of a driver, of firmware, of a flash image.");
    for (const monitoring::Software& software : snapshot.software) {
        const Labels labels = Labels()
                                  .add("serial", software.cardSerialNumber)
                                  .add("model", software.model)
                                  .add("component", software.kind)
                                  .add("version", software.version);
        if (unlike.isNew(labels)) out.sample(labels, one);
    }
}

template <typename Value>
void writeEach(Exposition& out, const std::vector<Port>& ports, std::optional<Value> Port::*value) {
    for (const Port& port : ports) {
        if (port.*value) out.sample(port.labels, *(port.*value));
    }
}

void writePorts(Exposition& out, const std::vector<Port>& ports) {
    constexpr std::uint64_t one = 1;
    out.family("merolt_cna_port", Type::info, "A port, and its name: a world wide name or an address.");
    for (const Port& port : ports) {
        Labels labels = port.labels;
        labels.add("name", port.name);
        if (!port.interfaceName.empty()) labels.add("interface", port.interfaceName);
        out.sample(labels, one);
    }
    out.family("merolt_cna_port_up", Type::gauge, "1 while the link is up, else 0; absent while nobody knows.");
    for (const Port& port : ports) {
        if (port.state != LinkState::unknown) out.sample(port.labels, std::uint64_t{port.state == LinkState::up});
    }
    out.family("merolt_cna_port_answers", Type::gauge, "1 if the adapter tells anything of the port's state, else 0.");
    for (const Port& port : ports)
        out.sample(port.labels, std::uint64_t{port.answers});
    out.family("merolt_cna_port_speed_bytes_per_second", Type::gauge,
               "Speed of the port; absent if it is not settled.");
    writeEach(out, ports, &Port::bytesPerSecond);
    out.family("merolt_cna_port_max_speed_bytes_per_second", Type::gauge, "Speed that the port can have.");
    writeEach(out, ports, &Port::mostBytesPerSecond);
    out.family("merolt_cna_port_targets", Type::gauge, "Targets that the port sees; 0 without discovery.");
    writeEach(out, ports, &Port::targets);
    out.family("merolt_cna_port_mtu_bytes", Type::gauge, "Largest frame that the port carries.");
    writeEach(out, ports, &Port::mtuBytes);
}

void writeStatistics(Exposition& out, const Found& found, const std::vector<Port>& ports) {
    std::unordered_map<std::string_view, const Labels*> byName;
    for (const Port& port : ports)
        byName.emplace(port.name, &port.labels);
    std::vector<std::pair<const Labels*, const PortStatistics*>> told;
    for (const PortStatistics& statistics : found.statistics) {
        const auto port = byName.find(statistics.portName);
        if (port == byName.end()) continue;
        told.emplace_back(port->second, &statistics);
        byName.erase(port); // so that no second one has its labels
    }
    for (std::size_t row = 0; row < counterRows.size(); ++row) {
        out.family(counterRows[row].metric, Type::counter, counterRows[row].help);
        for (const auto& [labels, statistics] : told)
            out.sample(*labels, statistics->values[row] * counterRows[row].unit);
    }
}

void writeModules(Exposition& out, const Snapshot& snapshot, const Places& places) {
    constexpr std::uint64_t one = 1;
    std::vector<ModuleSamples> readable;
    std::vector<std::pair<Labels, const monitoring::Module*>> all;
    Unlike unlike;
    for (const monitoring::Module& module : snapshot.modules) {
        const Labels labels = places.labelsAt(module.jack, {}, module.tag);
        if (!unlike.isNew(labels)) continue;
        all.emplace_back(labels, &module);
        if (module.hasPages) readable.push_back({labels, &module.told});
    }
    out.family("merolt_cna_module", Type::info, "A transceiver module.");
    for (const auto& [labels, module] : all) {
        Labels more = labels;
        more.add("vendor", module->vendor).add("part", module->partNumber).add("module_serial", module->serialNumber);
        out.sample(more, one);
    }
    out.family("merolt_cna_module_known", Type::gauge, "1 if the adapter knows this kind of module, else 0.");
    for (const auto& [labels, module] : all)
        out.sample(labels, std::uint64_t{module->isReadable});
    writeModuleReadings(out, readable);
}

class AdapterReading final : public Reading {
public:
    explicit AdapterReading(Found what) : found(std::move(what)) {}
    void write(Exposition& out) const override { writeAdapters(out, found); }

private:
    const Found found;
};

/// 0 for what is no number.
std::uint64_t numberOf(const InstanceObject& instance, std::string_view property) {
    const CMPIData* data = instance.value(property);
    const bool isNumber = data && (data->state & CMPI_nullValue) == 0 && data->type == CMPI_uint64;
    return isNumber ? data->value.uint64 : 0;
}

PortStatistics statisticsOf(const InstanceObject& instance) {
    PortStatistics statistics;
    const CMPIData* name = instance.value("ElementName");
    if (name && (name->state & CMPI_nullValue) == 0) appendValueText(statistics.portName, *name);
    for (const CounterRow& row : counterRows)
        statistics.values.push_back(numberOf(instance, row.property));
    return statistics;
}

} // namespace

const std::array<CounterRow, counterCount> counterRows = {{
    {"IOCount", "merolt_cna_fc_operations", "Input and output operations.", 1},
    {"MegabyteCount", "merolt_cna_fc_transferred_bytes",
     "Bytes moved in either direction; adapters count whole megabytes of 1000000 bytes.", 1'000'000},
    {"LIPCount", "merolt_cna_fc_loop_initializations", "Loop initializations.", 1},
    {"LinkFailures", "merolt_cna_fc_link_failures", "Link failures.", 1},
    {"LossOfSyncCounter", "merolt_cna_fc_losses_of_synchronization", "Losses of synchronization.", 1},
    {"LossOfSignalCounter", "merolt_cna_fc_losses_of_signal", "Losses of signal.", 1},
    {"PrimitiveSeqProtocolErrCount", "merolt_cna_fc_primitive_sequence_errors", "Errors of primitive sequences.", 1},
    {"InvalidTransmissionWords", "merolt_cna_fc_invalid_transmission_words", "Invalid transmission words.", 1},
    {"CRCErrors", "merolt_cna_fc_crc_errors", "Frames with a wrong checksum.", 1},
}};

void writeAdapters(Exposition& out, const Found& found) {
    const Places places(found.snapshot);
    std::vector<Port> ports = fibreChannelPorts(found.snapshot, places);
    const std::vector<Port> ethernet = ethernetPorts(found.snapshot, places);
    writeCounts(out, found);
    writeCards(out, found.snapshot);
    writeStatistics(out, found, ports);
    ports.insert(ports.end(), ethernet.begin(), ethernet.end());
    writePorts(out, ports);
    writeModules(out, found.snapshot, places);
}

SharedReading AdapterReader::read(const monitoring::Enumerate& enumerate) {
    const auto begun = std::chrono::steady_clock::now();
    Found found;
    KeptLinks::Look look(links, enumerate);
    found.snapshot = monitoring::readSnapshot([&](const char* className) {
        std::vector<const InstanceObject*> instances = look(className);
        if (className != std::string_view(monitoring::published::fcPortStatistics)) return instances;
        for (const InstanceObject* instance : instances) {
            PortStatistics statistics = statisticsOf(*instance);
            auto told = counters.take(statistics.portName, statistics.values);
            if (told) found.statistics.push_back({std::move(statistics.portName), std::move(*told)});
        }
        return instances;
    });
    found.duration = std::chrono::steady_clock::now() - begun;
    return std::make_shared<AdapterReading>(std::move(found));
}

} // namespace cimhost::metrics
