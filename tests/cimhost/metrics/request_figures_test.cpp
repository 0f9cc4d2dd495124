// What is counted of requests.
#include "cimhost/service/request_figures.h"

#include "cimhost/service/cim_failure.h"
#include "cimhost/service/dispatcher.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace cimhost {
namespace {

using namespace std::chrono_literals;

TEST(DurationHistogram, PutsADurationIntoTheFirstBucketThatHoldsIt) {
    DurationHistogram histogram;
    histogram.add(1ms);
    histogram.add(1001us);
    histogram.add(2min);
    EXPECT_EQ(histogram.count(0), 1U);
    EXPECT_EQ(histogram.count(1), 1U);
    EXPECT_EQ(histogram.count(DurationHistogram::buckets - 1), 1U);
    EXPECT_DOUBLE_EQ(histogram.sumSeconds(), 120.002001);
}

TEST(RequestFigures, HaveRoomForEveryOperation) {
    EXPECT_LE(Dispatcher::operationNames().size(), RequestFigures::operations);
}

TEST(RequestFigures, HaveRoomAndANameForEveryStatus) {
    for (int code = 1; code < 256; ++code) {
        const CMPIrc known = knownStatus(static_cast<CMPIrc>(code));
        EXPECT_LT(static_cast<std::size_t>(known), RequestFigures::statuses);
        EXPECT_TRUE(static_cast<int>(known) == code || known == CMPI_RC_ERR_FAILED) << code;
        EXPECT_EQ(statusName(static_cast<CMPIrc>(code)), statusName(known));
    }
    EXPECT_EQ(statusName(static_cast<CMPIrc>(21)), "CIM_ERR_INVALID_ENUMERATION_CONTEXT");
    EXPECT_EQ(statusName(static_cast<CMPIrc>(27)), "CIM_ERR_SERVER_LIMITS_EXCEEDED");
    EXPECT_EQ(knownStatus(CMPI_RC_NO_MORE_ELEMENTS), CMPI_RC_ERR_FAILED);
}

TEST(RequestFigures, CountAStatusThatCimDoesNotHaveAsAFailure) {
    RequestFigures figures;
    figures.answered(2, static_cast<CMPIrc>(200), 1ms);
    figures.answered(2, CMPI_RC_ERR_NOT_FOUND, 1ms);
    EXPECT_EQ(figures.byOperation[2].answers[CMPI_RC_ERR_FAILED], 1U);
    EXPECT_EQ(figures.byOperation[2].answers[CMPI_RC_ERR_NOT_FOUND], 1U);
    EXPECT_EQ(figures.byOperation[2].durations.count(0), 2U);
}

} // namespace
} // namespace cimhost
