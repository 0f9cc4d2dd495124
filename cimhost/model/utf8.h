// UTF-8: which byte sequences are characters, and how one becomes the other.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace cimhost {

/// Bytes of the character at the text's beginning; 0 if there is none. Overlong forms, surrogates and what lies beyond
/// U+10FFFF are none; neither is the end of the text.
std::size_t utf8Length(std::string_view text) noexcept;

/// True if the whole text is made of characters; true for an empty one.
bool isUtf8(std::string_view text) noexcept;

/// The code of a text that is one character, else nothing.
std::optional<char32_t> singleCharacter(std::string_view text) noexcept;

/// Appends one character; U+FFFD stands in for a surrogate or a code beyond U+10FFFF.
void appendUtf8(std::string& out, char32_t code);

} // namespace cimhost
