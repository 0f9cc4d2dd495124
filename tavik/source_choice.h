// Makes the source of adapters that the library uses.
#pragma once

#include <memory>
#include <string>
#include <variant>

#include "tavik/source.h"
#include "tavik/source_name.h"

namespace tavik {

/** @param choice "host", "fleet:PATH" or "recording:PATH". */
std::variant<std::unique_ptr<Source>, FleetError> makeSource(const std::string& choice);

} // namespace tavik
