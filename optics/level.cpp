#include "optics/level.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace optics {

namespace {

Level levelByLimits(double reading, const Thresholds& limits) {
    if (reading < limits.lowAlarm) return Level::LowAlarm;
    if (reading > limits.highAlarm) return Level::HighAlarm;
    if (reading < limits.lowWarning) return Level::LowWarning;
    if (reading > limits.highWarning) return Level::HighWarning;
    return Level::Normal;
}

Level levelByFlags(const Flags& flags) {
    if (flags.lowAlarm) return Level::LowAlarm;
    if (flags.highAlarm) return Level::HighAlarm;
    if (flags.lowWarning) return Level::LowWarning;
    return flags.highWarning ? Level::HighWarning : Level::Normal;
}

int severityOf(const Monitor& monitor) {
    if (!monitor.reading) return -1;
    const auto level = levelOf(monitor);
    return isAlarm(level) ? 2 : isWarning(level) ? 1 : 0;
}

/// How far the reading is from the nearer limit, as a share of the range; below zero beyond it.
double roomOf(const Monitor& monitor) {
    if (!monitor.thresholds) return 0;
    const auto& limits = *monitor.thresholds;
    const auto range = limits.highAlarm - limits.lowAlarm;
    return std::min(*monitor.reading - limits.lowAlarm, limits.highAlarm - *monitor.reading) / range;
}

void join(std::optional<Flags>& all, const std::optional<Flags>& more) {
    if (!more) return;
    if (!all) all = Flags{};
    all->highAlarm |= more->highAlarm;
    all->lowAlarm |= more->lowAlarm;
    all->highWarning |= more->highWarning;
    all->lowWarning |= more->lowWarning;
}

void takeWorse(Monitor& worst, const Monitor& monitor) {
    auto flags = worst.flags;
    join(flags, monitor.flags);
    worst = worseOf(worst, monitor);
    worst.flags = flags;
}

void takeAny(std::optional<bool>& any, const std::optional<bool>& more) {
    if (more) any = any.value_or(false) || *more;
}

void takeAll(std::optional<bool>& all, const std::optional<bool>& more) {
    if (more) all = all.value_or(true) && *more;
}

} // namespace

Level levelOf(const Monitor& monitor) {
    if (monitor.reading && monitor.thresholds) return levelByLimits(*monitor.reading, *monitor.thresholds);
    return monitor.flags ? levelByFlags(*monitor.flags) : Level::Unknown;
}

bool isWarning(Level level) { return level == Level::LowWarning || level == Level::HighWarning; }

bool isAlarm(Level level) { return level == Level::LowAlarm || level == Level::HighAlarm; }

std::string_view nameOf(Level level) {
    constexpr std::array<std::string_view, 6> names{"unknown",      "normal",    "low warning",
                                                    "high warning", "low alarm", "high alarm"};
    return names[static_cast<std::size_t>(level)];
}

std::optional<double> dbmOfMilliwatts(double milliwatts) {
    if (!(milliwatts > 0) || !std::isfinite(milliwatts)) return std::nullopt;
    return 10 * std::log10(milliwatts);
}

const Monitor& worseOf(const Monitor& left, const Monitor& right) {
    const auto severity = severityOf(left), other = severityOf(right);
    if (severity != other) return severity > other ? left : right;
    if (severity < 0) return left;
    const auto room = roomOf(left), otherRoom = roomOf(right);
    if (room != otherRoom) return room < otherRoom ? left : right;
    return *right.reading < *left.reading ? right : left;
}

Lane worstLane(const Module& module) {
    if (module.laneCount == 0) return {};
    Lane worst = module.lanes[0];
    for (std::size_t i = 1; i < module.laneCount; ++i) {
        const auto& lane = module.lanes[i];
        takeWorse(worst.biasMilliamperes, lane.biasMilliamperes);
        takeWorse(worst.transmitPowerMilliwatts, lane.transmitPowerMilliwatts);
        takeWorse(worst.receivePowerMilliwatts, lane.receivePowerMilliwatts);
        takeAny(worst.receiveLoss, lane.receiveLoss);
        takeAny(worst.transmitFault, lane.transmitFault);
        takeAll(worst.transmitDisabled, lane.transmitDisabled);
    }
    return worst;
}

} // namespace optics
