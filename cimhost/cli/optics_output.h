// What modules tell of themselves and of their light, for people and for tools.
#pragma once

#include "cimhost/cli/terminal.h"
#include "cimhost/monitoring/snapshot.h"

#include <string>

namespace cimhost::cli {

/// A heading and a table for each module: readings with their limits, and what cannot be believed.
std::string opticsText(const monitoring::Snapshot& snapshot, const Layout& layout);

/// One object a module. Each number's name ends in its unit; what is not told is null.
std::string opticsJson(const monitoring::Snapshot& snapshot);

} // namespace cimhost::cli
