// Reads the functions of a port from their JSON objects.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tavik/fleet/json_reader.h"

namespace tavik::fleet {

/** What a function takes over from its surroundings, unless it says otherwise itself. */
struct FunctionSurroundings {
    std::optional<Place> defaults;          ///< object with values for all functions of this kind on the card
    std::optional<Transceiver> transceiver; ///< the module of the port
    std::string modelName;                  ///< of the card
    std::uint32_t cardNumber = 1;           ///< told apart by it: addresses that the file does not give
    std::uint8_t portNumber = 1;
    bool converged = false; ///< the port has an Ethernet function
};

// The numbers and names by which calls find a function are unique over the fleet, so they are settled when all
// functions are known: absent where the file leaves them open.

struct ParsedStorage {
    StorageFunction function; ///< handle and deviceNumber still open
    std::optional<std::uint32_t> handle;
    std::optional<std::uint16_t> deviceNumber;
};

struct ParsedNic {
    NicFunction function; ///< adapterId and deviceName still open
    std::optional<std::uint32_t> adapterId;
    std::optional<std::string> deviceName;
};

// All throw Fault.
Transceiver parseTransceiver(const Place& place);
ParsedStorage parseStorage(const Place& place, const FunctionSurroundings& surroundings);
ParsedNic parseNic(const Place& place, const FunctionSurroundings& surroundings);

} // namespace tavik::fleet
