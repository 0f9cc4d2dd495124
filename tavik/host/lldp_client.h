// Asks the LLDP daemon of the machine (lldpd) who is at the other end of each port, where there is one.
#pragma once

#include <chrono>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "tavik/host/attribute.h"
#include "tavik/host/neighbours.h"

namespace tavik::host {

/** By the name of the own interface. One without neighbours may be missing. */
using NeighboursOfPorts = std::map<std::string, std::vector<Neighbour>>;

/** The daemon's library, which is looked for at run time. */
inline constexpr const char* lldpLibrary = "liblldpctl.so.4";

/** Asks the daemon about all ports. Waits no longer than the limit in all, whatever the daemon does.
 *  @param library a name or path for dlopen(3). It stays in the process once it has been found. */
Attribute<NeighboursOfPorts> askLldpDaemon(const char* library, std::chrono::milliseconds limit);

/** Keeps what the daemon told for some seconds, since each port is asked about on its own, and does not ask again for
 *  longer where it has failed. Callable from several threads at once. */
class LldpNeighbours {
public:
    using Clock = std::chrono::steady_clock;

    static constexpr std::chrono::seconds keptFor{10}; ///< ports tell of themselves every thirty
    static constexpr std::chrono::seconds pauseAfterFailure{60};

    explicit LldpNeighbours(std::string library = lldpLibrary,
                            std::chrono::milliseconds limit = std::chrono::milliseconds(500))
        : library_(std::move(library)), limit_(limit) {}

    /** Of one port; absent without a daemon, and where it knows none. */
    Attribute<std::vector<Neighbour>> of(const std::string& interface, Clock::time_point now = Clock::now());

private:
    const std::string library_;
    const std::chrono::milliseconds limit_;
    std::mutex mutex_; // guards what follows
    Attribute<NeighboursOfPorts> told_;
    Clock::time_point until_{}; ///< when to ask again
};

} // namespace tavik::host
