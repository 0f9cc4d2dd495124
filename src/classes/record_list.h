// Storage of the class lists: one block of records behind a global count and pointer, built by walking the library's
// tree twice, first to count and then to fill.
#pragma once

#include "inventory/tree_walk.h"

#include <cstdint>

namespace merolt {

/// Makes `records` empty records; a null pointer and the count 0 for none.
template <class Record>
void allocateRecords(std::int32_t& count, Record*& list, std::int32_t records) {
    count = records;
    list = records > 0 ? new Record[static_cast<std::size_t>(records)]() : nullptr;
}

template <class Record>
void freeRecords(std::int32_t& count, Record*& list) {
    count = 0;
    delete[] list;
    list = nullptr;
}

/// One record per storage function, in the order of the tree. Without a tree the list stays as it was.
/// @param create fills the record at the index from the device.
template <class Record>
void buildPerStorageFunction(std::int32_t& count, Record*& list,
                             void (*create)(TAVIK_DeviceRecord* device, int index)) {
    TAVIK_AdapterList* adapters = TAVIK_GetAdapterList();
    if (!adapters) return;
    std::int32_t functions = 0;
    forEachStorageFunction(adapters, [&](TAVIK_DeviceRecord*) { ++functions; });
    allocateRecords(count, list, functions);
    int index = 0;
    forEachStorageFunction(adapters, [&](TAVIK_DeviceRecord* device) { create(device, index++); });
}

} // namespace merolt
