// Memory that is handed out by moving a pointer and given back all at once: what a request, an attached thread or a
// clone is made of.
#pragma once

#include <cstddef>
#include <new>
#include <string_view>
#include <type_traits>
#include <utility>

namespace cimhost {

/// Not for use by two threads at once.
class Arena {
public:
    Arena() = default;
    ~Arena();
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;

    /// Aligned for every type that CMPI knows. Throws std::bad_alloc.
    void* allocate(std::size_t bytes) {
        bytes = (bytes + alignment - 1) & ~(alignment - 1);
        if (bytes > static_cast<std::size_t>(limit - next)) return allocateFromNewChunk(bytes);
        char* memory = next;
        next += bytes;
        return memory;
    }

    /// A copy that ends in NUL; the view does not count it.
    std::string_view copyText(std::string_view text);

    /// Uninitialised room for count elements.
    template <typename Element>
    Element* allocateArray(std::size_t count) {
        static_assert(std::is_trivially_destructible_v<Element> && alignof(Element) <= alignment);
        return static_cast<Element*>(allocate(count * sizeof(Element)));
    }

    /// An object whose destructor nobody runs.
    template <typename Object, typename... Arguments>
    Object* make(Arguments&&... arguments) {
        static_assert(std::is_trivially_destructible_v<Object> && alignof(Object) <= alignment);
        return ::new (allocate(sizeof(Object))) Object(std::forward<Arguments>(arguments)...);
    }

    /// Bytes taken from the system.
    [[nodiscard]] std::size_t size() const noexcept { return total; }

    /// Where something begins that may go before the arena does.
    struct Place {
        std::size_t chunks = 0;
        char* next = nullptr;
    };
    [[nodiscard]] Place place() const noexcept { return {chunkCount, next}; }
    /// Gives back what was handed out since that place, but nothing that keepAll() holds on to. Places behind it mean
    /// nothing any more.
    void rewind(const Place& to) noexcept;
    /// What is handed out by now stays as long as the arena.
    void keepAll() noexcept { kept = place(); }

private:
    static constexpr std::size_t alignment = 8;
    struct Chunk {
        Chunk* previous;
        std::size_t size;
    };

    void* allocateFromNewChunk(std::size_t bytes);

    Chunk* chunks = nullptr;
    std::size_t chunkCount = 0;
    Place kept;
    char* next = nullptr;
    char* limit = nullptr;
    std::size_t total = 0;
};

} // namespace cimhost
