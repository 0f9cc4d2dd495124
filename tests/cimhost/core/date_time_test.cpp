#include "cimhost/model/date_time.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

using namespace cimhost;

namespace {

constexpr std::uint64_t second = 1000000;
constexpr std::uint64_t day = 86400 * second;

std::string format(std::uint64_t microseconds, bool isInterval) {
    std::string text(dateTimeTextLength, '?');
    return formatDateTime({microseconds, isInterval}, text.data()) ? text : "none";
}

} // namespace

TEST(DateTime, PointsInTimeAreCountedFrom1970InUtc) {
    struct Row {
        const char* text;
        std::uint64_t microseconds;
    };
    const Row rows[] = {
        {"19700101000000.000000+000", 0},
        {"19700101000000.000001+000", 1},
        {"19700101010000.000000+060", 0},
        {"19691231230000.000000-060", 0},
        {"20000229000000.000000+000", 11016 * day},
        {"20010909014640.000000+000", 1000000000 * second},
        {"20260131120000.123456+060", 1769857200 * second + 123456},
    };
    for (const Row& row : rows) {
        const auto value = parseDateTime(row.text);
        ASSERT_TRUE(value) << row.text;
        EXPECT_EQ(value->microseconds, row.microseconds) << row.text;
        EXPECT_FALSE(value->isInterval);
    }
}

TEST(DateTime, ATimeBefore1970CountsAs1970) {
    EXPECT_EQ(parseDateTime("19691231235959.999999+000")->microseconds, 0U);
    EXPECT_EQ(parseDateTime("00010101000000.000000+000")->microseconds, 0U);
}

TEST(DateTime, IntervalsAreTheirLength) {
    const auto value = parseDateTime("00000002030405.000006:000");
    ASSERT_TRUE(value);
    EXPECT_TRUE(value->isInterval);
    EXPECT_EQ(value->microseconds, 2 * day + (3 * 3600 + 4 * 60 + 5) * second + 6);
    EXPECT_EQ(parseDateTime("99999999235959.999999:000")->microseconds, 100000000 * day - 1);
}

TEST(DateTime, UnknownDigitsCountAsTheLeastPossible) {
    EXPECT_EQ(parseDateTime("20000229******.******+000")->microseconds, 11016 * day);
    EXPECT_EQ(parseDateTime("2000**********.******+000")->microseconds, 10957 * day);
    EXPECT_EQ(parseDateTime("00000001******.******:000")->microseconds, day);
}

TEST(DateTime, IllegalTextsAreRefused) {
    for (const char* text : {
             "",
             "20260131120000.000000+00",   // a character short
             "20260131120000.000000+0000", // one too many
             "20260131120000,000000+000",  // no point
             "20260131120000.000000*000",  // no sign
             "20260131120000.000000+0*0",  // the offset must be known
             "20260131120000.000000+0x0",
             "20261301120000.000000+000", // month 13
             "20260001120000.000000+000", // month 0
             "20260230120000.000000+000", // 30 February
             "20010229120000.000000+000", // no leap year
             "20260131240000.000000+000",
             "20260131126000.000000+000",
             "20260131120060.000000+000",
             "2026013112000x.000000+000",
             "2026**31120000.000000+000", // known behind unknown
             "00000001000000.000000:001", // an interval has no offset
             "00000001250000.000000:000",
         }) {
        EXPECT_FALSE(parseDateTime(text)) << text;
    }
}

TEST(DateTime, FormattedPointsInTimeAreReadAsTheyWere) {
    for (const std::uint64_t microseconds : {std::uint64_t{0}, std::uint64_t{1}, 951782400 * second,
                                             1709164799 * second + 999999, 253402300799 * second}) {
        const std::string text = format(microseconds, false);
        const auto value = parseDateTime(text);
        ASSERT_TRUE(value) << text;
        EXPECT_EQ(value->microseconds, microseconds) << text;
    }
    EXPECT_EQ(format(951782400 * second, false), "20000229000000.000000+000");
    EXPECT_EQ(format(253402300799 * second, false), "99991231235959.000000+000");
}

TEST(DateTime, FormattedIntervalsAreReadAsTheyWere) {
    EXPECT_EQ(format(2 * day + 6, true), "00000002000000.000006:000");
    EXPECT_EQ(format(100000000 * day - 1, true), "99999999235959.999999:000");
}

TEST(DateTime, TimesBeyondTheTextFormatAreRefused) {
    EXPECT_EQ(format(253402300800 * second, false), "none");
    EXPECT_EQ(format(100000000 * day, true), "none");
    EXPECT_EQ(format(std::numeric_limits<std::uint64_t>::max(), false), "none");
    EXPECT_EQ(format(std::numeric_limits<std::uint64_t>::max(), true), "none");
}
