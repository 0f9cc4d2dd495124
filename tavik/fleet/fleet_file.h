// Reads the JSON description of a fleet and says exactly what is wrong with a bad one.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <variant>

#include "tavik/source.h"

namespace tavik {

/** A fleet file may be this long, in bytes, and nest its values this deep. */
inline constexpr std::size_t fleetFileSizeLimit = std::size_t{16} << 20;
inline constexpr std::size_t fleetFileDepthLimit = 32;
/** Cards, and functions of all cards together, that one file may describe, copies included. */
inline constexpr std::size_t fleetCardLimit = 4096;
inline constexpr std::size_t fleetFunctionLimit = 8192;

/** @param fileName stands at the head of an error message. */
FleetOrError parseFleet(std::string_view text, std::string_view fileName);

/** The bytes of the file, or why they cannot be read. Of a file that is too long it reads just enough for parseFleet to
 *  refuse it. */
std::variant<std::string, FleetError> readFleetText(const std::string& path);

/** Reads and parses the file; one that cannot be read is an error like any other. */
FleetOrError readFleetFile(const std::string& path);

} // namespace tavik
