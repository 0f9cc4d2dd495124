// Files that are replaced as a whole: a reader finds the old content or the new one, also after a crash.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace cimhost {

/// The file's bytes; nothing if there is no file. Throws std::runtime_error with the file's name if it cannot be read,
/// is no regular file, or has more than `longest` bytes. Never waits for another process.
std::optional<std::string> readWholeFile(const std::filesystem::path& file, std::size_t longest);

/// Puts a new file in the place of the old one, with the same permissions. If there was none, only the owner may use
/// the new file and the folders that are made for it. A symbolic link stays, and the file that it names is replaced.
/// Throws std::runtime_error with the file's name; then the old file is as it was. A process that is killed may leave a
/// part of the new file under the name FILE.unfinished.XXXXXX, each time with other letters.
void replaceFile(const std::filesystem::path& file, std::string_view content);

/// The same for a file that holds secrets. Only its owner may use the new file, whatever the old permissions were. The
/// owner stays the same.
void replacePrivateFile(const std::filesystem::path& file, std::string_view content);

/// Removes the parts that killed processes have left beside the file, but no file that a running process is writing.
/// Reports no errors.
void removeUnfinished(const std::filesystem::path& file);

} // namespace cimhost
