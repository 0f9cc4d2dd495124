// The facts of a host as text for people: every attribute in a line of its own, an absent one with its reason.
#pragma once

#include <string>

#include "tavik/host/host_facts.h"

namespace tavik::host {

std::string dumpFacts(const HostFacts& facts);

/// The same as one JSON object under the same labels. An absent attribute is {"absent": reason}, and a label that comes
/// more than once has a list.
std::string dumpFactsAsJson(const HostFacts& facts);

} // namespace tavik::host
