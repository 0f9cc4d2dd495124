// The name of a source of adapters: where it stands, and what it means.
#pragma once

#include <optional>
#include <string>
#include <variant>

#include "tavik/source.h"

namespace tavik {

/** The file whose first line names this machine's source. */
inline constexpr const char* sourceFile = "/etc/tavik/source";

/** The source's name: the environment's, else the first line of the file without blanks at its ends, else "host".
 *  @param fromEnvironment null or empty counts as none. @param file one that is missing, or no regular file, counts as
 *  empty. */
std::string chosenSource(const char* fromEnvironment, const std::string& file);

/** What a good name says. */
struct SourceName {
    std::optional<std::string> fleet;     ///< path of a fleet file
    std::optional<std::string> recording; ///< folder of a recorded host; the host itself where there is neither
};

/** @return the error for a name that is none of "host", "fleet:PATH" and "recording:PATH". */
std::variant<SourceName, FleetError> understandSource(const std::string& name);

} // namespace tavik
