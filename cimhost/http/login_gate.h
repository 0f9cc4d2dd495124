// Bounds how fast anybody can guess passwords. Knows no sockets and no clock of its own.
#pragma once

#include "cimhost/http/room.h"

#include <chrono>
#include <cstddef>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

namespace cimhost::http {

/// After some wrong passwords from one address, the next ones have to wait: a second, then twice as long each time, up
/// to a minute. Other addresses are not held up, and from the same one hardly anybody who gives another name.
class LoginGate {
public:
    using Clock = std::chrono::steady_clock;

    /// How long to come back later, or nothing for whoever may try now.
    [[nodiscard]] std::optional<std::chrono::seconds> wait(const Source& source, std::string_view user,
                                                           Clock::time_point now) const;
    void failed(const Source& source, std::string_view user, Clock::time_point now);
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
    // Names share a few lanes, whether there is such a user or not: a lane for each name would be as many guesses as
    // there are names, and one for each user would tell who is one.
    using Key = std::pair<Source, std::size_t>;
    static Key keyOf(const Source& source, std::string_view user);

    void forgetOldest();

    std::map<Key, Record> records;
};

} // namespace cimhost::http
