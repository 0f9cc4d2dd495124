// Hashes of passwords, as crypt(3) makes them.
#pragma once

#include <string>
#include <string_view>

namespace cimhost::http {

/// The hash of the password under the setting, which may be a whole hash. Empty if crypt(3) does not know the setting
/// or does not take the password.
std::string hashWith(const std::string& password, const std::string& setting);

/// A new hash of the password, with a salt of its own: yescrypt, or SHA-512 where this system's crypt(3) has no
/// yescrypt. Throws std::runtime_error for a password that crypt(3) does not take, which is one of more than 512 bytes.
std::string newHash(const std::string& password);

/// Empty if that is a whole hash that this system's crypt(3) knows, of a method that is made to be slow. Otherwise what
/// is wrong with it, in a few words.
std::string_view flawOfHash(const std::string& hash);

} // namespace cimhost::http
