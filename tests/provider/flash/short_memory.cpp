#include "short_memory.h"

#include "failing_memory.h"

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

} // namespace

ShortMemory::ShortMemory(std::size_t from, std::size_t below) {
    refusal = {from, below, 0};
    refuseAllocations(isRefused);
}

ShortMemory::~ShortMemory() {
    refuseAllocations(nullptr);
    refusal = {};
}

std::size_t ShortMemory::refused() const { return refusal.count; }

// The linker leads every calloc of the program here.
extern "C" void* __real_calloc(std::size_t count, std::size_t size);
extern "C" void* __wrap_calloc(std::size_t count, std::size_t size);

extern "C" void* __wrap_calloc(std::size_t count, std::size_t size) {
    return isRefused(count * size) ? nullptr : __real_calloc(count, size);
}
