#include "optics/sff8472.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "memories.h"
#include "optics/level.h"
#include "told_numbers.h"

namespace optics::tests {
namespace {

Findings only(std::initializer_list<Finding> expected) {
    Findings findings;
    for (const auto finding : expected)
        findings.add(finding);
    return findings;
}

void expectNoReadings(const Module& module) {
    EXPECT_FALSE(module.temperatureCelsius.reading);
    EXPECT_FALSE(module.supplyVolts.reading);
    for (const auto& lane : module.lanes) {
        EXPECT_FALSE(lane.biasMilliamperes.reading);
        EXPECT_FALSE(lane.transmitPowerMilliwatts.reading);
        EXPECT_FALSE(lane.receivePowerMilliwatts.reading);
    }
}

void expectThresholds(const Monitor& monitor, const Thresholds& expected) {
    ASSERT_TRUE(monitor.thresholds);
    EXPECT_NEAR(monitor.thresholds->highAlarm, expected.highAlarm, 1e-9);
    EXPECT_NEAR(monitor.thresholds->lowAlarm, expected.lowAlarm, 1e-9);
    EXPECT_NEAR(monitor.thresholds->highWarning, expected.highWarning, 1e-9);
    EXPECT_NEAR(monitor.thresholds->lowWarning, expected.lowWarning, 1e-9);
}

/// The same module, calibrated outside: constants of table 9-6 and raw words by which it tells other numbers.
struct ExternallyCalibrated {
    ExternallyCalibrated() : identity(sfpIdentity()), diagnostics(sfpDiagnostics()) {
        identity[92] = 0x58;
        putChecksum(identity, 64, 95);
        put(diagnostics, 56, {0x00, 0x00, 0x00, 0x00});                        // fourth power: 0
        put(diagnostics, 60, {0x30, 0x80, 0x00, 0x00});                        // third: 2 to the -30
        put(diagnostics, 64, {0x3A, 0x80, 0x00, 0x00});                        // second: 2 to the -10
        put(diagnostics, 68, {0x40, 0x00, 0x00, 0x00});                        // first: 2
        put(diagnostics, 72, {0x41, 0x20, 0x00, 0x00});                        // zeroth: 10
        put(diagnostics, 76, {0x00, 0x80, 0x00, 0x00});                        // bias: half of the raw word
        put(diagnostics, 80, {0x01, 0x00, 0xFE, 0x0C});                        // transmit power: less 500
        put(diagnostics, 84, {0x01, 0x80, 0xFE, 0x00});                        // temperature: times 1.5, less 2 degrees
        put(diagnostics, 88, {0x02, 0x00, 0x00, 0x64});                        // supply: twice, and 100 more
        put(diagnostics, 8, {0x46, 0x82, 0x39, 0x9E, 0x43, 0x49, 0x3C, 0xD7}); // 18050, 14750, 17225, 15575
        put(diagnostics, 32, {0x05, 0xDC, 0x00, 0x32, 0x04, 0xE2, 0x00, 0x64}); // 1500, 50, 1250, 100
        put(diagnostics, 96,
            {0x14, 0x00, 0x40, 0x74, 0x17, 0x70, 0x19, 0x64, 0x03, 0xE8}); // 20, 16500, 6000, 6500, 1000
        putChecksum(diagnostics, 0, 95);
    }
    Module decode() const { return decodeSff8472(identity, diagnostics); }

    Bytes identity;
    Bytes diagnostics;
};

TEST(SfpModule, TellsItsIdentity) {
    const auto module = decodeSff8472(sfpIdentity(), sfpDiagnostics());
    EXPECT_EQ(module.family, Family::Sff8472);
    EXPECT_EQ(module.identity.identifier, 3);
    EXPECT_EQ(module.identity.formFactor, "SFP");
    EXPECT_EQ(module.identity.connector, "LC");
    EXPECT_EQ(module.identity.standard, "10GBASE-SR");
    EXPECT_EQ(module.identity.vendor.view(), "EXAMPLE OPTICS");
    EXPECT_EQ(module.identity.partNumber.view(), "EX-SFP10-SR");
    EXPECT_EQ(module.identity.revision.view(), "B1");
    EXPECT_EQ(module.identity.serialNumber.view(), "EX00000001");
    EXPECT_EQ(module.identity.dateCode.view(), "240115");
    EXPECT_EQ(module.identity.vendorOui, (std::array<std::uint8_t, 3>{0x00, 0x11, 0x22}));
    EXPECT_EQ(module.identity.wavelengthNanometres, 850);
    EXPECT_EQ(module.identity.bitRateMegabaud, 10300U);
    EXPECT_FALSE(module.identity.fibreChannelGigabits);
    EXPECT_FALSE(module.identity.copper);
}

TEST(SfpModule, TellsReadingsAndThresholdsInUnits) {
    const auto module = decodeSff8472(sfpIdentity(), sfpDiagnostics());
    EXPECT_TRUE(module.findings.empty());
    EXPECT_EQ(module.calibration, Calibration::Internal);
    EXPECT_EQ(module.receivePowerKind, ReceivePowerKind::Average);
    ASSERT_EQ(module.laneCount, 1U);
    const auto& lane = module.lanes[0];
    EXPECT_DOUBLE_EQ(module.temperatureCelsius.reading.value(), 35.5);
    EXPECT_NEAR(module.supplyVolts.reading.value(), 3.3, 1e-9);
    EXPECT_NEAR(lane.biasMilliamperes.reading.value(), 6, 1e-9);
    EXPECT_NEAR(lane.transmitPowerMilliwatts.reading.value(), 0.6, 1e-9);
    EXPECT_NEAR(lane.receivePowerMilliwatts.reading.value(), 0.5, 1e-9);
    expectThresholds(module.temperatureCelsius, {75, -5, 70, 0});
    expectThresholds(module.supplyVolts, {3.63, 2.97, 3.465, 3.135});
    expectThresholds(lane.biasMilliamperes, {11.8, 4, 10.8, 5});
    expectThresholds(lane.transmitPowerMilliwatts, {0.8318, 0.2512, 0.6607, 0.3162});
    expectThresholds(lane.receivePowerMilliwatts, {1, 0.01, 0.7943, 0.0158});
    EXPECT_EQ(lane.receiveLoss, false);
    EXPECT_EQ(lane.transmitFault, false);
    EXPECT_EQ(lane.transmitDisabled, false);
}

TEST(SfpModule, HasTemperaturesBelowZero) {
    auto diagnostics = sfpDiagnostics();
    put(diagnostics, 96, {0xF6, 0x40});
    EXPECT_DOUBLE_EQ(decodeSff8472(sfpIdentity(), diagnostics).temperatureCelsius.reading.value(), -9.75);
}

TEST(SfpModule, TellsTheModulesOwnFlags) {
    auto diagnostics = sfpDiagnostics();
    put(diagnostics, 112, {0x92, 0x40}); // temperature and supply low, transmit power high; receive power low
    put(diagnostics, 116, {0x08, 0x80}); // bias high; receive power high
    const auto module = decodeSff8472(sfpIdentity(), diagnostics);
    EXPECT_EQ(module.temperatureCelsius.flags, (Flags{true, false, false, false}));
    EXPECT_EQ(module.supplyVolts.flags, (Flags{false, true, false, false}));
    EXPECT_EQ(module.lanes[0].biasMilliamperes.flags, (Flags{false, false, true, false}));
    EXPECT_EQ(module.lanes[0].transmitPowerMilliwatts.flags, (Flags{true, false, false, false}));
    EXPECT_EQ(module.lanes[0].receivePowerMilliwatts.flags, (Flags{false, true, true, false}));
}

TEST(SfpModule, TellsLossFaultAndDisabledTransmitter) {
    auto diagnostics = sfpDiagnostics();
    diagnostics[110] = 0x86;
    const auto lane = decodeSff8472(sfpIdentity(), diagnostics).lanes[0];
    EXPECT_EQ(lane.receiveLoss, true);
    EXPECT_EQ(lane.transmitFault, true);
    EXPECT_EQ(lane.transmitDisabled, true);
}

TEST(SfpModule, WithoutTheOptionsHasNeitherFlagsNorStatus) {
    auto identity = sfpIdentity();
    identity[93] = 0;
    putChecksum(identity, 64, 95);
    const auto module = decodeSff8472(identity, sfpDiagnostics());
    EXPECT_TRUE(module.temperatureCelsius.reading);
    EXPECT_FALSE(module.temperatureCelsius.flags);
    EXPECT_FALSE(module.lanes[0].receiveLoss);
    EXPECT_FALSE(module.lanes[0].transmitFault);
    EXPECT_FALSE(module.lanes[0].transmitDisabled);
}

TEST(SfpModule, MeasuresModulationAmplitudeIfItSaysSo) {
    auto identity = sfpIdentity();
    identity[92] = 0x60;
    putChecksum(identity, 64, 95);
    const auto module = decodeSff8472(identity, sfpDiagnostics());
    EXPECT_EQ(module.receivePowerKind, ReceivePowerKind::ModulationAmplitude);
    EXPECT_NEAR(module.lanes[0].receivePowerMilliwatts.reading.value(), 0.5, 1e-9);
}

TEST(SfpModule, OfFibreChannelTellsItsFastestSpeedAndItsDistance) {
    auto identity = sfpIdentity();
    put(identity, 3, {0, 0, 0, 0, 0x40, 0x40, 0x0C, 0x70}); // short distance, multimode, 4, 8 and 16 gigabits
    identity[12] = 140;
    putChecksum(identity, 0, 63);
    const auto module = decodeSff8472(identity, sfpDiagnostics());
    EXPECT_EQ(module.identity.standard, "16G Fibre Channel");
    EXPECT_EQ(module.identity.mediumLength, "short distance");
    EXPECT_EQ(module.identity.fibreChannelGigabits, 16U);
    EXPECT_EQ(module.identity.bitRateMegabaud, 14000U);
}

TEST(SfpModule, FasterThanTheRateByteTellsItsRateInByte66) {
    auto identity = sfpIdentity();
    identity[12] = 0xFF;
    identity[36] = 0x02;
    identity[66] = 103; // in steps of 250 MBd
    putChecksum(identity, 0, 63);
    putChecksum(identity, 64, 95);
    const auto module = decodeSff8472(identity, sfpDiagnostics());
    EXPECT_EQ(module.identity.bitRateMegabaud, 25750U);
    EXPECT_EQ(module.identity.standard, "100GBASE-SR4 or 25GBASE-SR");
}

TEST(SfpModule, OfACableHasNoWavelength) {
    auto identity = sfpIdentity();
    put(identity, 2, {0x21, 0, 0, 0, 0, 0, 0x04}); // copper pigtail, passive cable
    put(identity, 60, {0x01, 0x00});               // the compliance of the cable
    put(identity, 92, {0x00, 0x00});
    putChecksum(identity, 0, 63);
    putChecksum(identity, 64, 95);
    const auto module = decodeSff8472(identity, {});
    EXPECT_TRUE(module.identity.copper);
    EXPECT_FALSE(module.identity.wavelengthNanometres);
    EXPECT_EQ(module.identity.connector, "copper pigtail");
    EXPECT_EQ(module.findings, only({Finding::NoDiagnostics}));
    EXPECT_EQ(module.laneCount, 0U);
}

TEST(SfpModule, CalibratedOutsideHasItsNumbersByItsConstants) {
    const auto module = ExternallyCalibrated().decode();
    EXPECT_TRUE(module.findings.empty());
    EXPECT_EQ(module.calibration, Calibration::External);
    EXPECT_DOUBLE_EQ(module.temperatureCelsius.reading.value(), 28);
    EXPECT_NEAR(module.supplyVolts.reading.value(), 3.31, 1e-9);
    const auto& lane = module.lanes[0];
    EXPECT_NEAR(lane.biasMilliamperes.reading.value(), 6, 1e-9);
    EXPECT_NEAR(lane.transmitPowerMilliwatts.reading.value(), 0.6, 1e-9);
    // 1e9 / 1073741824 + 1e6 / 1024 + 2000 + 10, in tenths of a microwatt
    EXPECT_NEAR(lane.receivePowerMilliwatts.reading.value(), 0.29874938, 1e-8);
}

TEST(SfpModule, CalibratedOutsideHasItsThresholdsByTheSameConstants) {
    const auto module = ExternallyCalibrated().decode();
    expectThresholds(module.temperatureCelsius, {110.5, -9.5, 103, -2});
    expectThresholds(module.supplyVolts, {3.62, 2.96, 3.455, 3.125});
    expectThresholds(module.lanes[0].biasMilliamperes, {5.9, 2, 5.4, 2.5});
    EXPECT_EQ(levelOf(module.lanes[0].biasMilliamperes), Level::HighAlarm);
    ASSERT_TRUE(module.lanes[0].receivePowerMilliwatts.thresholds);
    // 2500 / 1024 + 100 + 10, and less than a ten thousandth of the third power
    EXPECT_NEAR(module.lanes[0].receivePowerMilliwatts.thresholds->lowAlarm, 0.011244141, 1e-7);
}

TEST(SfpModule, TakesAPolynomialBelowZeroForNoLight) {
    ExternallyCalibrated module;
    put(module.diagnostics, 72, {0xC1, 0x20, 0x00, 0x00}); // zeroth power: -10
    put(module.diagnostics, 104, {0x00, 0x00});
    putChecksum(module.diagnostics, 0, 95);
    EXPECT_EQ(module.decode().lanes[0].receivePowerMilliwatts.reading, 0.0);
}

TEST(SfpModule, WithCalibrationThatIsNoNumberTellsNoReceivePower) {
    const std::initializer_list<std::initializer_list<int>> constants{
        {0x7F, 0xC0, 0x00, 0x00}, {0x7F, 0x80, 0x00, 0x00}, {0xFF, 0x80, 0x00, 0x00}, {0xFF, 0xFF, 0xFF, 0xFF}};
    for (const auto& constant : constants)
        for (const std::size_t offset : {56U, 60U, 64U, 68U, 72U}) {
            ExternallyCalibrated module;
            put(module.diagnostics, offset, constant);
            putChecksum(module.diagnostics, 0, 95);
            const auto decoded = module.decode();
            EXPECT_FALSE(decoded.lanes[0].receivePowerMilliwatts.reading) << offset;
            EXPECT_FALSE(decoded.lanes[0].receivePowerMilliwatts.thresholds) << offset;
            EXPECT_TRUE(decoded.lanes[0].transmitPowerMilliwatts.reading) << offset;
            EXPECT_EQ(decoded.findings, only({Finding::CalibrationUnusable})) << offset;
        }
}

TEST(SfpModule, WithCalibrationOutOfAllRangeTellsNoReading) {
    ExternallyCalibrated module;
    put(module.diagnostics, 56, {0x7F, 0x7F, 0xFF, 0xFF}); // the largest float
    putChecksum(module.diagnostics, 0, 95);
    const auto decoded = module.decode();
    EXPECT_FALSE(decoded.lanes[0].receivePowerMilliwatts.reading);
    EXPECT_TRUE(decoded.findings.has(Finding::ReadingOutOfRange));
}

TEST(SfpModule, WithASlopeOfZeroTellsNoReading) {
    ExternallyCalibrated module;
    put(module.diagnostics, 84, {0x00, 0x00});
    putChecksum(module.diagnostics, 0, 95);
    const auto decoded = module.decode();
    EXPECT_FALSE(decoded.temperatureCelsius.reading);
    EXPECT_TRUE(decoded.supplyVolts.reading);
    EXPECT_EQ(decoded.findings, only({Finding::CalibrationUnusable}));
}

TEST(SfpModule, WithNoCalibrationOrBothTellsNoReadings) {
    for (const int declared : {0x48, 0x78}) {
        auto identity = sfpIdentity();
        identity[92] = static_cast<std::uint8_t>(declared);
        putChecksum(identity, 64, 95);
        const auto module = decodeSff8472(identity, sfpDiagnostics());
        EXPECT_EQ(module.findings, only({Finding::CalibrationNotTold}));
        expectNoReadings(module);
    }
}

TEST(SfpModule, ThatWantsAnotherAddressTellsNoReadings) {
    auto identity = sfpIdentity();
    identity[92] = 0x6C;
    putChecksum(identity, 64, 95);
    const auto module = decodeSff8472(identity, sfpDiagnostics());
    EXPECT_EQ(module.findings, only({Finding::AddressChangeRequired}));
    expectNoReadings(module);
}

TEST(SfpModule, ThatDeliversNoDiagnosticsTellsSo) {
    for (const auto& diagnostics : {Bytes(), Bytes(105, 1), Bytes(256, 0), Bytes(256, 0xFF)}) {
        const auto module = decodeSff8472(sfpIdentity(), diagnostics);
        EXPECT_EQ(module.findings, only({Finding::DiagnosticsMissing}));
        expectNoReadings(module);
    }
}

TEST(SfpModule, ThatIsNotReadyTellsThresholdsAlone) {
    auto diagnostics = sfpDiagnostics();
    diagnostics[110] = 0x01;
    const auto module = decodeSff8472(sfpIdentity(), diagnostics);
    EXPECT_EQ(module.findings, only({Finding::NotReady}));
    expectNoReadings(module);
    expectThresholds(module.temperatureCelsius, {75, -5, 70, 0});
}

TEST(SfpModule, WithAWrongBaseChecksumTellsTextsAndReadingsAlone) {
    auto identity = sfpIdentity();
    ++identity[63];
    const auto module = decodeSff8472(identity, sfpDiagnostics());
    EXPECT_EQ(module.findings, only({Finding::BaseChecksumWrong}));
    EXPECT_FALSE(module.identity.wavelengthNanometres);
    EXPECT_FALSE(module.identity.bitRateMegabaud);
    EXPECT_TRUE(module.identity.standard.empty());
    EXPECT_EQ(module.identity.vendor.view(), "EXAMPLE OPTICS");
    EXPECT_TRUE(module.temperatureCelsius.reading);
}

TEST(SfpModule, WithAWrongExtendedChecksumTellsNoReadings) {
    auto identity = sfpIdentity();
    ++identity[95];
    const auto module = decodeSff8472(identity, sfpDiagnostics());
    EXPECT_EQ(module.findings, only({Finding::ExtendedChecksumWrong}));
    expectNoReadings(module);
    EXPECT_EQ(module.identity.wavelengthNanometres, 850);
}

TEST(SfpModule, WithAWrongDiagnosticsChecksumTellsNoThresholds) {
    auto diagnostics = sfpDiagnostics();
    ++diagnostics[95];
    const auto module = decodeSff8472(sfpIdentity(), diagnostics);
    EXPECT_EQ(module.findings, only({Finding::DiagnosticsChecksumWrong}));
    EXPECT_DOUBLE_EQ(module.temperatureCelsius.reading.value(), 35.5);
    EXPECT_FALSE(module.temperatureCelsius.thresholds);
    EXPECT_FALSE(module.lanes[0].receivePowerMilliwatts.thresholds);
}

TEST(SfpModule, CalibratedOutsideWithAWrongDiagnosticsChecksumTellsNoReadings) {
    ExternallyCalibrated module;
    ++module.diagnostics[95];
    const auto decoded = module.decode();
    EXPECT_EQ(decoded.findings, only({Finding::DiagnosticsChecksumWrong}));
    expectNoReadings(decoded);
}

TEST(SfpModule, WithThresholdsThatContradictEachOtherTellsNone) {
    auto diagnostics = sfpDiagnostics();
    put(diagnostics, 0, {0x00, 0x00, 0x4B, 0x00}); // high alarm 0, low alarm 75
    putChecksum(diagnostics, 0, 95);
    const auto module = decodeSff8472(sfpIdentity(), diagnostics);
    EXPECT_EQ(module.findings, only({Finding::ThresholdsDisordered}));
    EXPECT_FALSE(module.temperatureCelsius.thresholds);
    EXPECT_TRUE(module.supplyVolts.thresholds);
}

TEST(SfpModule, ThatLeavesThresholdsOutHasNone) {
    for (const int filler : {0x00, 0xFF}) {
        auto diagnostics = sfpDiagnostics();
        std::fill_n(diagnostics.begin(), 8, static_cast<std::uint8_t>(filler));
        putChecksum(diagnostics, 0, 95);
        const auto module = decodeSff8472(sfpIdentity(), diagnostics);
        EXPECT_TRUE(module.findings.empty());
        EXPECT_FALSE(module.temperatureCelsius.thresholds);
        EXPECT_EQ(levelOf(module.temperatureCelsius), Level::Normal) << "its own flags tell";
    }
}

TEST(HostileSfpModule, ThatSaysNothingTellsNothing) {
    EXPECT_EQ(decodeSff8472({}, {}).findings, only({Finding::NoMemory}));
    EXPECT_EQ(decodeSff8472(Bytes(256, 0), Bytes(256, 0)).findings, only({Finding::NoMemory}));
    EXPECT_EQ(decodeSff8472(Bytes(256, 0xFF), Bytes(256, 0xFF)).findings, only({Finding::OnesOnly}));
    EXPECT_EQ(decodeSff8472(Bytes(256, 0), Bytes(256, 0)).family, Family::Unknown);
}

TEST(HostileSfpModule, CutAnywhereTellsFiniteNumbersAlone) {
    const auto identity = sfpIdentity();
    const auto diagnostics = sfpDiagnostics();
    for (std::size_t size = 0; size <= identity.size(); ++size) {
        const Bytes cutIdentity(identity.begin(), identity.begin() + static_cast<std::ptrdiff_t>(size));
        const Bytes cutDiagnostics(diagnostics.begin(), diagnostics.begin() + static_cast<std::ptrdiff_t>(size));
        expectToldNumbersAreNumbers(decodeSff8472(cutIdentity, diagnostics));
        expectToldNumbersAreNumbers(decodeSff8472(identity, cutDiagnostics));
        if (size > 1 && size < 96) {
            EXPECT_TRUE(decodeSff8472(cutIdentity, diagnostics).findings.has(Finding::MemoryTooShort)) << size;
        }
    }
}

TEST(HostileSfpModule, OfRandomBytesTellsFiniteNumbersAlone) {
    std::mt19937 random(20261122);
    Bytes identity(256), diagnostics(256);
    for (int run = 0; run < 20000; ++run) {
        for (auto* page : {&identity, &diagnostics})
            for (auto& byte : *page)
                byte = static_cast<std::uint8_t>(random());
        // Right checksums let everything behind them be read.
        identity[92] = static_cast<std::uint8_t>(0x40 | (identity[92] & 0x3B));
        putChecksum(identity, 0, 63);
        putChecksum(identity, 64, 95);
        putChecksum(diagnostics, 0, 95);
        expectToldNumbersAreNumbers(decodeSff8472(identity, diagnostics));
    }
}

} // namespace
} // namespace optics::tests
