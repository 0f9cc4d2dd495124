// Fixed-size text for records: always terminated, never written past its end.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace merolt {

/// N bytes, terminator included. What does not fit is cut; a card's texts may be longer than any record expects.
template <std::size_t N>
class FixedText {
public:
    static constexpr std::size_t capacity = N - 1;

    const char* text() const { return bytes; }
    char* data() { return bytes; }
    bool empty() const { return bytes[0] == '\0'; }
    std::string_view view() const { return {bytes, std::strlen(bytes)}; }

    void clear() { bytes[0] = '\0'; }

    /// Takes the text up to the capacity.
    void assign(std::string_view value) {
        const std::size_t length = value.size() < capacity ? value.size() : capacity;
        std::memmove(bytes, value.data(), length);
        bytes[length] = '\0';
    }

    /// Takes a text that a library laid out in a field of `width` bytes and may have left without terminator.
    void assignField(const char* field, std::size_t width) { assign({field, strnlen(field, width)}); }

    void append(std::string_view value) {
        const std::size_t used = std::strlen(bytes);
        const std::size_t room = capacity - used;
        const std::size_t length = value.size() < room ? value.size() : room;
        std::memcpy(bytes + used, value.data(), length);
        bytes[used + length] = '\0';
    }

    /// printf into the text; the result is cut at the capacity.
    void format(const char* pattern, ...) __attribute__((format(printf, 2, 3))) {
        va_list arguments;
        va_start(arguments, pattern);
        std::vsnprintf(bytes, N, pattern, arguments);
        va_end(arguments);
    }

    /// Case-sensitive.
    bool equals(std::string_view other) const { return view() == other; }

private:
    char bytes[N] = {};
};

} // namespace merolt
