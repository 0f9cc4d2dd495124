// Memory that is handed out by moving a pointer, and given back all at once. Each request, each attached thread and
// each clone has an arena for its objects.
#pragma once

#include <cstddef>
#include <new>
#include <string_view>
#include <type_traits>
#include <utility>

namespace cimhost {

/// Used by one thread at a time.
class Arena {
public:
    Arena() = default;
    ~Arena();
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;

    /// Memory that is aligned for every type of CMPI. Throws std::bad_alloc, as do the functions below.
    void* allocate(std::size_t bytes) {
        bytes = (bytes + alignment - 1) & ~(alignment - 1);
        if (bytes > static_cast<std::size_t>(limit - next)) return allocateFromNewChunk(bytes);
        char* memory = next;
        next += bytes;
        return memory;
    }

    /// A copy of the text, with a NUL behind it that is no part of the view.
    std::string_view copyText(std::string_view text);

    /// Room for so many elements, not initialised.
    template <typename Element>
    Element* allocateArray(std::size_t count) {
        static_assert(std::is_trivially_destructible_v<Element> && alignof(Element) <= alignment);
        return static_cast<Element*>(allocate(count * sizeof(Element)));
    }

    /// Makes an object whose destructor is never run.
    template <typename Object, typename... Arguments>
    Object* make(Arguments&&... arguments) {
        static_assert(std::is_trivially_destructible_v<Object> && alignof(Object) <= alignment);
        return ::new (allocate(sizeof(Object))) Object(std::forward<Arguments>(arguments)...);
    }

    /// Bytes taken from the system.
    [[nodiscard]] std::size_t size() const noexcept { return total; }

    /// The end of what has been handed out so far. What comes behind it can be given back before the arena ends.
    struct Place {
        std::size_t chunks = 0;
        char* next = nullptr;
    };
    [[nodiscard]] Place place() const noexcept { return {chunkCount, next}; }
    /// Gives back what was handed out since that place, but nothing from before the last keepAll(). Later places must
    /// not be used any more.
    void rewind(const Place& to) noexcept;
    /// Keeps what has been handed out so far as long as the arena.
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
