#include "tavik/source_name.h"

#include <string_view>
#include <utility>

#include "tavik/fleet/fleet_file.h"

namespace tavik {

namespace {

constexpr std::string_view fleetPrefix = "fleet:";
constexpr std::string_view recordingPrefix = "recording:";
constexpr const char* blanks = " \t\r\n";

std::string trimmed(const std::string& text) {
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

/** What stands behind the prefix; nothing where the name begins otherwise or ends with it. */
std::optional<std::string> behind(std::string_view prefix, const std::string& name) {
    if (!std::string_view(name).starts_with(prefix) || name.size() == prefix.size()) return std::nullopt;
    return name.substr(prefix.size());
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
    if (auto fleet = behind(fleetPrefix, name)) return SourceName{std::move(fleet), {}};
    if (auto recording = behind(recordingPrefix, name)) return SourceName{{}, std::move(recording)};
    return FleetError{"source of adapters: expected \"host\", \"fleet:PATH\" or \"recording:PATH\", found \"" + name +
                      "\""};
}

} // namespace tavik
