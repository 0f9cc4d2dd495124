// Who is at the other end of a port's cable, as LLDP (IEEE 802.1AB) tells.
#pragma once

#include <string>
#include <vector>

#include "tavik/host/attribute.h"

namespace tavik::host {

/** Each text may be empty: a neighbour need not tell it. */
struct Neighbour {
    std::string systemName;
    std::string port;            ///< its identifier: "Ethernet1/7", or a MAC address
    std::string portDescription; ///< free text
    std::string chassis;         ///< its identifier, mostly a MAC address

    bool operator==(const Neighbour&) const = default;
};

/** The name of a recorded file with the neighbours of one port. */
inline constexpr const char* neighboursFile = "neighbours";

/** A text of a neighbour as it can be shown: what is no printable ASCII becomes a question mark, blanks at the ends go,
 *  and what is beyond 255 characters, the most that LLDP carries. */
std::string neighbourText(std::string text);

/** "switch17, port Ethernet1/7 (to web3), chassis 00:1c:73:00:00:01". What is not told is missing. */
std::string showNeighbour(const Neighbour& neighbour);

/** A line each, with tabs between: CHASSIS PORT SYSTEM-NAME PORT-DESCRIPTION, "-" for an empty text. */
std::string formatNeighbours(const std::vector<Neighbour>& neighbours);

/** Absent if any line is not of that form. */
Attribute<std::vector<Neighbour>> parseNeighbours(const std::string& lines);

} // namespace tavik::host
