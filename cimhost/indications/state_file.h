// The small JSON file that keeps subscriptions over a restart.
#pragma once

#include "cimhost/broker/objects.h"
#include "cimhost/cimxml/values.h"
#include "cimhost/model/class_repository.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace cimhost {

/// Who made an instance: a user's name; empty for a client without a name; nothing if a file of an older version does
/// not say.
using Owner = std::optional<std::string>;

struct OwnedInstance {
    const InstanceObject* instance = nullptr;
    Owner owner;
};

/// The text of the file: each instance with its class, its owner, and every property that has a value, all as texts.
std::string stateText(const std::vector<OwnedInstance>& instances);

using TakeInstance = std::function<void(const cimxml::Instance& instance, const Owner& owner)>;

/// Calls take for each instance of the text, in the order of the text. Throws std::runtime_error with the file's name,
/// the place and the reason, if the text is wrong or take throws.
/// @param file only named in errors
void readState(const std::filesystem::path& file, std::string_view text, const ClassRepository& repository,
               std::string_view nameSpace, const TakeInstance& take);

/// The most bytes of a state file that is written or read.
constexpr std::size_t longestStateFile = std::size_t{16} << 20;

} // namespace cimhost
