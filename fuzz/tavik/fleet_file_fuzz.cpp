// Any text is either a fleet, from which a tree can be built, or an error that names its place on one printable line.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "tavik/fleet/fleet_file.h"
#include "tavik/tree.h"

namespace {

bool isPrintable(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= 0x20 && c < 0x7F; });
}

/** Walks the tree as a reader does, so that a bad link is seen. */
std::size_t countEntries(TAVIK_AdapterList* list) {
    std::size_t entries = 0;
    for (auto* adapter = list ? list->first : nullptr; adapter; adapter = adapter->next)
        for (auto* port = adapter->phyPorts ? adapter->phyPorts->first : nullptr; port; port = port->next)
            for (auto* entry = port->protocols ? port->protocols->first : nullptr; entry; entry = entry->next)
                entries += 1 + entry->type % 2;
    return entries;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto parsed = tavik::parseFleet({reinterpret_cast<const char*>(data), size}, "fleet.json");
    if (const auto* error = std::get_if<tavik::FleetError>(&parsed)) {
        constexpr std::string_view head = "fleet.json: ";
        if (error->message.compare(0, head.size(), head) != 0 || !isPrintable(error->message)) std::abort();
        return 0;
    }
    const auto& fleet = std::get<tavik::Fleet>(parsed);
    std::size_t functions = 0;
    if (fleet.cards)
        for (const auto& card : *fleet.cards)
            tavik::forEachFunction(card, [&functions](const auto&) { ++functions; });
    // A big fleet takes long to lay out and shows nothing that a small one does not.
    if (functions <= 64) {
        tavik::Tree tree(fleet);
        if (countEntries(tree.list()) < functions) std::abort();
    }
    return 0;
}
