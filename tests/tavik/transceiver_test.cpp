#include "tavik/transceiver.h"

#include <limits>
#include <numeric>

#include <gtest/gtest.h>

namespace tavik {

namespace {

std::string textOf(const Bytes& page, std::size_t first, std::size_t last) {
    return {page.begin() + static_cast<std::ptrdiff_t>(first), page.begin() + static_cast<std::ptrdiff_t>(last) + 1};
}

/** The sum that the layout wants in the byte behind the span. */
std::uint8_t sumOf(const Bytes& page, std::size_t first, std::size_t last) {
    return static_cast<std::uint8_t>(std::accumulate(page.begin() + static_cast<std::ptrdiff_t>(first),
                                                     page.begin() + static_cast<std::ptrdiff_t>(last) + 1, 0U));
}

int wordAt(const Bytes& page, std::size_t offset) { return page[offset] << 8 | page[offset + 1]; }

TransceiverIdentity identity() { return {"Merolt", "MSFP-10G-SR", "B2", "MSR12340071", "120611", {2, 0x4D, 0x10}}; }

TEST(TransceiverIdentityPage, TextsStandPaddedWithBlanks) {
    const auto page = encodeTransceiverIdentity(identity());
    ASSERT_EQ(page.size(), 256U);
    EXPECT_EQ(textOf(page, 20, 35), "Merolt          ");
    EXPECT_EQ(textOf(page, 40, 55), "MSFP-10G-SR     ");
    EXPECT_EQ(textOf(page, 56, 59), "B2  ");
    EXPECT_EQ(textOf(page, 68, 83), "MSR12340071     ");
    EXPECT_EQ(textOf(page, 84, 91), "120611  ");
}

TEST(TransceiverIdentityPage, ATextOfFullWidthHasNoPadding) {
    auto full = identity();
    full.vendor = "SIXTEEN LETTERS!";
    EXPECT_EQ(textOf(encodeTransceiverIdentity(full), 20, 35), "SIXTEEN LETTERS!");
    full.vendor += " and more";
    EXPECT_EQ(textOf(encodeTransceiverIdentity(full), 20, 35), "SIXTEEN LETTERS!");
}

TEST(TransceiverIdentityPage, CodesAndRatesStandAtTheirPlaces) {
    const auto page = encodeTransceiverIdentity(identity());
    EXPECT_EQ(page[0], 3);
    EXPECT_EQ(page[2], 7);
    EXPECT_EQ(page[3], 0x10);
    EXPECT_EQ(page[12], 103);
    EXPECT_EQ((Bytes{page[37], page[38], page[39]}), (Bytes{2, 0x4D, 0x10}));
    EXPECT_EQ(wordAt(page, 60), 850);
}

TEST(TransceiverIdentityPage, BothChecksumsAreRight) {
    const auto page = encodeTransceiverIdentity(identity());
    EXPECT_EQ(page[63], sumOf(page, 0, 62));
    EXPECT_EQ(page[95], sumOf(page, 64, 94));
    EXPECT_NE(page[63], 0);
    EXPECT_NE(page[95], 0);
}

TEST(TransceiverReadingsPage, ReadingsStandInTheirUnits) {
    const auto page = encodeTransceiverReadings({41.5, 3.31, 6.2, 0.58, 0.49});
    ASSERT_EQ(page.size(), 256U);
    EXPECT_EQ(wordAt(page, 96), 41 * 256 + 128);
    EXPECT_EQ(wordAt(page, 98), 33100);
    EXPECT_EQ(wordAt(page, 100), 3100);
    EXPECT_EQ(wordAt(page, 102), 5800);
    EXPECT_EQ(wordAt(page, 104), 4900);
}

TEST(TransceiverReadingsPage, ATemperatureBelowZeroIsATwosComplement) {
    EXPECT_EQ(wordAt(encodeTransceiverReadings({-1.5, 3.3, 6, 0.6, 0.5}), 96), 0xFE80);
}

TEST(TransceiverReadingsPage, ReadingsBeyondTheFieldStayAtItsLimits) {
    const double endless = std::numeric_limits<double>::infinity();
    const auto page = encodeTransceiverReadings({1e9, endless, -endless, std::numeric_limits<double>::quiet_NaN(), -1});
    EXPECT_EQ(wordAt(page, 96), 0x7FFF);
    EXPECT_EQ(wordAt(page, 98), 0xFFFF);
    EXPECT_EQ(wordAt(page, 100), 0);
    EXPECT_EQ(wordAt(page, 102), 0);
    EXPECT_EQ(wordAt(page, 104), 0);
}

TEST(TransceiverReadingsPage, ThresholdsAreOrderedAndTheChecksumIsRight) {
    const auto page = encodeTransceiverReadings({});
    EXPECT_EQ(page[95], sumOf(page, 0, 94));
    for (const std::size_t quantity : {8U, 16U, 24U, 32U}) {
        EXPECT_GT(wordAt(page, quantity), wordAt(page, quantity + 4)) << "alarm above warning at " << quantity;
        EXPECT_GT(wordAt(page, quantity + 4), wordAt(page, quantity + 6)) << "warnings at " << quantity;
        EXPECT_GT(wordAt(page, quantity + 6), wordAt(page, quantity + 2)) << "warning above alarm at " << quantity;
    }
}

} // namespace

} // namespace tavik
