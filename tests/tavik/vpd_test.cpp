#include "tavik/vpd.h"

#include <numeric>

#include <gtest/gtest.h>

namespace tavik {

namespace {

TEST(Vpd, ABlockHasIdentifierReadOnlySectionAndEnd) {
    const Bytes expected = {0x82, 2, 0, 'M', 'C', 0x90, 9, 0, 'S', 'N', 2, 'A', '1', 'R', 'V', 1};
    const auto block = encodeVpd("MC", {{"SN", "A1"}});
    ASSERT_EQ(block.size(), expected.size() + 2);
    EXPECT_EQ(Bytes(block.begin(), block.end() - 2), expected);
    EXPECT_EQ(block.back(), 0x78);
}

TEST(Vpd, TheChecksumMakesTheSumUpToItZero) {
    const auto block = encodeVpd("Merolt MC1020", {{"PN", "MC1020402-04"}, {"SN", "MC1020R4K00317"}});
    EXPECT_EQ(std::accumulate(block.begin(), block.end() - 1, 0U) % 256, 0U);
}

TEST(Vpd, WritableItemsStandInASectionOfTheirOwn) {
    const auto block = encodeVpd("", {}, {{"YA", "R7"}});
    const Bytes expected = {0x91, 5, 0, 'Y', 'A', 2, 'R', '7', 0x78};
    ASSERT_GE(block.size(), expected.size());
    EXPECT_EQ(Bytes(block.end() - static_cast<std::ptrdiff_t>(expected.size()), block.end()), expected);
}

TEST(Vpd, AnIdentifierLongerThanAByteTellsHasALengthOfTwoBytes) {
    const auto block = encodeVpd(std::string(300, 'x'), {});
    EXPECT_EQ(block[1], 300 - 256);
    EXPECT_EQ(block[2], 1);
}

TEST(Vpd, AValueIsCutWhereItsLengthByteEnds) {
    const auto block = encodeVpd("", {{"V0", std::string(400, 'v')}});
    EXPECT_EQ(block[8], 255);
    EXPECT_EQ(block[9 + 255], 'R');
}

TEST(Vpd, AnEmptyValueHasLengthZero) {
    const auto block = encodeVpd("", {{"PN", ""}});
    EXPECT_EQ(block[8], 0);
    EXPECT_EQ(block[9], 'R');
}

} // namespace

} // namespace tavik
