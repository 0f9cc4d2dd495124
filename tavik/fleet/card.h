// Reads a card with its ports from its JSON object.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tavik/fleet/json_reader.h"

namespace tavik::fleet {

/** What a function's calls find it by, as far as the file gave it, and where the function stands in the file. */
struct Wanted {
    std::string pointer;
    std::optional<std::uint32_t> handle;
    std::optional<std::uint16_t> deviceNumber;
    std::optional<std::uint32_t> adapterId;
    std::optional<std::string> deviceName;
};

/** A card whose functions are not numbered yet. */
struct ParsedCard {
    Card card;
    std::string pointer;
    std::optional<std::uint32_t> adapterId;
    std::vector<Wanted> wanted; ///< one for each function, in their order
};

/** Throws Fault. @param cardNumber tells made-up addresses apart. @param serialNumber the card's, if it gives none. */
ParsedCard parseCard(const Place& place, std::uint32_t cardNumber, const std::string& serialNumber);

} // namespace tavik::fleet
