// When a server gives memory back to the system.
#pragma once

#include <malloc.h>

namespace cimhost {

/// Blocks of 1 MiB and more go back to the system when they are freed, whatever was freed before. By default the C
/// library raises that size to the size of each block that is freed: after one flash image it would keep the memory of
/// every later one.
///
/// Free memory at the end of a heap goes back only from four times that size on. Answers of a few hundred KiB to
/// several clients lie there at once. To take that memory anew for each request would cost up to as much as the rest of
/// the request.
///
/// Call this once, before threads begin.
inline void giveLargeBlocksBack() {
    constexpr int largeBlock = 1 << 20;
    mallopt(M_MMAP_THRESHOLD, largeBlock);
    mallopt(M_TRIM_THRESHOLD, 4 * largeBlock);
}

} // namespace cimhost
