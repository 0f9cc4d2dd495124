// How a server wants its memory from the C library.
#pragma once

#include <malloc.h>

namespace cimhost {

/// Large blocks go back to the system when they are freed, whatever was freed before. The C library alone would take
/// the size of a freed flash image as the size from which a block is large, and keep the memory of every later one.
///
/// The end of a heap goes back only from four times that size on. Answers of a few hundred KiB to several clients stand
/// there at once, and taking that memory anew for each request costs up to as much as the rest of the request.
///
/// To be called once, before threads begin.
inline void giveLargeBlocksBack() {
    constexpr int largeBlock = 1 << 20;
    mallopt(M_MMAP_THRESHOLD, largeBlock);
    mallopt(M_TRIM_THRESHOLD, 4 * largeBlock);
}

} // namespace cimhost
