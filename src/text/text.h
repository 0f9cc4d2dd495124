// Text and memory routines that every subsystem shares: trimming, comparing, printing addresses and names.
#pragma once

#include "text/fixed_text.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace merolt {

using WorldWideNameText = MeasuredText<17>;
using MacText = FixedText<13>;

/// Removes blanks and tabs at both ends, in place.
void trimString(char* text);

/// The text without the blanks and tabs at its ends.
std::string_view trimmed(std::string_view text);

/// Keys of a request are compared without regard to case.
bool equalsIgnoringCase(const char* left, const char* right);

/// Sixteen upper-case hexadecimal digits of an eight-byte world wide name.
WorldWideNameText formatWorldWideName(const std::uint8_t* name);

/// Twelve upper-case hexadecimal digits of a six-byte MAC address, no separators.
/// @param buffer at least 13 bytes, or null for one buffer of the module that the next such call overwrites.
/// @return the buffer that was written.
const char* formatMACAddress(const std::uint8_t* address, char* buffer);

using NumberText = MeasuredText<12>;

/// As printf prints "%d", or "%0*d" for a width of up to 9 and a number that is not negative.
NumberText formatNumber(int number, std::size_t width = 1);

/// A zero-filled block, or null. Give it back through CoreFree.
void* CoreAlloc(std::size_t size);

/// Frees a block of CoreAlloc; a null pointer is logged and otherwise ignored.
void CoreFree(void* block);

} // namespace merolt
