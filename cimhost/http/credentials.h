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
    /// Reads lines `user:hash`, the hash as crypt(3) makes it; empty lines and lines that begin with # are skipped.
    /// Throws std::runtime_error naming file and line: unreadable, no regular file, open to anybody but its owner, no
    /// such line, a hash that crypt(3) here does not know, one of a method that is guessed too fast (DES, MD5), or no
    /// user at all.
    static Credentials load(const std::filesystem::path& file);

    Credentials(Credentials&& other) noexcept;

    /// Who the value of an Authorization field says it is; nothing if it is no name and password.
    [[nodiscard]] static std::optional<std::string> claimedUser(std::string_view authorization);

    /// The users of another file, or of the same one after a change, in place of those of now; a user who is gone or
    /// has another password is not remembered. Safe beside all calls below. Takes a hash's time for each user. Throws
    /// as load() does, but for a file without users, after which nobody is let in; then everything stays as it is.
    /// @return how many users there are now
    std::size_t reload(const std::filesystem::path& file);

    /// The user, if that value of an Authorization field has been verified before. Takes microseconds.
    [[nodiscard]] std::optional<std::string> recall(std::string_view authorization) const;

    /// The user, if name and password are right. Takes as long as the hash wants (tens of milliseconds), also for a
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
    std::string decoyHash; // of the first user: what an unknown user's password is held against
    std::unordered_map<std::string, Digest> remembered; // by user: the last value that was right
};

} // namespace cimhost::http
