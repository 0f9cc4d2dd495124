#include "tavik/host/pci_vpd.h"

#include <gtest/gtest.h>

#include "tavik/vpd.h"

namespace tavik::host {
namespace {

Bytes block() {
    return encodeVpd("Dual Port Adapter", {{"PN", "G71345-006"}, {"SN", "A0369F"}, {"V1", ""}}, {{"Y1", "Rack 7"}});
}

TEST(PciVpd, ItemsComeFromBothSections) {
    const auto vpd = parsePciVpd(block());
    ASSERT_TRUE(vpd);
    EXPECT_EQ(vpd->productIdentifier, "Dual Port Adapter");
    EXPECT_EQ(vpd->readOnly, (std::vector<VpdItem>{{"PN", "G71345-006"}, {"SN", "A0369F"}, {"V1", ""}}));
    EXPECT_EQ(vpd->writable, (std::vector<VpdItem>{{"Y1", "Rack 7"}}));
    EXPECT_EQ(vpd->find("SN"), "A0369F");
    EXPECT_EQ(vpd->find("Y1"), "Rack 7");
    EXPECT_EQ(vpd->find("V1"), "");
    EXPECT_EQ(vpd->find("EC"), "");
}

TEST(PciVpd, BytesBehindTheEndTagAreNotRead) {
    auto bytes = block();
    const auto more = encodeVpd("Another", {{"SN", "OTHER"}});
    bytes.insert(bytes.end(), more.begin(), more.end());
    EXPECT_EQ(parsePciVpd(bytes)->find("SN"), "A0369F");
}

TEST(PciVpd, WrongChecksumTakesTheBlockAway) {
    auto bytes = block();
    bytes[5] ^= 1;
    EXPECT_EQ(parsePciVpd(bytes).absence().reason, "wrong checksum");
}

TEST(PciVpd, BlockWithoutChecksumIsRead) {
    const Bytes bytes = {0x82, 2, 0, 'O', 'K', 0x90, 5, 0, 'S', 'N', 2, '4', '2', 0x78};
    EXPECT_EQ(parsePciVpd(bytes)->find("SN"), "42");
}

TEST(PciVpd, ABlockCutAnywhereGivesItsWholeItemsOrNone) {
    const auto whole = block();
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const auto vpd = parsePciVpd(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
        // The product identifier is 3 + 17 bytes long.
        ASSERT_EQ(vpd.present(), size >= 20) << size;
        if (!vpd) continue;
        EXPECT_EQ(vpd->productIdentifier, "Dual Port Adapter");
    }
}

TEST(PciVpd, ItemThatReachesOverItsSectionIsLeftOut) {
    const Bytes bytes = {0x90, 10, 0, 'P', 'N', 2, '4', '2', 'S', 'N', 200, 'x', 'y', 0x78};
    const auto vpd = parsePciVpd(bytes);
    EXPECT_EQ(vpd->find("PN"), "42");
    EXPECT_EQ(vpd->find("SN"), "");
}

TEST(PciVpd, UnknownResourcesArePassedOver) {
    Bytes bytes = {0x85, 1, 0, 'x', 0x31, 'y'};
    const auto rest = block();
    bytes.insert(bytes.end(), rest.begin(), rest.end());
    // The checksum covers everything in front of it, so what was put there must not change the sum.
    bytes[3] = static_cast<std::uint8_t>(0U - (0x85U + 1U + 0x31U + 'y'));
    EXPECT_EQ(parsePciVpd(bytes)->find("SN"), "A0369F");
}

TEST(PciVpd, BytesThatAreNoTextBecomeQuestionMarksAndPaddingGoes) {
    const Bytes bytes = {0x90, 9, 0, 'S', 'N', 6, ' ', 'A', 7, 'B', ' ', 0, 0x78};
    EXPECT_EQ(parsePciVpd(bytes)->find("SN"), "A?B");
}

TEST(PciVpd, EmptyMemoryHasNone) {
    EXPECT_FALSE(parsePciVpd({}));
    EXPECT_FALSE(parsePciVpd(Bytes(1024, 0)));
    EXPECT_FALSE(parsePciVpd(Bytes(1024, 0xFF)));
    EXPECT_FALSE(parsePciVpd({0x78}));
}

TEST(PciVpd, NumberOfItemsIsBounded) {
    Bytes bytes = {0x90, 0x00, 0x60};
    for (int i = 0; i < 0x6000 / 3; ++i)
        bytes.insert(bytes.end(), {'V', '0', 0});
    EXPECT_EQ(parsePciVpd(bytes)->readOnly.size(), mostVpdItems);
}

} // namespace
} // namespace tavik::host
