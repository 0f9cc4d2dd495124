// Texts that the management library hands out by pointer. They are to end in NUL, and their length is told beside them;
// neither is relied on alone.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

namespace merolt {

/// What is read of a text at the most; no text of an adapter is as long.
constexpr std::size_t longestLibraryText = 2047;

/// The text up to its end, the told length or the longest one, whichever comes first.
/// @param length as told; 0 where the library tells none.
inline std::string_view libraryText(const char* text, std::uint32_t length = 0) {
    const std::size_t limit = length > 0 && length < longestLibraryText ? length : longestLibraryText;
    return {text, strnlen(text, limit)};
}

} // namespace merolt
