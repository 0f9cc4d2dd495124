// The file of users that a server reads: adding, removing and listing them.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace cimhost::cli {

/// The file is replaced as a whole, for its owner alone; its other lines stay. Makes the file where there is none.
/// Throws std::runtime_error: a name that such a file cannot hold, an empty password or one that is too long, a file
/// that cannot be read or replaced, or that somebody else has been changing for ten seconds.
/// @return true if the user existed and has a new password now
bool setUser(const std::filesystem::path& file, std::string_view name, const std::string& password);

/// Throws as above, and where there is no such user.
void removeUser(const std::filesystem::path& file, std::string_view name);

/// In the order of the file. Throws std::runtime_error if it cannot be read.
std::vector<std::string> usersIn(const std::filesystem::path& file);

} // namespace cimhost::cli
