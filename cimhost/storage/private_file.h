// Files that hold secrets. Before they are read, it is checked who else can read or change them.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace cimhost {

/// Who may read such a file. Only its owner may change it.
enum class Readers {
    owner,
    rootsGroup, ///< the owner, and the group of a file that belongs to root: Debian has TLS keys for the group ssl-cert
};

/// Throws std::runtime_error with the file's name and the reason if the file cannot be read, is no regular file, or is
/// open to others; in the last case also with the command that mends it. Does not wait for the writer of a pipe.
void requirePrivateFile(const std::filesystem::path& file, Readers readers);

/// The bytes of a file that only its owner may use. Throws as above, and if it has more than `longest` bytes.
std::string readPrivateFile(const std::filesystem::path& file, std::size_t longest);

} // namespace cimhost
