// What is wrong with adapters, for people and for tools.
#pragma once

#include "cimhost/cli/terminal.h"
#include "cimhost/doctor/rules.h"

#include <span>
#include <string>

namespace cimhost::cli {

/// Each diagnosis with its evidence, why it matters and what to do, most urgent first. The advice of a rule stands
/// once.
std::string doctorText(std::span<const doctor::Diagnosis> found, const Layout& layout);

/// {"faults": 1, "warnings": 2, "findings": [{"rule": ...}]}
std::string doctorJson(std::span<const doctor::Diagnosis> found);

/// Every rule with its urgency and what it looks for.
std::string rulesText(const Layout& layout);
std::string rulesJson();

} // namespace cimhost::cli
