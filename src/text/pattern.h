// Texts with places that are filled when they are logged. A place is a letter in braces.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace merolt {

/// @param pattern every brace in it opens a place. @param valueOf gives what stands at a place, by its letter.
std::string fillPattern(std::string_view pattern, const std::function<std::string(char place)>& valueOf);

} // namespace merolt
