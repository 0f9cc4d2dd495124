#include "cimhost/http/room.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace cimhost::http {

namespace {

constexpr std::chrono::milliseconds lateAfter{250};
// The system's buffers take what goes to a client until they are full. A client that takes nothing then is behind
// already.
constexpr std::chrono::milliseconds lateInTaking{50};
constexpr std::size_t sharesOfRoom = 4;

constexpr std::array<std::uint8_t, 12> mappedPrefix = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff};
constexpr Source loopback = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
constexpr std::uint8_t loopbackNetwork = 127;
constexpr std::size_t networkBytes = 8;

constexpr int idleRank = 2;
constexpr int lateRank = 3;

std::size_t shareOf(std::size_t room) { return std::max<std::size_t>(1, room / sharesOfRoom); }

bool takesAnAnswer(const Standing& standing) {
    return standing.phase == Standing::Phase::writing ||
           (standing.phase == Standing::Phase::waiting && standing.hasUntaken);
}

// The client of the highest rank gives way first. One of rank 0 never does.
int rankOfKnown(const Standing& standing, Standing::Clock::duration late) {
    if (standing.phase == Standing::Phase::answering) return standing.hasLeft ? lateRank + 1 : 0;
    if (takesAnAnswer(standing) && late > lateInTaking) return lateRank;
    if (standing.phase == Standing::Phase::waiting) return idleRank;
    return late > lateAfter ? lateRank : 1;
}

} // namespace

Source sourceOf(const Source& address) {
    if (std::equal(mappedPrefix.begin(), mappedPrefix.end(), address.begin())) {
        return address[mappedPrefix.size()] == loopbackNetwork ? loopback : address;
    }
    if (address == loopback) return loopback;
    Source network{};
    std::copy_n(address.begin(), networkBytes, network.begin());
    return network;
}

std::size_t Room::count(bool known) const {
    return static_cast<std::size_t>(
        std::count_if(standings.begin(), standings.end(),
                      [known](const Standing* standing) { return standing->isKnown == known && !standing->isClosed; }));
}

// How far behind a client at the least rate this one is; negative if it is ahead.
Standing::Clock::duration Room::lateness(const Standing& standing, Standing::Clock::time_point now) const {
    const std::chrono::duration<double> earned(static_cast<double>(standing.moved) /
                                               static_cast<double>(limits.bytesPerSecond));
    return now - standing.since - std::chrono::duration_cast<Standing::Clock::duration>(earned);
}

// The one of the highest rank, which is not zero. Among several, one of an address that has more than its share; among
// several of these, the one that is furthest behind.
template <class Rank>
Standing* Room::chosen(bool known, std::size_t size, Standing::Clock::time_point now, Rank rank) const {
    std::map<Source, std::size_t> counts;
    for (const Standing* standing : standings) {
        if (standing->isKnown == known && !standing->isClosed) ++counts[standing->source];
    }
    const std::size_t share = shareOf(size);
    Standing* first = nullptr;
    std::tuple<int, bool, Standing::Clock::duration> best;
    for (Standing* standing : standings) {
        if (standing->isKnown != known || standing->isClosed) continue;
        const Standing::Clock::duration late = lateness(*standing, now);
        const std::tuple<int, bool, Standing::Clock::duration> candidate(rank(*standing, late),
                                                                         counts[standing->source] > share, late);
        if (std::get<int>(candidate) == 0 || (first && candidate <= best)) continue;
        first = standing;
        best = candidate;
    }
    return first;
}

Standing* Room::newcomerToGiveWay(Standing::Clock::time_point now) const {
    return chosen(false, limits.newcomers, now, [](const Standing& standing, Standing::Clock::duration) {
        return standing.phase == Standing::Phase::answering ? 1 : 2;
    });
}

std::size_t Room::atWork(const Source& source) const {
    return static_cast<std::size_t>(std::count_if(standings.begin(), standings.end(), [&](const Standing* standing) {
        return standing->isKnown && !standing->isClosed && standing->phase != Standing::Phase::waiting &&
               standing->source == source;
    }));
}

Standing* Room::knownToGiveWay(Standing::Clock::time_point now, const Source& to) const {
    Standing* found = chosen(true, limits.known, now, rankOfKnown);
    if (!found || rankOfKnown(*found, lateness(*found, now)) > idleRank) return found;
    return atWork(to) > shareOf(limits.known) ? nullptr : found;
}

bool Room::isFullOfGuests() const {
    const auto guests = std::count_if(standings.begin(), standings.end(), [](const Standing* standing) {
        return standing->isGuest && !standing->isClosed;
    });
    return static_cast<std::size_t>(guests) >= shareOf(limits.known);
}

Standing* Room::guestToGiveWay(Standing::Clock::time_point now) const {
    const auto place = std::find_if(standings.begin(), standings.end(), [&](const Standing* standing) {
        return standing->isGuest && !standing->isClosed && rankOfKnown(*standing, lateness(*standing, now)) >= lateRank;
    });
    return place == standings.end() ? nullptr : *place;
}

} // namespace cimhost::http
