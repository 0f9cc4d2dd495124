#include "indications/subscriptions.h"

#include "log/log.h"

namespace merolt {

std::atomic<bool> gIndicationsEnabled{false};
std::atomic<std::int32_t> gSubscriptionCount{0};

void countActivatedFilter() {
    const std::int32_t count = ++gSubscriptionCount;
    gIndicationsEnabled = true;
    DEBUG_LOG("Number of subscriptions is: %d\n", count);
}

void countDeactivatedFilter() {
    const std::int32_t before = gSubscriptionCount--;
    DEBUG_LOG("Number of subscriptions still available is: %d\n", before);
    if (before == 1) gIndicationsEnabled = false;
}

} // namespace merolt
