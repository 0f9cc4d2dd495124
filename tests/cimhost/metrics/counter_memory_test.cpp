// Counters of 32 bits as a scrape is told them.
#include "cimhost/metrics/counter_memory.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <vector>

namespace cimhost::metrics {
namespace {

using Values = std::vector<std::uint64_t>;

constexpr std::uint64_t range = std::uint64_t{1} << 32;

TEST(CounterMemory, GoesOnWhereACounterWraps) {
    CounterMemory memory;
    EXPECT_EQ(memory.take("p", {range - 5, 10}), (Values{range - 5, 10}));
    EXPECT_EQ(memory.take("p", {3, 11}), (Values{range + 3, 11}));
    EXPECT_EQ(memory.take("p", {range - 1, 11}), (Values{2 * range - 1, 11}));
    EXPECT_EQ(memory.take("p", {0, 12}), (Values{2 * range, 12}));
}

TEST(CounterMemory, BeginsAnewWhereAllFall) {
    CounterMemory memory;
    memory.take("p", {range - 5, 10});
    memory.take("p", {3, 11});
    EXPECT_EQ(memory.take("p", {2, 1}), (Values{2, 1}));
    EXPECT_EQ(memory.take("p", {3, 1}), (Values{3, 1}));
}

TEST(CounterMemory, BeginsAnewWhereACounterFallsThatCannotHaveWrapped) {
    CounterMemory memory;
    memory.take("p", {1000, 10});
    EXPECT_EQ(memory.take("p", {5, 10}), (Values{5, 10}));
}

TEST(CounterMemory, TellsNothingWhereAnAdapterCouldNotBeAsked) {
    CounterMemory memory;
    EXPECT_EQ(memory.take("p", {0, 0}), (Values{0, 0}));
    EXPECT_EQ(memory.take("p", {7, 8}), (Values{7, 8}));
    EXPECT_EQ(memory.take("p", {0, 0}), std::nullopt);
    EXPECT_EQ(memory.take("p", {9, 8}), (Values{9, 8}));
}

TEST(CounterMemory, KeepsPortsApart) {
    CounterMemory memory;
    memory.take("p", {range - 1});
    memory.take("q", {5});
    EXPECT_EQ(memory.take("q", {6}), Values{6});
    EXPECT_EQ(memory.take("p", {1}), Values{range + 1});
}

} // namespace
} // namespace cimhost::metrics
