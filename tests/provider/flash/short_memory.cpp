#include "short_memory.h"

#include <cstdlib>
#include <new>

namespace {

struct Refusal {
    std::size_t from = 0;
    std::size_t below = 0;
    std::size_t count = 0;
};

thread_local Refusal refusal;

bool isRefused(std::size_t size) {
    if (size < refusal.from || size >= refusal.below) return false;
    ++refusal.count;
    return true;
}

void* allocate(std::size_t size) {
    void* block = isRefused(size) ? nullptr : std::malloc(size > 0 ? size : 1);
    if (!block) throw std::bad_alloc();
    return block;
}

} // namespace

ShortMemory::ShortMemory(std::size_t from, std::size_t below) { refusal = {from, below, 0}; }

ShortMemory::~ShortMemory() { refusal = {}; }

std::size_t ShortMemory::refused() const { return refusal.count; }

void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t) noexcept { std::free(block); }

// The linker leads every calloc of the program here.
extern "C" void* __real_calloc(std::size_t count, std::size_t size);
extern "C" void* __wrap_calloc(std::size_t count, std::size_t size);

extern "C" void* __wrap_calloc(std::size_t count, std::size_t size) {
    return isRefused(count * size) ? nullptr : __real_calloc(count, size);
}
