// Adapters for tests: small descriptions to start from, each changed by a test where it matters.
#pragma once

#include "tavik/model.h"

#include <string>

namespace adapters {

inline tavik::WorldWideName worldWideName(std::uint8_t last) {
    return {0x20, 0x00, 0x00, 0x02, 0xC9, 0x00, 0x00, last};
}

/// A storage function with handle and device number `number`, node name ...F0 + number and port name ...number.
inline tavik::StorageFunction storageFunction(std::uint32_t number, std::uint16_t pciDeviceId) {
    tavik::StorageFunction function;
    function.handle = number;
    function.deviceNumber = static_cast<std::uint16_t>(number);
    function.pciDeviceId = pciDeviceId;
    function.nodeName = worldWideName(static_cast<std::uint8_t>(0xF0 + number));
    function.property.portName = worldWideName(static_cast<std::uint8_t>(number));
    return function;
}

/// An Ethernet function of the card `adapterId`, device name "eth" and the port ID, MAC 02:00:00:00:00:portId.
inline tavik::NicFunction nicFunction(std::uint32_t adapterId, std::uint32_t portId) {
    tavik::NicFunction function;
    function.adapterId = adapterId;
    function.portId = portId;
    function.deviceName = "eth" + std::to_string(portId);
    function.macAddress = {0x02, 0, 0, 0, 0, static_cast<std::uint8_t>(portId)};
    return function;
}

/// A card with one port for each function.
inline tavik::Card card(const std::string& serialNumber, std::vector<tavik::Function> functions) {
    tavik::Card made;
    made.serialNumber = serialNumber;
    for (tavik::Function& function : functions) {
        tavik::Port port;
        port.number = static_cast<std::uint8_t>(made.ports->size());
        port.functions->push_back(std::move(function));
        made.ports->push_back(std::move(port));
    }
    return made;
}

inline tavik::Fleet fleet(std::vector<tavik::Card> cards) {
    tavik::Fleet made;
    made.cards = std::move(cards);
    return made;
}

} // namespace adapters
