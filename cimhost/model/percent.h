// Texts in the header fields of CIM-XML messages are escaped as in a URI (DSP0200, 6.2).
#pragma once

#include <string>
#include <string_view>

namespace cimhost {

/// Visible characters of ASCII stay, but for '%', and so do those of alsoPlain.
std::string escapePercent(std::string_view text, std::string_view alsoPlain = {});

/// What is no escape stays as it is.
std::string decodePercent(std::string_view text);

} // namespace cimhost
