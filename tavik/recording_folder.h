// A folder that record-host.sh made: whether it is one, told before anything is read from it.
#pragma once

#include <filesystem>
#include <optional>

#include "tavik/source.h"

namespace tavik {

/** @return what is wrong with the folder, named with its path; nothing if it can be shown. A recording has a folder
 *  "sys" that is no symbolic link. */
std::optional<FleetError> checkRecording(const std::filesystem::path& folder);

} // namespace tavik
