// Where a reading stands among its limits, and what of several lanes is the worst.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "optics/module.h"

namespace optics {

enum class Level : std::uint8_t { Unknown, Normal, LowWarning, HighWarning, LowAlarm, HighAlarm };

/// By reading and thresholds where both are there, else by the module's own flags, else Unknown. A reading that equals
/// a limit is within it.
Level levelOf(const Monitor& monitor);

bool isWarning(Level level);
bool isAlarm(Level level);

/// "low alarm", "normal"; "unknown" where nothing tells.
std::string_view nameOf(Level level);

/// Decibels above one milliwatt. Absent for no power at all, which has no such number, and for what is no power.
std::optional<double> dbmOfMilliwatts(double milliwatts);

/// Of two monitors of one quantity the one that is nearer to a limit or farther beyond it: an alarm before a warning
/// before a normal reading, then the one with less room in its range, then the lower one. One without a reading is
/// better than one with.
const Monitor& worseOf(const Monitor& left, const Monitor& right);

/// The lane of a module whose values are each the worst of all its lanes. A flag, a loss and a fault stand in it if any
/// lane has them; it is disabled if all are.
Lane worstLane(const Module& module);

} // namespace optics
