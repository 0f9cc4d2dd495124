#include "tavik/host/module_translation.h"

#include <numeric>

#include <gtest/gtest.h>

#include "tavik/transceiver.h"

namespace tavik::host {
namespace {

void put(Bytes& memory, std::size_t at, const std::string& text) {
    std::copy(text.begin(), text.end(), memory.begin() + static_cast<std::ptrdiff_t>(at));
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
    return memory;
}

std::uint8_t sum(const Bytes& page, int first, int last) {
    return static_cast<std::uint8_t>(std::accumulate(page.begin() + first, page.begin() + last, 0U));
}

TEST(ModuleTranslation, sfpPassesOnAsItIs) {
    const auto module =
        makeTransceiver({.vendor = "ACME", .partNumber = "P", .revision = {}, .serialNumber = "S", .dateCode = {}});
    Bytes memory = module.pageA0;
    memory.insert(memory.end(), module.pageA2.begin(), module.pageA2.end());
    EXPECT_EQ(*translateModule({ModuleMemory::Sff8472, memory}), module);
}

TEST(ModuleTranslation, sfpWithoutDiagnosticsHasNoSecondPage) {
    const auto module = translateModule({ModuleMemory::Sff8079, Bytes(256, 1)});
    EXPECT_EQ(module->pageA0.size(), 256U);
    EXPECT_TRUE(module->pageA2.empty());
}

TEST(ModuleTranslation, longMemoryIsCutBehindTheSecondPage) {
    const auto module = translateModule({ModuleMemory::Sff8472, Bytes(640, 1)});
    EXPECT_EQ(module->pageA0.size(), 256U);
    EXPECT_EQ(module->pageA2.size(), 256U);
}

TEST(ModuleTranslation, qsfpShowsItsIdentityWhereAnSfpHasIt) {
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

TEST(ModuleTranslation, qsfpPageHasRightChecksums) {
    const auto page = translateModule({ModuleMemory::Sff8636, quadMemory()})->pageA0;
    EXPECT_EQ(page[63], sum(page, 0, 63));
    EXPECT_EQ(page[95], sum(page, 64, 95));
    EXPECT_NE(page[63], 0);
    EXPECT_NE(page[95], 0);
}

TEST(ModuleTranslation, shortMemoryTellsHowMuchIsMissing) {
    EXPECT_EQ(translateModule({ModuleMemory::Sff8472, Bytes(95)}).absence().reason,
              "module memory of 95 bytes, 96 needed");
    EXPECT_EQ(translateModule({ModuleMemory::Sff8636, Bytes(128)}).absence().reason,
              "module memory of 128 bytes, 224 needed");
    EXPECT_FALSE(translateModule({ModuleMemory::Sff8472, {}}));
}

TEST(ModuleTranslation, emptyCageIsNoModule) {
    EXPECT_FALSE(translateModule({ModuleMemory::Sff8472, Bytes(512, 0xFF)}));
}

TEST(ModuleTranslation, unknownKindIsNoModule) { EXPECT_FALSE(translateModule({5, Bytes(512)})); }

TEST(ModuleTranslation, textOutOfTheMemoryIsEmpty) { EXPECT_EQ(serialIdText(Bytes(10), 20), ""); }

} // namespace
} // namespace tavik::host
