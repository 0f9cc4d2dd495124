// What lies behind the storage functions: their targets and the targets' logical units, in the order of the tree.
#pragma once

#include "inventory/tree_walk.h"

#include <cstdint>

namespace merolt::storage {

/// Calls the visitor with each storage function and each of its targets, along the chains.
template <class Visitor>
void forEachTarget(TreeWalk& walk, Visitor&& visitor) {
    forEachStorageFunction(walk, [&](TAVIK_DeviceRecord* device) {
        for (TAVIK_TargetEntry& target : walk.targetsOf(*device))
            visitor(*device, target);
    });
}

template <class Visitor>
void forEachTarget(const TAVIK_AdapterList* adapters, Visitor&& visitor) {
    TreeWalk walk(adapters);
    forEachTarget(walk, visitor);
}

/// Calls the visitor with each storage function, target and logical unit, along the chains.
template <class Visitor>
void forEachLun(const TAVIK_AdapterList* adapters, Visitor&& visitor) {
    TreeWalk walk(adapters);
    forEachTarget(walk, [&](TAVIK_DeviceRecord& device, TAVIK_TargetEntry& target) {
        for (TAVIK_LunEntry& lun : walk.unitsOf(target))
            visitor(device, target, lun);
    });
}

/// Room for a list whose size is the sum of the library's count fields. They may tell more entries than the chains
/// have, and the list then has empty records; but what no machine can have is no count.
class RecordSum {
public:
    /// More entries than these that are told and are nowhere: then it is the chains that count.
    static constexpr std::uint64_t mostMissing = 1U << 12;

    explicit RecordSum(ChainKind counted) : kind(counted) {}

    void add(std::uint32_t records) { told += records; }
    void addEntry() { ++entries; }
    std::int32_t capacity() const {
        if (told <= entries + mostMissing) return static_cast<std::int32_t>(told);
        reportWildCount(kind);
        return static_cast<std::int32_t>(entries);
    }

private:
    ChainKind kind;
    std::uint64_t told = 0;
    std::uint64_t entries = 0;
};

} // namespace merolt::storage
