// What a server counts of the requests that it answers, for its metrics. Any thread may count or read at any time.
#pragma once

#include "cmpidt.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>

namespace cimhost {

/// Counts how long something took each time.
class DurationHistogram {
public:
    /// Upper limits of the buckets in seconds; one more bucket has no limit.
    static constexpr std::array<double, 9> limits = {0.001, 0.0025, 0.01, 0.05, 0.25, 1.0, 5.0, 15.0, 60.0};
    static constexpr std::size_t buckets = limits.size() + 1;

    void add(std::chrono::steady_clock::duration duration) noexcept;

    /// How many durations were no longer than the limit of that bucket, and longer than the limit of the one before it.
    [[nodiscard]] std::uint64_t count(std::size_t bucket) const noexcept { return counts[bucket]; }
    [[nodiscard]] double sumSeconds() const noexcept { return static_cast<double>(nanoseconds) / 1e9; }

private:
    std::array<std::atomic<std::uint64_t>, buckets> counts{};
    std::atomic<std::uint64_t> nanoseconds = 0;
};

struct RequestFigures {
    /// Room for the operations of Dispatcher::operationNames(), by their places there, and for the CIM statuses
    /// (DSP0200). Any other status counts as CMPI_RC_ERR_FAILED.
    static constexpr std::size_t operations = 32;
    static constexpr std::size_t statuses = 29;

    struct Operation {
        std::array<std::atomic<std::uint64_t>, statuses> answers{};
        DurationHistogram durations; // from the last byte of the request to the answer, before it is sent
    };

    std::array<Operation, operations> byOperation;
    DurationHistogram waits; // how long requests waited until a thread was free to call the provider
    DurationHistogram calls; // how long calls of the provider took, with its locks and the making of the answer

    void answered(std::size_t operation, CMPIrc status, std::chrono::steady_clock::duration duration) noexcept;
};

} // namespace cimhost
