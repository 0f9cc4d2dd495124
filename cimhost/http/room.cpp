#include "cimhost/http/room.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace cimhost::http {

namespace {

constexpr std::chrono::milliseconds lateAfter{250};
constexpr std::size_t sharesOfRoom = 4;

constexpr std::array<std::uint8_t, 12> mappedPrefix = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff};
constexpr Source loopback = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
constexpr std::uint8_t loopbackNetwork = 127;
constexpr std::size_t networkBytes = 8;

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

// How long ago a client at the least rate would have been where this one is.
Standing::Clock::duration Room::lateness(const Standing& standing, Standing::Clock::time_point now) const {
    const std::chrono::duration<double> earned(static_cast<double>(standing.moved) /
                                               static_cast<double>(limits.bytesPerSecond));
    return now - standing.since - std::chrono::duration_cast<Standing::Clock::duration>(earned);
}

// The one of the highest rank that is not zero; among these one of an address that has more than its share; among these
// the latest.
template <class Rank>
Standing* Room::chosen(bool known, std::size_t size, Standing::Clock::time_point now, Rank rank) const {
    std::map<Source, std::size_t> counts;
    for (const Standing* standing : standings) {
        if (standing->isKnown == known && !standing->isClosed) ++counts[standing->source];
    }
    const std::size_t share = std::max<std::size_t>(1, size / sharesOfRoom);
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

Standing* Room::knownToGiveWay(Standing::Clock::time_point now) const {
    return chosen(true, limits.known, now, [](const Standing& standing, Standing::Clock::duration late) {
        if (standing.phase == Standing::Phase::answering) return standing.hasLeft ? 4 : 0;
        if (standing.phase == Standing::Phase::waiting) return 2;
        return late > lateAfter ? 3 : 1;
    });
}

} // namespace cimhost::http
