#include "tavik/host/link_settings.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <iterator>
#include <limits>
#include <optional>
#include <sstream>

#include "tavik/host/sys_tree.h"

namespace tavik::host {

namespace {

struct ModeRange {
    unsigned first;
    unsigned last;
    std::uint32_t megabits;
};

/** By number (enum ethtool_link_mode_bit_indices), which never change; headers lag behind the kernel that runs. What is
 *  missing is no speed: media, pause, forward error correction. */
constexpr ModeRange modeRanges[] = {
    {0, 1, 10},       {2, 3, 100},        {4, 5, 1000},       {12, 12, 10000},    {15, 15, 2500},  {17, 17, 1000},
    {18, 20, 10000},  {21, 22, 20000},    {23, 26, 40000},    {27, 30, 56000},    {31, 33, 25000}, {34, 35, 50000},
    {36, 39, 100000}, {40, 40, 50000},    {41, 41, 1000},     {42, 46, 10000},    {47, 47, 2500},  {48, 48, 5000},
    {52, 56, 50000},  {57, 61, 100000},   {62, 66, 200000},   {67, 67, 100},      {68, 68, 1000},  {69, 73, 400000},
    {75, 79, 100000}, {80, 84, 200000},   {85, 89, 400000},   {90, 91, 100},      {92, 92, 10},    {93, 98, 800000},
    {99, 102, 10},    {103, 108, 200000}, {109, 114, 400000}, {115, 120, 800000},
};

constexpr std::uint64_t megabit = 1'000'000;
constexpr std::uint8_t halfDuplex = 0;
constexpr std::uint8_t fullDuplex = 1;

/** By bit (enum ethtool_fec_config_bits). */
constexpr const char* fecModes[] = {"None", "Auto", "Off", "RS", "BaseR", "LLRS"};

bool has(const std::vector<std::uint32_t>& words, unsigned bit) {
    return bit / 32 < words.size() && (words[bit / 32] >> bit % 32 & 1U) != 0;
}

/** The numbers of a line, the first ones decimal and the others hexadecimal; nothing if one is no number. */
std::optional<std::vector<std::uint32_t>> parseLine(const std::string& line, std::size_t decimals, std::size_t most) {
    std::istringstream words(line);
    std::vector<std::uint32_t> numbers;
    for (std::string word; words >> word;) {
        const auto text = numbers.size() < decimals ? word : "0x" + word;
        const auto number = parseNumber(text, std::numeric_limits<std::uint32_t>::max());
        if (!number || numbers.size() == most) return std::nullopt;
        numbers.push_back(static_cast<std::uint32_t>(*number));
    }
    return numbers.size() < decimals ? std::nullopt : std::optional(std::move(numbers));
}

Absence unreadable(const std::string& line) { return {"not as a recording has it: " + line.substr(0, 80)}; }

} // namespace

std::vector<std::uint64_t> speedsOf(const std::vector<std::uint32_t>& linkModes) {
    std::vector<std::uint64_t> speeds;
    for (const auto& range : modeRanges)
        for (unsigned bit = range.first; bit <= range.last; ++bit)
            if (has(linkModes, bit)) speeds.push_back(range.megabits * megabit);
    std::sort(speeds.begin(), speeds.end());
    speeds.erase(std::unique(speeds.begin(), speeds.end()), speeds.end());
    return speeds;
}

Attribute<std::string> duplexName(std::uint8_t duplex) {
    if (duplex == halfDuplex) return std::string("half");
    if (duplex == fullDuplex) return std::string("full");
    return Absence{"unknown to the driver"};
}

std::vector<std::string> fecNames(std::uint32_t bits) {
    std::vector<std::string> names;
    for (std::size_t bit = 0; bit < std::size(fecModes); ++bit)
        if ((bits >> bit & 1U) != 0) names.emplace_back(fecModes[bit]);
    return names;
}

std::string formatLinkSettings(const LinkSettings& settings) {
    std::string line = std::to_string(settings.autonegotiation) + " " + std::to_string(settings.duplex);
    for (const auto word : settings.supported) {
        std::array<char, 16> digits{};
        std::snprintf(digits.data(), digits.size(), " %08x", word);
        line += digits.data();
    }
    return line;
}

Attribute<LinkSettings> parseLinkSettings(const std::string& line) {
    const auto numbers = parseLine(line, 2, 2 + mostLinkModeWords);
    if (!numbers || (*numbers)[0] > 1 || (*numbers)[1] > 0xFF) return unreadable(line);
    return LinkSettings{
        (*numbers)[0] == 1, static_cast<std::uint8_t>((*numbers)[1]), {numbers->begin() + 2, numbers->end()}};
}

std::string formatPauseSettings(const PauseSettings& settings) {
    return std::to_string(settings.autonegotiation) + " " + std::to_string(settings.receive) + " " +
           std::to_string(settings.transmit);
}

Attribute<PauseSettings> parsePauseSettings(const std::string& line) {
    const auto numbers = parseLine(line, 3, 3);
    if (!numbers || *std::max_element(numbers->begin(), numbers->end()) > 1) return unreadable(line);
    return PauseSettings{(*numbers)[0] == 1, (*numbers)[1] == 1, (*numbers)[2] == 1};
}

std::string formatFecSettings(const FecSettings& settings) {
    return std::to_string(settings.active) + " " + std::to_string(settings.configured);
}

Attribute<FecSettings> parseFecSettings(const std::string& line) {
    const auto numbers = parseLine(line, 2, 2);
    if (!numbers) return unreadable(line);
    return FecSettings{(*numbers)[0], (*numbers)[1]};
}

} // namespace tavik::host
