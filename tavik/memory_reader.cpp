#include "tavik/memory_reader.h"

#include <algorithm>
#include <vector>

#include <limits.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

namespace tavik {

namespace {

constexpr std::uintptr_t pageSize = 4096;
constexpr std::size_t piecesPerCall = IOV_MAX;

/** The memory cut at pages: the system copies a piece whole or not at all. */
std::vector<iovec> piecesOf(std::uintptr_t from, std::size_t length) {
    std::vector<iovec> pieces;
    while (length > 0 && pieces.size() < piecesPerCall) {
        const std::size_t piece = std::min<std::size_t>(length, pageSize - from % pageSize);
        pieces.push_back({reinterpret_cast<void*>(from), piece});
        from += piece;
        length -= piece;
    }
    return pieces;
}

} // namespace

std::size_t readMemory(const void* from, std::span<std::uint8_t> to) {
    std::size_t copied = 0;
    while (copied < to.size()) {
        const auto pieces = piecesOf(reinterpret_cast<std::uintptr_t>(from) + copied, to.size() - copied);
        const iovec room{to.data() + copied, to.size() - copied};
        // The kernel looks at the pages, so this needs no care for who owns them.
        const long length = syscall(SYS_process_vm_readv, getpid(), &room, 1UL, pieces.data(), pieces.size(), 0UL);
        if (length <= 0) break;
        copied += static_cast<std::size_t>(length);
    }
    return copied;
}

} // namespace tavik
