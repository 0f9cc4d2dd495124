// What a flash image brings.
#pragma once

#include "tavik/flash_image.h"

#include <nlohmann/json.hpp>

namespace cimhost::cli {

/// Model, versions, date and size, by name; versions that it leaves out are empty.
nlohmann::ordered_json imageFacts(const tavik::FlashImage& image);

} // namespace cimhost::cli
