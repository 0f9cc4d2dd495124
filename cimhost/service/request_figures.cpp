#include "cimhost/service/request_figures.h"

#include "cimhost/service/cim_failure.h"

#include <algorithm>
#include <iterator>

namespace cimhost {

void DurationHistogram::add(std::chrono::steady_clock::duration duration) noexcept {
    const double seconds = std::chrono::duration<double>(duration).count();
    const auto limit = std::lower_bound(limits.begin(), limits.end(), seconds);
    ++counts[static_cast<std::size_t>(std::distance(limits.begin(), limit))];
    nanoseconds += static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(duration).count());
}

void RequestFigures::answered(std::size_t operation, CMPIrc status,
                              std::chrono::steady_clock::duration duration) noexcept {
    Operation& counted = byOperation[std::min(operation, operations - 1)];
    ++counted.answers[static_cast<std::size_t>(knownStatus(status))];
    counted.durations.add(duration);
}

} // namespace cimhost
