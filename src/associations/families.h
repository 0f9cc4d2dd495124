// All associations: the plain ones, which are rows of a table for each side, and those that have a module of their own.
#pragma once

#include "associations/association.h"

#include <array>
#include <span>

namespace merolt::association {

using Families = std::span<const Family* const>;

Families storageFamilies();
Families ethernetFamilies();

/// The rows of a table, then the modules.
template <std::size_t plainCount, std::size_t moduleCount>
constexpr auto together(const Family (&plain)[plainCount], const Family* const (&modules)[moduleCount]) {
    std::array<const Family*, plainCount + moduleCount> all{};
    for (std::size_t index = 0; index < plainCount; ++index)
        all[index] = &plain[index];
    for (std::size_t index = 0; index < moduleCount; ++index)
        all[plainCount + index] = modules[index];
    return all;
}

} // namespace merolt::association
