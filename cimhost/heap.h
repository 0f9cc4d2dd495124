// How a server wants its memory from the C library.
#pragma once

#include <malloc.h>

namespace cimhost {

/// The C library gives large blocks back to the system, but takes the size of what was freed as the size from which a
/// block is large: after one flash image it would keep the memory of every later one. What is told here stays. The end
/// of a heap goes back from the same size on only: an answer of 64 ports has 300 KiB, and to give them back and take
/// them again for each request costs as much as the rest of it. To be called once, before threads begin.
inline void giveLargeBlocksBack() {
    constexpr int large = 1 << 20;
    mallopt(M_MMAP_THRESHOLD, large);
    mallopt(M_TRIM_THRESHOLD, large);
}

} // namespace cimhost
