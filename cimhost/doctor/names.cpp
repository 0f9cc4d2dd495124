#include "cimhost/doctor/names.h"

#include "optics/level.h"

#include <array>
#include <cstdio>
#include <vector>

namespace cimhost::doctor {

namespace {

std::string placeText(const monitoring::Snapshot& snapshot, const std::string& jack) {
    const monitoring::Jack* place = monitoring::findJack(snapshot, jack);
    if (!place) return "port " + jack;
    return "port " + std::to_string(place->number) + " of card " + place->cardSerialNumber;
}

std::string withInterfaces(const std::string& port, const std::vector<std::string>& names) {
    std::string words;
    for (const std::string& name : names) {
        if (!name.empty()) words += (words.empty() ? "" : ", ") + name;
    }
    return words.empty() ? port : port + " (" + words + ")";
}

std::string textOf(const monitoring::Snapshot& snapshot, const auto& port, const std::string& name) {
    const std::string place = port.jack.empty() ? "port " + name : placeText(snapshot, port.jack);
    return withInterfaces(place, {port.interfaceName});
}

} // namespace

std::string portText(const monitoring::Snapshot& snapshot, const std::string& jack) {
    return withInterfaces(placeText(snapshot, jack), monitoring::interfacesAt(snapshot, jack));
}

std::string portText(const monitoring::Snapshot& snapshot, const monitoring::FibreChannelPort& port) {
    return textOf(snapshot, port, port.portName);
}

std::string portText(const monitoring::Snapshot& snapshot, const monitoring::EthernetPort& port) {
    return textOf(snapshot, port, port.macAddress);
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
