// Units of numbers, as class definitions write them (DSP0004, annex C: programmatic units), and as people read them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace cimhost::cli {

/// Bits per second in one of that unit: 1 for "bit / second", 1000000 for "bit / second * 10^6"; nothing for every
/// other unit.
std::optional<std::uint64_t> bitsPerSecond(std::string_view unit);

/// "10.625 Gbit/s" for 10625000000 of the unit "bit / second": in the largest unit that fits, cut behind the third
/// digit. Empty for a unit that nobody knows here, and for a number beyond 64 bits.
std::string textWithUnit(std::uint64_t number, std::string_view unit);

} // namespace cimhost::cli
