#include "tavik/source_name.h"

#include <string_view>

#include "tavik/fleet/fleet_file.h"

namespace tavik {

namespace {

constexpr std::string_view fleetPrefix = "fleet:";
constexpr const char* blanks = " \t\r\n";

std::string trimmed(const std::string& text) {
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

} // namespace

std::string chosenSource(const char* fromEnvironment, const std::string& file) {
    if (fromEnvironment && *fromEnvironment) return fromEnvironment;
    const auto read = readFleetText(file);
    const auto* text = std::get_if<std::string>(&read);
    const auto choice = text ? trimmed(text->substr(0, text->find('\n'))) : std::string();
    return choice.empty() ? "host" : choice;
}

std::variant<SourceName, FleetError> understandSource(const std::string& name) {
    if (name == "host") return SourceName{};
    if (name.compare(0, fleetPrefix.size(), fleetPrefix) == 0 && name.size() > fleetPrefix.size())
        return SourceName{name.substr(fleetPrefix.size())};
    return FleetError{"source of adapters: expected \"host\" or \"fleet:PATH\", found \"" + name + "\""};
}

} // namespace tavik
