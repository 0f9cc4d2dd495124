// Reads packed records as a foreign program would: by offset, without their structs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace tavik::test {

template <typename Value>
Value valueAt(const void* record, std::size_t offset) {
    Value value;
    std::memcpy(&value, static_cast<const char*>(record) + offset, sizeof value);
    return value;
}

inline const void* pointerAt(const void* record, std::size_t offset) { return valueAt<const void*>(record, offset); }

/** The text in a field of this width, which must be terminated within it. */
inline std::string textAt(const void* record, std::size_t offset, std::size_t width) {
    const char* text = static_cast<const char*>(record) + offset;
    const auto length = strnlen(text, width);
    return length < width ? std::string(text, length) : "not terminated: " + std::string(text, length);
}

inline std::vector<std::uint8_t> bytesAt(const void* record, std::size_t offset, std::size_t length) {
    const auto* bytes = static_cast<const std::uint8_t*>(record) + offset;
    return {bytes, bytes + length};
}

} // namespace tavik::test
