#include "cimhost/doctor/names.h"

#include "optics/level.h"

#include <array>
#include <cstdio>

namespace cimhost::doctor {

std::string portText(const monitoring::Snapshot& snapshot, const std::string& jack) {
    const monitoring::Jack* place = monitoring::findJack(snapshot, jack);
    if (!place) return "port " + jack;
    return "port " + std::to_string(place->number) + " of card " + place->cardSerialNumber;
}

std::string portText(const monitoring::Snapshot& snapshot, const monitoring::FibreChannelPort& port) {
    return port.jack.empty() ? "port " + port.portName : portText(snapshot, port.jack);
}

std::string portText(const monitoring::Snapshot& snapshot, const monitoring::EthernetPort& port) {
    return port.jack.empty() ? "port " + port.macAddress : portText(snapshot, port.jack);
}

std::string fixed(double number, int decimals) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.*f", decimals, number);
    return text.data();
}

std::string powerText(double milliwatts) {
    const auto dbm = optics::dbmOfMilliwatts(milliwatts);
    return dbm ? fixed(milliwatts, 4) + " mW (" + fixed(*dbm, 2) + " dBm)" : "no light";
}

} // namespace cimhost::doctor
