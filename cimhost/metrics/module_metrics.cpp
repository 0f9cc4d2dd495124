#include "cimhost/metrics/module_metrics.h"

#include "optics/level.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace cimhost::metrics {

namespace {

/// A module with its worst lane, which is worked out once.
struct Source {
    const Labels* labels;
    const optics::Module* module;
    optics::Lane lane;
};

struct Quantity {
    std::string_view label;
    std::string_view metric;
    std::string_view help;
    std::string_view thresholdMetric;
    std::string_view thresholdHelp;
    double unit; ///< one of the monitor's unit in the metric's
    const optics::Monitor& (*of)(const Source&);
};

constexpr double milli = 1e-3;

const Quantity quantities[] = {
    {"temperature", "merolt_cna_module_temperature_celsius", "Temperature of the module.",
     "merolt_cna_module_temperature_threshold_celsius", "Limits of the module's temperature.", 1,
     [](const Source& source) -> const optics::Monitor& { return source.module->temperatureCelsius; }},
    {"supply", "merolt_cna_module_supply_volts", "Supply voltage of the module.",
     "merolt_cna_module_supply_threshold_volts", "Limits of the module's supply voltage.", 1,
     [](const Source& source) -> const optics::Monitor& { return source.module->supplyVolts; }},
    {"bias", "merolt_cna_module_bias_amperes", "Bias current of the laser; of several lanes the worst.",
     "merolt_cna_module_bias_threshold_amperes", "Limits of the bias current.", milli,
     [](const Source& source) -> const optics::Monitor& { return source.lane.biasMilliamperes; }},
    {"transmit_power", "merolt_cna_module_transmit_power_watts", "Transmitted light; of several lanes the worst.",
     "merolt_cna_module_transmit_power_threshold_watts", "Limits of the transmitted light.", milli,
     [](const Source& source) -> const optics::Monitor& { return source.lane.transmitPowerMilliwatts; }},
    {"receive_power", "merolt_cna_module_receive_power_watts", "Received light; of several lanes the worst.",
     "merolt_cna_module_receive_power_threshold_watts", "Limits of the received light.", milli,
     [](const Source& source) -> const optics::Monitor& { return source.lane.receivePowerMilliwatts; }},
};

struct Limit {
    std::string_view label;
    double optics::Thresholds::*value;
};

constexpr Limit limits[] = {
    {"high_alarm", &optics::Thresholds::highAlarm},
    {"low_alarm", &optics::Thresholds::lowAlarm},
    {"high_warning", &optics::Thresholds::highWarning},
    {"low_warning", &optics::Thresholds::lowWarning},
};

void writeReadings(Exposition& out, const std::vector<Source>& sources, const Quantity& quantity) {
    out.family(quantity.metric, Type::gauge, quantity.help);
    for (const Source& source : sources) {
        const optics::Monitor& monitor = quantity.of(source);
        if (monitor.reading) out.sample(*source.labels, *monitor.reading * quantity.unit);
    }
    out.family(quantity.thresholdMetric, Type::gauge, quantity.thresholdHelp);
    for (const Source& source : sources) {
        const optics::Monitor& monitor = quantity.of(source);
        if (!monitor.thresholds) continue;
        for (const Limit& limit : limits) {
            Labels labels = *source.labels;
            out.sample(labels.add("threshold", limit.label), (*monitor.thresholds).*limit.value * quantity.unit);
        }
    }
}

std::uint64_t severityOf(optics::Level level) {
    if (optics::isAlarm(level)) return 2;
    return optics::isWarning(level) ? 1 : 0;
}

void writeLevels(Exposition& out, const std::vector<Source>& sources) {
    out.family("merolt_cna_module_severity", Type::gauge,
               "Where a reading stands among its limits: 0 within, 1 beyond a warning limit, 2 beyond an alarm limit.");
    for (const Source& source : sources) {
        for (const Quantity& quantity : quantities) {
            const optics::Level level = optics::levelOf(quantity.of(source));
            if (level == optics::Level::Unknown) continue;
            Labels labels = *source.labels;
            out.sample(labels.add("quantity", quantity.label), severityOf(level));
        }
    }
}

bool isDoubtful(const optics::Module& told) {
    for (unsigned i = 0; i < static_cast<unsigned>(optics::Finding::Count); ++i) {
        const auto finding = static_cast<optics::Finding>(i);
        if (told.findings.has(finding) && optics::isDoubtful(finding)) return true;
    }
    return false;
}

void writeDoubts(Exposition& out, const std::vector<Source>& sources) {
    out.family("merolt_cna_module_doubtful", Type::gauge,
               "1 if some of what the module tells cannot be believed, such as fields with a wrong checksum, else 0.");
    for (const Source& source : sources)
        out.sample(*source.labels, std::uint64_t{isDoubtful(*source.module) ? 1U : 0U});
}

struct LaneFlag {
    std::string_view metric;
    std::string_view help;
    std::optional<bool> optics::Lane::*value;
};

constexpr LaneFlag laneFlags[] = {
    {"merolt_cna_module_receive_loss", "1 if the module says that no light arrives.", &optics::Lane::receiveLoss},
    {"merolt_cna_module_transmit_fault", "1 if the module says that it cannot send.", &optics::Lane::transmitFault},
    {"merolt_cna_module_transmit_disabled", "1 if the module was told not to send.", &optics::Lane::transmitDisabled},
};

} // namespace

void writeModuleReadings(Exposition& out, const std::vector<ModuleSamples>& modules) {
    std::vector<Source> sources;
    sources.reserve(modules.size());
    for (const ModuleSamples& module : modules)
        sources.push_back({&module.labels, module.told, optics::worstLane(*module.told)});
    for (const Quantity& quantity : quantities)
        writeReadings(out, sources, quantity);
    writeLevels(out, sources);
    writeDoubts(out, sources);
    for (const LaneFlag& flag : laneFlags) {
        out.family(flag.metric, Type::gauge, flag.help);
        for (const Source& source : sources) {
            const std::optional<bool>& value = source.lane.*flag.value;
            if (value) out.sample(*source.labels, std::uint64_t{*value ? 1U : 0U});
        }
    }
}

} // namespace cimhost::metrics
