#include <gtest/gtest.h>

#include "scratch_tree.h"
#include "tavik/host/link_settings.h"

namespace tavik::host::test {
namespace {

using Speeds = std::vector<std::uint64_t>;
using Names = std::vector<std::string>;

/** Words with these bits set. */
std::vector<std::uint32_t> modes(const std::vector<unsigned>& bits) {
    std::vector<std::uint32_t> words(4);
    for (const auto bit : bits)
        words[bit / 32] |= 1U << bit % 32;
    return words;
}

TEST(LinkModes, GiveTheirSpeedsRisingAndEachOnce) {
    // 1000baseT, 10000baseT, 25000baseCR, 40000baseCR4, 100000baseCR4 and 100000baseSR2.
    EXPECT_EQ(speedsOf(modes({38, 5, 12, 31, 24, 58})),
              (Speeds{1'000'000'000, 10'000'000'000, 25'000'000'000, 40'000'000'000, 100'000'000'000}));
    EXPECT_EQ(speedsOf(modes({48})), Speeds{5'000'000'000});
    EXPECT_EQ(speedsOf(modes({69})), Speeds{400'000'000'000});
    EXPECT_EQ(speedsOf(modes({97})), Speeds{800'000'000'000});
}

TEST(LinkModes, ThatAreNoSpeedsOrNotKnownGiveNone) {
    // Autonegotiation, twisted pair, fibre, pause, backplane, the bits of forward error correction, and later ones.
    EXPECT_EQ(speedsOf(modes({6, 7, 10, 13, 14, 16, 49, 50, 51, 74, 121, 127})), Speeds());
    EXPECT_EQ(speedsOf({}), Speeds());
    EXPECT_EQ(speedsOf({0x20}), Speeds{1'000'000'000});
}

TEST(LinkSettings, NameDuplexAndForwardErrorCorrection) {
    EXPECT_EQ(duplexName(0).valueOr("-"), "half");
    EXPECT_EQ(duplexName(1).valueOr("-"), "full");
    EXPECT_FALSE(duplexName(255));
    EXPECT_EQ(fecNames(8), Names{"RS"});
    EXPECT_EQ(fecNames(0x3F), (Names{"None", "Auto", "Off", "RS", "BaseR", "LLRS"}));
    EXPECT_EQ(fecNames(0xFFFFFFC0), Names());
}

TEST(LinkSettings, ComeBackFromARecording) {
    ScratchTree scratch;
    const auto folder = std::string("kernel/net/ens1f0/");
    scratch.file(folder + "link_settings", "1 1 00000020 00000040\n");
    scratch.file(folder + "pause", "0 1 1\n");
    scratch.file(folder + "fec", "8 10\n");
    const auto original = scratch.queries();
    EXPECT_EQ(*original->linkSettings("ens1f0"), (LinkSettings{true, 1, {0x20, 0x40}}));
    EXPECT_EQ(*original->pauseSettings("ens1f0"), (PauseSettings{false, true, true}));
    EXPECT_EQ(*original->fecSettings("ens1f0"), (FecSettings{8, 10}));

    ScratchTree other;
    ASSERT_EQ(recordQueries(*original, {"ens1f0"}, other.root().string()), "");
    const auto copy = other.queries();
    EXPECT_EQ(copy->linkSettings("ens1f0"), original->linkSettings("ens1f0"));
    EXPECT_EQ(copy->pauseSettings("ens1f0"), original->pauseSettings("ens1f0"));
    EXPECT_EQ(copy->fecSettings("ens1f0"), original->fecSettings("ens1f0"));
}

TEST(LinkSettings, OfABrokenRecordingAreAbsent) {
    for (const auto* line : {"", "1", "2 1", "1 256", "1 x", "1 1 123456789", "1 1 zz", "-1 1", "1 1 0x20"})
        EXPECT_FALSE(parseLinkSettings(line)) << line;
    std::string tooLong = "1 1";
    for (std::size_t word = 0; word <= mostLinkModeWords; ++word)
        tooLong += " 1";
    EXPECT_FALSE(parseLinkSettings(tooLong));
    for (const auto* line : {"", "1 1", "1 1 2", "1 1 1 1", "a b c"})
        EXPECT_FALSE(parsePauseSettings(line)) << line;
    for (const auto* line : {"", "8", "8 10 1", "8 ten"})
        EXPECT_FALSE(parseFecSettings(line)) << line;
}

} // namespace
} // namespace tavik::host::test
