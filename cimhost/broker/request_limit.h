// How much memory the objects of one request may take.
#pragma once

#include "cimhost/broker/arena.h"

#include <cstddef>

namespace cimhost {

/// Several times what the largest hosts need: the 5632 software identities of 512 cards take 14 MiB.
constexpr std::size_t mostRequestMebibytes = 256;

/// True if a provider may make no more objects for this request.
[[nodiscard]] inline bool isFull(const Arena& arena) noexcept { return arena.size() > mostRequestMebibytes << 20; }

} // namespace cimhost
