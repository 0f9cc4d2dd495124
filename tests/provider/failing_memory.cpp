#include "failing_memory.h"

#include <cstdlib>
#include <new>

namespace {

thread_local bool (*refusal)(std::size_t bytes) = nullptr;
thread_local unsigned allocationsLeft = 0;
thread_local bool failed = false;

bool isTheLast(std::size_t) {
    if (allocationsLeft == 0 || --allocationsLeft > 0) return false;
    return failed = true;
}

/// Null where the memory is refused.
void* tryToAllocate(std::size_t size) { return refusal && refusal(size) ? nullptr : std::malloc(size > 0 ? size : 1); }

void* allocate(std::size_t size) {
    void* block = tryToAllocate(size);
    if (!block) throw std::bad_alloc();
    return block;
}

} // namespace

void refuseAllocations(bool (*isRefused)(std::size_t bytes)) { refusal = isRefused; }

void failAllocation(unsigned n) {
    allocationsLeft = n;
    failed = false;
    refuseAllocations(isTheLast);
}

bool allocationFailed() {
    allocationsLeft = 0;
    return failed;
}

void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
// std::stable_sort asks in this way. The sanitizer's own form would give what the ones below cannot free.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return tryToAllocate(size); }
void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t) noexcept { std::free(block); }
