#include "cimhost/model/text_lines.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <string>

namespace cimhost {

namespace {

constexpr std::string_view blanks = " \t\r";

} // namespace

std::string_view trim(std::string_view text) {
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::vector<std::string_view> split(std::string_view text, std::string_view separators) {
    std::vector<std::string_view> parts;
    while (!text.empty()) {
        const std::string_view part = text.substr(0, text.find_first_of(separators));
        if (!part.empty()) parts.push_back(part);
        text.remove_prefix(std::min(text.size(), part.size() + 1));
    }
    return parts;
}

void readLines(const std::filesystem::path& file, const std::function<void(std::string_view line)>& take) {
    std::ifstream stream(file);
    if (!stream) throw std::runtime_error(file.string() + ": " + std::strerror(errno));
    std::size_t number = 0;
    for (std::string line; std::getline(stream, line);) {
        ++number;
        const std::string_view content = trim(std::string_view(line).substr(0, line.find('#')));
        if (content.empty()) continue;
        try {
            take(content);
        } catch (const std::runtime_error& error) {
            throw std::runtime_error(file.string() + ":" + std::to_string(number) + ": " + error.what());
        }
    }
}

} // namespace cimhost
