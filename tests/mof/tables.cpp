#include "tables.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace merolt::test {

std::vector<std::string> split(std::string_view text, char separator) {
    std::vector<std::string> pieces;
    for (std::size_t at = text.find(separator); at != std::string_view::npos; at = text.find(separator)) {
        pieces.emplace_back(text.substr(0, at));
        text.remove_prefix(at + 1);
    }
    pieces.emplace_back(text);
    return pieces;
}

std::string readText(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) throw std::runtime_error("cannot read " + file.string());
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::vector<std::string> readLines(const std::filesystem::path& file) {
    std::vector<std::string> lines;
    for (std::string& line : split(readText(file), '\n')) {
        if (!line.empty() && line.front() != '#') lines.push_back(std::move(line));
    }
    return lines;
}

std::vector<std::vector<std::string>> readTable(const std::filesystem::path& file, std::size_t columns) {
    std::vector<std::vector<std::string>> rows;
    for (const std::string& line : readLines(file)) {
        rows.push_back(split(line, '\t'));
        if (rows.back().size() != columns)
            throw std::runtime_error(file.string() + ": wrong number of columns: " + line);
    }
    return rows;
}

std::map<std::string, std::set<std::string>> readRegistration(const std::filesystem::path& file) {
    std::map<std::string, std::set<std::string>> classes;
    for (const std::string& line : readLines(file)) {
        const std::size_t colon = line.find(": ");
        if (colon == std::string::npos) throw std::runtime_error(file.string() + ": no colon: " + line);
        const std::string kinds = line.substr(colon + 2, line.find(';') - colon - 2);
        const std::vector<std::string> words = split(kinds, ' ');
        if (!classes.emplace(line.substr(0, colon), std::set<std::string>(words.begin(), words.end())).second)
            throw std::runtime_error(file.string() + ": twice: " + line);
    }
    return classes;
}

} // namespace merolt::test
