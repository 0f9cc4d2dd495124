#include "cimhost/cli/optics_output.h"

#include "cimhost/cli/instance_json.h"
#include "cimhost/cli/table.h"
#include "cimhost/doctor/names.h"
#include "cimhost/model/printable.h"
#include "optics/level.h"

#include <array>
#include <cmath>
#include <cstdio>

namespace cimhost::cli {

namespace {

using monitoring::Module;
using monitoring::Snapshot;

/// A quantity as both outputs know it.
struct Quantity {
    std::string_view label; ///< for people
    std::string_view name;  ///< of its JSON fields, in front of "LowAlarm" and the unit
    std::string_view unit;  ///< behind it
    std::string_view symbol;
    int decimals;
    const optics::Monitor* monitor;

    bool isPower() const { return unit == "Milliwatts"; }
};

std::array<Quantity, 5> quantitiesOf(const Module& module, const optics::Lane& lane) {
    return {{
        {"temperature", "temperature", "Celsius", "°C", 2, &module.told.temperatureCelsius},
        {"supply voltage", "supply", "Volts", "V", 3, &module.told.supplyVolts},
        {"bias current", "bias", "Milliamperes", "mA", 3, &lane.biasMilliamperes},
        {"transmit power", "transmitPower", "Milliwatts", "mW", 4, &lane.transmitPowerMilliwatts},
        {"receive power", "receivePower", "Milliwatts", "mW", 4, &lane.receivePowerMilliwatts},
    }};
}

/// A limit, with the words for it.
struct Limit {
    std::string_view title;
    std::string_view name;
    double optics::Thresholds::*value;
};

constexpr Limit limits[] = {
    {"low alarm", "LowAlarm", &optics::Thresholds::lowAlarm},
    {"low warning", "LowWarning", &optics::Thresholds::lowWarning},
    {"high warning", "HighWarning", &optics::Thresholds::highWarning},
    {"high alarm", "HighAlarm", &optics::Thresholds::highAlarm},
};

std::string amount(const Quantity& quantity, double value) {
    return doctor::fixed(value, quantity.decimals) + " " + std::string(quantity.symbol);
}

std::string reading(const Quantity& quantity) {
    if (!quantity.monitor->reading) return {};
    const double value = *quantity.monitor->reading;
    return quantity.isPower() ? doctor::powerText(value) : amount(quantity, value);
}

std::string state(const Quantity& quantity, const Layout& layout) {
    const auto level = optics::levelOf(*quantity.monitor);
    if (level == optics::Level::Unknown) return {};
    if (optics::isAlarm(level)) return coloured(layout, Colour::red, optics::nameOf(level));
    if (optics::isWarning(level)) return coloured(layout, Colour::yellow, optics::nameOf(level));
    return std::string(optics::nameOf(level));
}

/// Empty where the module tells nothing of the quantity.
Row rowOf(const Quantity& quantity) {
    if (!quantity.monitor->reading && !quantity.monitor->thresholds) return {};
    Row row{std::string(quantity.label), reading(quantity), state(quantity, {})};
    for (const Limit& limit : limits) {
        const auto& thresholds = quantity.monitor->thresholds;
        row.push_back(thresholds ? amount(quantity, (*thresholds).*limit.value) : std::string());
    }
    return row;
}

/// Words with ", " between them; what is empty is left out.
std::string joined(std::initializer_list<std::string> words) {
    std::string text;
    for (const std::string& word : words) {
        if (word.empty()) continue;
        if (!text.empty()) text += ", ";
        text += word;
    }
    return text;
}

std::string labelled(std::string_view label, const std::string& value) {
    return value.empty() ? std::string() : std::string(label) + " " + value;
}

std::string wavelength(const optics::Identity& identity) {
    if (!identity.wavelengthNanometres) return identity.copper ? "copper" : "";
    const double nanometres = *identity.wavelengthNanometres;
    return doctor::fixed(nanometres, nanometres == std::floor(nanometres) ? 0 : 2) + " nm";
}

std::string headingOf(const Snapshot& snapshot, const Module& module) {
    const auto& identity = module.told.identity;
    const std::string kind = joined({std::string(identity.formFactor), std::string(identity.standard)});
    const std::string what = joined({kind.empty() ? "module" : kind, module.vendor + " " + module.partNumber,
                                     labelled("serial number", module.serialNumber), wavelength(identity)});
    return printable(doctor::portText(snapshot, module.jack) + ": " + what);
}

std::vector<std::string> notesOf(const Module& module) {
    std::vector<std::string> notes;
    if (!module.isReadable)
        notes.emplace_back("the card does not take it for a module that it can read (SFPStatus is 0)");
    if (!module.hasPages) notes.emplace_back("the server publishes no memory of it: only storage functions show that");
    const optics::Lane lane = optics::worstLane(module.told);
    if (lane.receiveLoss.value_or(false)) notes.emplace_back("the module says that no light arrives");
    if (lane.transmitFault.value_or(false)) notes.emplace_back("the module says that its transmitter is faulty");
    if (lane.transmitDisabled.value_or(false)) notes.emplace_back("the transmitter is switched off");
    for (unsigned i = 0; module.hasPages && i < static_cast<unsigned>(optics::Finding::Count); ++i) {
        const auto finding = static_cast<optics::Finding>(i);
        if (module.told.findings.has(finding)) notes.emplace_back(optics::sentenceOf(finding));
    }
    return notes;
}

const Row headers{"", "reading", "state", "low alarm", "low warning", "high warning", "high alarm"};

std::string moduleText(const Snapshot& snapshot, const Module& module, const Layout& layout) {
    std::string text = coloured(layout, Colour::bold, headingOf(snapshot, module)) + "\n";
    const optics::Lane lane = optics::worstLane(module.told);
    std::vector<Row> rows;
    for (const Quantity& quantity : quantitiesOf(module, lane)) {
        if (Row row = rowOf(quantity); !row.empty()) rows.push_back(std::move(row));
    }
    if (!rows.empty()) text += renderTable(headers, rows, layout);
    for (const Quantity& quantity : quantitiesOf(module, lane)) {
        const auto level = optics::levelOf(*quantity.monitor);
        if (!optics::isAlarm(level) && !optics::isWarning(level)) continue;
        text += "! " + std::string(quantity.label) + ": " + state(quantity, layout) + "\n";
    }
    for (const std::string& note : notesOf(module))
        text += "note: " + note + "\n";
    return text;
}

Json textOrNull(std::string_view text) { return text.empty() ? Json() : Json(std::string(text)); }

template <typename Number>
Json numberOrNull(const std::optional<Number>& number) {
    return number ? Json(*number) : Json();
}

void addNumber(Json& object, const Quantity& quantity, std::string_view limit, const std::optional<double>& value) {
    const std::string name = std::string(quantity.name) + std::string(limit);
    object[name + std::string(quantity.unit)] = numberOrNull(value);
    if (quantity.isPower()) object[name + "Dbm"] = numberOrNull(value ? optics::dbmOfMilliwatts(*value) : std::nullopt);
}

void addQuantity(Json& object, const Quantity& quantity) {
    const optics::Monitor& monitor = *quantity.monitor;
    addNumber(object, quantity, "", monitor.reading);
    object[std::string(quantity.name) + "State"] = optics::nameOf(optics::levelOf(monitor));
    for (const Limit& limit : limits) {
        addNumber(object, quantity, limit.name,
                  monitor.thresholds ? std::optional((*monitor.thresholds).*limit.value) : std::nullopt);
    }
    Json& flags = object[std::string(quantity.name) + "Flags"];
    if (!monitor.flags) return;
    flags = Json::array();
    if (monitor.flags->lowAlarm) flags.push_back("low alarm");
    if (monitor.flags->lowWarning) flags.push_back("low warning");
    if (monitor.flags->highWarning) flags.push_back("high warning");
    if (monitor.flags->highAlarm) flags.push_back("high alarm");
}

std::string_view wordOf(optics::Calibration calibration) {
    if (calibration == optics::Calibration::Unknown) return {};
    return calibration == optics::Calibration::Internal ? "internal" : "external";
}

std::string_view wordOf(optics::ReceivePowerKind kind) {
    if (kind == optics::ReceivePowerKind::Unknown) return {};
    return kind == optics::ReceivePowerKind::Average ? "average" : "modulation amplitude";
}

std::string hexOf(const std::array<std::uint8_t, 3>& bytes) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "%02x:%02x:%02x", bytes[0], bytes[1], bytes[2]);
    return text.data();
}

void addIdentity(Json& object, const Module& module) {
    const optics::Identity& identity = module.told.identity;
    object["formFactor"] = textOrNull(identity.formFactor);
    object["standard"] = textOrNull(identity.standard);
    object["connector"] = textOrNull(identity.connector);
    object["vendor"] = textOrNull(module.vendor);
    object["vendorOui"] = module.hasPages ? Json(hexOf(identity.vendorOui)) : Json();
    object["partNumber"] = textOrNull(module.partNumber);
    object["revision"] = textOrNull(identity.revision.view());
    object["serialNumber"] = textOrNull(module.serialNumber);
    object["dateCode"] = textOrNull(identity.dateCode.view());
    object["copper"] = module.hasPages ? Json(identity.copper) : Json();
    object["wavelengthNanometres"] = numberOrNull(identity.wavelengthNanometres);
    object["bitRateMegabaud"] = numberOrNull(identity.bitRateMegabaud);
    object["fibreChannelGigabitsPerSecond"] = numberOrNull(identity.fibreChannelGigabits);
}

void addPlace(Json& object, const Snapshot& snapshot, const Module& module) {
    const auto* jack = monitoring::findJack(snapshot, module.jack);
    const auto* storage = monitoring::fibreChannelAt(snapshot, module.jack);
    const auto* ethernet = monitoring::ethernetAt(snapshot, module.jack);
    object["tag"] = module.tag;
    object["cardSerialNumber"] = jack ? Json(jack->cardSerialNumber) : Json();
    object["portNumber"] = jack ? Json(jack->number) : Json();
    object["fibreChannelPortName"] = storage ? Json(storage->portName) : Json();
    object["macAddress"] = ethernet ? Json(ethernet->macAddress) : Json();
    const auto interfaces = monitoring::interfacesAt(snapshot, module.jack);
    if (!interfaces.empty()) object["interfaces"] = interfaces;
}

Json moduleJson(const Snapshot& snapshot, const Module& module) {
    Json object;
    addPlace(object, snapshot, module);
    addIdentity(object, module);
    object["readable"] = module.isReadable;
    object["memoryPublished"] = module.hasPages;
    object["calibration"] = textOrNull(wordOf(module.told.calibration));
    object["receivePowerKind"] = textOrNull(wordOf(module.told.receivePowerKind));
    const optics::Lane lane = optics::worstLane(module.told);
    for (const Quantity& quantity : quantitiesOf(module, lane))
        addQuantity(object, quantity);
    object["receiveLoss"] = numberOrNull(lane.receiveLoss);
    object["transmitFault"] = numberOrNull(lane.transmitFault);
    object["transmitDisabled"] = numberOrNull(lane.transmitDisabled);
    Json& findings = object["findings"] = Json::array();
    for (unsigned i = 0; module.hasPages && i < static_cast<unsigned>(optics::Finding::Count); ++i) {
        const auto finding = static_cast<optics::Finding>(i);
        if (module.told.findings.has(finding)) findings.push_back(optics::wordOf(finding));
    }
    return object;
}

} // namespace

std::string opticsText(const Snapshot& snapshot, const Layout& layout) {
    if (snapshot.modules.empty()) return "No module answers.\n";
    std::string text;
    for (const Module& module : snapshot.modules) {
        if (!text.empty()) text += "\n";
        text += moduleText(snapshot, module, layout);
    }
    return text;
}

std::string opticsJson(const Snapshot& snapshot) {
    Json list = Json::array();
    for (const Module& module : snapshot.modules)
        list.push_back(moduleJson(snapshot, module));
    return dump(list);
}

} // namespace cimhost::cli
