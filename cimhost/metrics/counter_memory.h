// Makes counters of 64 bits of those that adapters keep in 32.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace cimhost::metrics {

class CounterMemory {
public:
    /// What a port's counters are now, wraps added, where they read as given. Of a port only ever the same counters, in
    /// the same order. One counter that falls from the last quarter of 32 bits to the first has wrapped; if others fall
    /// too, or it falls otherwise, they began anew, which Prometheus understands. Nothing is returned where all read 0
    /// and did not before: so they read when the adapter could not be asked, and what fell would rise again as if so
    /// much had happened.
    std::optional<std::vector<std::uint64_t>> take(const std::string& port, const std::vector<std::uint64_t>& values);

private:
    struct Counter {
        std::uint64_t last = 0;
        std::uint64_t wrapped = 0; // to be added
    };
    using Counters = std::vector<Counter>;

    static void addWraps(Counters& counters, const std::vector<std::uint64_t>& values);

    std::map<std::string, Counters> ports;
};

} // namespace cimhost::metrics
