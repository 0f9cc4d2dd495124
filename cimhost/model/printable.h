// Texts that somebody else chose, for terminals and logs.
#pragma once

#include <string>
#include <string_view>

namespace cimhost {

/// The UTF-8 text with blanks in place of control characters, U+0080 to U+009F included: what a device calls itself or
/// a client writes must neither steer a terminal nor begin a line of a log.
std::string printable(std::string_view text);

} // namespace cimhost
