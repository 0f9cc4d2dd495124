#include "failing_memory.h"

#include <cstdlib>
#include <new>

namespace {

thread_local unsigned allocationsLeft = 0;
thread_local bool failed = false;

void* allocate(std::size_t size) {
    if (allocationsLeft > 0 && --allocationsLeft == 0) {
        failed = true;
        throw std::bad_alloc();
    }
    void* block = std::malloc(size > 0 ? size : 1);
    if (!block) throw std::bad_alloc();
    return block;
}

} // namespace

void failAllocation(unsigned n) {
    allocationsLeft = n;
    failed = false;
}

bool allocationFailed() {
    allocationsLeft = 0;
    return failed;
}

void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t) noexcept { std::free(block); }
