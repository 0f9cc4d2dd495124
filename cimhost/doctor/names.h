// How evidence calls things.
#pragma once

#include "cimhost/monitoring/snapshot.h"

#include <string>

namespace cimhost::doctor {

/// "port 1 of card MC1020R4K00317"; the tag where no such jack is published. Behind it the interfaces at that jack,
/// where they are told: "port 1 of card MC1020R4K00317 (eth2, host8)".
std::string portText(const monitoring::Snapshot& snapshot, const std::string& jack);
/// The same with the port's own interface, and the port's own name where it has no jack.
std::string portText(const monitoring::Snapshot& snapshot, const monitoring::FibreChannelPort& port);
std::string portText(const monitoring::Snapshot& snapshot, const monitoring::EthernetPort& port);

/// A number with that many decimals behind the point.
std::string fixed(double number, int decimals);

/// "0.4900 mW (-3.1 dBm)"; "no light" for zero.
std::string powerText(double milliwatts);

} // namespace cimhost::doctor
