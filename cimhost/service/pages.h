// Text that is kept for a while, in pages of memory of its own.
#pragma once

#include <cstddef>
#include <string_view>
#include <utility>

namespace cimhost {

/// A copy of a text, whose memory goes back to the system when it ends. Memory of the heap would not go back as long as
/// there is anything behind it that was taken later.
class Pages {
public:
    Pages() = default;
    /// Throws std::bad_alloc.
    explicit Pages(std::string_view text);
    ~Pages();
    Pages(Pages&& other) noexcept
        : start(std::exchange(other.start, nullptr)), used(std::exchange(other.used, 0)),
          taken(std::exchange(other.taken, 0)) {}
    Pages& operator=(Pages&& other) noexcept {
        std::swap(start, other.start);
        std::swap(used, other.used);
        std::swap(taken, other.taken);
        return *this;
    }

    [[nodiscard]] std::string_view view() const noexcept { return {start, used}; }
    /// Bytes taken from the system.
    [[nodiscard]] std::size_t size() const noexcept { return taken; }

private:
    char* start = nullptr;
    std::size_t used = 0;
    std::size_t taken = 0;
};

} // namespace cimhost
