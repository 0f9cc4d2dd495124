#include "tavik/host/neighbours.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace tavik::host {

namespace {

constexpr std::size_t longestText = 255;
constexpr std::size_t mostNeighbours = 256;

std::string orDash(const std::string& text) { return text.empty() ? "-" : text; }
std::string orNothing(std::string_view word) { return word == "-" ? std::string() : neighbourText(std::string(word)); }

Attribute<Neighbour> parseLine(std::string_view line) {
    std::array<std::string_view, 4> fields;
    std::size_t count = 0;
    for (std::size_t at = 0; at <= line.size();) {
        const auto end = std::min(line.find('\t', at), line.size());
        if (count < fields.size()) fields.at(count) = line.substr(at, end - at);
        ++count;
        at = end + 1;
    }
    if (count != fields.size()) return Absence{"no neighbour: " + std::string(line.substr(0, 80))};
    return Neighbour{orNothing(fields[2]), orNothing(fields[1]), orNothing(fields[3]), orNothing(fields[0])};
}

} // namespace

std::string neighbourText(std::string text) {
    for (char& character : text)
        if (character < ' ' || character > '~') character = '?';
    const auto begin = std::min(text.find_first_not_of(' '), text.size());
    text = text.substr(begin, longestText);
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

std::string showNeighbour(const Neighbour& neighbour) {
    const auto& [systemName, port, description, chassis] = neighbour;
    const bool isDescribed = !description.empty() && description != port;
    std::string portText = port;
    if (isDescribed) portText += portText.empty() ? description : " (" + description + ")";
    std::string line = systemName;
    if (!portText.empty()) line += (line.empty() ? "port " : ", port ") + portText;
    if (!chassis.empty()) line += (line.empty() ? "chassis " : ", chassis ") + chassis;
    return line;
}

std::string formatNeighbours(const std::vector<Neighbour>& neighbours) {
    std::string lines;
    for (const auto& [systemName, port, description, chassis] : neighbours)
        lines += orDash(chassis) + "\t" + orDash(port) + "\t" + orDash(systemName) + "\t" + orDash(description) + "\n";
    return lines;
}

Attribute<std::vector<Neighbour>> parseNeighbours(const std::string& lines) {
    std::vector<Neighbour> neighbours;
    const std::string_view all = lines;
    for (std::size_t at = 0; at < all.size() && neighbours.size() < mostNeighbours;) {
        const auto end = std::min(all.find('\n', at), all.size());
        auto neighbour = parseLine(all.substr(at, end - at));
        if (!neighbour) return neighbour.absence();
        neighbours.push_back(*neighbour);
        at = end + 1;
    }
    return neighbours;
}

} // namespace tavik::host
