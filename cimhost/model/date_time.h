// CIM's 25 characters for a point in time or an interval, and the microseconds they stand for.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace cimhost {

struct DateTimeValue {
    std::uint64_t microseconds = 0; ///< since 1970-01-01 00:00 UTC, or the interval's length
    bool isInterval = false;
};

constexpr std::size_t dateTimeTextLength = 25;

/// "yyyymmddhhmmss.mmmmmmsutc" with s + or - and utc in minutes, or "ddddddddhhmmss.mmmmmm:000". Digits that are not
/// known are asterisks, from some place to the point in time's end; they count as the least possible. A time before
/// 1970 counts as 1970. Nothing if the text is not legal.
std::optional<DateTimeValue> parseDateTime(std::string_view text) noexcept;

/// Writes 25 characters, in UTC for a point in time. False beyond the year 9999 or 99999999 days.
bool formatDateTime(DateTimeValue value, char* text) noexcept;

} // namespace cimhost
