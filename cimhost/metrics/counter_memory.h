// Makes counters of 64 bits from those of adapters, which have 32 bits.
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
    /// The counters of a port with their wraps added.
    ///
    /// If one counter falls from the last quarter of the 32 bits to the first, it has wrapped. If it falls otherwise,
    /// or several counters fall, they began anew; Prometheus understands that. If all counters are 0 and were not
    /// before, the adapter could probably not be read, and nothing is returned: the counters would fall, and then rise
    /// again as if so much had happened.
    /// @param values the port's counters as they were read; of a port always the same ones, in the same order
    std::optional<std::vector<std::uint64_t>> take(const std::string& port, const std::vector<std::uint64_t>& values);

private:
    struct Counter {
        std::uint64_t last = 0;
        std::uint64_t wrapped = 0; // what its wraps add to it
    };
    using Counters = std::vector<Counter>;

    static void addWraps(Counters& counters, const std::vector<std::uint64_t>& values);

    std::map<std::string, Counters> ports;
};

} // namespace cimhost::metrics
