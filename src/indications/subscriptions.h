// The gate of all indications: open while somebody subscribes, as far as the server's filter operations tell.
#pragma once

#include <atomic>
#include <cstdint>

namespace merolt {

/// Indications are built only while this is set.
extern std::atomic<bool> gIndicationsEnabled;
/// Active filters as counted; a surplus deactivation makes it negative.
extern std::atomic<std::int32_t> gSubscriptionCount;

/// Counts a filter in and opens the gate.
void countActivatedFilter();
/// Counts a filter out; the gate closes if it was the last one.
void countDeactivatedFilter();

} // namespace merolt
