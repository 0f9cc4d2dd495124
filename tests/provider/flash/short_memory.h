// Memory that runs out at a test's wish.
#pragma once

#include <cstddef>

/// While it lives, this thread gets no block of these sizes from calloc and the forms of new.
class ShortMemory {
public:
    /// @param from, below bytes.
    ShortMemory(std::size_t from, std::size_t below);
    ~ShortMemory();
    ShortMemory(const ShortMemory&) = delete;
    ShortMemory& operator=(const ShortMemory&) = delete;

    /// How many blocks were refused so far.
    std::size_t refused() const;
};
