// Texts that are read line by line: files of settings for people, and what stands between separators.
#pragma once

#include <filesystem>
#include <functional>
#include <string_view>
#include <vector>

namespace cimhost {

/// Without blanks at both ends.
std::string_view trim(std::string_view text);

/// What stands between the separators, each of which is one character; empty parts are left out.
std::vector<std::string_view> split(std::string_view text, std::string_view separators);

/// Hands over each line that holds something, without its comment, which # begins, and without blanks at both ends.
/// Throws std::runtime_error: that the file cannot be read, or with file and line in front what take() throws.
void readLines(const std::filesystem::path& file, const std::function<void(std::string_view line)>& take);

} // namespace cimhost
