// Text from outside in a log whose lines anybody reads: nothing in it may look like a line or a command to a terminal.
#pragma once

#include <cstddef>

namespace merolt {

/// Room for a message with its terminator; what is longer is cut.
constexpr std::size_t logMessageSize = 512;

/// Writes control characters (ASCII, and C1 in UTF-8) as \n, \r, \t or \x1B; everything else stays.
/// @param outsideEnd characters before this place may come from outside, those behind it are the format's own.
/// @param out logMessageSize bytes; what does not fit is cut.
void copyPrintable(const char* message, std::size_t outsideEnd, char* out);

/// How many characters of the message, from its start, may come from outside: all but the literal text behind the
/// format's last conversion. A format that is nothing but "%s" carries a text of ours, whose newlines at its end stay.
/// @param length of the whole message, cut or not. @param message as far as there was room.
std::size_t outsideLength(const char* format, const char* message, std::size_t length);

} // namespace merolt
