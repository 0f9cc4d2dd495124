// All associations: the plain ones, which are rows of a table for each side, and those that have a module of their own.
#pragma once

#include "associations/association.h"

#include <array>
#include <span>

namespace merolt::association {

using Families = std::span<const Family* const>;

Families storageFamilies();
Families ethernetFamilies();

/// Whether rows tell what every request needs.
constexpr bool areComplete(std::span<const Family> rows) {
    for (const Family& row : rows) {
        const Matching& matching = row.matching;
        const bool isNamed = row.token && row.className && row.left.objects.name && row.right.objects.name;
        const bool isMatched = matching.forEachPair && matching.findLeft.find && matching.findRight.find;
        if (!isNamed || !isMatched) return false;
    }
    return true;
}

/// Stops the compiler at rows that lack something. With UndefinedBehaviorSanitizer GCC takes no function's address for
/// a constant, so there it lets them pass.
#define ASSERT_COMPLETE(rows)                                                                                          \
    static_assert(!__builtin_constant_p(areComplete(rows)) || areComplete(rows), "a row lacks a name or its matching")

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
