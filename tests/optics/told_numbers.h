// What holds for any module, however hostile its memory.
#pragma once

#include <gtest/gtest.h>

#include <cmath>

#include "optics/level.h"
#include "optics/module.h"

namespace optics::tests {

inline void expectWithin(const Monitor& monitor, double lowest, double highest) {
    if (monitor.reading) {
        EXPECT_GE(*monitor.reading, lowest); // false for what is no number, too
        EXPECT_LE(*monitor.reading, highest);
    }
    if (!monitor.thresholds) return;
    EXPECT_GE(monitor.thresholds->lowAlarm, lowest);
    EXPECT_GE(monitor.thresholds->lowWarning, monitor.thresholds->lowAlarm);
    EXPECT_GT(monitor.thresholds->highWarning, monitor.thresholds->lowWarning);
    EXPECT_GE(monitor.thresholds->highAlarm, monitor.thresholds->highWarning);
    EXPECT_LE(monitor.thresholds->highAlarm, highest);
}

inline void expectToldNumbersAreNumbers(const Module& module) {
    ASSERT_LE(module.laneCount, mostLanes);
    expectWithin(module.temperatureCelsius, -128, 128);
    expectWithin(module.supplyVolts, 0, 6.5536);
    for (const auto& lane : module.lanes) {
        expectWithin(lane.biasMilliamperes, 0, 4 * 131.072);
        expectWithin(lane.transmitPowerMilliwatts, 0, 6.5536);
        expectWithin(lane.receivePowerMilliwatts, 0, 6.5536);
    }
    if (module.laneCount != 0) expectWithin(worstLane(module).receivePowerMilliwatts, 0, 6.5536);
}

} // namespace optics::tests
