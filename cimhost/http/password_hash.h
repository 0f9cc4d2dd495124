// Hashes of passwords, as crypt(3) makes them.
#pragma once

#include <string>
#include <string_view>

namespace cimhost::http {

/// The hash of the password under the setting, which may be a whole hash. Empty where crypt(3) does not know it.
std::string hashWith(const std::string& password, const std::string& setting);

/// A new hash with a salt of its own: yescrypt, or SHA-512 where this system's crypt(3) has no yescrypt. Throws
/// std::runtime_error for a password that crypt(3) does not take: longer than 512 bytes.
std::string newHash(const std::string& password);

/// Nothing if that is a whole hash that this system knows, of a method that is not guessed in a day; otherwise a word
/// on what is wrong with it.
std::string_view flawOfHash(const std::string& hash);

} // namespace cimhost::http
