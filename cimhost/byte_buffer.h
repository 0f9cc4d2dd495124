// A buffer of bytes that only grows. An answer is written into it and sent from it without a copy. New memory is not
// cleared, since it is about to be written anyway.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>
#include <memory>
#include <string_view>
#include <utility>

namespace cimhost {

class ByteBuffer {
public:
    /// Thrown by append() and prepare() where the buffer would become longer than it may be.
    struct Full : std::exception {
        [[nodiscard]] const char* what() const noexcept override { return "too many bytes"; }
    };

    ByteBuffer() = default;
    /// A buffer for at most so many bytes.
    explicit ByteBuffer(std::size_t most) : longest(most) {}
    explicit ByteBuffer(std::string_view text) { append(text); }
    ByteBuffer(ByteBuffer&& other) noexcept
        : bytes(std::move(other.bytes)), used(std::exchange(other.used, 0)), room(std::exchange(other.room, 0)),
          longest(other.longest) {}
    ByteBuffer& operator=(ByteBuffer&& other) noexcept {
        bytes = std::move(other.bytes);
        used = std::exchange(other.used, 0);
        room = std::exchange(other.room, 0);
        longest = other.longest;
        return *this;
    }

    [[nodiscard]] const char* data() const noexcept { return bytes.get(); }
    [[nodiscard]] std::size_t size() const noexcept { return used; }
    [[nodiscard]] bool empty() const noexcept { return used == 0; }
    [[nodiscard]] std::string_view view() const noexcept { return {bytes.get(), used}; }

    void append(std::string_view text) {
        if (text.empty()) return;
        if (text.size() > room - used) grow(text.size());
        std::memcpy(bytes.get() + used, text.data(), text.size());
        used += text.size();
    }

    /// Makes room for so many more bytes. The caller writes them at the address returned, and then tells commit() how
    /// many it has written.
    char* prepare(std::size_t count) {
        if (count > room - used) grow(count);
        return bytes.get() + used;
    }
    void commit(std::size_t count) noexcept { used += count; }

    void reserve(std::size_t total) {
        if (total > room) reallocate(total);
    }

    /// Keeps the first bytes, so many, and drops the others.
    void truncate(std::size_t total) noexcept { used = std::min(used, total); }

private:
    void grow(std::size_t count) {
        if (count > longest - used) throw Full();
        reallocate(std::min(longest, std::max({std::size_t{256}, used + count, room * 2})));
    }

    void reallocate(std::size_t total) {
        std::unique_ptr<char[]> larger = std::make_unique_for_overwrite<char[]>(total);
        if (used > 0) std::memcpy(larger.get(), bytes.get(), used);
        bytes = std::move(larger);
        room = total;
    }

    std::unique_ptr<char[]> bytes;
    std::size_t used = 0;
    std::size_t room = 0;
    std::size_t longest = SIZE_MAX;
};

} // namespace cimhost
