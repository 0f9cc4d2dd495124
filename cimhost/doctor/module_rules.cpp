#include "cimhost/doctor/module_rules.h"

#include "cimhost/doctor/link_rules.h"
#include "cimhost/doctor/names.h"
#include "optics/level.h"

#include <array>

namespace cimhost::doctor {

using namespace monitoring;

namespace {

/// A quantity of a module with the words for it.
struct Quantity {
    std::string_view name;
    std::string_view unit;
    int decimals;
    const optics::Monitor* monitor;
};

std::array<Quantity, 5> quantitiesOf(const Module& module, const optics::Lane& lane) {
    return {{{"temperature", "degrees Celsius", 1, &module.told.temperatureCelsius},
             {"supply voltage", "V", 3, &module.told.supplyVolts},
             {"bias current", "mA", 2, &lane.biasMilliamperes},
             {"transmit power", "mW", 4, &lane.transmitPowerMilliwatts},
             {"receive power", "mW", 4, &lane.receivePowerMilliwatts}}};
}

double limitOf(optics::Level level, const optics::Thresholds& limits) {
    switch (level) {
    case optics::Level::LowAlarm:
        return limits.lowAlarm;
    case optics::Level::LowWarning:
        return limits.lowWarning;
    case optics::Level::HighWarning:
        return limits.highWarning;
    default:
        return limits.highAlarm;
    }
}

std::string amount(const Quantity& quantity, double value) {
    return quantity.unit == "mW" ? powerText(value)
                                 : fixed(value, quantity.decimals) + " " + std::string(quantity.unit);
}

std::string evidenceOf(const Quantity& quantity, optics::Level level) {
    std::string text(quantity.name);
    if (quantity.monitor->reading) text += " " + amount(quantity, *quantity.monitor->reading);
    text += ": " + std::string(optics::nameOf(level));
    if (quantity.monitor->reading && quantity.monitor->thresholds) {
        text += ", the limit is " + amount(quantity, limitOf(level, *quantity.monitor->thresholds));
    }
    return text;
}

using IsConcerned = bool (*)(optics::Level);

/// Too little light at a port without a link is left to the rules about links.
void examineLevels(const Look& look, IsConcerned isConcerned, std::vector<Sign>& signs) {
    for (const Module& module : look.now.modules) {
        const optics::Lane lane = optics::worstLane(module.told);
        const bool isDown = isLinkDown(look.now, module.jack);
        for (const Quantity& quantity : quantitiesOf(module, lane)) {
            const optics::Level level = optics::levelOf(*quantity.monitor);
            const bool isLow = level == optics::Level::LowAlarm || level == optics::Level::LowWarning;
            if (!isConcerned(level) || (isDown && isLow && quantity.name == "receive power")) continue;
            signs.push_back({portText(look.now, module.jack), evidenceOf(quantity, level)});
        }
    }
}

} // namespace

void examineAlarms(const Look& look, std::vector<Sign>& signs) { examineLevels(look, optics::isAlarm, signs); }

void examineWarnings(const Look& look, std::vector<Sign>& signs) { examineLevels(look, optics::isWarning, signs); }

void examineUnreadable(const Look& look, std::vector<Sign>& signs) {
    for (const Module& module : look.now.modules) {
        if (module.isReadable) continue;
        signs.push_back({portText(look.now, module.jack), "SFPStatus is 0 for the module " + module.vendor + " " +
                                                              module.partNumber + ", serial number " +
                                                              module.serialNumber});
    }
}

void examineUnbelievable(const Look& look, std::vector<Sign>& signs) {
    for (const Module& module : look.now.modules) {
        std::string notes;
        for (unsigned i = 0; module.hasPages && i < static_cast<unsigned>(optics::Finding::Count); ++i) {
            const auto finding = static_cast<optics::Finding>(i);
            if (!module.told.findings.has(finding) || !optics::isDoubtful(finding)) continue;
            if (!notes.empty()) notes += "; ";
            notes += optics::sentenceOf(finding);
        }
        if (!notes.empty()) signs.push_back({portText(look.now, module.jack), notes});
    }
}

void examineReceivePower(const Look& look, std::vector<Sign>& signs) {
    constexpr double nearDecibels = 1;
    for (const Module& module : look.now.modules) {
        const optics::Lane lane = optics::worstLane(module.told);
        const optics::Monitor& power = lane.receivePowerMilliwatts;
        if (optics::levelOf(power) != optics::Level::Normal || !power.reading || !power.thresholds) continue;
        const auto reading = optics::dbmOfMilliwatts(*power.reading);
        const auto limit = optics::dbmOfMilliwatts(power.thresholds->lowWarning);
        if (!reading || !limit || *reading - *limit >= nearDecibels) continue;
        signs.push_back({portText(look.now, module.jack), "receive power " + powerText(*power.reading) + ", only " +
                                                              fixed(*reading - *limit, 2) +
                                                              " dB above the low warning"});
    }
}

} // namespace cimhost::doctor
