// One question to the provider here, as server_round.h puts it to CIM servers.
#pragma once

#include "cimhost/cli/server_round.h"
#include "cimhost/service/host.h"

#include <string>

namespace cimhost::cli {

/// Loads the provider, prints the answer to standard output, without what the provider prints, and lets the provider
/// go. Throws what the question throws, and what keeps the provider from being loaded.
/// @return the failure of the answer.
std::string askHere(const HostOptions& options, const ServerQuestion& question);

} // namespace cimhost::cli
