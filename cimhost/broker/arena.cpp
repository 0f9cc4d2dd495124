#include "cimhost/broker/arena.h"

#include <algorithm>
#include <cstdlib>

namespace cimhost {
namespace {

// Chunks grow with the arena: a clone stays small, and a request with thousands of instances rarely asks the system for
// memory. They stay smaller than the blocks that the C library maps one by one.
constexpr std::size_t smallestChunk = 1024;
constexpr std::size_t largestChunk = 96 * 1024;

// Overwrites memory that was given back, so that a use of it shows.
void spoil([[maybe_unused]] char* begin, [[maybe_unused]] const char* end) {
#ifndef NDEBUG
    std::fill(begin, begin + (end - begin), '\xDB');
#endif
}

} // namespace

Arena::~Arena() {
    while (chunks) {
        Chunk* previous = chunks->previous;
        std::free(chunks);
        chunks = previous;
    }
}

std::string_view Arena::copyText(std::string_view text) {
    char* copy = static_cast<char*>(allocate(text.size() + 1));
    text.copy(copy, text.size());
    copy[text.size()] = '\0';
    return {copy, text.size()};
}

void* Arena::allocateFromNewChunk(std::size_t bytes) {
    const std::size_t usual = std::clamp(total, smallestChunk, largestChunk);
    const std::size_t size = std::max(usual, bytes + sizeof(Chunk));
    void* memory = std::malloc(size);
    if (!memory) throw std::bad_alloc();
    total += size;
    chunks = ::new (memory) Chunk{chunks, size};
    ++chunkCount;
    next = static_cast<char*>(memory) + sizeof(Chunk);
    limit = static_cast<char*>(memory) + size;
    char* first = next;
    next += bytes;
    return first;
}

void Arena::rewind(const Place& to) noexcept {
    const bool isKept = to.chunks < kept.chunks || (to.chunks == kept.chunks && to.next < kept.next);
    const Place target = isKept ? kept : to;
    if (chunkCount == target.chunks) {
        spoil(target.next, next);
        next = target.next;
        return;
    }
    // The newest chunk is the largest. It is kept, since what comes next is likely to fit into it.
    while (chunkCount > target.chunks + 1) {
        Chunk* const between = chunks->previous;
        chunks->previous = between->previous;
        total -= between->size;
        --chunkCount;
        std::free(between);
    }
    char* const first = reinterpret_cast<char*>(chunks) + sizeof(Chunk);
    spoil(first, next);
    next = first;
}

} // namespace cimhost
