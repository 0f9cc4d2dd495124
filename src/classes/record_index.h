// Records of a list by a number or a text of theirs, so that the one that is looked for need not be compared with each.
#pragma once

#include "classes/record_list.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>
#include <utility>
#include <vector>

namespace merolt {

/// Beside a list, and filled while that is built. A global of the class's module, as the list is: it keeps its memory
/// from build to build.
class RecordIndex final : KeptMemory {
public:
    /// Throws std::bad_alloc, and is then as it was. @param records how many are expected.
    void startAnew(std::int32_t records) {
        const std::size_t wanted = slotsFor(static_cast<std::size_t>(records));
        if (slots.size() != wanted) slots = std::vector<Slot>(wanted);
        ++build;
        used = 0;
    }

    /// @param number what the record is found by, such as a hash. Throws std::bad_alloc where it has to grow.
    void add(std::uint64_t number, std::int32_t record) {
        if (slotsFor(used + 1) > slots.size()) grow();
        take(number, record);
    }

    /// The first added record of the number for which isIt(record) is true; -1 if there is none.
    template <class IsIt>
    std::int32_t find(std::uint64_t number, IsIt&& isIt) const {
        if (slots.empty()) return -1;
        for (std::size_t index = firstSlotOf(number); slots[index].build == build; index = behind(index)) {
            if (slots[index].number == number && isIt(slots[index].record)) return slots[index].record;
        }
        return -1;
    }

private:
    struct Slot {
        std::uint64_t number = 0;
        std::int32_t record = 0;
        std::uint64_t build = 0; ///< the one that filled it
    };

    /// More than there are records, so that each search comes to a free one.
    static std::size_t slotsFor(std::size_t records) {
        std::size_t wanted = 16;
        while (wanted < 2 * records)
            wanted *= 2;
        return wanted;
    }

    std::size_t firstSlotOf(std::uint64_t number) const {
        constexpr std::uint64_t spread = 0x9E3779B97F4A7C15;
        return (number * spread >> 32) & (slots.size() - 1);
    }
    std::size_t behind(std::size_t index) const { return (index + 1) & (slots.size() - 1); }

    void take(std::uint64_t number, std::int32_t record) {
        std::size_t index = firstSlotOf(number);
        while (slots[index].build == build)
            index = behind(index);
        slots[index] = {number, record, build};
        ++used;
    }

    void grow() {
        std::vector<Slot> larger(slotsFor(used + 1));
        const std::vector<Slot> smaller = std::exchange(slots, std::move(larger));
        used = 0;
        // From behind a free one on, so that records of one number keep their order.
        std::size_t start = 0;
        while (start < smaller.size() && smaller[start].build == build)
            ++start;
        for (std::size_t step = 0; step < smaller.size(); ++step) {
            const Slot& slot = smaller[(start + step) % smaller.size()];
            if (slot.build == build) take(slot.number, slot.record);
        }
    }

    void release() override {
        slots = {};
        used = 0;
    }

    std::vector<Slot> slots;
    std::size_t used = 0;
    std::uint64_t build = 1;
};

/// Records by one of their texts, in the same letter case.
class RecordsByText {
public:
    // As RecordIndex has them.
    void startAnew(std::int32_t records) { index.startAnew(records); }
    void add(std::string_view text, std::int32_t record) { index.add(hashOf(text), record); }

    /// The first record that has the text; -1 if there is none.
    /// @param count how many records the list has now. @param field what was added of each.
    template <class Record, class Text>
    std::int32_t find(std::string_view text, const Record* list, std::int32_t count, Text Record::*field) const {
        return index.find(hashOf(text),
                          [&](std::int32_t record) { return record < count && (list[record].*field).equals(text); });
    }

private:
    static std::uint64_t hashOf(std::string_view text) { return std::hash<std::string_view>()(text); }

    RecordIndex index;
};

} // namespace merolt
