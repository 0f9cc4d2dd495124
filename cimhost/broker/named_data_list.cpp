#include <algorithm>

#include "cimhost/broker/values.h"

namespace cimhost {

const NamedData* NamedDataList::find(std::string_view name) const noexcept {
    const auto all = items();
    const auto place =
        std::find_if(all.begin(), all.end(), [name](const NamedData& item) { return equalNames(item.name, name); });
    return place == all.end() ? nullptr : &*place;
}

void NamedDataList::set(Arena& arena, std::string_view name, const CMPIData& data) {
    const NamedData* known = find(name);
    setNamed(arena, known ? known->name : arena.copyText(name), data);
}

void NamedDataList::setNamed(Arena& arena, std::string_view lastingName, const CMPIData& data) {
    const NamedData* known = find(lastingName);
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
    first[count++] = {lastingName, data};
}

CMPIrc NamedDataList::take(Arena& arena, std::string_view name, const CMPIValue* value, CMPIType type) {
    CMPIData data;
    const CMPIrc code = takeValue(arena, value, type, data);
    if (code == CMPI_RC_OK) set(arena, name, data);
    return code;
}

NamedDataList NamedDataList::copyTo(Arena& target) const {
    NamedDataList copy;
    copy.first = target.allocateArray<NamedData>(count);
    copy.capacity = count;
    for (const NamedData& item : items()) {
        copy.first[copy.count++] = {target.copyText(item.name), copyData(target, item.data)};
    }
    return copy;
}

NamedDataList NamedDataList::share() const noexcept {
    capacity = 0;
    return *this;
}

} // namespace cimhost
