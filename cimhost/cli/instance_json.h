// Objects of CIM as values of the JSON library, for everything that is printed as JSON.
#pragma once

#include "cimhost/broker/objects.h"

#include <nlohmann/json.hpp>
#include <string>

namespace cimhost::cli {

using Json = nlohmann::ordered_json;

/// {"class": ..., "path": ..., "properties": {...}}
Json instanceJson(const InstanceObject& instance);

/// The document as text. What is no UTF-8 in a device's texts must not cost the tool the whole answer.
std::string dump(const Json& json);

} // namespace cimhost::cli
