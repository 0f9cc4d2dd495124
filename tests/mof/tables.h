// The tables that the class definitions are held against, and the registration file, read into rows of text.
#pragma once

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace merolt::test {

/// The pieces of a text between separators; a text without one is one piece.
std::vector<std::string> split(std::string_view text, char separator);

/// The rows of a file whose columns are separated by tabs. Lines that are empty or begin with '#' are left out. Throws
/// std::runtime_error if the file cannot be read or a row has another number of columns.
std::vector<std::vector<std::string>> readTable(const std::filesystem::path& file, std::size_t columns);

/// The lines of a file that are neither empty nor comments. Throws std::runtime_error if it cannot be read.
std::vector<std::string> readLines(const std::filesystem::path& file);

/// The classes of a registration file with their kinds. Throws std::runtime_error as readTable does, and for a class
/// that stands there twice.
std::map<std::string, std::set<std::string>> readRegistration(const std::filesystem::path& file);

/// The whole file. Throws std::runtime_error if it cannot be read.
std::string readText(const std::filesystem::path& file);

} // namespace merolt::test
