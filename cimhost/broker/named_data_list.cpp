#include <algorithm>

#include "cimhost/broker/objects.h"

namespace cimhost {

const NamedData* NamedDataList::find(std::string_view name) const noexcept {
    const auto all = items();
    const auto place =
        std::find_if(all.begin(), all.end(), [name](const NamedData& item) { return equalNames(item.name, name); });
    return place == all.end() ? nullptr : &*place;
}

void NamedDataList::set(Arena& arena, std::string_view name, const CMPIData& data) {
    const NamedData* known = find(name);
    const auto position = known ? static_cast<std::uint32_t>(known - first) : count;
    if (capacity < count + (known ? 0 : 1)) {
        const std::uint32_t larger = std::max<std::uint32_t>(count * 2, 4);
        auto* copies = arena.allocateArray<NamedData>(larger);
        std::copy_n(first, count, copies);
        first = copies;
        capacity = larger;
    }
    if (known) {
        first[position].data = data;
        return;
    }
    first[count++] = {name, data};
}

NamedDataList NamedDataList::share() noexcept {
    capacity = 0;
    return *this;
}

} // namespace cimhost
