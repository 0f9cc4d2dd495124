// Shortcuts from the text of a fleet file to its parts.
#pragma once

#include <stdexcept>
#include <string>

#include "tavik/fleet/fleet_file.h"

namespace tavik::test {

/** Throws with the error's message if the text is not a good fleet. */
inline Fleet fleetFrom(const std::string& text) {
    auto parsed = parseFleet(text, "fleet.json");
    if (const auto* error = std::get_if<FleetError>(&parsed)) throw std::runtime_error(error->message);
    return std::get<Fleet>(std::move(parsed));
}

/** The error's message, or an empty text for a good fleet. */
inline std::string errorFrom(const std::string& text) {
    const auto parsed = parseFleet(text, "fleet.json");
    const auto* error = std::get_if<FleetError>(&parsed);
    return error ? error->message : std::string();
}

/** A file with one card, whose only port holds what is given. */
inline std::string onePort(const std::string& members) { return R"({"cards":[{"ports":[{)" + members + "}]}]}"; }

inline const Card& cardOf(const Fleet& fleet, std::size_t card = 0) { return fleet.cards->at(card); }

inline const Port& portOf(const Fleet& fleet, std::size_t card = 0, std::size_t port = 0) {
    return cardOf(fleet, card).ports->at(port);
}

inline const StorageFunction& storageOf(const Fleet& fleet, std::size_t card = 0, std::size_t port = 0) {
    return std::get<StorageFunction>(portOf(fleet, card, port).functions->at(0));
}

inline const NicFunction& nicOf(const Fleet& fleet, std::size_t card = 0, std::size_t port = 0) {
    return std::get<NicFunction>(portOf(fleet, card, port).functions->back());
}

} // namespace tavik::test
