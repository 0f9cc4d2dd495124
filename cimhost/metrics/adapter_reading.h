// The adapters as metrics: reads what a provider publishes of them.
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

/// A counter of Merolt_FCHBA_FCPortStatistics that adapters keep. All other counters of the class are always 0.
struct CounterRow {
    const char* property;
    const char* metric; ///< without "_total"
    const char* help;
    std::uint64_t unit; ///< the counter is multiplied by this
};
constexpr std::size_t counterCount = 9;
extern const std::array<CounterRow, counterCount> counterRows;

/// The counters of one port, in the order of the rows.
struct PortStatistics {
    std::string portName;
    std::vector<std::uint64_t> values;
};

/// What one reading has found. Of several objects that would have the same labels, the first one counts.
struct Found {
    monitoring::Snapshot snapshot;
    std::vector<PortStatistics> statistics; ///< with wraps added; without ports whose counters are not shown now
    std::chrono::duration<double> duration; ///< of the reading
};

void writeAdapters(Exposition& out, const Found& found);

/// Reads what a provider publishes, one enumeration at a time.
class AdapterReader {
public:
    /// Throws if no question is answered, and what the enumeration throws. Called by one thread at a time.
    [[nodiscard]] SharedReading read(const monitoring::Enumerate& enumerate);

private:
    CounterMemory counters;
    KeptLinks links;
};

} // namespace cimhost::metrics
