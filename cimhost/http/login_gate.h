// Limits how fast anybody can guess passwords. Uses no sockets, and no clock of its own.
#pragma once

#include "cimhost/http/room.h"

#include <chrono>
#include <cstddef>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

namespace cimhost::http {

/// After five wrong passwords from one address the next one has to wait for a second, then twice as long after each
/// further wrong one, up to a minute. After ten minutes without a wrong one the count begins anew. Other addresses are
/// not held up, and other users at the same address hardly ever.
class LoginGate {
public:
    using Clock = std::chrono::steady_clock;

    /// How long the client has to wait until it may try again; nothing if it may try now.
    [[nodiscard]] std::optional<std::chrono::seconds> wait(const Source& source, std::string_view user,
                                                           Clock::time_point now) const;
    /// Counts a wrong password.
    void failed(const Source& source, std::string_view user, Clock::time_point now);
    /// A right password: the count begins anew.
    void succeeded(const Source& source, std::string_view user);

    [[nodiscard]] std::size_t size() const { return records.size(); }

    static constexpr unsigned freeGuesses = 5;
    static constexpr std::size_t mostRecords = 4096; // then the oldest is forgotten

private:
    struct Record {
        unsigned failures = 0;
        Clock::time_point last;
        Clock::time_point blockedUntil;
    };
    // The users of one address share a few lanes; a lane has one count. With a lane for each name, a client would have
    // as many guesses as it makes up names. With a lane for each user who exists, the waits would tell who exists.
    using Key = std::pair<Source, std::size_t>;
    static Key keyOf(const Source& source, std::string_view user);

    void forgetOldest();

    std::map<Key, Record> records;
};

} // namespace cimhost::http
