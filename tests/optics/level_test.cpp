#include "optics/level.h"

#include <gtest/gtest.h>

#include <limits>

namespace optics {
namespace {

constexpr Thresholds limits{10, 1, 8, 2};

Monitor at(double reading) { return {reading, limits, std::nullopt}; }

TEST(Level, IsWhereTheReadingStandsAmongItsLimits) {
    EXPECT_EQ(levelOf(at(0.5)), Level::LowAlarm);
    EXPECT_EQ(levelOf(at(1.5)), Level::LowWarning);
    EXPECT_EQ(levelOf(at(5)), Level::Normal);
    EXPECT_EQ(levelOf(at(9)), Level::HighWarning);
    EXPECT_EQ(levelOf(at(11)), Level::HighAlarm);
}

TEST(Level, OfAReadingAtALimitIsWithinIt) {
    EXPECT_EQ(levelOf(at(1)), Level::LowWarning);
    EXPECT_EQ(levelOf(at(2)), Level::Normal);
    EXPECT_EQ(levelOf(at(8)), Level::Normal);
    EXPECT_EQ(levelOf(at(10)), Level::HighWarning);
}

TEST(Level, WithoutLimitsIsWhatTheModuleSays) {
    Monitor monitor{5.0, std::nullopt, Flags{}};
    EXPECT_EQ(levelOf(monitor), Level::Normal);
    monitor.flags->lowWarning = true;
    EXPECT_EQ(levelOf(monitor), Level::LowWarning);
    monitor.flags->highAlarm = true;
    EXPECT_EQ(levelOf(monitor), Level::HighAlarm);
}

TEST(Level, WithoutLimitsAndFlagsIsUnknown) {
    EXPECT_EQ(levelOf(Monitor{5.0, std::nullopt, std::nullopt}), Level::Unknown);
    EXPECT_EQ(levelOf(Monitor{std::nullopt, limits, std::nullopt}), Level::Unknown);
}

TEST(Dbm, OfAMilliwattIsZero) {
    EXPECT_DOUBLE_EQ(dbmOfMilliwatts(1).value(), 0);
    EXPECT_DOUBLE_EQ(dbmOfMilliwatts(0.001).value(), -30);
    EXPECT_NEAR(dbmOfMilliwatts(0.5).value(), -3.0103, 1e-4);
}

TEST(Dbm, OfNoPowerIsNoNumber) {
    EXPECT_FALSE(dbmOfMilliwatts(0));
    EXPECT_FALSE(dbmOfMilliwatts(-1));
    EXPECT_FALSE(dbmOfMilliwatts(std::numeric_limits<double>::quiet_NaN()));
    EXPECT_FALSE(dbmOfMilliwatts(std::numeric_limits<double>::infinity()));
}

Module ofReceivePowers(std::initializer_list<double> readings) {
    Module module;
    for (const auto reading : readings)
        module.lanes[module.laneCount++].receivePowerMilliwatts = at(reading);
    return module;
}

TEST(WorstLane, HasAnAlarmBeforeAWarningBeforeANormalReading) {
    EXPECT_EQ(worstLane(ofReceivePowers({5, 9, 2})).receivePowerMilliwatts.reading, 9);
    EXPECT_EQ(worstLane(ofReceivePowers({1.1, 9, 10.1, 2})).receivePowerMilliwatts.reading, 10.1);
}

TEST(WorstLane, HasTheReadingWithTheLeastRoom) {
    EXPECT_EQ(worstLane(ofReceivePowers({5, 3, 7})).receivePowerMilliwatts.reading, 3);
    EXPECT_EQ(worstLane(ofReceivePowers({0.9, 0.1, 0.5})).receivePowerMilliwatts.reading, 0.1);
}

TEST(WorstLane, WithoutLimitsHasTheLowestReading) {
    auto module = ofReceivePowers({5, 3, 7});
    for (auto& lane : module.lanes)
        lane.receivePowerMilliwatts.thresholds.reset();
    EXPECT_EQ(worstLane(module).receivePowerMilliwatts.reading, 3);
}

TEST(WorstLane, HasTheFlagsLossesAndFaultsOfAnyLane) {
    auto module = ofReceivePowers({5, 3});
    module.lanes[0].receivePowerMilliwatts.flags = Flags{true, false, false, false};
    module.lanes[1].receivePowerMilliwatts.flags = Flags{false, true, false, false};
    module.lanes[0].receiveLoss = true;
    module.lanes[1].receiveLoss = false;
    module.lanes[0].transmitDisabled = true;
    module.lanes[1].transmitDisabled = false;
    const auto worst = worstLane(module);
    EXPECT_EQ(worst.receivePowerMilliwatts.flags, (Flags{true, true, false, false}));
    EXPECT_EQ(worst.receiveLoss, true);
    EXPECT_EQ(worst.transmitDisabled, false);
    EXPECT_FALSE(worst.transmitFault);
}

TEST(WorstLane, OfAModuleWithoutLanesTellsNothing) { EXPECT_FALSE(worstLane(Module{}).receivePowerMilliwatts.reading); }

TEST(ShortText, EndsAtAZeroAndLosesItsBlanks) {
    const std::uint8_t field[] = {'A', ' ', 0x80, '\n', ' ', ' ', 0, 'B'};
    EXPECT_EQ(ShortText(field, sizeof field).view(), "A ??");
    EXPECT_TRUE(ShortText(field, 0).empty());
    EXPECT_EQ(ShortText(reinterpret_cast<const std::uint8_t*>("0123456789abcdefXYZ"), 19).view(), "0123456789abcdef");
}

TEST(Finding, HasAWordAndASentence) {
    for (unsigned i = 0; i < static_cast<unsigned>(Finding::Count); ++i) {
        EXPECT_FALSE(wordOf(static_cast<Finding>(i)).empty());
        EXPECT_FALSE(sentenceOf(static_cast<Finding>(i)).empty());
    }
}

} // namespace
} // namespace optics
