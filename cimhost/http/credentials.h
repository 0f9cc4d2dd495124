// Who may use the server: HTTP Basic authentication against a file of hashed passwords.
#pragma once

#include <array>
#include <cstddef>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace cimhost::http {

class Credentials {
public:
    /// Reads lines `user:hash`, the hash as crypt(3) makes it. Empty lines and lines that begin with # are skipped.
    /// Throws std::runtime_error, which names the file, and the line if one is wrong. The file cannot be read, is no
    /// regular file, is open to others than its owner, is longer than 1 MiB, or names no user. Or a line has another
    /// form, names a user for the second time, or has a hash that crypt(3) does not know here or whose method is
    /// guessed too fast (DES, MD5, SHA-1, NT).
    static Credentials load(const std::filesystem::path& file);

    Credentials(Credentials&& other) noexcept;

    /// The user whom the value of an Authorization field names. Nothing if it is no name and password in the scheme
    /// Basic (RFC 7617).
    [[nodiscard]] static std::optional<std::string> claimedUser(std::string_view authorization);

    /// Replaces the users by those of another file, or of the same file after a change. No password stays remembered:
    /// the next request of each user is verified again. May be called while other threads call what stands below. Takes
    /// the time of a hash for each user. Throws as load() does, and then changes nothing. A file without users is no
    /// error here: from then on nobody is let in.
    /// @return how many users there are now
    std::size_t reload(const std::filesystem::path& file);

    /// The user, if this value of an Authorization field was the last one that verify() found right for that user.
    /// Takes microseconds.
    [[nodiscard]] std::optional<std::string> recall(std::string_view authorization) const;

    /// The user, if name and password are right. Takes as long as the hash takes (tens of milliseconds), also for a
    /// user who does not exist.
    std::optional<std::string> verify(std::string_view authorization);

private:
    using Digest = std::array<unsigned char, 32>;

    Credentials();
    static Credentials read(const std::filesystem::path& file);
    [[nodiscard]] Digest digestOf(std::string_view authorization) const;
    void addLine(std::string_view line);
    [[nodiscard]] std::optional<std::string> hashOfUser(const std::string& user) const;
    [[nodiscard]] std::string decoy() const;

    Digest digestKey{};       // random for each process: what is remembered is useless elsewhere
    mutable std::mutex mutex; // guards what follows
    std::unordered_map<std::string, std::string> hashes;
    std::string decoyHash; // the first user's hash, with which an unknown user's password is compared
    std::unordered_map<std::string, Digest> remembered; // by user: digest of the last value that was right
};

} // namespace cimhost::http
