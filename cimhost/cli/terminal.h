// What a person sits at: how wide it is, and whether it shows colours.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace cimhost::cli {

/// How text for people is laid out.
struct Layout {
    std::size_t width = 0; ///< characters of a line; 0: as many as it takes
    bool hasColours = false;
};

/// A terminal's width and colours; for a pipe or a file neither. Colours go where NO_COLOR is set to anything but the
/// empty text, and where TERM is "dumb".
Layout layoutOf(int descriptor);

bool isTerminal(int descriptor);

enum class Colour { red, green, yellow, bold };

/// The text, in the colour if there are colours.
std::string coloured(const Layout& layout, Colour colour, std::string_view text);

} // namespace cimhost::cli
