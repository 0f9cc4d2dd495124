// What lies behind the storage functions: their targets and the targets' logical units, in the order of the tree.
#pragma once

#include "inventory/tree_walk.h"

#include <algorithm>
#include <cstdint>

namespace merolt::storage {

/// Calls the visitor with each storage function and each of its targets, along the chains.
template <class Visitor>
void forEachTarget(TAVIK_AdapterList* adapters, Visitor&& visitor) {
    forEachStorageFunction(adapters, [&](TAVIK_DeviceRecord* device) {
        for (TAVIK_TargetEntry* target = device->firstTarget; target; target = target->next)
            visitor(*device, *target);
    });
}

/// Calls the visitor with each storage function, target and logical unit, along the chains.
template <class Visitor>
void forEachLun(TAVIK_AdapterList* adapters, Visitor&& visitor) {
    forEachTarget(adapters, [&](TAVIK_DeviceRecord& device, TAVIK_TargetEntry& target) {
        for (TAVIK_LunEntry* lun = target.firstLun; lun; lun = lun->next)
            visitor(device, target, *lun);
    });
}

/// Sum of the library's count fields, which a broken card may make absurdly large.
class RecordSum {
public:
    /// @param mostRecords what is allocated at the most: more than any fabric shows to one host.
    explicit RecordSum(std::uint64_t mostRecords) : most(mostRecords) {}

    void add(std::uint32_t records) { sum += records; }
    std::int32_t capacity() const { return static_cast<std::int32_t>(std::min(sum, most)); }

private:
    std::uint64_t most;
    std::uint64_t sum = 0;
};

} // namespace merolt::storage
