// Files that hold secrets: who else can read or change them matters before what they hold.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace cimhost {

/// Who but its owner may read such a file. Nobody else may ever change it.
enum class Readers {
    owner,
    rootsGroup, ///< the group too where the file is root's, as Debian keeps TLS keys for the group ssl-cert
};

/// Throws std::runtime_error with the file's name and the reason: it cannot be read, is no regular file, or is open to
/// others; then with what to do about it. Does not wait for the writer of a pipe.
void requirePrivateFile(const std::filesystem::path& file, Readers readers);

/// The bytes of a file that is its owner's alone. Throws as above, and where it is longer than that.
std::string readPrivateFile(const std::filesystem::path& file, std::size_t longest);

} // namespace cimhost
