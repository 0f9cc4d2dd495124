// Which source of adapters the library uses.
#pragma once

#include <memory>
#include <string>
#include <variant>

#include "tavik/source.h"

namespace tavik {

/** What the environment says, or the first line of the file if the environment says nothing, or "host".
 *  @param fromEnvironment the value of TAVIK_SOURCE, null if it is not set. */
std::string chosenSource(const char* fromEnvironment, const std::string& file);

/** @param choice "host" or "fleet:PATH". */
std::variant<std::unique_ptr<Source>, FleetError> makeSource(const std::string& choice);

} // namespace tavik
