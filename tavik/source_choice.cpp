#include "tavik/source_choice.h"

#include <fstream>
#include <string_view>

#include "tavik/fleet/fleet_source.h"
#include "tavik/host/host_source.h"

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
    std::string line;
    std::ifstream stream(file);
    std::getline(stream, line);
    const auto choice = trimmed(line);
    return choice.empty() ? "host" : choice;
}

std::variant<std::unique_ptr<Source>, FleetError> makeSource(const std::string& choice) {
    if (choice == "host") return makeHostSource();
    if (choice.compare(0, fleetPrefix.size(), fleetPrefix) == 0 && choice.size() > fleetPrefix.size())
        return std::make_unique<fleet::FleetSource>(choice.substr(fleetPrefix.size()));
    return FleetError{"source of adapters: expected \"host\" or \"fleet:PATH\", found \"" + choice + "\""};
}

} // namespace tavik
