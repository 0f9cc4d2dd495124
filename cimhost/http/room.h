// Decides whose connection is closed when more clients come than there is room for. Uses no sockets.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <list>

namespace cimhost::http {

/// An address, as far as it tells one client from another. Of an IPv6 address that is the network (64 bits), since each
/// client has a whole network for itself. All loopback addresses are one source.
using Source = std::array<std::uint8_t, 16>;

/// @param address in network byte order; an IPv4 address as ::ffff:a.b.c.d
Source sourceOf(const Source& address);

/// What is known of one connection.
struct Standing {
    using Clock = std::chrono::steady_clock;
    enum class Phase { waiting, reading, verifying, answering, writing };

    Source source{};
    Phase phase = Phase::reading;
    Clock::time_point since = Clock::now(); // the phase began
    std::uint64_t moved = 0;                // bytes that came or went since then
    bool isKnown = false;                   // has sent a whole request or proved who it is; otherwise a newcomer
    bool isGuest = false;                   // a newcomer whose one request is answered although the room is full
    bool hasLeft = false;                   // the client has left while its request was answered
    bool hasUntaken = false;                // between two requests: it has not taken all of the last answer
    bool isClosed = false;
};

/// All connections. Newcomers and known clients each have room of their own: however many newcomers there are, they do
/// not shut out known clients, and the other way round.
class Room {
public:
    struct Limits {
        std::size_t newcomers;
        std::size_t known;
        std::uint64_t bytesPerSecond; // a slower client is late
    };
    using Place = std::list<Standing*>::iterator;

    explicit Room(const Limits& sizes) : limits(sizes) {}

    /// The standing lives until it leaves.
    Place enter(Standing& standing) { return standings.insert(standings.end(), &standing); }
    void leave(Place place) { standings.erase(place); }

    [[nodiscard]] bool isFullOfNewcomers() const { return count(false) >= limits.newcomers; }
    [[nodiscard]] bool isFullOfKnown() const { return count(true) >= limits.known; }
    /// There is room for a quarter as many guests as known clients.
    [[nodiscard]] bool isFullOfGuests() const;

    /// The newcomer that gives way. One that the server keeps waiting is the last choice. Before others comes one of an
    /// address with more than a quarter of the room; among these, the one that is furthest behind a client at
    /// Limits::bytesPerSecond. Null: there is no newcomer.
    [[nodiscard]] Standing* newcomerToGiveWay(Standing::Clock::time_point now) const;

    /// The known client that gives way to one of that address. The order is: one that has left; one that is late with a
    /// request or with taking an answer, also from the system's buffers; the one that has been silent for longest; one
    /// that sends or takes something in time. A client stays while the server keeps it waiting. An address that has
    /// more than a quarter of the room at work gets the place only of one that has left or is late. Null: nobody gives
    /// way to that address.
    [[nodiscard]] Standing* knownToGiveWay(Standing::Clock::time_point now, const Source& to) const;

    /// A guest that has left or is late with taking its answer. Null: there is none.
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
