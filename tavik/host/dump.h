// The facts of a host as text for people: every attribute in a line of its own, an absent one with its reason.
#pragma once

#include <string>

#include "tavik/host/host_facts.h"

namespace tavik::host {

std::string dumpFacts(const HostFacts& facts);

} // namespace tavik::host
