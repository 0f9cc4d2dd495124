// The vital product data items of a card's Ethernet function: a count that may lie, and any bytes behind it.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "classes/physical/physical_package.h"
#include "inventory/cna_list.h"

namespace {

void require(bool holds) {
    if (!holds) std::abort();
}

constexpr std::size_t countSize = 4;
constexpr std::size_t itemSize = 213;
constexpr std::size_t valueOffset = 4;
constexpr std::size_t tagCapacity = 127;

/// The value of the last whole item with that keyword, as long as a tag takes.
std::string lastValue(const merolt::CNAPort& port, const char* keyword, const std::string& otherwise) {
    std::uint32_t count = 0;
    std::memcpy(&count, port.functionData, countSize);
    std::string value = otherwise;
    for (std::size_t offset = countSize; count > 0 && offset + itemSize <= sizeof(port.functionData);
         offset += itemSize, --count) {
        const char* item = reinterpret_cast<const char*>(port.functionData) + offset;
        if (std::memcmp(item, keyword, 3) != 0) continue;
        value.assign(item + valueOffset, strnlen(item + valueOffset, itemSize - valueOffset));
    }
    return value.substr(0, tagCapacity);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // The items stand at the port's end, so that a walk beyond them is seen.
    const auto port = std::make_unique<merolt::CNAPort>();
    std::memcpy(port->functionData, data, std::min(size, sizeof(port->functionData)));
    const auto card = std::make_unique<merolt::CNACard>();
    std::strcpy(card->properties.serialNumber, "S1");
    std::strcpy(card->properties.defaultFruNumber, "FRU");
    card->ports = port.get();
    require(merolt::physical::calcTag_Nic_PhysicalPackage(card.get()).view() == lastValue(*port, "YU", "S1"));
    require(merolt::physical::getCardFruNumber(card.get()).view() == lastValue(*port, "FN", "FRU"));
    return 0;
}
