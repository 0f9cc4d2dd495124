// The adapter kind of the management library as the physical classes publish it.
#pragma once

#include <cstdint>

namespace merolt::physical {

constexpr std::uint32_t adapterTypeConverged = 3;

/// Kinds 1, 2 and 3 are storage-only and count from 0; any other kind is a converged adapter.
constexpr std::uint32_t adapterType(std::uint32_t kind) {
    return kind >= 1 && kind <= 3 ? kind - 1 : adapterTypeConverged;
}

} // namespace merolt::physical
