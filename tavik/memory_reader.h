// Reading memory of which nobody says how far it reaches.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace tavik {

/** Copies memory of this process up to the first page that cannot be read; never faults.
 *  @return bytes copied; 0 also where the system forbids such reads. */
std::size_t readMemory(const void* from, std::span<std::uint8_t> to);

} // namespace tavik
