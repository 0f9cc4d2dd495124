#include "tavik/os_name.h"

#include <fstream>
#include <string_view>

#include <sys/utsname.h>

namespace tavik {

namespace {

/** The value of a line of shell assignments: quotes taken off, escapes resolved. */
std::string unquoted(std::string_view value) {
    const bool isQuoted = value.size() >= 2 && (value.front() == '"' || value.front() == '\'');
    if (!isQuoted || value.back() != value.front()) return std::string(value);
    const bool hasEscapes = value.front() == '"';
    value = value.substr(1, value.size() - 2);
    std::string text;
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (hasEscapes && value[i] == '\\' && i + 1 < value.size()) ++i;
        text += value[i];
    }
    return text;
}

std::string prettyName(const std::string& file) {
    constexpr std::string_view key = "PRETTY_NAME=";
    std::ifstream stream(file);
    for (std::string line; std::getline(stream, line);)
        if (line.compare(0, key.size(), key) == 0) return unquoted(std::string_view(line).substr(key.size()));
    return {};
}

} // namespace

std::string osName(const std::vector<std::string>& files) {
    for (const auto& file : files)
        if (auto name = prettyName(file); !name.empty()) return name;
    utsname kernel{};
    if (uname(&kernel) != 0) return "Linux";
    return std::string(kernel.sysname) + " " + kernel.release;
}

} // namespace tavik
