// Values as people read them: a number with its meaning, a speed in bits per second with its unit.
#pragma once

#include "cimhost/broker/objects.h"

#include <string>
#include <string_view>

namespace cimhost::cli {

/// As CIM-XML writes it, arrays with commas; empty for null. Printable.
std::string plainText(const CMPIData& data);

/// What a table shows of it: "OK" for an OperationalStatus of 2, "16 Gbit/s" for a Speed, of a reference only its class
/// and last key.
std::string shortText(std::string_view property, const CMPIData& data);

/// What a list shows of it: the value, and its meaning in parentheses where shortText() knows one.
std::string fullText(std::string_view property, const CMPIData& data);

} // namespace cimhost::cli
