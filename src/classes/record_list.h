// Storage of the class lists: one block of records behind a global count and pointer, built by walking the library's
// tree twice, first to count and then to fill.
#pragma once

#include "inventory/tree_walk.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace merolt {

/// Makes `records` empty records; a null pointer and the count 0 for none.
template <class Record>
void allocateRecords(std::int32_t& count, Record*& list, std::int32_t records) {
    // In this order: where memory is short there is no count without records.
    list = records > 0 ? new Record[static_cast<std::size_t>(records)]() : nullptr;
    count = records;
}

template <class Record>
void freeRecords(std::int32_t& count, Record*& list) {
    count = 0;
    delete[] list;
    list = nullptr;
}

/// The record behind the last one, which the count then covers; the list grows if it was made too small.
template <class Record>
Record& appendRecord(std::int32_t& count, Record*& list, std::int32_t& capacity) {
    if (count == capacity) {
        const std::int32_t larger = capacity * 2 + 1;
        auto* grown = new Record[static_cast<std::size_t>(larger)]();
        std::copy(list, list + count, grown);
        delete[] list;
        list = grown;
        capacity = larger;
    }
    return list[count++];
}

/// Counts the valid records among the first ones anew.
template <class Record>
void keepValidRecords(std::int32_t& count, const Record* list) {
    count = static_cast<std::int32_t>(
        std::count_if(list, list + count, [](const Record& record) { return record.valid != 0; }));
}

inline std::int32_t countStorageFunctions(TAVIK_AdapterList* adapters) {
    std::int32_t functions = 0;
    forEachStorageFunction(adapters, [&](TAVIK_DeviceRecord*) { ++functions; });
    return functions;
}

/// Calls create with each storage function and its index, as far as there is room: the chains are the library's, and
/// may have grown since they were counted.
inline void createPerStorageFunction(TAVIK_AdapterList* adapters, std::int32_t capacity,
                                     void (*create)(TAVIK_DeviceRecord* device, int index)) {
    int index = 0;
    forEachStorageFunction(adapters, [&](TAVIK_DeviceRecord* device) {
        if (index < capacity) create(device, index++);
    });
}

/// One record per storage function, in the order of the tree. Without a tree the list stays as it was.
/// @param create fills the record at the index from the device.
template <class Record, class Create>
void buildPerStorageFunction(std::int32_t& count, Record*& list, Create&& create) {
    TAVIK_AdapterList* adapters = TAVIK_GetAdapterList();
    if (!adapters) return;
    allocateRecords(count, list, countStorageFunctions(adapters));
    createPerStorageFunction(adapters, count, create);
}

/// The same for a list that create adds to by itself: the count starts at 0 and every function has room.
template <class Record, class Create>
void buildRoomPerStorageFunction(std::int32_t& count, Record*& list, Create&& create) {
    TAVIK_AdapterList* adapters = TAVIK_GetAdapterList();
    if (!adapters) return;
    allocateRecords(count, list, countStorageFunctions(adapters));
    const std::int32_t capacity = std::exchange(count, 0);
    createPerStorageFunction(adapters, capacity, create);
}

} // namespace merolt
