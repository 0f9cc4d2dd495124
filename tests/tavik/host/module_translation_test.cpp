#include "tavik/host/module_translation.h"

#include <numeric>

#include <gtest/gtest.h>

#include "optics/level.h"
#include "optics/sff8472.h"
#include "tavik/transceiver.h"
#include "tests/optics/memories.h"

namespace tavik::host {
namespace {

void put(Bytes& memory, std::size_t at, const std::string& text) {
    std::copy(text.begin(), text.end(), memory.begin() + static_cast<std::ptrdiff_t>(at));
}

std::uint8_t sum(const Bytes& page, int first, int last) {
    return static_cast<std::uint8_t>(std::accumulate(page.begin() + first, page.begin() + last, 0U));
}

Bytes quadMemory() {
    Bytes memory(256);
    memory[128] = 0x11;
    memory[130] = 0x0C;
    memory[140] = 103;
    put(memory, 148, "Example Optics  ");
    memory[165] = 0x12;
    put(memory, 168, "EX-QSFP-100G    ");
    put(memory, 184, "B2");
    memory[186] = 0x42; // 850 nm in twentieths
    memory[187] = 0x68;
    put(memory, 196, "EX2036FT01234   ");
    put(memory, 212, "200903  ");
    memory[191] = sum(memory, 128, 191);
    memory[223] = sum(memory, 192, 223);
    return memory;
}

TEST(ModuleTranslation, SfpPassesOnAsItIs) {
    const auto module =
        makeTransceiver({.vendor = "ACME", .partNumber = "P", .revision = {}, .serialNumber = "S", .dateCode = {}});
    Bytes memory = module.pageA0;
    memory.insert(memory.end(), module.pageA2.begin(), module.pageA2.end());
    EXPECT_EQ(*translateModule({ModuleMemory::Sff8472, memory}), module);
}

TEST(ModuleTranslation, SfpWithoutDiagnosticsHasNoSecondPage) {
    const auto module = translateModule({ModuleMemory::Sff8079, Bytes(256, 1)});
    EXPECT_EQ(module->pageA0.size(), 256U);
    EXPECT_TRUE(module->pageA2.empty());
}

TEST(ModuleTranslation, LongMemoryIsCutBehindTheSecondPage) {
    const auto module = translateModule({ModuleMemory::Sff8472, Bytes(640, 1)});
    EXPECT_EQ(module->pageA0.size(), 256U);
    EXPECT_EQ(module->pageA2.size(), 256U);
}

TEST(ModuleTranslation, QsfpShowsItsIdentityWhereAnSfpHasIt) {
    for (const auto kind : {ModuleMemory::Sff8436, ModuleMemory::Sff8636}) {
        const auto module = translateModule({kind, quadMemory()});
        ASSERT_TRUE(module);
        const auto& page = module->pageA0;
        EXPECT_EQ(page.size(), 256U);
        EXPECT_EQ(page[0], 0x11);
        EXPECT_EQ(page[2], 0x0C);
        EXPECT_EQ(page[12], 103);
        EXPECT_EQ(serialIdText(page, 20), "Example Optics");
        EXPECT_EQ(page[37], 0x12);
        EXPECT_EQ(serialIdText(page, 40), "EX-QSFP-100G");
        EXPECT_EQ(std::string(page.begin() + 56, page.begin() + 60), "B2  ");
        EXPECT_EQ(page[60] * 256 + page[61], 850);
        EXPECT_EQ(serialIdText(page, 68), "EX2036FT01234");
        EXPECT_EQ(std::string(page.begin() + 84, page.begin() + 92), "200903  ");
        EXPECT_TRUE(module->pageA2.empty());
    }
}

TEST(ModuleTranslation, QsfpPageHasRightChecksums) {
    const auto page = translateModule({ModuleMemory::Sff8636, quadMemory()})->pageA0;
    EXPECT_EQ(page[63], sum(page, 0, 63));
    EXPECT_EQ(page[95], sum(page, 64, 95));
    EXPECT_NE(page[63], 0);
    EXPECT_NE(page[95], 0);
}

TEST(ModuleTranslation, WrongChecksumsStayWrong) {
    auto memory = quadMemory();
    ++memory[191];
    ++memory[223];
    const auto page = translateModule({ModuleMemory::Sff8636, memory})->pageA0;
    EXPECT_NE(page[63], sum(page, 0, 63));
    EXPECT_NE(page[95], sum(page, 64, 95));
}

optics::Module decode(const Attribute<Transceiver>& module) {
    return optics::decodeSff8472(module->pageA0, module->pageA2);
}

TEST(ModuleTranslation, QsfpShowsTheWorstOfItsLanes) {
    auto memory = optics::tests::qsfp28Memory();
    optics::tests::put(memory, 38, {0x03, 0xE8}); // lane 3 receives 0.1 mW: a warning
    optics::tests::put(memory, 3, {0x08});        // lane 4 says that it gets no light
    optics::tests::put(memory, 14, {0x04});       // lane 4 sends too little: an alarm
    const auto module = decode(translateModule({ModuleMemory::Sff8636, memory}));
    EXPECT_TRUE(module.findings.empty());
    EXPECT_EQ(module.identity.formFactor, "QSFP28");
    EXPECT_EQ(module.identity.standard, "100GBASE-SR4 or 25GBASE-SR");
    EXPECT_EQ(module.identity.wavelengthNanometres, 850);
    EXPECT_EQ(module.identity.bitRateMegabaud, 25750U);
    EXPECT_EQ(module.receivePowerKind, optics::ReceivePowerKind::Average);
    EXPECT_DOUBLE_EQ(module.temperatureCelsius.reading.value(), 40.25);
    EXPECT_NEAR(module.supplyVolts.thresholds.value().lowAlarm, 2.97, 1e-9);
    const auto& lane = module.lanes[0];
    EXPECT_NEAR(lane.receivePowerMilliwatts.reading.value(), 0.1, 1e-9);
    EXPECT_EQ(optics::levelOf(lane.receivePowerMilliwatts), optics::Level::LowWarning);
    EXPECT_NEAR(lane.receivePowerMilliwatts.thresholds.value().highAlarm, 2.16, 1e-9);
    EXPECT_NEAR(lane.biasMilliamperes.reading.value(), 7.3, 1e-9);
    EXPECT_EQ(lane.receiveLoss, true);
    EXPECT_EQ(lane.transmitFault, false);
    EXPECT_TRUE(lane.transmitPowerMilliwatts.flags.value().lowAlarm);
}

TEST(ModuleTranslation, CmisShowsTheWorstOfItsLanes) {
    auto memory = optics::tests::qsfpDdMemory();
    optics::tests::put(memory, 384 + 200, {0x00, 0x0A}); // lane 8 receives 0.001 mW
    const auto translated = translateModule({ModuleMemory::Cmis, memory});
    ASSERT_TRUE(translated);
    EXPECT_EQ(serialIdText(translated->pageA0, 20), "EXAMPLE OPTICS");
    EXPECT_EQ(serialIdText(translated->pageA0, 40), "EX-QDD-SR8");
    EXPECT_EQ(serialIdText(translated->pageA0, 68), "EXD0000031");
    const auto module = decode(translated);
    EXPECT_TRUE(module.findings.empty());
    EXPECT_EQ(module.identity.formFactor, "QSFP-DD");
    EXPECT_EQ(module.identity.connector, "MPO 2x16");
    EXPECT_EQ(module.identity.wavelengthNanometres, 850);
    EXPECT_DOUBLE_EQ(module.temperatureCelsius.reading.value(), 50.5);
    EXPECT_NEAR(module.lanes[0].receivePowerMilliwatts.reading.value(), 0.001, 1e-9);
    EXPECT_NEAR(module.lanes[0].biasMilliamperes.reading.value(), 8, 1e-9);
}

TEST(ModuleTranslation, CmisMemoryThatADriverCallsQsfpHasNoLanes) {
    const auto module = decode(translateModule({ModuleMemory::Sff8636, optics::tests::qsfpDdMemory()}));
    EXPECT_EQ(module.identity.serialNumber.view(), "EXD0000031");
    EXPECT_DOUBLE_EQ(module.temperatureCelsius.reading.value(), 50.5);
    EXPECT_FALSE(module.lanes[0].receivePowerMilliwatts.reading);
}

TEST(ModuleTranslation, CopperCableShowsNoWavelengthAndNoDiagnostics) {
    auto memory = optics::tests::qsfp28Memory();
    memory[147] = 0xA0;
    memory[191] = sum(memory, 128, 191);
    const auto translated = translateModule({ModuleMemory::Sff8636, memory});
    const auto module = decode(translated);
    EXPECT_TRUE(module.identity.copper);
    EXPECT_FALSE(module.identity.wavelengthNanometres);
    EXPECT_TRUE(module.findings.has(optics::Finding::NoDiagnostics));
    EXPECT_TRUE(translated->pageA2.empty());
}

TEST(ModuleTranslation, ShortMemoryTellsHowMuchIsMissing) {
    EXPECT_EQ(translateModule({ModuleMemory::Sff8472, Bytes(95)}).absence().reason,
              "module memory of 95 bytes, 96 needed");
    EXPECT_EQ(translateModule({ModuleMemory::Sff8636, Bytes(128)}).absence().reason,
              "module memory of 128 bytes, 224 needed");
    EXPECT_FALSE(translateModule({ModuleMemory::Sff8472, {}}));
}

TEST(ModuleTranslation, EmptyCageIsNoModule) {
    EXPECT_FALSE(translateModule({ModuleMemory::Sff8472, Bytes(512, 0xFF)}));
}

TEST(ModuleTranslation, UnknownKindIsNoModule) { EXPECT_FALSE(translateModule({5, Bytes(512)})); }

TEST(ModuleTranslation, TextOutOfTheMemoryIsEmpty) { EXPECT_EQ(serialIdText(Bytes(10), 20), ""); }

} // namespace
} // namespace tavik::host
