// Who gives way when more clients come than there is room for. Knows no sockets.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <list>

namespace cimhost::http {

/// An address as far as it tells one client from another: of IPv6 the network, as each client has a whole one for
/// itself; everybody on this machine is one.
using Source = std::array<std::uint8_t, 16>;

/// The address in network order, one of IPv4 as ::ffff:a.b.c.d.
Source sourceOf(const Source& address);

/// What is known of one connection.
struct Standing {
    using Clock = std::chrono::steady_clock;
    enum class Phase { waiting, reading, verifying, answering, writing };

    Source source{};
    Phase phase = Phase::reading;
    Clock::time_point since = Clock::now(); // the phase began
    std::uint64_t moved = 0;                // that came or went since then
    bool isKnown = false;                   // has asked a whole request or proved who it is, and else is a newcomer
    bool isGuest = false;                   // a newcomer whose one request is answered although the room is full
    bool hasLeft = false;                   // while its request was answered
    bool hasUntaken = false;                // while it waits for nothing more: some of the last answer
    bool isClosed = false;
};

/// All connections. Newcomers and known clients have room of their own: no number of the ones shuts out the others.
class Room {
public:
    struct Limits {
        std::size_t newcomers;
        std::size_t known;
        std::uint64_t bytesPerSecond; // slower is late
    };
    using Place = std::list<Standing*>::iterator;

    explicit Room(const Limits& sizes) : limits(sizes) {}

    /// Whoever enters is alive until it leaves.
    Place enter(Standing& standing) { return standings.insert(standings.end(), &standing); }
    void leave(Place place) { standings.erase(place); }

    [[nodiscard]] bool isFullOfNewcomers() const { return count(false) >= limits.newcomers; }
    [[nodiscard]] bool isFullOfKnown() const { return count(true) >= limits.known; }
    /// Guests are as many as a quarter of the known clients.
    [[nodiscard]] bool isFullOfGuests() const;

    /// Of the newcomers the one that is furthest behind what a client would have sent by now; first among those of
    /// addresses with more than a quarter of the room, last whom the server keeps waiting. Null: there is none.
    [[nodiscard]] Standing* newcomerToGiveWay(Standing::Clock::time_point now) const;

    /// Of the known clients first who has left, then who is late with a request or with taking an answer, if need be
    /// from the system's buffers, then who has been silent for longest. Whom the server keeps waiting stays. An address
    /// that has more than a quarter of the room at work gets no silent one's place. Null: nobody gives way to that
    /// address.
    [[nodiscard]] Standing* knownToGiveWay(Standing::Clock::time_point now, const Source& to) const;

    /// Of the guests who has left or is late with taking the answer. Null: there is none.
    [[nodiscard]] Standing* guestToGiveWay(Standing::Clock::time_point now) const;

    [[nodiscard]] const std::list<Standing*>& all() const { return standings; }

private:
    [[nodiscard]] std::size_t count(bool known) const;
    [[nodiscard]] std::size_t atWork(const Source& source) const;
    template <class Rank>
    Standing* chosen(bool known, std::size_t size, Standing::Clock::time_point now, Rank rank) const;
    [[nodiscard]] Standing::Clock::duration lateness(const Standing& standing, Standing::Clock::time_point now) const;

    Limits limits;
    std::list<Standing*> standings; // oldest first
};

} // namespace cimhost::http
