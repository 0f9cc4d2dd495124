// Storage of the class lists: one block of records behind a global count and pointer, filled in a walk of the library's
// tree. Lists are rebuilt for single requests, so a list keeps its block from build to build. The tree is large, and
// reading it is what costs on hosts with many ports: it is walked a second time, to count, only where a list does not
// know from its last build how many records it will have.
#pragma once

#include "inventory/tree_walk.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <utility>

namespace merolt {

/// A block of memory that a list keeps between its builds.
class KeptMemory {
public:
    KeptMemory(const KeptMemory&) = delete;
    KeptMemory& operator=(const KeptMemory&) = delete;

    /// Gives back what every cleared list has kept, when the provider ends. Call it under provider_lock.
    static void releaseAll() {
        for (KeptMemory* memory = first; memory; memory = memory->next)
            memory->release();
    }

protected:
    KeptMemory() : next(std::exchange(first, this)) {}
    ~KeptMemory() = default;

private:
    virtual void release() = 0;

    static inline KeptMemory* first = nullptr;
    KeptMemory* const next;
};

/// The records behind a count and a pointer that others read. A global of the class's module: it lives as long as the
/// library. Whatever it does, it does under provider_lock.
template <class Record>
class RecordList final : KeptMemory {
public:
    RecordList(std::int32_t& itsCount, Record*& itsList) : count(itsCount), list(itsList) {}

    /// Makes that many empty records in the place of those there are; a null pointer and the count 0 for none.
    void make(std::int32_t records) {
        clear();
        if (records <= 0) return;
        // In this order: where memory is short there is no count without records.
        take(records);
        std::for_each(list, list + records, makeEmpty);
        count = records;
    }

    /// The same, but the count starts at 0: who fills the list counts. @return how many records there is room for.
    std::int32_t makeRoom(std::int32_t records) {
        make(records);
        return std::exchange(count, 0);
    }

    /// No records. Those that are then appended are expected to be as many as the list had before, or if it had none,
    /// as many as countThem tells.
    template <class Count>
    void startAnew(Count&& countThem) {
        clear();
        if (expected == 0) expected = countThem();
    }

    std::int32_t size() const { return count; }

    /// The record behind the last one, which the count then covers; the list grows if it was made too small.
    Record& append() {
        Record& record = appendAsItWas();
        makeEmpty(record);
        return record;
    }

    /// The same, but the record holds what it held when the list was cleared, or is empty.
    Record& appendAsItWas() {
        if (!list) {
            take(std::max(expected, 1));
        } else if (count == capacity) {
            grow();
        }
        return list[count++];
    }

    /// Counts the valid records among the first ones anew.
    void keepValid() {
        count = static_cast<std::int32_t>(
            std::count_if(list, list + count, [](const Record& record) { return record.valid != 0; }));
    }

    /// Every number zero and every text empty, whatever stood there; a text costs no more than its first byte.
    static void makeEmpty(Record& record) { ::new (static_cast<void*>(&record)) Record{}; }

    void clear() {
        if (list) {
            expected = count;
            kept = std::exchange(list, nullptr);
        }
        count = 0;
    }

private:
    /// A host that lost most of its adapters need not keep their memory.
    static constexpr std::int32_t mostTimesTooLarge = 4;
    static constexpr std::int32_t neverTooLarge = 64;

    /// Makes a block of the list that has room for that many records.
    void take(std::int32_t records) {
        const bool isTooLarge = capacity / mostTimesTooLarge > std::max(records, neverTooLarge);
        if (!kept || capacity < records || isTooLarge) {
            release();
            kept = new Record[static_cast<std::size_t>(records)];
            capacity = records;
        }
        list = std::exchange(kept, nullptr);
    }

    void grow() {
        const std::int32_t larger = capacity * 2 + 1;
        auto* grown = new Record[static_cast<std::size_t>(larger)];
        std::copy(list, list + count, grown);
        delete[] list;
        list = grown;
        capacity = larger;
    }

    void release() override { delete[] std::exchange(kept, nullptr); }

    std::int32_t& count;
    Record*& list;
    Record* kept = nullptr; ///< the block while there is no list
    std::int32_t capacity = 0;
    std::int32_t expected = 0; ///< records of the last list
};

inline std::int32_t countStorageFunctions(TAVIK_AdapterList* adapters) {
    std::int32_t functions = 0;
    forEachStorageFunction(adapters, [&](TAVIK_DeviceRecord*) { ++functions; });
    return functions;
}

/// Calls create with each storage function and its index, as far as there is room: the chains are the library's, and
/// may have grown since they were counted.
template <class Create>
void createPerStorageFunction(TAVIK_AdapterList* adapters, std::int32_t capacity, Create&& create) {
    int index = 0;
    forEachStorageFunction(adapters, [&](TAVIK_DeviceRecord* device) {
        if (index < capacity) create(device, index++);
    });
}

/// One record per storage function, in the order of the tree. Without a tree the list stays as it was.
/// @param append makes the list longer by a record. @param create fills the record at the index from the device.
template <class Record, class Append, class Create>
void buildPerStorageFunction(RecordList<Record>& records, Append&& append, Create&& create) {
    TAVIK_AdapterList* adapters = TAVIK_GetAdapterList();
    if (!adapters) return;
    records.startAnew([&] { return countStorageFunctions(adapters); });
    forEachStorageFunction(adapters, [&](TAVIK_DeviceRecord* device) {
        append();
        create(device, records.size() - 1);
    });
}

template <class Record, class Create>
void buildPerStorageFunction(RecordList<Record>& records, Create&& create) {
    buildPerStorageFunction(
        records, [&] { records.append(); }, create);
}

/// The same for a list that create adds to by itself: the count starts at 0 and every function has room.
template <class Record, class Create>
void buildRoomPerStorageFunction(RecordList<Record>& records, Create&& create) {
    TAVIK_AdapterList* adapters = TAVIK_GetAdapterList();
    if (!adapters) return;
    const std::int32_t capacity = records.makeRoom(countStorageFunctions(adapters));
    createPerStorageFunction(adapters, capacity, create);
}

} // namespace merolt
