// Dates by the microsecond and in CIM's 25 characters.
#pragma once

#include "values.h"

namespace foreign_server {

/// Nothing for a text that is no date.
bool isDateTime(const std::string& text);
CMPIUint64 microsecondsOf(const DateTimeData& date);
bool isIntervalOf(const DateTimeData& date);
/// A date that was made of a number reads in this server's own zone, an hour east of Greenwich.
std::string textOf(const DateTimeData& date);

} // namespace foreign_server
