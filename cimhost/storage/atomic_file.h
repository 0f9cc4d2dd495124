// Files that a reader finds either as they were or as they are to be, also after a crash.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace cimhost {

/// The file's bytes; nothing if there is none. Throws std::runtime_error with the file's name if it cannot be read or
/// is longer than that, or is no regular file; it never waits for
/// another process.
std::optional<std::string> readWholeFile(const std::filesystem::path& file, std::size_t longest);

/// Puts a new file in the place of the old one, whose permissions it keeps; a first one is its owner's alone, as are
/// the folders made for it. A symbolic link stays, what it names is replaced. Throws std::runtime_error with the file's
/// name; then the old one is as it was. A process that is killed leaves at worst a part of the new one under the name
/// FILE.unfinished.XXXXXX, with other letters for each.
void replaceFile(const std::filesystem::path& file, std::string_view content);

/// The same for a file that holds secrets: whatever the old one's permissions were, the new one is its owner's alone,
/// and the owner stays.
void replacePrivateFile(const std::filesystem::path& file, std::string_view content);

/// Removes what killed processes have left beside the file. What a living one is writing stays. Fails silently.
void removeUnfinished(const std::filesystem::path& file);

} // namespace cimhost
