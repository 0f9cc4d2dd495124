// What is published of the adapters, as metrics.
#pragma once

#include "cimhost/metrics/counter_memory.h"
#include "cimhost/metrics/kept_links.h"
#include "cimhost/metrics/readings.h"
#include "cimhost/monitoring/snapshot.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace cimhost::metrics {

/// A counter of Merolt_FCHBA_FCPortStatistics that adapters keep. All others of the class always read 0.
struct CounterRow {
    const char* property;
    const char* metric; ///< without "_total"
    const char* help;
    std::uint64_t unit; ///< what one of it stands for
};
constexpr std::size_t counterCount = 9;
extern const std::array<CounterRow, counterCount> counterRows;

/// The counters of one port, in the order of the rows.
struct PortStatistics {
    std::string portName;
    std::vector<std::uint64_t> values;
};

/// What one look found. Two objects that would have the same labels are one, the first.
struct Found {
    monitoring::Snapshot snapshot;
    std::vector<PortStatistics> statistics; ///< as they are to be told; what has no place there is left out
    std::chrono::duration<double> duration; ///< of the look
};

void writeAdapters(Exposition& out, const Found& found);

/// Reads what a provider publishes, one enumeration at a time.
class AdapterReader {
public:
    /// Throws where nothing is answered, and what the enumeration throws. For one thread at a time.
    [[nodiscard]] SharedReading read(const monitoring::Enumerate& enumerate);

private:
    CounterMemory counters;
    KeptLinks links;
};

} // namespace cimhost::metrics
