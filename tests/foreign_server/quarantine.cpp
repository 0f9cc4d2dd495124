#include "quarantine.h"

#include <cstring>
#include <deque>
#include <memory>
#include <mutex>
#include <new>

#ifdef FOREIGN_SERVER_WITH_ASAN
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(block, size) static_cast<void>(0)
#define ASAN_UNPOISON_MEMORY_REGION(block, size) static_cast<void>(0)
#endif

namespace foreign_server {

namespace {

// Beyond this the oldest dead memory goes back: a process that runs all tests must not take the machine's memory.
constexpr std::size_t mostBuried = std::size_t{256} << 20;

struct Grave {
    void* block;
    std::size_t size;
};

struct Graveyard {
    std::mutex mutex;
    std::deque<Grave> graves;
    std::size_t bytes = 0;
};

// Never destroyed: a provider's thread may outlive everything else.
Graveyard& graveyard() {
    static auto& only = *std::make_unique<Graveyard>().release();
    return only;
}

} // namespace

void* allocateShown(std::size_t size) { return ::operator new(size); }

void fillDead(void* block, std::size_t size, unsigned char lastByte) noexcept {
    std::memset(block, deadByte, size);
    static_cast<unsigned char*>(block)[size - 1] = lastByte;
}

void bury(void* block, std::size_t size) noexcept {
    ASAN_POISON_MEMORY_REGION(block, size);
    Graveyard& yard = graveyard();
    const std::lock_guard guard(yard.mutex);
    yard.graves.push_back({block, size});
    yard.bytes += size;
    while (yard.bytes > mostBuried) {
        const Grave oldest = yard.graves.front();
        yard.graves.pop_front();
        yard.bytes -= oldest.size;
        ASAN_UNPOISON_MEMORY_REGION(oldest.block, oldest.size);
        ::operator delete(oldest.block);
    }
}

ShownText::ShownText(std::string_view text)
    : characters(static_cast<char*>(allocateShown(text.size() + 1))), size(text.size() + 1) {
    text.copy(characters, text.size());
    characters[text.size()] = '\0';
}

ShownText::~ShownText() {
    if (!characters) return;
    fillDead(characters, size, 0);
    bury(characters, size);
}

} // namespace foreign_server
