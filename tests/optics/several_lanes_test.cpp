// Modules with more than one lane: SFF-8636 and CMIS.
#include <gtest/gtest.h>

#include <random>

#include "memories.h"
#include "optics/cmis.h"
#include "optics/level.h"
#include "optics/sff8636.h"
#include "told_numbers.h"

namespace optics::tests {
namespace {

constexpr std::size_t page1 = cmisPage1 - 128, page2 = cmisPage2 - 128, page11 = cmisPage11 - 128;

void expectIdentity(const Identity& identity, std::string_view partNumber, std::string_view serialNumber) {
    EXPECT_EQ(identity.vendor.view(), "EXAMPLE OPTICS");
    EXPECT_EQ(identity.partNumber.view(), partNumber);
    EXPECT_EQ(identity.serialNumber.view(), serialNumber);
    EXPECT_EQ(identity.vendorOui, (std::array<std::uint8_t, 3>{0x00, 0x11, 0x22}));
    EXPECT_DOUBLE_EQ(identity.wavelengthNanometres.value(), 850);
    EXPECT_FALSE(identity.copper);
}

TEST(Qsfp28Module, TellsItsIdentity) {
    const auto module = decodeSff8636(qsfp28Memory());
    EXPECT_TRUE(module.findings.empty());
    EXPECT_EQ(module.family, Family::Sff8636);
    expectIdentity(module.identity, "EX-Q28-SR4", "EXQ0000007");
    EXPECT_EQ(module.identity.formFactor, "QSFP28");
    EXPECT_EQ(module.identity.connector, "MPO 1x12");
    EXPECT_EQ(module.identity.standard, "100GBASE-SR4 or 25GBASE-SR");
    EXPECT_EQ(module.identity.revision.view(), "A1");
    EXPECT_EQ(module.identity.bitRateMegabaud, 25750U);
}

TEST(Qsfp28Module, TellsFourLanes) {
    const auto module = decodeSff8636(qsfp28Memory());
    EXPECT_EQ(module.receivePowerKind, ReceivePowerKind::Average);
    EXPECT_DOUBLE_EQ(module.temperatureCelsius.reading.value(), 40.25);
    EXPECT_NEAR(module.supplyVolts.reading.value(), 3.28, 1e-9);
    ASSERT_EQ(module.laneCount, 4U);
    const double received[] = {0.8, 0.78, 0.76, 0.74}, bias[] = {7, 7.1, 7.2, 7.3}, sent[] = {1, 1.01, 1.02, 1.03};
    for (std::size_t i = 0; i < 4; ++i) {
        const auto& lane = module.lanes[i];
        EXPECT_NEAR(lane.receivePowerMilliwatts.reading.value(), received[i], 1e-9);
        EXPECT_NEAR(lane.biasMilliamperes.reading.value(), bias[i], 1e-9);
        EXPECT_NEAR(lane.transmitPowerMilliwatts.reading.value(), sent[i], 1e-9);
        EXPECT_NEAR(lane.receivePowerMilliwatts.thresholds.value().lowWarning, 0.12, 1e-9);
        EXPECT_NEAR(lane.biasMilliamperes.thresholds.value().highAlarm, 10, 1e-9);
        EXPECT_NEAR(lane.transmitPowerMilliwatts.thresholds.value().lowAlarm, 0.1, 1e-9);
        EXPECT_EQ(levelOf(lane.receivePowerMilliwatts), Level::Normal);
        EXPECT_EQ(lane.receiveLoss, false);
    }
    EXPECT_NEAR(module.temperatureCelsius.thresholds.value().highWarning, 70, 1e-9);
    EXPECT_NEAR(module.supplyVolts.thresholds.value().lowAlarm, 2.97, 1e-9);
}

TEST(Qsfp28Module, TellsFlagsAndStatusOfEachLane) {
    auto memory = qsfp28Memory();
    put(memory, 3, {0x08, 0x02}); // lane 4 gets no light, lane 2 has a fault
    put(memory, 6, {0x80, 0x10}); // temperature high alarm, supply low warning
    put(memory, 9,
        {0x00, 0x04, 0x20, 0x00, 0x01, 0x00}); // received 4 low alarm, bias 1 high warning, sent 2 low warning
    memory[86] = 0x04;
    const auto module = decodeSff8636(memory);
    EXPECT_EQ(module.temperatureCelsius.flags, (Flags{true, false, false, false}));
    EXPECT_EQ(module.supplyVolts.flags, (Flags{false, false, false, true}));
    EXPECT_EQ(module.lanes[3].receivePowerMilliwatts.flags, (Flags{false, true, false, false}));
    EXPECT_EQ(module.lanes[2].receivePowerMilliwatts.flags, Flags{});
    EXPECT_EQ(module.lanes[0].biasMilliamperes.flags, (Flags{false, false, true, false}));
    EXPECT_EQ(module.lanes[1].transmitPowerMilliwatts.flags, (Flags{false, false, false, true}));
    EXPECT_EQ(module.lanes[3].receiveLoss, true);
    EXPECT_EQ(module.lanes[1].transmitFault, true);
    EXPECT_EQ(module.lanes[2].transmitDisabled, true);
    EXPECT_EQ(module.lanes[0].transmitDisabled, false);
}

TEST(Qsfp28Module, WithAnOldRevisionMeasuresTemperatureAndNoTransmitPower) {
    auto memory = qsfp28Memory();
    memory[1] = 0x03;
    memory[220] = 0x08;
    putChecksum(memory, 192, 223);
    const auto module = decodeSff8636(memory);
    EXPECT_TRUE(module.temperatureCelsius.reading);
    EXPECT_TRUE(module.lanes[0].receivePowerMilliwatts.reading);
    EXPECT_FALSE(module.lanes[0].transmitPowerMilliwatts.reading);
}

TEST(Qsfp28Module, WithoutPage3HasReadingsAndNoThresholds) {
    auto memory = qsfp28Memory();
    memory.resize(256);
    const auto module = decodeSff8636(memory);
    EXPECT_TRUE(module.findings.empty());
    EXPECT_TRUE(module.lanes[3].receivePowerMilliwatts.reading);
    EXPECT_FALSE(module.lanes[3].receivePowerMilliwatts.thresholds);
}

TEST(Qsfp28Module, OfACopperCableHasNeitherWavelengthNorReadings) {
    auto memory = qsfp28Memory();
    put(memory, 147, {0xA0});
    putChecksum(memory, 128, 191);
    const auto module = decodeSff8636(memory);
    EXPECT_TRUE(module.identity.copper);
    EXPECT_FALSE(module.identity.wavelengthNanometres);
    EXPECT_EQ(module.laneCount, 0U);
    EXPECT_TRUE(module.findings.has(Finding::NoDiagnostics));
}

TEST(QsfpDdModule, TellsItsIdentity) {
    const auto module = decodeCmis(qsfpDdMemory());
    EXPECT_TRUE(module.findings.empty());
    EXPECT_EQ(module.family, Family::Cmis);
    expectIdentity(module.identity, "EX-QDD-SR8", "EXD0000031");
    EXPECT_EQ(module.identity.formFactor, "QSFP-DD");
    EXPECT_EQ(module.identity.connector, "MPO 2x16");
    EXPECT_EQ(module.identity.dateCode.view(), "240630");
}

TEST(QsfpDdModule, TellsEightLanes) {
    auto memory = qsfpDdMemory();
    put(memory, page11 + 200, {0x00, 0x0A}); // lane 8 receives 0.001 mW
    const auto module = decodeCmis(memory);
    EXPECT_DOUBLE_EQ(module.temperatureCelsius.reading.value(), 50.5);
    EXPECT_NEAR(module.supplyVolts.reading.value(), 3.3, 1e-9);
    EXPECT_NEAR(module.temperatureCelsius.thresholds.value().highAlarm, 75, 1e-9);
    ASSERT_EQ(module.laneCount, 8U);
    const auto& lane = module.lanes[0];
    EXPECT_NEAR(lane.biasMilliamperes.reading.value(), 8, 1e-9);
    EXPECT_NEAR(lane.biasMilliamperes.thresholds.value().highAlarm, 14, 1e-9);
    EXPECT_NEAR(lane.transmitPowerMilliwatts.reading.value(), 1, 1e-9);
    EXPECT_NEAR(lane.receivePowerMilliwatts.reading.value(), 0.8, 1e-9);
    EXPECT_NEAR(worstLane(module).receivePowerMilliwatts.reading.value(), 0.001, 1e-9);
    EXPECT_EQ(levelOf(worstLane(module).receivePowerMilliwatts), Level::LowAlarm);
}

TEST(QsfpDdModule, TellsFlagsAndStatusOfEachLane) {
    auto memory = qsfpDdMemory();
    memory[9] = 0x41;                                    // supply high warning, temperature high alarm
    put(memory, page11 + 135, {0x01});                   // fault of lane 1
    put(memory, page11 + 139, {0x00, 0x80});             // sent 8 low alarm
    put(memory, page11 + 145, {0x02});                   // bias 2 high warning
    put(memory, page11 + 147, {0x20});                   // no light on lane 6
    put(memory, page11 + 149, {0x00, 0x20, 0x00, 0x20}); // received 6 low alarm and low warning
    const auto module = decodeCmis(memory);
    EXPECT_EQ(module.temperatureCelsius.flags, (Flags{true, false, false, false}));
    EXPECT_EQ(module.supplyVolts.flags, (Flags{false, false, true, false}));
    EXPECT_EQ(module.lanes[0].transmitFault, true);
    EXPECT_EQ(module.lanes[7].transmitPowerMilliwatts.flags, (Flags{false, true, false, false}));
    EXPECT_EQ(module.lanes[1].biasMilliamperes.flags, (Flags{false, false, true, false}));
    EXPECT_EQ(module.lanes[5].receiveLoss, true);
    EXPECT_EQ(module.lanes[5].receivePowerMilliwatts.flags, (Flags{false, true, false, true}));
}

TEST(QsfpDdModule, LeavesOutLanesAndQuantitiesThatItHasNot) {
    auto memory = qsfpDdMemory();
    memory[210] = 0xF0;
    putChecksum(memory, 128, 222);
    put(memory, page1 + 159, {0x01, 0x04}); // temperature and receive power
    putChecksum(memory, page1 + 130, page1 + 255);
    const auto module = decodeCmis(memory);
    EXPECT_EQ(module.laneCount, 4U);
    EXPECT_TRUE(module.temperatureCelsius.reading);
    EXPECT_FALSE(module.supplyVolts.reading);
    EXPECT_TRUE(module.lanes[0].receivePowerMilliwatts.reading);
    EXPECT_FALSE(module.lanes[0].biasMilliamperes.reading);
    EXPECT_FALSE(module.lanes[0].transmitPowerMilliwatts.reading);
}

TEST(QsfpDdModule, WithAReservedScaleOfTheBiasTellsNone) {
    auto memory = qsfpDdMemory();
    put(memory, page1 + 160, {0x1F});
    putChecksum(memory, page1 + 130, page1 + 255);
    EXPECT_FALSE(decodeCmis(memory).lanes[0].biasMilliamperes.reading);
}

TEST(QsfpDdModule, WithFlatMemoryHasNoDiagnostics) {
    auto memory = qsfpDdMemory();
    memory[2] = 0x80;
    const auto module = decodeCmis(memory);
    EXPECT_TRUE(module.findings.has(Finding::NoDiagnostics));
    EXPECT_EQ(module.laneCount, 0U);
    EXPECT_FALSE(module.temperatureCelsius.reading);
}

TEST(QsfpDdModule, WithWrongChecksumsTellsWhatTheyDoNotCover) {
    auto memory = qsfpDdMemory();
    ++memory[page2 + 255];
    const auto withoutThresholds = decodeCmis(memory);
    EXPECT_TRUE(withoutThresholds.findings.has(Finding::DiagnosticsChecksumWrong));
    EXPECT_TRUE(withoutThresholds.lanes[0].receivePowerMilliwatts.reading);
    EXPECT_FALSE(withoutThresholds.lanes[0].receivePowerMilliwatts.thresholds);
    ++memory[page1 + 255];
    const auto withoutReadings = decodeCmis(memory);
    EXPECT_TRUE(withoutReadings.findings.has(Finding::ExtendedChecksumWrong));
    EXPECT_FALSE(withoutReadings.temperatureCelsius.reading);
}

TEST(HostileModuleOfSeveralLanes, ThatSaysNothingTellsNothing) {
    for (const auto decode : {decodeSff8636, decodeCmis}) {
        EXPECT_TRUE(decode({}).findings.has(Finding::NoMemory));
        EXPECT_TRUE(decode(Bytes(640, 0)).findings.has(Finding::NoMemory));
        EXPECT_TRUE(decode(Bytes(640, 0xFF)).findings.has(Finding::OnesOnly));
        EXPECT_TRUE(decode(Bytes(100, 1)).findings.has(Finding::MemoryTooShort));
    }
}

TEST(HostileModuleOfSeveralLanes, CutAnywhereTellsFiniteNumbersAlone) {
    const auto qsfp = qsfp28Memory(), dd = qsfpDdMemory();
    for (std::size_t size = 0; size <= 640; ++size) {
        expectToldNumbersAreNumbers(decodeSff8636(Memory(qsfp).first(size)));
        expectToldNumbersAreNumbers(decodeCmis(Memory(dd).first(size)));
    }
}

TEST(HostileModuleOfSeveralLanes, OfRandomBytesTellsFiniteNumbersAlone) {
    std::mt19937 random(20261122);
    Bytes memory(640);
    for (int run = 0; run < 5000; ++run) {
        for (auto& byte : memory)
            byte = static_cast<std::uint8_t>(random());
        putChecksum(memory, 128, 191);
        putChecksum(memory, 192, 223);
        expectToldNumbersAreNumbers(decodeSff8636(memory));
        putChecksum(memory, 128, 222);
        putChecksum(memory, page1 + 130, page1 + 255);
        putChecksum(memory, page2 + 128, page2 + 255);
        expectToldNumbersAreNumbers(decodeCmis(memory));
    }
}

} // namespace
} // namespace optics::tests
