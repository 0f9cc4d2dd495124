// Fixed-size text for records: always terminated, never written past its end.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <string_view>

namespace merolt {

/// N bytes, terminator included. What does not fit is cut; a card's texts may be longer than any record expects.
template <std::size_t N>
class FixedText {
public:
    static constexpr std::size_t capacity = N - 1;

    /// Empty. What lies behind a terminator is nobody's, so that a long text costs no more to make than a short one.
    FixedText() { bytes[0] = '\0'; }

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

    /// Takes the texts one behind the other, up to the capacity. None of them may be this one.
    /// @return its length then.
    std::size_t join(std::initializer_list<std::string_view> parts);

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
    char bytes[N];
};

/// Writes a text piece by piece without looking for its end each time.
class TextWriter {
public:
    /// The text is empty then.
    template <std::size_t N>
    explicit TextWriter(FixedText<N>& target) : place(target.data()), room(N - 1) {
        target.clear();
    }

    /// What does not fit is cut.
    void append(std::string_view piece) {
        const std::size_t length = piece.size() < room ? piece.size() : room;
        std::memcpy(place, piece.data(), length);
        place += length;
        room -= length;
        *place = '\0';
    }

    /// How much room is left for more.
    std::size_t left() const { return room; }

private:
    char* place;
    std::size_t room;
};

template <std::size_t N>
std::size_t FixedText<N>::join(std::initializer_list<std::string_view> parts) {
    TextWriter writer(*this);
    for (const std::string_view part : parts)
        writer.append(part);
    return capacity - writer.left();
}

/// The same with its length beside it, for texts that are read several times for each that is written. It takes texts
/// without a zero byte.
template <std::size_t N>
class MeasuredText {
public:
    static constexpr std::size_t capacity = FixedText<N>::capacity;

    const char* text() const { return bytes.text(); }
    bool empty() const { return length == 0; }
    std::string_view view() const { return {bytes.text(), length}; }

    // As FixedText has them.
    void clear() { join({}); }
    void assign(std::string_view value) { join({value}); }
    void assignField(const char* field, std::size_t width) { assign({field, strnlen(field, width)}); }
    void join(std::initializer_list<std::string_view> parts) { length = bytes.join(parts); }
    bool equals(std::string_view other) const { return view() == other; }

private:
    FixedText<N> bytes;
    std::size_t length = 0;
};

} // namespace merolt
